#!/usr/bin/env bash
# The demo: runs demo/calculations.txt through fmsim in one session over a file seeded from
# demo/seed.sql with two scripts, and prints a table grouped by family: each label with its
# calculation, and the result below it.
#   bash demo/run.sh [BUILD_DIR]     (default: build; FMSIM=path overrides the shell)
set -euo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
build=${1:-$here/../build}
fmsim=${FMSIM:-$build/fmsim}
if [ ! -x "$fmsim" ]; then
  echo "demo/run.sh: no fmsim at $fmsim (build first, or pass the build directory)" >&2
  exit 2
fi

scripts=(
  --script 'Greet=Let ( $$greeted = $$greeted + 1 ; "Hello, " & Get ( ScriptParameter ) )'
  --script 'Report=Ravelin_ExecuteSQL ( "SELECT COUNT ( * ) FROM Contacts" )'
)

labels=()
calcs=()
families=()  # families[i]: the family that starts at calculation i
while IFS= read -r line || [ -n "$line" ]; do
  case "$line" in
    '## '*) families[${#labels[@]}]=${line#\#\# } ;;
    '' | '#'*) ;;
    *)
      labels+=("${line%% | *}")
      calcs+=("${line#* | }")
      ;;
  esac
done <"$here/calculations.txt"
arguments=()
for calc in "${calcs[@]}"; do arguments+=(-e "$calc"); done

# One JSON object per line; each becomes "kind US text US error" (US: the unit separator,
# which read does not merge; the error with its message when there is one), with returns shown
# as ¶. Fields after the error (a position, the SQL engine's detail) are not shown.
decode='
  sub unescape {
    my $s = shift;
    $s =~ s/\\(["\\\/bfnrt]|u([0-9a-fA-F]{4}))/
      $1 eq "r" || $1 eq "n" ? "\x{b6}" : $1 eq "t" ? " " : $1 eq "b" || $1 eq "f" ? "" :
      defined $2 ? chr(hex $2) : $1/ge;
    return $s;
  }
  binmode STDOUT, ":utf8";
  while (<STDIN>) {
    utf8::decode($_);
    if (/^\{"type": "(.*?)", "text": "((?:[^"\\]|\\.)*)", "error": (-?\d+)(?:, "message": "((?:[^"\\]|\\.)*)")?(?:, .*)?\}$/) {
      print "result\x1f", unescape($2), "\x1f$3", (defined $4 ? ": " . unescape($4) : ""), "\n";
    } elsif (/^\{"script": "((?:[^"\\]|\\.)*)", "file": "((?:[^"\\]|\\.)*)", "parameter": "((?:[^"\\]|\\.)*)"\}$/) {
      print "script\x1f", unescape($1), " in ", unescape($2), ", parameter \"", unescape($3), "\"\x1f0\n";
    } else {
      chomp; print "other\x1f$_\x1f0\n";
    }
  }'

width=0
for label in "${labels[@]}"; do [ ${#label} -gt $width ] && width=${#label}; done

printf '%-*s  %s\n' "$width" "What" "Calculation, and below it: → its result"
printf '%-*s  %s\n' "$width" "$(printf '%*s' "$width" '' | tr ' ' '-')" "$(printf '%40s' '' | tr ' ' '-')"
# The plug-in's diagnostics (the scheduler's log) go to standard error; they are shown only when
# fmsim fails.
log=$(mktemp)
trap 'rm -f "$log"' EXIT
show_log() {
  cat "$log" >&2
  exit 1
}
i=0
"$fmsim" --json --seed "$here/seed.sql" "${scripts[@]}" --idle 0.5 "${arguments[@]}" 2>"$log" |
  perl -e "$decode" |
  while IFS=$'\x1f' read -r kind text error; do
    case "$kind" in
      result)
        [ "${error%%:*}" != 0 ] && text="? (error $error)"
        [ -n "${families[$i]:-}" ] && printf '\n== %s ==\n' "${families[$i]}"
        printf '%-*s  %s\n' "$width" "${labels[$i]}" "${calcs[$i]}"
        printf '%-*s  → %s\n' "$width" "" "$text"
        i=$((i + 1))
        ;;
      script) printf '%-*s  %s\n' "$width" "  (script run)" "$text" ;;
      *) printf '%-*s  %s\n' "$width" "" "$text" ;;
    esac
  done || show_log
