#!/usr/bin/env bash
# Fails on any include of a project folder that tools/layers.txt does not allow for the including
# folder, naming the file, the line and the rule it breaks. Reads "folder/..." includes and
# <folder/...> ones; an angle include counts as the project's when the project has that file
# (so <net/if.h> stays the system's). The host's folders are layers of their own (sim/core, ...).
# The build enforces the same file (cmake/plugin_layers.cmake); this names every offence at once.
set -euo pipefail
root="$1"
rules="$root/tools/layers.txt"
fail=0
angle='include[[:space:]]*<'

# The layer a project path belongs to: its first folder, or its first two under sim/.
layer_of() {
  local path=$1
  case "$path" in
    sim/*/*) cut -d/ -f1-2 <<<"$path" ;;
    */*) echo "${path%%/*}" ;;
  esac
}

while IFS=: read -r folder allowed; do
  [[ -z "$folder" || "$folder" == \#* ]] && continue
  [ -d "$root/$folder" ] || continue
  while IFS=: read -r file line text; do
    path=$(sed -E 's/^\s*#\s*include\s*[<"]([^>"]+)[>"].*/\1/' <<<"$text")
    if [[ "$text" =~ $angle ]] && [ ! -e "$root/$path" ]; then
      continue  # a system header
    fi
    target=$(layer_of "$path")
    [ -z "$target" ] && continue
    [ "$target" = "$folder" ] && continue
    if ! grep -qw -- "$target" <<<"$allowed"; then
      echo "${file#$root/}:$line: $folder/ may not include $target/ (allowed:${allowed:- none})"
      fail=1
    fi
  done < <(grep -rnE '^\s*#\s*include\s*[<"][^>"]+/' "$root/$folder" --include='*.h' \
    --include='*.cpp' || true)
done <"$rules"

[ "$fail" = 0 ] && echo "layering OK"
exit "$fail"
