// Word functions (WordCount, LeftWords, RightWords, MiddleWords), as letters use them to pick a
// first or last name out of a full one. A word is a run of letters, digits and combining marks;
// an apostrophe or a period between two such characters stays inside the word ("don't", "3.14").
// Everything else separates words. Results run from the first chosen word's start to the last
// one's end, so the separators between them (and the styles) are kept.
#include <unicode/uchar.h>
#include <unicode/utf16.h>

#include <algorithm>
#include <vector>

#include "sim/calc/builtins.h"

namespace sim::calc {

namespace {

struct Word {
    uint32_t begin;
    uint32_t end;
};

bool isWordCharacter(UChar32 c) { return u_isalnum(c) || (U_GET_GC_MASK(c) & U_GC_M_MASK) != 0; }

bool isInnerJoiner(char16_t u) { return u == u'\'' || u == u'\u2019' || u == u'.'; }

std::vector<Word> wordsOf(std::u16string_view s) {
    std::vector<Word> words;
    const auto size = static_cast<int32_t>(s.size());
    bool inWord = false;
    for (int32_t i = 0; i < size;) {
        const int32_t at = i;
        UChar32 c = 0;
        U16_NEXT(s.data(), i, size, c);
        if (isWordCharacter(c)) {
            if (!inWord) words.push_back({static_cast<uint32_t>(at), 0});
            words.back().end = static_cast<uint32_t>(i);
            inWord = true;
            continue;
        }
        // A joiner continues the word only when another word character follows at once.
        if (inWord && isInnerJoiner(s[static_cast<size_t>(at)]) && i < size) {
            int32_t next = i;
            UChar32 following = 0;
            U16_NEXT(s.data(), next, size, following);
            if (isWordCharacter(following)) continue;
        }
        inWord = false;
    }
    return words;
}

// Words first..last (1-based, inclusive, clipped to the words there are) with what lies between.
Value wordRange(const Text& text, const std::vector<Word>& words, double first, double last) {
    first = std::max(first, 1.0);
    last = std::min(last, static_cast<double>(words.size()));
    if (words.empty() || last < first) return emptyText();
    const Word& from = words[static_cast<size_t>(first) - 1];
    const Word& to = words[static_cast<size_t>(last) - 1];
    Text out;
    out.setSlice(text, from.begin, to.end - from.begin);
    return Value::text(std::move(out));
}

Value fnWordCount(Args& a) { return numberValue(static_cast<double>(wordsOf(a.units(0)).size())); }

Value fnLeftWords(Args& a) {
    const Text& text = a.text(0);
    return wordRange(text, wordsOf(text.units()), 1, clampCount(a.number(1)));
}

Value fnRightWords(Args& a) {
    const Text& text = a.text(0);
    const std::vector<Word> words = wordsOf(text.units());
    const auto count = static_cast<double>(words.size());
    return wordRange(text, words, count - clampCount(a.number(1)) + 1, count);
}

Value fnMiddleWords(Args& a) {
    const Text& text = a.text(0);
    const double start = clampCount(a.number(1));
    const double count = clampCount(a.number(2));
    if (count <= 0) return emptyText();
    return wordRange(text, wordsOf(text.units()), start, start + count - 1);
}

constexpr Builtin kFunctions[] = {
    {u"wordcount", 1, 1, fnWordCount},
    {u"leftwords", 2, 2, fnLeftWords},
    {u"rightwords", 2, 2, fnRightWords},
    {u"middlewords", 3, 3, fnMiddleWords},
};

}  // namespace

std::span<const Builtin> wordFunctions() { return kFunctions; }

}  // namespace sim::calc
