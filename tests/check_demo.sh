#!/usr/bin/env bash
# The demo prints one labelled line per calculation, in order: an fmsim output line that the
# demo cannot read would shift every later result under the wrong label.
#   bash tests/check_demo.sh BUILD_DIR SOURCE_DIR
set -euo pipefail
build=$1
source=$2
expected=$(grep -cvE '^(#|$)' "$source/demo/calculations.txt")
output=$(bash "$source/demo/run.sh" "$build")
# After the two header lines: labelled results start at column 1, script runs with "  (script
# run)"; anything else is a line the demo did not understand.
body=$(tail -n +3 <<<"$output")
labelled=$(grep -c '^[^ ]' <<<"$body" || true)
stray=$(grep -vE '^[^ ]|^  \(script run\)' <<<"$body" || true)
if [ -n "$stray" ]; then
  echo "check_demo: lines the demo did not read:" >&2
  echo "$stray" >&2
  exit 1
fi
if [ "$labelled" != "$expected" ]; then
  echo "check_demo: $labelled labelled results for $expected calculations" >&2
  exit 1
fi
last_label=$(grep -vE '^(#|$)' "$source/demo/calculations.txt" | tail -n 1 | sed 's/ | .*//')
last_result=$(grep '^[^ ]' <<<"$body" | tail -n 1)
if [[ "$last_result" != "$last_label "* ]]; then
  echo "check_demo: the last result is not labelled \"$last_label\": $last_result" >&2
  exit 1
fi
echo "check_demo: $expected calculations, each under its label"
