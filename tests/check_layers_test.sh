#!/usr/bin/env bash
# The layering check against deliberate offences, each in a scratch copy of the sources: it must
# pass the copy as it is, fail on a forbidden include of either form, and let system headers be.
set -euo pipefail
root="$1"
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

copy() {
  rm -rf "$scratch/src"
  mkdir -p "$scratch/src/tools"
  cp "$root/tools/layers.txt" "$scratch/src/tools/"
  while IFS=: read -r folder _; do
    [[ -z "$folder" || "$folder" == \#* ]] && continue
    mkdir -p "$scratch/src/$(dirname "$folder")"
    cp -r "$root/$folder" "$scratch/src/$folder"
  done <"$root/tools/layers.txt"
}

failures=0
# file to change | line added | expected: pass, or the text the check must report
while IFS='|' read -r file added expected; do
  copy
  [ -n "$file" ] && echo "$added" >>"$scratch/src/$file"
  if output=$(bash "$root/tests/check_layers.sh" "$scratch/src" 2>&1); then outcome=pass; else outcome=fail; fi
  if [ "$expected" = pass ]; then
    [ "$outcome" = pass ] && continue
  elif [ "$outcome" = fail ] && grep -qF -- "$expected" <<<"$output"; then
    continue
  fi
  echo "FAILED: '$added' in $file: expected $expected, got $outcome: $output"
  failures=$((failures + 1))
done <<'CASES'
||pass
frame/answers.cpp|#include <sim/core/value.h>|frame/answers.cpp:
frame/answers.cpp|#include <sim/core/value.h>|frame/ may not include sim/core/
fmlib/convert.h|#include "info/functions.h"|fmlib/ may not include info/
globals/store.h|#  include <html/fragment.h>|globals/ may not include html/
sim/core/value.h|#include "sim/session/host.h"|sim/core/ may not include sim/session/
frame/answers.cpp|#include <net/if.h>|pass
frame/answers.cpp|#include <unicode/uregex.h>|pass
info/get.cpp|#include "globals/store.h"|pass
CASES

[ "$failures" = 0 ] && echo "layering check: all cases as expected"
exit "$failures"
