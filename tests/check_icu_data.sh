#!/usr/bin/env bash
# The plug-in's folder bundles ICU's data trimmed to what regular expressions read
# (cmake/trim_icu_data.cmake). Counts patterns that reach every kind of data ICU's regular
# expressions use (properties, case folding, normalization, names, emoji and layout properties,
# grapheme and dictionary word breaks) with the system's data and with the trimmed data, and
# requires the same answers.
#   check_icu_data.sh TRIMMED_DATA_DIR FMSIM_COMMAND
set -euo pipefail
data_dir=$1 fmsim=$2

# text | pattern (FileMaker string contents: a backslash is written twice)
cases='Grüße, Ωμέγα, 漢字, ١٢٣ | \\p{L}+
Grüße, Ωμέγα, 漢字 | \\p{Script=Greek}
Привет, мир | \\p{Block=Cyrillic}
STRASSE straße Straße | (?i)straße
ΣΑΣ σας ς | (?i)σας
ǅ ǆ Ǆ | \\p{Lt}
ŉ abc | \\p{Changes_When_Casemapped}
ABC ℌ ﬁ ß | \\p{Changes_When_NFKC_Casefolded}
ﬁ Å Ａ a | \\p{NFKC_Quick_Check=No}
é ﬁ | \\p{NFD_Quick_Check=No}
aAb | \\N{LATIN SMALL LETTER A}
😀 a ☺ 1 # | \\p{Emoji}
😀👍🏽 | \\p{Emoji_Modifier}
क्षि किताब | \\p{Indic_Positional_Category=Right}
漢a | \\p{Vertical_Orientation=U}
שלום abc مرحبا | \\p{Bidi_Class=R}
한국어 | \\p{Hangul_Syllable_Type=LV}
abc ⅻ | \\p{Age=1.1}
٣ 3 ३ | \\p{Numeric_Value=3}
漢字かなカナ | \\p{Line_Break=Ideographic}
abc1 d | \\p{Word_Break=ALetter}
é 👩‍👩‍👧 ก้ 🇩🇪 | \\X
é 👩‍👩‍👧 | \\p{Grapheme_Cluster_Break=Extend}
Hello, world. It’s 3.5 o’clock. | (?w)\\b
สวัสดีครับผมชื่อสมชาย | (?w)\\b
我们是中国人我爱北京天安门 | (?w)\\b
日本語のテキストを分割します | (?w)\\b
ພາສາລາວ ភាសាខ្មែរ မြန်မာဘာသာ | (?w)\\b
Line one. Line two | \\b{w}'

calcs=()
while IFS= read -r line; do
  calcs+=(-e "Ravelin_RegExp_PatternCount ( \"${line%% | *}\" ; \"${line#* | }\" )")
done <<<"$cases"

full=$("$fmsim" "${calcs[@]}")
# The loader's trace shows that the trimmed library is the one loaded: the last place it tries
# for libicudata is where it found it.
trace=$(mktemp)
trap 'rm -f "$trace"' EXIT
trimmed=$(LD_DEBUG=libs LD_LIBRARY_PATH="$data_dir${LD_LIBRARY_PATH:+:$LD_LIBRARY_PATH}" \
  "$fmsim" "${calcs[@]}" 2>"$trace")
loaded=$(grep -o 'trying file=[^ ]*libicudata[^ ]*' "$trace" | tail -n 1 | sed 's/trying file=//')
if [[ "$loaded" != "$data_dir"/libicudata.so.* ]]; then
  echo "check_icu_data: the trimmed data was not loaded (last tried: ${loaded:-nothing})" >&2
  exit 1
fi
if [ "$full" != "$trimmed" ]; then
  echo "check_icu_data: the trimmed ICU data changes pattern counts:" >&2
  diff <(echo "$full") <(echo "$trimmed") >&2 || true
  exit 1
fi
echo "check_icu_data: $(wc -l <<<"$cases") pattern counts alike with the trimmed data:" $full
