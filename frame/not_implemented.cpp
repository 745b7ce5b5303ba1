#include "frame/not_implemented.h"

#include "fmlib/convert.h"
#include "frame/exception_frame.h"

namespace rvl {

fmx::errcode AnswerNotImplemented(const fmx::ExprEnv& env, fmx::Data& result) {
    return RunInExceptionFrame(env, result, [&] {
        SetLastError(kNotSupported, "Not implemented yet", env);
        fmlib::FMErrCode2FMData(kNotSupported, result);
    });
}

}  // namespace rvl
