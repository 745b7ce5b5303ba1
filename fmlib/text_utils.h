// Keyword lookup and small tests and utilities on texts and byte strings.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/fmx.h"

namespace fmlib {

// Index of the first word equal to the whole text, both lower-cased by the host; -1 when none
// is (or `count` is 0). No trimming and no prefixes: "shor" matches nothing in ("short").
int FindFMTextInArray(const fmx::Text& text, const char** words, unsigned count);

// Whether an empty piece after the last delimiter (or an empty `s`) counts as a piece.
enum class EmptyLastPiece { kDropped, kKept };

// Calls `f` with each piece of `s` between delimiters; two delimiters in a row enclose an empty
// piece. By default cut as explode() cuts: an empty last piece is dropped, so an empty `s` has
// none. Kept, n delimiters always make n + 1 pieces. Stops early, answering false, when `f`
// answers false.
template <class F>
bool eachPiece(std::string_view s, char delimiter, F f,
               EmptyLastPiece emptyLast = EmptyLastPiece::kDropped) {
    std::size_t start = 0;
    while (true) {
        const std::size_t cut = s.find(delimiter, start);
        if (cut == std::string_view::npos) {
            if (start == s.size() && emptyLast == EmptyLastPiece::kDropped) return true;
            return f(s.substr(start));
        }
        if (!f(s.substr(start, cut - start))) return false;
        start = cut + 1;
    }
}

}  // namespace fmlib

bool isEmpty(const fmx::Text& text);
bool isAll(const fmx::Text& text);    // equals "all"
bool isSpace(const fmx::Text& text);  // equals a single blank

// Byte-wise std::tolower: bytes above 127 are left alone.
std::string toLower(std::string s);

// Pieces between delimiters: an empty input has none, a trailing delimiter adds no empty last
// piece, and two delimiters in a row enclose an empty piece.
std::vector<std::string> explode(const std::string& s, char delimiter);
