#include "frame/answers.h"

#include "fmlib/convert.h"
#include "frame/last_error.h"

namespace rvl {

void AnswerError(fmx::errcode code, std::string_view message, const fmx::ExprEnv& env,
                 fmx::Data& result) {
    SetLastError(code, message, env);
    fmlib::FMErrCode2FMData(code, result);
}

void AnswerBadParameters(std::string_view message, const fmx::ExprEnv& env, fmx::Data& result) {
    AnswerError(kBadParameters, message, env, result);
}

void AnswerNotSupported(std::string_view message, const fmx::ExprEnv& env, fmx::Data& result) {
    AnswerError(kNotSupported, message, env, result);
}

}  // namespace rvl
