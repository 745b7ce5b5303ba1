// Case mapping and search over UTF-16 units. Every mapping works code point by code point and
// keeps the number of units, so positions found in a mapped text are positions in the original.
#include <unicode/uchar.h>
#include <unicode/utf16.h>

#include <algorithm>

#include "sim/core/text.h"

namespace sim {

namespace {

constexpr uint32_t kNotFound = UINT32_MAX;

template <class Map>
std::u16string mapCodePoints(std::u16string_view s, Map map) {
    std::u16string out(s);
    size_t i = 0;
    while (i < out.size()) {
        UChar32 c;
        const size_t start = i;
        U16_NEXT(out.data(), i, out.size(), c);
        const UChar32 mapped = map(c);
        // A mapping that would change the number of units keeps the original character.
        if (mapped == c || U16_LENGTH(mapped) != static_cast<int32_t>(i - start)) continue;
        size_t at = start;
        U16_APPEND_UNSAFE(out.data(), at, mapped);
    }
    return out;
}

std::u16string foldCase(std::u16string_view s) {
    return mapCodePoints(s, [](UChar32 c) { return u_foldCase(c, U_FOLD_CASE_DEFAULT); });
}

uint32_t emptyNeedleAt(std::u16string_view hay, uint32_t from) {
    return from < hay.size() ? from : kNotFound;
}

}  // namespace

std::u16string toLower(std::u16string_view s) {
    return mapCodePoints(s, [](UChar32 c) { return u_tolower(c); });
}

std::u16string toUpper(std::u16string_view s) {
    return mapCodePoints(s, [](UChar32 c) { return u_toupper(c); });
}

uint32_t find(std::u16string_view hay, std::u16string_view needle, uint32_t from) {
    if (needle.empty()) return emptyNeedleAt(hay, from);
    if (from >= hay.size()) return kNotFound;
    const size_t p = hay.find(needle, from);
    return p == std::u16string_view::npos ? kNotFound : static_cast<uint32_t>(p);
}

uint32_t findPrev(std::u16string_view hay, std::u16string_view needle, uint32_t from) {
    if (needle.empty()) return emptyNeedleAt(hay, from);
    const size_t p = hay.rfind(needle, from);
    return p == std::u16string_view::npos ? kNotFound : static_cast<uint32_t>(p);
}

// Folds the text in growing chunks, so that a match near `from` costs little even in a long text
// and repeated searches through a text stay linear overall.
uint32_t findIgnoringCase(std::u16string_view hay, std::u16string_view needle, uint32_t from) {
    if (needle.empty()) return emptyNeedleAt(hay, from);
    if (from >= hay.size() || needle.size() > hay.size() - from) return kNotFound;
    const std::u16string key = foldCase(needle);
    std::u16string folded;
    size_t done = from;
    size_t chunk = std::max<size_t>(4096, key.size() * 4);
    size_t searchFrom = 0;
    for (;;) {
        size_t end = std::min(hay.size(), done + chunk);
        if (end < hay.size() && U16_IS_LEAD(hay[end - 1])) ++end;
        folded += foldCase(hay.substr(done, end - done));
        done = end;
        const size_t p = std::u16string_view(folded).find(key, searchFrom);
        if (p != std::u16string_view::npos) return static_cast<uint32_t>(from + p);
        if (done == hay.size()) return kNotFound;
        searchFrom = folded.size() >= key.size() ? folded.size() - key.size() + 1 : 0;
        chunk *= 2;
    }
}

uint32_t findPrevIgnoringCase(std::u16string_view hay, std::u16string_view needle, uint32_t from) {
    if (needle.empty()) return emptyNeedleAt(hay, from);
    const size_t end = std::min<size_t>(hay.size(), size_t{from} + needle.size());
    const std::u16string folded = foldCase(hay.substr(0, end));
    const size_t p = std::u16string_view(folded).rfind(foldCase(needle), from);
    return p == std::u16string_view::npos ? kNotFound : static_cast<uint32_t>(p);
}

}  // namespace sim
