#include "frame/nesting.h"

#include <string>

namespace rvl {

namespace {

// Per thread: a server evaluates calculations of different users on different threads, and one
// user's nesting must neither count against nor stop another's.
struct ThreadNesting {
    int depth = 0;
    bool limitHit = false;  // by a call on this thread since the outermost level began
};

thread_local ThreadNesting tNesting;

}  // namespace

NestingLimitError::NestingLimitError()
    : std::runtime_error(
          "Calculations nested too deeply: Ravelin_MergeText and Ravelin_GetAsHTML "
          "may evaluate calculations that call them again at most " +
          std::to_string(kMaxCalculationNesting) + " levels deep") {}

CalculationNesting::CalculationNesting() {
    if (tNesting.limitHit || tNesting.depth >= kMaxCalculationNesting) {
        tNesting.limitHit = true;
        throw NestingLimitError();
    }
    ++tNesting.depth;
}

CalculationNesting::~CalculationNesting() {
    if (--tNesting.depth == 0) tNesting.limitHit = false;
}

fmx::errcode CalculationNesting::Evaluate(const fmx::ExprEnv& env, const fmx::Text& expression,
                                          fmx::Data& result) const {
    const fmx::errcode err = env.Evaluate(expression, result);
    if (tNesting.limitHit) throw NestingLimitError();
    return err;
}

}  // namespace rvl
