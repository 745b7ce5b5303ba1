// Substitution of what a regular expression's groups capture, on styled text.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/fmx.h"

namespace rvl {

// Where the substitution's matches lie, in UTF-16 positions of the source: per match its start
// and end, then start and end of each of its first `groups` groups (an unmatched group as the
// empty range at the end of the text).
struct SubstituteMatches {
    unsigned groups = 0;
    std::vector<uint32_t> spans;
};

inline constexpr char kTextTooLong[] = "The text is too long for this pattern";
inline constexpr char kPatternTooLarge[] = "The pattern is too large";

// The matches that a substitution with `replacements` replacement strings uses, found in the
// order and with the stop rules of the substitution. Checks the pattern's numbers
// (std::invalid_argument, pattern_check.h), builds the expression (std::regex_error for a bad
// pattern) and matches on a thread with a stack big enough for the text. Throws
// std::length_error (kTextTooLong) before matching when that stack would exceed kRegexCallLimit,
// or (kPatternTooLarge) when compiling alone would; std::runtime_error when the process's budget
// cannot cover the stack (kRegexMemoryBusy) or when runaway backtracking spends the matching's
// step budget.
SubstituteMatches FindSubstituteMatches(const std::wstring& pattern, const std::wstring& source,
                                        unsigned replacements);

}  // namespace rvl

namespace fmlib {

// Appends to `output` the text of argument 0 with the groups of the pattern in argument 1
// replaced by arguments 2 and up.
void RegExpPerformSubstitute(fmx::Text& output, const fmx::DataVect& dataVect);
void RegExpPerformSubstitute_Impl(fmx::Text& output, const fmx::DataVect& dataVect);

}  // namespace fmlib
