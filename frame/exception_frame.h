// The one exception frame around an external function's body. Usage:
//
//   fmx::errcode Ravelin_X(short, const fmx::ExprEnv& env, const fmx::DataVect& args,
//                          fmx::Data& result) {
//       return rvl::RunInExceptionFrame(env, result, [&] {
//           ...                    // may throw; host failures arrive as exceptions
//           return fmx::errcode{0};  // or return nothing: the body then answers 0
//       });
//   }
//
// A std::exception (host failures included) ends as result 2400 and the last error 2400 with
// the exception's text; anything else as 2400 "Unknown fatal error occured". The frame then
// answers what setting the last error answered. Nothing escapes: should reporting fail as
// well, the frame answers 2400.
#pragma once

#include <exception>
#include <type_traits>
#include <utility>

#include "frame/last_error.h"

namespace rvl {

namespace detail {
template <class Handler>
fmx::errcode reportSafely(Handler&& handler) noexcept {
    try {
        return handler();
    } catch (...) {
        return kGenericError;
    }
}
}  // namespace detail

template <class Body>
fmx::errcode RunInExceptionFrame(const fmx::ExprEnv& env, fmx::Data& result, Body&& body) noexcept {
    try {
        if constexpr (std::is_void_v<std::invoke_result_t<Body&>>) {
            body();
            return kNoError;
        } else {
            return static_cast<fmx::errcode>(body());
        }
    } catch (const std::exception& e) {
        return detail::reportSafely([&] { return ProcessSTDException(e, result, env, false); });
    } catch (...) {
        return detail::reportSafely([&] { return ProcessFatalException(result, env, false); });
    }
}

}  // namespace rvl
