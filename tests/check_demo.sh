#!/usr/bin/env bash
# The demo prints, in order and under each family's heading, every calculation beside its label
# with its result on the next line: an fmsim output line that the demo cannot read would shift
# every later result under the wrong calculation.
#   bash tests/check_demo.sh BUILD_DIR SOURCE_DIR     (FMSIM=command overrides the shell)
set -euo pipefail
build=$1
source=$2
calculations="$source/demo/calculations.txt"
expected=$(grep -cvE '^(#|$)' "$calculations")
expected_families=$(grep -c '^## ' "$calculations")
output=$(bash "$source/demo/run.sh" "$build")
# After the two header lines: family headings "== … ==", labelled calculations from column 1,
# their results indented with "→", script runs with "  (script run)", blank lines between
# families; anything else is a line the demo did not understand.
body=$(tail -n +3 <<<"$output")
fail() {
  echo "check_demo: $*" >&2
  exit 1
}
stray=$(grep -vE '^== .* ==$|^[^ =]|^ +→ |^  \(script run\) |^$' <<<"$body" || true)
[ -z "$stray" ] || fail "lines the demo did not read:"$'\n'"$stray"
families=$(grep -c '^== .* ==$' <<<"$body" || true)
[ "$families" = "$expected_families" ] || fail "$families family headings for $expected_families"
labelled=$(grep -cE '^[^ =]' <<<"$body" || true)
[ "$labelled" = "$expected" ] || fail "$labelled labelled calculations for $expected"
# Every labelled calculation has its result on the next line.
unpaired=$(awk '/^[^ =]/ { if (pending) print last; pending = 1; last = $0; next }
  /^ +→ / { pending = 0 } END { if (pending) print last }' <<<"$body")
[ -z "$unpaired" ] || fail "calculations without a result below them:"$'\n'"$unpaired"
last_label=$(grep -vE '^(#|$)' "$calculations" | tail -n 1 | sed 's/ | .*//')
last_result=$(grep -E '^[^ =]' <<<"$body" | tail -n 1)
[[ "$last_result" == "$last_label "* ]] ||
  fail "the last calculation is not labelled \"$last_label\": $last_result"
echo "check_demo: $expected calculations in $expected_families families, each above its result"
