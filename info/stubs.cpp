// Functions kept for solutions written for desktop hosts: this platform has no printers, special
// windows, script shortcuts or system scripts, so each only reports that (-4).
#include "frame/answers.h"
#include "frame/exception_frame.h"
#include "info/functions.h"

namespace {

constexpr char kUnsupported[] = "iOS doesn't support this function.";

fmx::errcode answerNotSupported(const char* message, const fmx::ExprEnv& env, fmx::Data& result) {
    return rvl::RunInExceptionFrame(env, result,
                                    [&] { rvl::AnswerNotSupported(message, env, result); });
}

}  // namespace

fmx::errcode Ravelin_DoSystemScript(short, const fmx::ExprEnv& env, const fmx::DataVect&,
                                    fmx::Data& result) {
    return answerNotSupported("Not implemented in iOS.", env, result);
}

fmx::errcode Ravelin_GetPrinterNames(short, const fmx::ExprEnv& env, const fmx::DataVect&,
                                     fmx::Data& result) {
    return answerNotSupported(kUnsupported, env, result);
}

fmx::errcode Ravelin_SetDefaultPrinter(short, const fmx::ExprEnv& env, const fmx::DataVect&,
                                       fmx::Data& result) {
    return answerNotSupported(kUnsupported, env, result);
}

fmx::errcode Ravelin_SetScriptShortcut(short, const fmx::ExprEnv& env, const fmx::DataVect&,
                                       fmx::Data& result) {
    return answerNotSupported(kUnsupported, env, result);
}

fmx::errcode Ravelin_GetSpecialWindows(short, const fmx::ExprEnv& env, const fmx::DataVect&,
                                       fmx::Data& result) {
    return answerNotSupported(kUnsupported, env, result);
}

fmx::errcode Ravelin_GetDefaultPrinter(short, const fmx::ExprEnv& env, const fmx::DataVect&,
                                       fmx::Data& result) {
    return answerNotSupported(kUnsupported, env, result);
}
