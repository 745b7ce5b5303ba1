// How deep the plug-in's functions that evaluate their caller's calculations may call one another.
//
// Ravelin_MergeText and the "$" form of Ravelin_GetAsHTML evaluate calculations that may call
// them again; without a bound a calculation that calls itself would nest until the thread's stack
// runs out and take the whole server process down. Each such call holds a CalculationNesting
// for as long as it runs. Past kMaxCalculationNesting levels on one thread the call fails with
// NestingLimitError, and every call it is nested in fails with it as well when its evaluation
// returns, so that the whole chain unwinds at once instead of going on with the inner result.
#pragma once

#include <stdexcept>

#include "host/fmx.h"

namespace rvl {

// A level takes the plug-in's frames and the host's frames of one evaluation: measured with the
// substitute host, about 1.8 KB (MergeText) to 4 KB (GetAsHTML) of stack in a release build and
// 8 KB to 19 KB under the address sanitizer. 20 levels stay well inside a 512 KB thread stack
// (80 KB, 380 KB under the sanitizer), and no template needs more.
inline constexpr int kMaxCalculationNesting = 20;

class NestingLimitError : public std::runtime_error {
public:
    NestingLimitError();
};

class CalculationNesting {
public:
    // Throws NestingLimitError when the thread already runs kMaxCalculationNesting levels, or
    // when a call on this thread hit the limit and the levels around it are still unwinding
    // (so that a calculation calling the function twice does not start over at every level).
    CalculationNesting();
    ~CalculationNesting();
    CalculationNesting(const CalculationNesting&) = delete;
    CalculationNesting& operator=(const CalculationNesting&) = delete;

    // env.Evaluate, then NestingLimitError when a call nested inside the evaluation hit the
    // limit. Answers the host's error code of the evaluation.
    fmx::errcode Evaluate(const fmx::ExprEnv& env, const fmx::Text& expression,
                          fmx::Data& result) const;
};

}  // namespace rvl
