// The answer of a registered function whose body is not written yet.
#pragma once

#include "host/fmx.h"

namespace rvl {

// Last error -4 "Not implemented yet", result the number -4; answers 0 (inside the exception
// frame).
fmx::errcode AnswerNotImplemented(const fmx::ExprEnv& env, fmx::Data& result);

}  // namespace rvl
