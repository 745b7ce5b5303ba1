// Ravelin_Encode and Ravelin_Decode through the substitute host with the plug-in loaded, and the
// Base64 coder on its own for what a calculation cannot spell (zero bytes, line breaks).
#include "sim/core/encoding.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

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

// Base64 as RFC 4648 spells it, one group at a time.
std::string referenceBase64(std::string_view bytes) {
    static constexpr char kAlphabet[] =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string out;
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        const std::size_t n = std::min<std::size_t>(3, bytes.size() - i);
        unsigned group = 0;
        for (std::size_t k = 0; k < 3; ++k) {
            group = group << 8 | (k < n ? static_cast<unsigned char>(bytes[i + k]) : 0u);
        }
        for (std::size_t k = 0; k < 4; ++k)
            out += k <= n ? kAlphabet[group >> (18 - 6 * k) & 63] : '=';
    }
    return out;
}

std::u16string callFunction(fmx::ExtPluginType function, const sim::Env& env,
                            const char16_t* keyword, const std::u16string& text) {
    const sim::DataVectHandle args = sim::makeDataVect(
        {sim::Value::text(sim::Text(keyword)), sim::Value::text(sim::Text(text))});
    const sim::DataHandle result = sim::makeData();
    EXPECT_EQ(function(5, env.handleRef(), *args, *result), 0);
    return sim::valueOf(*result).asText().unitsCopy();
}

// The text is read a slice of 32,768 units at a time: every kind of character lands on each side
// of a slice's edge, and the result is the Base64 of the whole text's UTF-8 up to its first NUL
// (an unpaired surrogate's UTF-8 being U+FFFD's; a text starting with NUL gives "AA==").
TEST_F(Base64, EncodesAcrossTheEdgesOfSlices) {
    constexpr std::size_t kSlice = 32768;
    std::vector<std::u16string> texts;
    for (const std::size_t length : {std::size_t{1}, std::size_t{2}, std::size_t{3}, kSlice - 1,
                                     kSlice, kSlice + 1, 2 * kSlice + 2, 3 * kSlice + 1}) {
        texts.emplace_back(length, u'x');
    }
    const std::u16string kinds[] = {u"\u00e9",          u"\u20ac", u"\U0001F600",
                                    u"\xD83D",          u"\xDE00", std::u16string(1, u'\0'),
                                    u"\u00e9\U0001F600"};
    for (const std::size_t edge : {kSlice, 2 * kSlice}) {
        for (const std::u16string& kind : kinds) {
            for (std::size_t at = edge - 3; at <= edge + 2; ++at) {
                std::u16string text(2 * kSlice + 7, u'y');
                text.replace(at, kind.size(), kind);
                texts.push_back(text);
            }
        }
    }
    texts.push_back(std::u16string(1, u'\0') + u"abc");
    for (const std::u16string& text : texts) {
        SCOPED_TRACE(sim::toUtf8(text.substr(0, 8)) + "... of " + std::to_string(text.size()));
        const std::string utf8 = sim::toUtf8(text);
        const std::string upToNul = utf8.substr(0, utf8.find('\0'));
        const std::string expected = text.empty()      ? ""
                                     : upToNul.empty() ? "AA=="
                                                       : referenceBase64(upToNul);
        const std::u16string encoded = callFunction(Ravelin_Encode, env_, u"UTF-8 to Base64", text);
        ASSERT_EQ(sim::toUtf8(encoded), expected);
        if (upToNul.empty()) continue;
        EXPECT_EQ(callFunction(Ravelin_Decode, env_, u"Base64 to UTF-8", encoded),
                  sim::fromUtf8(upToNul));
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
    // Every length up to 40 meets the coder's two-group steps and each kind of tail.
    for (std::size_t n = 1; n <= bytes.size(); n += n < 40 ? 1 : 37) {
        const std::string part = bytes.substr(bytes.size() - n);
        const std::string encoded = B64_Encode(part);
        EXPECT_EQ(encoded, referenceBase64(part));
        EXPECT_EQ(B64_Decode(encoded), part);
    }
}

}  // namespace
