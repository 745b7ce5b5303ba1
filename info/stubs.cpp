// Functions kept for solutions written for desktop hosts: this platform has no printers, special
// windows, script shortcuts or system scripts, so each only reports that (-4).
#include "frame/answers.h"
#include "info/functions.h"

namespace {

constexpr char kUnsupported[] = "iOS doesn't support this function.";

}  // namespace

void body::Ravelin_DoSystemScript(const fmx::ExprEnv& env, const rvl::Arguments&,
                                  fmx::Data& result) {
    rvl::AnswerNotSupported("Not implemented in iOS.", env, result);
}

void body::Ravelin_GetPrinterNames(const fmx::ExprEnv& env, const rvl::Arguments&,
                                   fmx::Data& result) {
    rvl::AnswerNotSupported(kUnsupported, env, result);
}

void body::Ravelin_SetDefaultPrinter(const fmx::ExprEnv& env, const rvl::Arguments&,
                                     fmx::Data& result) {
    rvl::AnswerNotSupported(kUnsupported, env, result);
}

void body::Ravelin_SetScriptShortcut(const fmx::ExprEnv& env, const rvl::Arguments&,
                                     fmx::Data& result) {
    rvl::AnswerNotSupported(kUnsupported, env, result);
}

void body::Ravelin_GetSpecialWindows(const fmx::ExprEnv& env, const rvl::Arguments&,
                                     fmx::Data& result) {
    rvl::AnswerNotSupported(kUnsupported, env, result);
}

void body::Ravelin_GetDefaultPrinter(const fmx::ExprEnv& env, const rvl::Arguments&,
                                     fmx::Data& result) {
    rvl::AnswerNotSupported(kUnsupported, env, result);
}
