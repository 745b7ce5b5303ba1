// The stack that pattern matching may hold. libstdc++'s matcher recurses per character, so each
// substitution runs on a thread whose stack is sized from an estimate of what the pattern can
// need on the text (stack_estimate.h). One call may reserve at most kRegexCallLimit, and all calls
// of the process together at most kRegexProcessBudget: a server's other users keep their memory
// whatever texts and patterns arrive at once.
#pragma once

#include <cstddef>

namespace rvl {

#if defined(__SANITIZE_THREAD__)
// The thread sanitizer keeps its own copy of the call stack, of a fixed number of frames, and
// fails on recursion far shallower than any stack: its builds refuse much sooner.
inline constexpr std::size_t kRegexCallLimit = std::size_t{12} << 20;
inline constexpr std::size_t kRegexProcessBudget = 16 * kRegexCallLimit;
#else
inline constexpr std::size_t kRegexCallLimit = std::size_t{256} << 20;
inline constexpr std::size_t kRegexProcessBudget = std::size_t{512} << 20;
#endif

inline constexpr char kRegexMemoryBusy[] =
    "Other pattern matches hold the memory this one needs; try again later";

// A share of the process's budget, held until destruction. Taking it never waits: when the
// budget cannot cover `bytes`, the constructor throws std::runtime_error(kRegexMemoryBusy).
class RegexMemoryReservation {
public:
    explicit RegexMemoryReservation(std::size_t bytes);
    ~RegexMemoryReservation();
    RegexMemoryReservation(const RegexMemoryReservation&) = delete;
    RegexMemoryReservation& operator=(const RegexMemoryReservation&) = delete;

private:
    std::size_t bytes_;
};

// Bytes of the budget held at this moment.
std::size_t RegexMemoryInUse();

}  // namespace rvl
