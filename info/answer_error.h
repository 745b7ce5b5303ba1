// How a function answers an error it detects itself: the last error first, then the code as
// the result (the function itself still returns 0 to the host).
#pragma once

#include "fmlib/convert.h"
#include "frame/last_error.h"

namespace rvl {

inline void AnswerError(fmx::errcode code, const char* message, const fmx::ExprEnv& env,
                        fmx::Data& result) {
    SetLastError(code, message, env);
    fmlib::FMErrCode2FMData(code, result);
}

inline void AnswerBadParameters(const char* message, const fmx::ExprEnv& env, fmx::Data& result) {
    AnswerError(kBadParameters, message, env, result);
}

}  // namespace rvl
