// Ravelin_RegExp_Substitute and Ravelin_RegExp_PatternCount through the substitute host with the
// plug-in loaded: the substitution's stop rules, styles and stack guard, the count's ICU rules
// and limits, and both on many threads at once.
#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <functional>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "entry/function_table.h"
#include "regex/memory_budget.h"
#include "sim/core/encoding.h"
#include "sim/core/handles.h"
#include "sim/session/env.h"
#include "sim/session/session.h"
#include "tests/plugin/plugin_test_support.h"

namespace {

class Regex : public plugin_test::LoadedPluginTest {};

// A calculation's string literal for `s`.
std::string quoted(const std::string& s) {
    std::string q = "\"";
    for (char c : s) {
        if (c == '"' || c == '\\') q += '\\';
        q += c;
    }
    return q + "\"";
}

TEST_F(Regex, SubstitutesGroups) {
    const struct {
        const char* text;
        const char* pattern;
        std::vector<std::string> replacements;
        const char* result;
    } cases[] = {
        {"abc123def", "([0-9]+)", {"X"}, "abcXdef"},
        {"a1b22", "([0-9]+)", {"X"}, "aXbX"},
        {"xaby", "(a)(b)", {"1", "2"}, "x12y"},
        {"xaby", "(a)(b)", {"1"}, "x1y"},             // the b of the match is dropped
        {"a1b2", "([0-9])", {"X", "Y"}, "aXbX"},      // the extra replacement is ignored
        {"10px 20px", "([0-9]+)px", {"N"}, "N Npx"},  // the trailing literal once, at the end
        {"hello", "(x)y", {"N"}, "yhello"},
        {"acabc", "a(b?)c", {"N"}, "cacabc"},  // an empty group 1 stops everything
        {"abc", "b", {"N"}, "abc"},            // no group
        {"ab", "x\\)y", {"N"}, "yab"},         // an escaped parenthesis ends a group too
        {"a1", "([0-9])", {"$1"}, "a$1"},      // no back-reference syntax
        {"aaa", "^(a)", {"X"}, "Xaa"},         // the anchor sees the character before
        {"aa ab", "\\b(a)", {"X"}, "Xa Xb"},   // so does the word boundary
        {"😀1😀2", "([0-9])", {"X"}, "😀X😀X"},    // UTF-16 positions
        {"Abc", "(a)", {"X"}, "Abc"},          // case-sensitive
        // An unmatched later group stands at the end of the text: the rest is copied for it.
        {"ab", "(a)(x)?", {"1", "2"}, "1b2?b"},
        // A nested group starts before the copy position: the rest of the text is copied.
        {"xaby", "((a)b)", {"1", "2"}, "x1y2y"},
        // A lookahead captures without taking a character: the substitution stops there.
        {"ba", "(?=(a))", {"X"}, "ba"},
    };
    for (const auto& c : cases) {
        std::string calc =
            "Ravelin_RegExp_Substitute ( " + quoted(c.text) + " ; " + quoted(c.pattern);
        for (const std::string& r : c.replacements) calc += " ; " + quoted(r);
        calc += " )";
        SCOPED_TRACE(calc);
        const sim::EvalResult r = eval(calc);
        EXPECT_EQ(r.error, 0);
        EXPECT_EQ(r.type, "Text");
        EXPECT_EQ(r.text, c.result);
    }
}

TEST_F(Regex, ReplacesOnlyMatchesInThePatternsStyleAndKeepsStyles) {
    const sim::EvalResult r = eval(
        "Ravelin_RegExp_Substitute ( TextStyleAdd ( \"1\" ; Bold ) & \" 2 \" & TextStyleAdd ( "
        "\"3\" ; Bold ) ; TextStyleAdd ( \"([0-9])\" ; Bold ) ; \"X\" )");
    EXPECT_EQ(r.text, "X 2 X");

    const sim::EvalResult kept = eval(
        "Ravelin_RegExp_Substitute ( TextStyleAdd ( \"ab\" ; Italic ) & \"1\" & TextColor ( "
        "\"cd\" ; RGB ( 255 ; 0 ; 0 ) ) ; \"([0-9])\" ; TextStyleAdd ( \"X\" ; Bold ) )");
    ASSERT_EQ(kept.text, "abXcd");
    const sim::Text& text = kept.value.textValue();
    const sim::CharStyle plain{};
    EXPECT_NE(text.styleAt(0), plain);  // italic
    EXPECT_NE(text.styleAt(2), plain);  // bold
    EXPECT_NE(text.styleAt(2), text.styleAt(0));
    EXPECT_TRUE(text.styleAt(3).colorOn);
    EXPECT_EQ(text.styleAt(4).color, (sim::Rgb{255, 0, 0, 255}));
}

TEST_F(Regex, ReportsBadPatternsAndMissingArguments) {
    const struct {
        std::string text;
        const char* pattern;
        const char* message;
    } bad[] = {
        {"abc", "(", "Mismatched '(' and ')' in regular expression"},
        // Backtracking that grows exponentially with the text gives up instead of hanging.
        {std::string(40, 'a'), "(a*)*b", "The pattern takes too long to match on this text."},
        // Numbers the standard library's compiler would overflow on are refused before it.
        {"aa", "(a)\\18446744073709551617",
         "A back-reference in the pattern names a group that the pattern does not have"},
        {"aa", "(a)\\2",
         "A back-reference in the pattern names a group that the pattern does not have"},
        {"aa", "a{22222222222222222222222}",
         "A repetition count in the pattern is larger than 100000"},
        {"aa", "(a){1,100001}", "A repetition count in the pattern is larger than 100000"},
        {"aa", "(a{1000}){1000}", "The pattern is too large"},
    };
    for (const auto& c : bad) {
        SCOPED_TRACE(c.pattern);
        const sim::EvalResult r = eval("Ravelin_RegExp_Substitute ( " + quoted(c.text) + " ; " +
                                       quoted(c.pattern) + " ; \"X\" )");
        EXPECT_EQ(r.type, "Number");
        EXPECT_EQ(r.text, "2400");
        EXPECT_EQ(eval("$$Ravelin_LastErrorMessage").text, c.message);
    }

    sim::Env env;
    const sim::DataVectHandle two = sim::makeDataVect(
        {sim::Value::text(sim::Text(u"abc")), sim::Value::text(sim::Text(u"(b)"))});
    const sim::DataVectHandle one = sim::makeDataVect({sim::Value::text(sim::Text(u"abc"))});
    const struct {
        fmx::ExtPluginType function;
        const sim::DataVectHandle& args;
        const char* message;
    } cases[] = {
        {Ravelin_RegExp_Substitute, two, "At least three parameters needed"},
        {Ravelin_RegExp_PatternCount, one, "At least two parameters needed"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.message);
        const sim::DataHandle result = sim::makeData();
        EXPECT_EQ(c.function(13, env.handleRef(), *c.args, *result), 0);
        EXPECT_EQ(sim::valueOf(*result).asNumber().toDouble(), -50);
        EXPECT_EQ(eval("$$Ravelin_LastErrorMessage").text, c.message);
    }
}

TEST_F(Regex, CountsMatchesAsIcuFindsThem) {
    const std::string longText(1100, 'a');
    const std::string cutPattern = "x" + std::string(1022, 'y') + "(";
    std::string accents;
    for (int i = 0; i < 600; ++i) accents += "é";
    const struct {
        std::string text;
        std::string pattern;
        std::string result;
    } cases[] = {
        {"banana", "an", "2"},
        {"banana", "ana", "1"},  // no overlaps
        {"abc", "x*", "4"},      // an empty match at every position
        {"aaa", "a*", "2"},
        {"a😀b", ".", "3"},   // a surrogate pair is one character
        {"a😀b", "x*", "4"},  // and one step after an empty match
        {"ABC", "abc", "0"},
        {"café naïve", "\\w+", "2"},
        {longText, "a", "1023"},        // the text is cut at 1023 bytes
        {accents, "é", "511"},          // on a whole character
        {cutPattern, cutPattern, "1"},  // the pattern too, before its "("
        {"abc", "(", "The value “(” is invalid."},
        {"abc", "a**", "The value “a**” is invalid."},
        {"abc", "", "The value “” is invalid."},
        {std::string(1000, 'x'), "(x+x+)+y", "The pattern takes too long to match on this text."},
    };
    eval(R"(Let ( $$Ravelin_LastError = 7 ; 1 ))");
    for (const auto& c : cases) {
        SCOPED_TRACE(c.pattern.substr(0, 20));
        const sim::EvalResult r = eval("Ravelin_RegExp_PatternCount ( " + quoted(c.text) + " ; " +
                                       quoted(c.pattern) + " )");
        EXPECT_EQ(r.error, 0);
        EXPECT_EQ(r.type, "Text");
        EXPECT_EQ(r.text, c.result);
    }
    EXPECT_EQ(eval("$$Ravelin_LastError").text, "7");  // untouched
}

// Runs `work` on a thread with a stack of `bytes`, as a server's calculation threads have.
void onSmallStack(std::size_t bytes, const std::function<void()>& work) {
    pthread_attr_t attr;
    pthread_attr_init(&attr);
    pthread_attr_setstacksize(&attr, bytes);
    pthread_t thread;
    auto run = [](void* w) -> void* {
        (*static_cast<const std::function<void()>*>(w))();
        return nullptr;
    };
    ASSERT_EQ(pthread_create(&thread, &attr, run, const_cast<std::function<void()>*>(&work)), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attr);
}

std::u16string repeated(std::u16string_view unit, std::size_t length) {
    std::u16string s;
    while (s.size() < length) s += unit;
    s.resize(length);
    return s;
}

// libstdc++'s matcher recurses per character: one match over the whole text must neither
// overflow a small caller's stack nor, beyond the limit, be tried at all.
TEST(RegexStack, LongMatchesRunOnTheirOwnStackOrAreRefused) {
    sim::SessionOptions o;
    o.pluginPath = RAVELIN_PLUGIN_PATH;
    sim::Session session(o);
#if defined(__SANITIZE_THREAD__)
    // The thread sanitizer's own call stack limits the depth (see kRegexCallLimit).
    constexpr std::size_t kLong = 100;
#elif defined(__SANITIZE_ADDRESS__)
    // Sanitizers widen the frames several times; the limit is reached sooner.
    constexpr std::size_t kLong = 20'000;
#else
    constexpr std::size_t kLong = 100'000;
#endif
    const struct {
        std::u16string text;
        std::u16string pattern;
        std::string result;
    } cases[] = {
        {repeated(u"0123456789", kLong), u"([0-9]+)", "X"},
        {repeated(u"ab", kLong), u"((a|b)*)", "X"},
        {repeated(u"ab", 1'000'000), u"((a|b)*)", "2400"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(sim::toUtf8(c.pattern) + " over " + std::to_string(c.text.size()));
        std::string result;
        onSmallStack(256 * 1024, [&] {
            sim::Env env;
            const sim::DataVectHandle args = sim::makeDataVect(
                {sim::Value::text(sim::Text(c.text)), sim::Value::text(sim::Text(c.pattern)),
                 sim::Value::text(sim::Text(u"X"))});
            const sim::DataHandle out = sim::makeData();
            Ravelin_RegExp_Substitute(13, env.handleRef(), *args, *out);
            result = sim::toUtf8(sim::valueOf(*out).asText().units());
        });
        EXPECT_EQ(result, c.result);
    }
    EXPECT_EQ(session.eval("$$Ravelin_LastErrorMessage").text,
              "The text is too long for this pattern");
}

// Calls at once share one budget: a call whose stack the rest of it cannot cover is refused, and
// every call gives back what it took.
TEST(RegexMemory, ConcurrentCallsShareOneBudget) {
    sim::SessionOptions o;
    o.pluginPath = RAVELIN_PLUGIN_PATH;
    sim::Session session(o);
    auto substitute = [](const std::u16string& text) {
        sim::Env env;
        const sim::DataVectHandle args = sim::makeDataVect(
            {sim::Value::text(sim::Text(text)), sim::Value::text(sim::Text(u"([0-9]+)")),
             sim::Value::text(sim::Text(u"X"))});
        const sim::DataHandle out = sim::makeData();
        Ravelin_RegExp_Substitute(13, env.handleRef(), *args, *out);
        return sim::toUtf8(sim::valueOf(*out).asText().units());
    };
    // Short enough for the call limit of every build, the thread sanitizer's included.
    const std::u16string digits = repeated(u"0123456789", 500);
    {
        // Another call holds all but a few bytes of the budget.
        const rvl::RegexMemoryReservation other(rvl::kRegexProcessBudget - 4096);
        EXPECT_EQ(substitute(digits), "2400");
        EXPECT_EQ(session.eval("$$Ravelin_LastErrorMessage").text, rvl::kRegexMemoryBusy);
    }
    EXPECT_EQ(substitute(digits), "X");

    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; ++t) {
        threads.emplace_back([&] {
            for (int round = 0; round < 10; ++round) {
                const std::string r = substitute(digits);
                if (r != "X" && r != "2400") ++wrong;
            }
        });
    }
    for (std::thread& t : threads) t.join();
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(rvl::RegexMemoryInUse(), 0U);
}

TEST_F(Regex, ManyThreadsSubstituteAndCountAtOnce) {
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; ++t) {
        threads.emplace_back([&, t] {
            const std::string n = std::to_string(t);
            for (int round = 0; round < 25; ++round) {
                if (eval("Ravelin_RegExp_Substitute ( \"a" + n + "b" + n +
                         "\" ; \"([0-9])\" ; \"#\" )")
                        .text != "a#b#") {
                    ++wrong;
                }
                if (eval("Ravelin_RegExp_PatternCount ( \"" + n + "x" + n + "\" ; \"" + n + "\" )")
                        .text != "2") {
                    ++wrong;
                }
            }
        });
    }
    for (std::thread& t : threads) t.join();
    EXPECT_EQ(wrong, 0);
}

}  // namespace
