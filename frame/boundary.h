// The boundary between the host and a function's body, applied by one adapter, rvl::Enter:
//
//   - the frame: with Frame::kFramed a std::exception from the body (host failures included)
//     ends as result 2400 and the last error 2400 with the exception's text, anything else as
//     2400 "Unknown fatal error occured", and the host gets what setting the last error answered;
//     Frame::kFramedAnswerZero does the same but always answers 0; with Frame::kNone a failure
//     leaves as an exception, which the host receives (owned host objects are released on the
//     way out);
//   - typed access to the arguments (rvl::Arguments).
//
// entry/function_table.cpp declares, per function, which frame applies and what it answers.
// A body has the signature
//   void-or-fmx::errcode Body(const fmx::ExprEnv& env, const rvl::Arguments& args,
//                             fmx::Data& result);
// and checks its own arguments: the host only enforces the counts the table registers.
#pragma once

#include <exception>
#include <type_traits>

#include "frame/last_error.h"
#include "host/fmx.h"

namespace rvl {

enum class Frame {
    kFramed,
    kFramedAnswerZero,
    kNone,
};

// What a successful call puts into the result; every answered error is a number.
enum class Answer {
    kText,
    kNumber,
    kTimestamp,
    kValueOwnType,  // a value keeps the type it was given
    kBySelector,    // the selector argument decides
};

// The host's arguments of one call, read by position (index 0 first). Each read is a host call
// and may fail like any other.
class Arguments {
public:
    explicit Arguments(const fmx::DataVect& vect) : vect_(vect) {}

    fmx::uint32 count() const { return vect_.Size(); }
    const fmx::Data& value(fmx::uint32 i) const { return vect_.At(i); }
    const fmx::Text& text(fmx::uint32 i) const { return vect_.AtAsText(i); }
    const fmx::FixPt& number(fmx::uint32 i) const { return vect_.AtAsNumber(i); }
    const fmx::DateTime& timestamp(fmx::uint32 i) const { return vect_.AtAsTimeStamp(i); }
    // The whole vector, for routines that read it themselves.
    const fmx::DataVect& vect() const { return vect_; }

private:
    const fmx::DataVect& vect_;
};

namespace detail {
template <class Handler>
fmx::errcode reportSafely(Handler&& handler) noexcept {
    try {
        return handler();
    } catch (...) {
        return kGenericError;
    }
}

// What the body answers; a body without an answer answers 0.
template <class Body>
fmx::errcode answerOf(Body&& body) {
    if constexpr (std::is_void_v<std::invoke_result_t<Body&>>) {
        body();
        return kNoError;
    } else {
        return static_cast<fmx::errcode>(body());
    }
}
}  // namespace detail

// The frame itself. Nothing escapes: should reporting fail as well, it answers 2400.
template <class Body>
fmx::errcode RunInExceptionFrame(const fmx::ExprEnv& env, fmx::Data& result, Body&& body) noexcept {
    try {
        return detail::answerOf(body);
    } catch (const std::exception& e) {
        return detail::reportSafely([&] { return ProcessSTDException(e, result, env, false); });
    } catch (...) {
        return detail::reportSafely([&] { return ProcessFatalException(result, env, false); });
    }
}

// The adapter: the host's function signature around `Body`, with the declared frame.
template <auto Body, Frame F>
fmx::errcode Enter(short, const fmx::ExprEnv& env, const fmx::DataVect& vect,
                   fmx::Data& result) noexcept(F != Frame::kNone) {
    const Arguments args(vect);
    const auto run = [&] { return Body(env, args, result); };
    if constexpr (F == Frame::kNone) {
        return detail::answerOf(run);
    } else {
        const fmx::errcode answer = RunInExceptionFrame(env, result, run);
        return F == Frame::kFramedAnswerZero ? kNoError : answer;
    }
}

// A registered function whose body is not written yet: -4 "Not implemented yet", inside the
// frame; answers what the frame answers (0 normally).
fmx::errcode AnswerNotImplemented(const fmx::ExprEnv& env, fmx::Data& result);

}  // namespace rvl
