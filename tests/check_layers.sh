#!/usr/bin/env bash
# Fails on any #include "folder/..." ("sim/folder/..." for the host) that tools/layers.txt does
# not allow for the including folder, naming the file, the line and the rule it breaks.
set -euo pipefail
root="$1"
rules="$root/tools/layers.txt"
fail=0

while IFS=: read -r folder allowed; do
  [[ -z "$folder" || "$folder" == \#* ]] && continue
  [ -d "$root/$folder" ] || continue
  while IFS=: read -r file line text; do
    target=$(sed -E 's/.*#include "([^/"]+)\/.*/\1/' <<<"$text")
    # The host's folders are layers of their own.
    [ "$target" = sim ] && target=$(sed -E 's/.*#include "(sim\/[^/"]+)\/.*/\1/' <<<"$text")
    [ "$target" = "$folder" ] && continue
    if ! grep -qw -- "$target" <<<"$allowed"; then
      echo "${file#$root/}:$line: $folder/ may not include $target/ (allowed:${allowed:- none})"
      fail=1
    fi
  done < <(grep -rnE '^\s*#\s*include "[^/"]+/' "$root/$folder" --include='*.h' --include='*.cpp' || true)
done <"$rules"

[ "$fail" = 0 ] && echo "layering OK"
exit "$fail"
