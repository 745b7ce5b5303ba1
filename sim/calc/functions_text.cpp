// Text functions. Positions and lengths count UTF-16 units; slices keep their styles.
#include <unicode/uchar.h>
#include <unicode/utf16.h>

#include <algorithm>
#include <cmath>

#include "sim/calc/builtins.h"
#include "sim/calc/errors.h"
#include "sim/calc/evaluator.h"
#include "sim/core/text.h"

namespace sim::calc {

namespace {

constexpr char16_t kPilcrow = u'\u00B6';

// The units [from, from + count) of t, clipped to the text; from counts from 0.
Value slice(const Text& t, double from, double count) {
    const double begin = std::max(from, 0.0);
    const double end = std::min(from + count, static_cast<double>(t.size()));
    if (!(end > begin)) return emptyText();
    Text out;
    out.setSlice(t, static_cast<uint32_t>(begin), static_cast<uint32_t>(end - begin));
    return Value::text(std::move(out));
}

// `mapped` (as long as `original`) with the character styles of `original`.
Text restyled(const Text& original, std::u16string mapped) {
    if (mapped.size() != original.size() || !original.hasStyles()) return Text(std::move(mapped));
    Text out;
    for (uint32_t pos = 0; pos < original.size();) {
        const uint32_t end = std::max(original.runEnd(pos), pos + 1);
        out.append(std::u16string_view(mapped).substr(pos, end - pos));
        out.setStyle(original.styleAt(pos), pos, end - pos);
        pos = end;
    }
    return out;
}

Value fnGetAsText(Args& a) { return Value::text(a.text(0)); }

Value fnLength(Args& a) { return Value::number(static_cast<double>(a.text(0).size())); }

Value fnLeft(Args& a) { return slice(a.text(0), 0, clampCount(a.number(1))); }

Value fnRight(Args& a) {
    const Text& t = a.text(0);
    const double n = clampCount(a.number(1));
    return slice(t, static_cast<double>(t.size()) - n, n);
}

// Middle ( text ; start ; count ): the part of [start, start + count) inside the text.
Value fnMiddle(Args& a) {
    const double start = clampCount(a.number(1));
    const double count = clampCount(a.number(2));
    if (count <= 0) return emptyText();
    return slice(a.text(0), start - 1, count);
}

// Char ( codes ): the number read as groups of five decimal digits, the lowest group first.
Value fnChar(Args& a) {
    double n = std::floor(a.number(0));
    std::u16string out;
    while (n >= 1) {
        const auto code = static_cast<UChar32>(std::fmod(n, 100000.0));
        n = std::floor(n / 100000.0);
        if (code == 0) continue;
        if (code > 0xFFFF) {
            out.push_back(U16_LEAD(code));
            out.push_back(U16_TRAIL(code));
        } else {
            out.push_back(static_cast<char16_t>(code));
        }
    }
    return Value::text(std::move(out));
}

// Code ( text ): the code points, the first character in the lowest five digits.
Value fnCode(Args& a) {
    const std::u16string_view s = a.units(0);
    if (s.empty()) return Value::number(Number::none());
    double total = 0;
    for (size_t i = s.size(); i > 0;) {
        UChar32 c = s[--i];
        if (U16_IS_TRAIL(c) && i > 0 && U16_IS_LEAD(s[i - 1])) {
            c = U16_GET_SUPPLEMENTARY(s[i - 1], c);
            --i;
        }
        total = total * 100000.0 + c;
    }
    return numberValue(total);
}

// Position ( text ; search ; start ; occurrence ), ignoring case; a negative occurrence
// searches backwards from start. Occurrences may overlap. 0 when not found.
Value fnPosition(Args& a) {
    const std::u16string_view hay = a.units(0);
    const std::u16string needle(a.units(1));
    const double start = clampCount(a.number(2));
    double occurrence = clampCount(a.number(3));
    const auto size = static_cast<double>(hay.size());
    if (needle.empty() || occurrence == 0 || start < 1 || hay.empty()) return Value::number(0.0);
    uint32_t hit = UINT32_MAX;
    if (occurrence > 0) {
        if (start > size) return Value::number(0.0);
        auto from = static_cast<uint32_t>(start - 1);
        for (; occurrence > 0; --occurrence) {
            hit = findIgnoringCase(hay, needle, from);
            if (hit == UINT32_MAX) return Value::number(0.0);
            from = hit + 1;
        }
    } else {
        auto from = static_cast<uint32_t>(std::min(start, size) - 1);
        for (; occurrence < 0; ++occurrence) {
            hit = findPrevIgnoringCase(hay, needle, from);
            if (hit == UINT32_MAX || (hit == 0 && occurrence < -1)) return Value::number(0.0);
            from = hit - 1;
        }
    }
    return Value::number(static_cast<double>(hit) + 1);
}

// PatternCount ( text ; search ): non-overlapping occurrences, ignoring case.
Value fnPatternCount(Args& a) {
    const std::u16string_view hay = a.units(0);
    const std::u16string needle(a.units(1));
    if (needle.empty()) return Value::number(0.0);
    double count = 0;
    for (uint32_t from = findIgnoringCase(hay, needle, 0); from != UINT32_MAX;
         from = findIgnoringCase(hay, needle, from + static_cast<uint32_t>(needle.size()))) {
        ++count;
    }
    return Value::number(count);
}

// One search/replace pass, case-sensitive, in linear time.
Text substituteOnce(const Text& source, std::u16string_view search, const Text& replacement) {
    if (search.empty()) return source;
    const std::u16string_view units = source.units();
    Text out;
    uint32_t pos = 0;
    for (uint32_t hit = sim::find(units, search, 0); hit != UINT32_MAX;
         hit = sim::find(units, search, pos)) {
        if (static_cast<uint64_t>(out.size()) + (hit - pos) + replacement.size() > kMaxTextUnits) {
            raise(kGenericError);
        }
        out.append(source, pos, hit - pos);
        out.append(replacement);
        pos = hit + static_cast<uint32_t>(search.size());
    }
    out.append(source, pos, UINT32_MAX);
    return out;
}

// Substitute ( text ; search ; replacement ) or Substitute ( text ; [ s1 ; r1 ] { ; [ s2 ; r2 ] }
// ): the pairs apply one after the other.
Value fnSubstitute(Evaluator& ev, const std::vector<NodePtr>& a) {
    const bool plainForm =
        a.size() == 3 && a[1]->kind != NodeKind::List && a[2]->kind != NodeKind::List;
    for (size_t i = 1; i < a.size() && !plainForm; ++i) {
        if (a[i]->kind != NodeKind::List) raise(kListNotAllowed);
        if (a[i]->children.size() < 2) raise(kTooFewParameters);
        if (a[i]->children.size() > 2) raise(kTooManyParameters);
    }
    Text text = ev.eval(*a[0]).asText();
    auto apply = [&](const Node& search, const Node& replacement) {
        const Value s = ev.eval(search);
        const Value r = ev.eval(replacement);
        text = substituteOnce(text, s.asText().units(), r.asText());
    };
    if (plainForm) {
        apply(*a[1], *a[2]);
    } else {
        for (size_t i = 1; i < a.size(); ++i) apply(*a[i]->children[0], *a[i]->children[1]);
    }
    return Value::text(std::move(text));
}

Value fnUpper(Args& a) { return Value::text(restyled(a.text(0), toUpper(a.units(0)))); }
Value fnLower(Args& a) { return Value::text(restyled(a.text(0), toLower(a.units(0)))); }

// Proper: the first letter of each word in upper case, the others in lower case.
Value fnProper(Args& a) {
    std::u16string s(a.units(0));
    bool wordStart = true;
    for (size_t i = 0; i < s.size();) {
        const size_t at = i;
        UChar32 c;
        U16_NEXT(s.data(), i, s.size(), c);
        const bool letter = u_isalnum(c) || c == u'\'';
        if (u_isalpha(c)) {
            const UChar32 mapped = wordStart ? u_toupper(c) : u_tolower(c);
            if (U16_LENGTH(mapped) == i - at) {
                if (i - at == 1) {
                    s[at] = static_cast<char16_t>(mapped);
                } else {
                    s[at] = U16_LEAD(mapped);
                    s[at + 1] = U16_TRAIL(mapped);
                }
            }
        }
        wordStart = !letter;
    }
    return Value::text(restyled(a.text(0), std::move(s)));
}

// Trim: leading and trailing spaces.
Value fnTrim(Args& a) {
    const std::u16string_view s = a.units(0);
    const size_t first = s.find_first_not_of(u' ');
    if (first == std::u16string_view::npos) return emptyText();
    const size_t last = s.find_last_not_of(u' ');
    return slice(a.text(0), static_cast<double>(first), static_cast<double>(last - first + 1));
}

// TrimAll ( text ; trimSpaces ; trimType ): the spaces at both ends go, and each run of spaces
// inside goes or becomes one half-width space by what it lies between. Characters from U+2F00 on
// are "non-roman". Between two non-roman characters spaces always go; between two roman ones one
// stays. Between a roman and a non-roman character trimType 0 keeps none, 1 exactly one
// (inserting one where there was none), 2 one where there were some; trimType 3 keeps no spaces
// at all. trimSpaces 1 counts full-width spaces (U+3000) as spaces, 0 as characters.
Value fnTrimAll(Args& a) {
    const std::u16string_view s = a.units(0);
    const bool fullWidthIsSpace = isTrue(a[1]);
    const double trimType = std::trunc(a.number(2));
    auto isSpace = [&](char16_t c) { return c == u' ' || (fullWidthIsSpace && c == u'\u3000'); };
    auto isRoman = [](char16_t c) { return c < 0x2F00; };
    std::u16string out;
    out.reserve(s.size());
    for (size_t i = 0; i < s.size();) {
        if (!isSpace(s[i])) {
            const bool boundary = !out.empty() && isRoman(out.back()) != isRoman(s[i]);
            if (trimType == 1 && boundary) out.push_back(u' ');
            out.push_back(s[i++]);
            continue;
        }
        size_t end = i;
        while (end < s.size() && isSpace(s[end])) ++end;
        if (!out.empty() && end < s.size() && trimType != 3) {
            const bool leftRoman = isRoman(out.back());
            const bool rightRoman = isRoman(s[end]);
            bool keep = leftRoman && rightRoman;
            if (leftRoman != rightRoman) keep = trimType == 1 || trimType == 2;
            if (keep) out.push_back(u' ');
        }
        i = end;
        if (i < s.size() && !out.empty() && out.back() == u' ') {
            out.push_back(s[i++]);  // the gap is decided: no space is inserted before this one
        }
    }
    return textValue(std::move(out));
}

Value fnExact(Args& a) { return booleanValue(a.units(0) == a.units(1)); }

// Quote: the text as a text constant ("\"", "\\" and "\¶" escaped, returns written as ¶).
Value fnQuote(Args& a) {
    const std::u16string_view s = a.units(0);
    std::u16string out;
    out.reserve(s.size() + 2);
    out.push_back(u'"');
    for (char16_t c : s) {
        if (c == u'"' || c == u'\\' || c == kPilcrow) {
            out.push_back(u'\\');
            out.push_back(c);
        } else {
            out.push_back(c == u'\r' ? kPilcrow : c);
        }
    }
    out.push_back(u'"');
    return textValue(std::move(out));
}

// Replace ( text ; start ; count ; replacement )
Value fnReplace(Args& a) {
    const Text& t = a.text(0);
    const auto size = static_cast<double>(t.size());
    const double start = std::clamp(clampCount(a.number(1)) - 1, 0.0, size);
    const double count = std::clamp(clampCount(a.number(2)), 0.0, size - start);
    Text out;
    out.append(t, 0, static_cast<uint32_t>(start));
    out.append(a.text(3));
    out.append(t, static_cast<uint32_t>(start + count), UINT32_MAX);
    return textValue(std::move(out));
}

// Filter ( text ; characters ): the characters of text found in characters, case-sensitive.
Value fnFilter(Args& a) {
    const std::u16string keep(a.units(1));
    std::u16string out;
    for (char16_t c : a.units(0)) {
        if (keep.find(c) != std::u16string::npos) out.push_back(c);
    }
    return Value::text(std::move(out));
}

constexpr Builtin kFunctions[] = {
    {u"getastext", 1, 1, fnGetAsText},
    {u"length", 1, 1, fnLength},
    {u"left", 2, 2, fnLeft},
    {u"right", 2, 2, fnRight},
    {u"middle", 3, 3, fnMiddle},
    {u"char", 1, 1, fnChar},
    {u"code", 1, 1, fnCode},
    {u"position", 4, 4, fnPosition},
    {u"patterncount", 2, 2, fnPatternCount},
    {u"substitute", 2, -1, nullptr, fnSubstitute, true},
    {u"upper", 1, 1, fnUpper},
    {u"lower", 1, 1, fnLower},
    {u"proper", 1, 1, fnProper},
    {u"trim", 1, 1, fnTrim},
    {u"trimall", 3, 3, fnTrimAll},
    {u"exact", 2, 2, fnExact},
    {u"quote", 1, 1, fnQuote},
    {u"replace", 4, 4, fnReplace},
    {u"filter", 2, 2, fnFilter},
};

}  // namespace

std::span<const Builtin> textFunctions() { return kFunctions; }

}  // namespace sim::calc
