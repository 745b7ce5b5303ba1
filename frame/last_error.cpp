#include "frame/last_error.h"

#include <algorithm>
#include <string>

#include "fmlib/convert.h"

namespace rvl {

namespace {

std::string readerCalculation(const char* variable) {
    return std::string("If( IsEmpty( ") + variable + " ); \"No Error Message\"; " + variable + " )";
}

fmx::errcode readAsText(const char* variable, fmx::Data& result, const fmx::ExprEnv& env) {
    fmx::DataUniquePtr value;
    const fmx::errcode err = env.Evaluate(readerCalculation(variable), *value);
    fmlib::SetResultText(result, value->GetAsText());
    return err;
}

}  // namespace

fmx::errcode SetLastError(fmx::errcode code, std::string_view message, const fmx::ExprEnv& env) {
    const std::string calculation = "Let ( [ $$Ravelin_LastError = " + std::to_string(code) +
                                    " ; $$Ravelin_LastErrorMessage = \"" + std::string(message) +
                                    "\" ] ; \"\" )";
    fmx::DataUniquePtr scratch;
    return env.Evaluate(calculation, *scratch);
}

fmx::errcode GetLastErrorCode(fmx::Data& result, const fmx::ExprEnv& env) {
    fmx::DataUniquePtr value;
    const fmx::errcode err = env.Evaluate(readerCalculation("$$Ravelin_LastError"), *value);
    result.SetAsNumber(value->GetAsNumber(), fmx::kDTNumber);
    return err;
}

fmx::errcode GetLastErrorMessage(fmx::Data& result, const fmx::ExprEnv& env) {
    return readAsText("$$Ravelin_LastErrorMessage", result, env);
}

fmx::errcode GetLastScriptStderr(fmx::Data& result, const fmx::ExprEnv& env) {
    return readAsText("$$Ravelin_LastScriptStderr", result, env);
}

fmx::errcode ProcessSTDException(const std::exception& e, fmx::Data& result,
                                 const fmx::ExprEnv& env, bool setResultAlways) {
    const fmx::errcode code = kGenericError;
    const std::string message = e.what();
    if (code != kNoError || setResultAlways) fmlib::FMErrCode2FMData(code, result);
    return SetLastError(code, message, env);
}

fmx::errcode ProcessFatalException(fmx::Data& result, const fmx::ExprEnv& env, bool) {
    fmlib::FMErrCode2FMData(kGenericError, result);
    return SetLastError(kGenericError, "Unknown fatal error occured", env);
}

fmx::errcode FilterErrCode(fmx::errcode code) {
    if (code >= kOwnRangeFirst && code <= kOwnRangeLast) return code;
    if (std::find(std::begin(rvlErrors), std::end(rvlErrors), code) != std::end(rvlErrors)) {
        return code;
    }
    return kGenericError;
}

}  // namespace rvl
