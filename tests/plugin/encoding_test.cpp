// Ravelin_Encode and Ravelin_Decode through the substitute host with the plug-in loaded, and the
// Base64 coder on its own for what a calculation cannot spell (zero bytes, line breaks).
#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "encoding/base64.h"
#include "entry/function_table.h"
#include "sim/core/handles.h"
#include "sim/session/env.h"
#include "sim/session/session.h"
#include "tests/plugin/plugin_test_support.h"

namespace {

class Base64 : public plugin_test::LoadedPluginTest {};

TEST_F(Base64, ConvertsThroughTheHost) {
    const struct {
        std::string calc;
        std::string text;  // the result as the shell shows it
        const char* type;
        const char* lastError;  // "" when untouched
        const char* message;
    } cases[] = {
        {R"(Ravelin_Encode ( "UTF-8 to Base64" ; "Man" ))", "TWFu", "Text", "", ""},
        {R"(Ravelin_Encode ( "UTF-8 to Base64" ; "Ma" ))", "TWE=", "Text", "", ""},
        {R"(Ravelin_Encode ( "UTF-8 to Base64" ; "M" ))", "TQ==", "Text", "", ""},
        {R"(Ravelin_Encode ( "utf-8 TO base64" ; "" ))", "", "Text", "", ""},
        {R"(Ravelin_Encode ( "UTF-8 to Base64" ; "é" ))", "w6k=", "Text", "", ""},
        {R"(Ravelin_Encode ( "UTF-8 to Base64" ; "😀" ))", "8J+YgA==", "Text", "", ""},
        {R"(Ravelin_Decode ( "Base64 to UTF-8" ; "8J+YgA==" ))", "😀", "Text", "", ""},
        {R"(Ravelin_Decode ( "BASE64 TO utf-8" ; "TQ==" ))", "M", "Text", "", ""},
        {R"(Ravelin_Decode ( "Base64 to UTF-8" ; "w6k=" ))", "é", "Text", "", ""},
        // A blank is not skipped: it reads as "A".
        {R"(Ravelin_Decode ( "Base64 to UTF-8" ; "TW E=" ))", std::string("M`\x04\0\0\0", 6),
         "Text", "", ""},
        {R"(Ravelin_Decode ( "Base64 to UTF-8" ; "====" ))", "", "Text", "", ""},
        {R"(Ravelin_Decode ( "Base64 to UTF-8" ; "" ))", "", "Text", "", ""},
        {R"(Ravelin_Encode ( "UTF-8 to Base64 " ; "Man" ))", "-50", "Number", "-50",
         "Unrecognized selector"},
        {R"(Ravelin_Decode ( "UTF-8 to Base64" ; "TWFu" ))", "-50", "Number", "-50",
         "Unrecognized selector"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.calc);
        eval(R"(Let ( [ $$Ravelin_LastError = "" ; $$Ravelin_LastErrorMessage = "" ] ; 1 ))");
        const sim::EvalResult r = eval(c.calc);
        EXPECT_EQ(r.error, 0);
        EXPECT_EQ(r.text, c.text);
        EXPECT_EQ(r.type, c.type);
        EXPECT_EQ(eval("$$Ravelin_LastError").text, c.lastError);
        EXPECT_EQ(eval("$$Ravelin_LastErrorMessage").text, c.message);
    }
}

// The host checks the argument count before the call; a direct call meets the function's own.
TEST_F(Base64, CountsItsArguments) {
    const sim::DataVectHandle one =
        sim::makeDataVect({sim::Value::text(sim::Text(u"UTF-8 to Base64"))});
    const sim::DataVectHandle three = sim::makeDataVect(
        {sim::Value::text(sim::Text(u"Base64 to UTF-8")), sim::Value::text(sim::Text(u"TWFu")),
         sim::Value::text(sim::Text(u"x"))});
    const struct {
        fmx::ExtPluginType function;
        const sim::DataVectHandle& args;
        const char* message;
    } cases[] = {
        {Ravelin_Encode, one, "Not enough parameters"},
        {Ravelin_Decode, one, "Not enough parameters"},
        {Ravelin_Encode, three, "Too many parameters"},
        {Ravelin_Decode, three, "Too many parameters"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.message);
        const sim::DataHandle result = sim::makeData();
        EXPECT_EQ(c.function(5, env_.handleRef(), *c.args, *result), 0);
        EXPECT_EQ(sim::valueOf(*result).asNumber().toDouble(), -50);
        EXPECT_EQ(eval("$$Ravelin_LastError").text, "-50");
        EXPECT_EQ(eval("$$Ravelin_LastErrorMessage").text, c.message);
    }
}

TEST(Base64Coder, EdgesOfGroupsAndPads) {
    using namespace std::string_literals;
    const struct {
        std::string bytes;
        std::string base64;
    } encodings[] = {
        {"", "AA=="},  // one group is always written
        {"\xff", "/w=="},    {"\xfb\xff", "+/8="}, {"any carnal pleas", "YW55IGNhcm5hbCBwbGVhcw=="},
        {"\0\0\0"s, "AAAA"},
    };
    for (const auto& c : encodings) {
        SCOPED_TRACE(c.base64);
        EXPECT_EQ(B64_Encode(c.bytes), c.base64);
        EXPECT_EQ(B64_Decode(c.base64), c.bytes.empty() ? "\0"s : c.bytes);
    }
    const struct {
        std::string base64;
        std::string bytes;
    } decodings[] = {
        {"TWE", "Ma\0"s},               // a missing tail is zero bits, not "="
        {"TQ", "M\0\0"s},               //
        {"A===", ""},                   // the first character is never a pad
        {"T=E=", "L"},                  // a pad inside is zero bits, and still shortens
        {"TW\rFu", "M`\x05\xb8\0\0"s},  // the line break shifts what follows
        {"TWFu\nTWFu", "Man\x01"s + "5\x85\xb8\0\0"s},
        {"-_*!", "\0\0\0"s},  // outside the alphabet: zero bits
        {"TWFu====", "Man"},  // a whole group of pads
    };
    for (const auto& c : decodings) {
        SCOPED_TRACE(c.base64);
        EXPECT_EQ(B64_Decode(c.base64), c.bytes);
    }
}

TEST(Base64Coder, RoundTripsEveryByteValueAndLength) {
    std::string bytes;
    for (int i = 0; i < 256; ++i) bytes += static_cast<char>(i);
    for (std::size_t n = 1; n <= bytes.size(); n += 37) {
        const std::string part = bytes.substr(bytes.size() - n);
        const std::string encoded = B64_Encode(part);
        EXPECT_EQ(encoded.size(), (n + 2) / 3 * 4);
        EXPECT_EQ(B64_Decode(encoded), part);
    }
}

}  // namespace
