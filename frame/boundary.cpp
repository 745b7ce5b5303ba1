#include "frame/boundary.h"

#include "frame/answers.h"

namespace rvl {

fmx::errcode AnswerNotImplemented(const fmx::ExprEnv& env, fmx::Data& result) {
    return RunInExceptionFrame(env, result,
                               [&] { AnswerNotSupported("Not implemented yet", env, result); });
}

}  // namespace rvl
