#include "regex/pattern_check.h"

#include <cstddef>
#include <stdexcept>

namespace rvl {

namespace {

constexpr unsigned long kOverLimit = kMaxRepetitionCount + 1;

bool isDigit(wchar_t c) { return c >= L'0' && c <= L'9'; }

// The decimal number at `i` (moved past it), saturated just above kMaxRepetitionCount.
unsigned long readNumber(std::wstring_view p, std::size_t& i) {
    unsigned long value = 0;
    for (; i < p.size() && isDigit(p[i]); ++i) {
        value = value * 10 + static_cast<unsigned long>(p[i] - L'0');
        if (value > kOverLimit) value = kOverLimit;
    }
    return value;
}

// Index just past the bracket expression that starts at `i`; escapes inside it are literal.
std::size_t skipBracket(std::wstring_view p, std::size_t i) {
    for (++i; i < p.size() && p[i] != L']'; ++i) {
        if (p[i] == L'\\') ++i;
    }
    return i;
}

// "(" opens a capturing group unless "(?" follows.
unsigned long countGroups(std::wstring_view p) {
    unsigned long groups = 0;
    for (std::size_t i = 0; i < p.size(); ++i) {
        if (p[i] == L'\\') {
            ++i;
        } else if (p[i] == L'[') {
            i = skipBracket(p, i);
        } else if (p[i] == L'(' && (i + 1 >= p.size() || p[i + 1] != L'?')) {
            ++groups;
        }
    }
    return groups;
}

}  // namespace

void CheckPatternNumbers(std::wstring_view p) {
    const unsigned long groups = countGroups(p);
    for (std::size_t i = 0; i < p.size(); ++i) {
        if (p[i] == L'[') {
            // Inside brackets the compiler refuses a digit escape without reading its number.
            i = skipBracket(p, i);
        } else if (p[i] == L'\\') {
            ++i;
            // \0 is the null character; \1 to \9 and the digits after them name a group.
            if (i < p.size() && isDigit(p[i]) && p[i] != L'0') {
                const unsigned long group = readNumber(p, i);
                if (group > groups) throw std::invalid_argument(kBadBackReference);
                --i;
            }
        } else if (p[i] == L'{') {
            // Both numbers of {n}, {n,} and {n,m}; anything else the compiler refuses itself.
            ++i;
            if (readNumber(p, i) > kMaxRepetitionCount) {
                throw std::invalid_argument(kRepetitionTooLarge);
            }
            if (i < p.size() && p[i] == L',') ++i;
            if (readNumber(p, i) > kMaxRepetitionCount) {
                throw std::invalid_argument(kRepetitionTooLarge);
            }
            --i;
        }
    }
}

}  // namespace rvl
