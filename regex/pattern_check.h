// Numbers in a pattern that libstdc++ 12's pattern compiler reads without an overflow check:
// a back-reference such as \18446744073709551617 wraps round to another group, and a huge
// repetition count to an allocation that cannot succeed. They are checked here first.
#pragma once

#include <string_view>

namespace rvl {

// The largest repetition count accepted: the compiler copies the repeated part once per count,
// and refuses any expression of more states than this anyway.
inline constexpr unsigned long kMaxRepetitionCount = 100000;

inline constexpr char kBadBackReference[] =
    "A back-reference in the pattern names a group that the pattern does not have";
inline constexpr char kRepetitionTooLarge[] =
    "A repetition count in the pattern is larger than 100000";

// Throws std::invalid_argument with one of the texts above when an ECMAScript pattern holds a
// back-reference beyond its number of capturing groups or a repetition count beyond
// kMaxRepetitionCount. Everything else is left to the compiler.
void CheckPatternNumbers(std::wstring_view pattern);

}  // namespace rvl
