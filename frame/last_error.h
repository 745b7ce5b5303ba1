// The last error lives in the calling file's calculation variables $$Ravelin_LastError and
// $$Ravelin_LastErrorMessage: written and read by evaluating calculations in the caller's
// environment, never kept inside the plug-in.
#pragma once

#include <exception>
#include <string_view>

#include "host/fmx.h"

namespace rvl {

inline constexpr fmx::errcode kNoError = 0;
inline constexpr fmx::errcode kNotSupported = -4;
inline constexpr fmx::errcode kBadParameters = -50;
inline constexpr fmx::errcode kGenericError = 2400;
inline constexpr fmx::errcode kOwnRangeFirst = 24000;
inline constexpr fmx::errcode kOwnRangeLast = 24010;

// Codes the filter lets through besides the plug-in's own range, in the order they are tried.
inline constexpr fmx::errcode rvlErrors[] = {kNoError, kNotSupported, kBadParameters};

// Sets both variables. The message goes into the calculation as it stands (no escaping): one
// holding a double quote makes the host reject the calculation, and the variables keep their
// values. Returns the host's error code of the evaluation.
fmx::errcode SetLastError(fmx::errcode code, std::string_view message, const fmx::ExprEnv& env);

// Readers: copy the variable (or "No Error Message" when it is empty) into `result` and return
// the evaluation's error code. The code reader sets a number, so its fallback is whatever number
// the host reads from that text; the other two set text with the result's own locale.
fmx::errcode GetLastErrorCode(fmx::Data& result, const fmx::ExprEnv& env);
fmx::errcode GetLastErrorMessage(fmx::Data& result, const fmx::ExprEnv& env);
fmx::errcode GetLastScriptStderr(fmx::Data& result, const fmx::ExprEnv& env);

// A caught exception: the result becomes 2400 and the last error 2400 with the exception's text.
fmx::errcode ProcessSTDException(const std::exception& e, fmx::Data& result,
                                 const fmx::ExprEnv& env, bool setResultAlways);
// Anything else that was thrown: 2400 and "Unknown fatal error occured".
fmx::errcode ProcessFatalException(fmx::Data& result, const fmx::ExprEnv& env, bool);

// Keeps 24000..24010 and the codes of rvlErrors; every other code becomes 2400.
fmx::errcode FilterErrCode(fmx::errcode code);

}  // namespace rvl
