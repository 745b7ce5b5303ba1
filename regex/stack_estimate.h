// How much stack the standard library's matcher (libstdc++'s backtracking executor) can need for
// a pattern on a text, judged from the pattern's text before anything is matched.
//
// The matcher recurses once per state it passes, and it passes a bounded number of states per
// character only inside an unbounded loop (*, +, {n,}); everything else in the pattern is walked
// a bounded number of times. So the bound is
//   frames = length × (weight of the heaviest loop + 4) + weight of the pattern × (atoms + 1)
// where a weight counts the states of the pattern's parts (an atom 1, a group or an optional part
// 2 more, a repetition 3 more, a lookahead a sub-matcher more) and counted repetitions are
// multiplied out. Each frame is charged a fixed size; measured over a range of patterns (loops
// of classes, alternations, nested and optional groups, lookaheads, back-references) the bound
// lies 2.6 to 30 times above the stack really used (3 to 30 times in sanitizer builds).
#pragma once

#include <cstddef>
#include <string_view>

namespace rvl {

// Stack bytes to compile `pattern` and to match it over `textLength` characters; saturates
// instead of overflowing.
std::size_t RegexStackBytes(std::wstring_view pattern, std::size_t textLength);

}  // namespace rvl
