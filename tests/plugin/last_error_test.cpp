// The last error kept in the calling file's variables, the error filter and the exception frame.
#include "frame/last_error.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "frame/boundary.h"
#include "plugin_test_support.h"

namespace {

using plugin_test::HostTest;

class LastError : public HostTest {};

TEST_F(LastError, RoundTripThroughTheCallersVariables) {
    EXPECT_EQ(rvl::SetLastError(-4, "Not implemented yet", env()), 0);
    EXPECT_EQ(variable("$$Ravelin_LastError"), "-4");
    EXPECT_EQ(variable("$$Ravelin_LastErrorMessage"), "Not implemented yet");

    fmx::DataUniquePtr code, message;
    EXPECT_EQ(rvl::GetLastErrorCode(*code, env()), 0);
    EXPECT_EQ(sim::valueOf(*code).type(), sim::Type::Number);
    EXPECT_EQ(sim::valueOf(*code).asNumber().toDouble(), -4);
    EXPECT_EQ(rvl::GetLastErrorMessage(*message, env()), 0);
    EXPECT_EQ(sim::valueOf(*message).asText().units(), u"Not implemented yet");
}

TEST_F(LastError, ReadersFallBackWhenNothingIsSet) {
    fmx::DataUniquePtr code, message, stderrText;
    EXPECT_EQ(rvl::GetLastErrorCode(*code, env()), 0);
    EXPECT_EQ(rvl::GetLastErrorMessage(*message, env()), 0);
    EXPECT_EQ(rvl::GetLastScriptStderr(*stderrText, env()), 0);
    // The code reader takes the number of the fallback text, which has no digits.
    EXPECT_EQ(sim::valueOf(*code).type(), sim::Type::Number);
    EXPECT_TRUE(sim::valueOf(*code).asNumber().empty);
    EXPECT_EQ(sim::valueOf(*message).asText().units(), u"No Error Message");
    EXPECT_EQ(sim::valueOf(*stderrText).asText().units(), u"No Error Message");

    eval("Let ( $$Ravelin_LastScriptStderr = \"line 1: boom\" ; 0 )");
    EXPECT_EQ(rvl::GetLastScriptStderr(*stderrText, env()), 0);
    EXPECT_EQ(sim::valueOf(*stderrText).asText().units(), u"line 1: boom");
}

TEST_F(LastError, UnescapedQuoteIsRejectedByTheHost) {
    ASSERT_EQ(rvl::SetLastError(24001, "first", env()), 0);
    EXPECT_NE(rvl::SetLastError(-50, "say \"hi\"", env()), 0);
    EXPECT_EQ(variable("$$Ravelin_LastError"), "24001");
    EXPECT_EQ(variable("$$Ravelin_LastErrorMessage"), "first");
}

TEST(FilterErrCode, KeepsOwnRangeAndKnownCodes) {
    const struct {
        fmx::errcode in, out;
    } cases[] = {{24000, 24000}, {24010, 24010}, {0, 0},        {-4, -4},
                 {-50, -50},     {24011, 2400},  {23999, 2400}, {1, 2400},
                 {-1, 2400},     {2400, 2400},   {-51, 2400},   {100, 2400}};
    for (const auto& c : cases) EXPECT_EQ(rvl::FilterErrCode(c.in), c.out) << c.in;
}

class ExceptionFrame : public HostTest {};

TEST_F(ExceptionFrame, HostFailuresBecome2400AndTheLastError) {
    const struct {
        int code;
        const char* message;
    } cases[] = {{1, "std::bad_alloc"}, {2, "std::exception"}};
    for (const auto& c : cases) {
        fmx::DataUniquePtr result;
        bool finished = false;
        sim::faults::failNthCall(1, c.code);
        const fmx::errcode answer = rvl::RunInExceptionFrame(env(), *result, [&] {
            fmx::TextUniquePtr text;  // the failing host call
            finished = true;
        });
        EXPECT_FALSE(finished);
        EXPECT_EQ(answer, 0) << c.code;
        EXPECT_EQ(sim::valueOf(*result).type(), sim::Type::Number);
        EXPECT_EQ(sim::valueOf(*result).asNumber().toDouble(), 2400);
        EXPECT_EQ(variable("$$Ravelin_LastError"), "2400");
        EXPECT_EQ(variable("$$Ravelin_LastErrorMessage"), c.message);
    }
}

TEST_F(ExceptionFrame, OtherThrowsAndBodyAnswers) {
    fmx::DataUniquePtr result;
    EXPECT_EQ(rvl::RunInExceptionFrame(env(), *result, [] { throw 7; }), 0);
    EXPECT_EQ(sim::valueOf(*result).asNumber().toDouble(), 2400);
    EXPECT_EQ(variable("$$Ravelin_LastErrorMessage"), "Unknown fatal error occured");

    EXPECT_EQ(
        rvl::RunInExceptionFrame(env(), *result, [] { throw std::runtime_error("disk full"); }), 0);
    EXPECT_EQ(variable("$$Ravelin_LastErrorMessage"), "disk full");

    // What the body answers goes to the host as it is.
    EXPECT_EQ(rvl::RunInExceptionFrame(env(), *result, [] { return fmx::errcode{-1001}; }), -1001);
}

TEST_F(ExceptionFrame, NothingEscapesWhenReportingFailsToo) {
    fmx::DataUniquePtr result;
    sim::faults::failFunction("FM_ExprEnv_Evaluate", 2);
    EXPECT_EQ(rvl::RunInExceptionFrame(env(), *result, [] { throw std::runtime_error("x"); }),
              2400);
}

}  // namespace
