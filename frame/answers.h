// How a function answers an error it finds itself: the last error first, then the code as its
// result. The function still returns 0 to the host.
#pragma once

#include <string_view>

#include "host/fmx.h"

namespace rvl {

void AnswerError(fmx::errcode code, std::string_view message, const fmx::ExprEnv& env,
                 fmx::Data& result);

// -50: missing, surplus or unknown parameters ("Not enough parameters", "Unrecognized selector").
void AnswerBadParameters(std::string_view message, const fmx::ExprEnv& env, fmx::Data& result);

// -4: what this platform cannot do.
void AnswerNotSupported(std::string_view message, const fmx::ExprEnv& env, fmx::Data& result);

}  // namespace rvl
