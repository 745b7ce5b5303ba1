// Ravelin_MergeText through the substitute host with the built plug-in loaded: the scan rules,
// the per-call cache (evaluations counted with "$$" counters) and styles.
#include "merge/merge_text.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "entry/function_table.h"
#include "merge/results_map.h"
#include "sim/core/handles.h"
#include "sim/session/env.h"
#include "sim/session/session.h"
#include "tests/plugin/plugin_test_support.h"

namespace {

// The calculation Ravelin_MergeText ( "template" ), quotes inside the template escaped.
std::string mergeCalc(const std::string& templ) {
    std::string quoted;
    for (char ch : templ) {
        if (ch == '"' || ch == '\\') quoted += '\\';
        quoted += ch;
    }
    return "Ravelin_MergeText ( \"" + quoted + "\" )";
}

class MergeText : public plugin_test::LoadedPluginTest {};

// `pattern` with its "%s" replaced by `text` (which holds no quotes).
std::string format(const char* pattern, const std::string& text) {
    const std::string p = pattern;
    const std::size_t at = p.find("%s");
    return p.substr(0, at) + text + p.substr(at + 2);
}

TEST_F(MergeText, FillsTemplates) {
    const char* const kCount = "Let ( $$n = $$n + 1 ; $$n )";
    const char* const kFailing = "Let ( $$f = $$f + 1 ; Evaluate ( \"1 +\" ) )";
    const struct {
        const char* name;
        std::string templ;
        std::string merged;
        const char* evaluations;  // $$n afterwards
        const char* failures;     // $$f afterwards
    } cases[] = {
        {"no markers", "plain text, no spans", "plain text, no spans", "", ""},
        {"literal parts around spans", "a <<1 + 1>> b <<\"x\" & \"y\">> c", "a 2 b xy c", "", ""},
        {"a repeat is evaluated once", std::string("<<") + kCount + ">>/<<" + kCount + ">>", "1/1",
         "1", ""},
        {"an extra blank is another expression",
         std::string("<<") + kCount + ">>/<<" + kCount + " >>/<<" + kCount + ">>", "1/2/1", "2",
         ""},
        {"a failing expression stands for itself and is retried",
         std::string("<<") + kFailing + ">>|<<" + kFailing + ">>",
         std::string(kFailing) + "|" + kFailing, "", "2"},
        {"a syntax error", "x <<1 +>> y", "x 1 + y", "", ""},
        {"a stray >> in front leaves everything",
         std::string(">> <<1 + 1>> and <<") + kCount + ">> end",
         std::string(">> <<1 + 1>> and <<") + kCount + ">> end", "", ""},
        {"a stray >> later stops the rest", "<<1 + 1>> >> <<2 + 2>> <<3>>", "2 >> <<2 + 2>> <<3>>",
         "", ""},
        {"an unterminated <<", "x <<1 + 1>> y <<2 + 2", "x 2 y <<2 + 2", "", ""},
        {"no nesting", "<<1 <<2>> 3>>", "1 <<2 3>>", "", ""},
        {"an empty span", "a<<>>b<<>>", "ab", "", ""},
        {"markers at the edges", "<<1>><<2>>", "12", "", ""},
        {"unicode around spans", "héllo 😀 <<\"wörld\">> 😀", "héllo 😀 wörld 😀", "", ""},
        {"a non-ASCII result from the cache", "<<Upper ( \"émile\" )>> <<Upper ( \"émile\" )>>",
         "ÉMILE ÉMILE", "", ""},
        // The cache reads UTF-8 into two bytes per unit: enough for a two-byte character.
        {"a short non-ASCII result from the cache", "<<\"é\">>/<<\"é\">>", "é/é", "", ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        eval("Let ( [ $$n = \"\" ; $$f = \"\" ; $$Ravelin_LastError = 7 ] ; 1 )");
        const sim::EvalResult r = eval(mergeCalc(c.templ));
        EXPECT_EQ(r.error, 0);
        EXPECT_EQ(r.type, "Text");
        EXPECT_EQ(r.text, c.merged);
        EXPECT_EQ(eval("$$n").text, c.evaluations);
        EXPECT_EQ(eval("$$f").text, c.failures);
        EXPECT_EQ(eval("$$Ravelin_LastError").text, "7");  // left as it was
    }
}

// A letter: word and date functions, Get functions and the plug-in's own SQL inside spans.
TEST_F(MergeText, MergesALetter) {
    eval("Let ( $$name = \"Grace Brewster Hopper\" ; 1 )");
    const struct {
        std::string templ;
        std::string merged;
    } cases[] = {
        {"Dear <<LeftWords ( $$name ; 1 )>> <<RightWords ( $$name ; 1 )>>,", "Dear Grace Hopper,"},
        {"<<WordCount ( $$name )>> words, <<MiddleWords ( $$name ; 2 ; 1 )>> in the middle",
         "3 words, Brewster in the middle"},
        {"Due <<Date ( 1 ; 31 ; 2024 ) + 30>> (<<DayName ( Date ( 3 ; 1 ; 2024 ) )>>)",
         "Due 3/1/2024 (Friday)"},
        {"From <<Get ( FileName )>>: <<Upper ( \"urgent\" )>>", "From Demo: URGENT"},
        {"Total <<Ravelin_ExecuteSQL ( \"SELECT 40 + 2\" )>>.", "Total 42."},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.templ);
        EXPECT_EQ(eval(mergeCalc(c.templ)).text, c.merged);
    }
}

// Literal parts are copied range by range with their styles; a first result keeps the styles
// the host gave it, a repeat from the cache comes back plain.
TEST_F(MergeText, KeepsStylesOfLiteralPartsAndFirstResults) {
    const sim::EvalResult r = eval(
        "Ravelin_MergeText ( TextStyleAdd ( \"Dear \" ; Bold ) & \"<<TextStyleAdd ( "
        "\\\"x\\\" ; Italic )>>, \" & TextColor ( \"hi\" ; RGB ( 255 ; 0 ; 0 ) ) & "
        "\"<<TextStyleAdd ( \\\"x\\\" ; Italic )>>\" )");
    ASSERT_EQ(r.error, 0);
    ASSERT_EQ(r.text, "Dear x, hix");
    const sim::Text& text = r.value.textValue();
    const sim::CharStyle plain{};
    EXPECT_NE(text.styleAt(0), plain);  // "Dear " bold
    EXPECT_EQ(text.styleAt(0), text.styleAt(4));
    EXPECT_NE(text.styleAt(5), text.styleAt(0));  // the first "x" italic
    EXPECT_NE(text.styleAt(5), plain);
    EXPECT_EQ(text.styleAt(6), plain);     // ", "
    EXPECT_TRUE(text.styleAt(8).colorOn);  // "hi" red
    EXPECT_EQ(text.styleAt(8).color, (sim::Rgb{255, 0, 0, 255}));
    EXPECT_EQ(text.styleAt(10), plain);  // the cached "x"
}

TEST_F(MergeText, WithoutArgumentsReportsMissingParameters) {
    const sim::DataVectHandle none = sim::makeDataVect({});
    const sim::DataHandle result = sim::makeData();
    EXPECT_EQ(Ravelin_MergeText(7, env_.handleRef(), *none, *result), 0);
    EXPECT_EQ(sim::valueOf(*result).asNumber().toDouble(), -50);
    EXPECT_EQ(eval("$$Ravelin_LastError").text, "-50");
    EXPECT_EQ(eval("$$Ravelin_LastErrorMessage").text, "Not enough parameters");
}

TEST_F(MergeText, PerformMergeTextAssertsAnArgument) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const sim::DataVectHandle none = sim::makeDataVect({});
    const sim::DataHandle result = sim::makeData();
    EXPECT_DEATH(PerformMergeText(env_.handleRef(), *none, *result),
                 "dataVect.Size\\(\\) > 0.*PerformMergeText");
}

TEST_F(MergeText, ResultsMapFindsOnlyWhatWasAdded) {
    ResultsMap cache;
    const sim::TextHandle expr = sim::makeText(sim::Text(u"1 + 1"));
    const sim::TextHandle other = sim::makeText(sim::Text(u"1 + 1 "));
    const sim::TextHandle out = sim::makeText(sim::Text(u"untouched"));
    EXPECT_EQ(cache.find(*expr, *out), ResultsMap::kNotCached);
    EXPECT_EQ(sim::textOf(*out).units(), u"untouched");
    EXPECT_EQ(cache.add(*expr, *sim::makeText(sim::Text(u"2"))), 0);
    EXPECT_EQ(cache.add(*expr, *sim::makeText(sim::Text(u"3"))), 0);  // never replaced
    EXPECT_EQ(cache.find(*other, *out), ResultsMap::kNotCached);
    EXPECT_EQ(cache.find(*expr, *out), 0);
    EXPECT_EQ(sim::textOf(*out).units(), u"2");
}

// The cache matches expressions as their UTF-8 forms (as the host spells them into two bytes per
// unit) match: written alike, they are evaluated once; written differently, once each; and
// expressions the host spells alike up to where that buffer ends share one result.
TEST_F(MergeText, CacheMatchesExpressionsAsSpelled) {
    const std::string count = "Let ( $$n = $$n + 1 ; $$n )";
    const std::string wide = "\"日本語日本語日本語\"";  // 15 units with " & 1": cut after the blank
    const struct {
        const char* name;
        std::string templ;
        std::string merged;
        const char* evaluations;
    } cases[] = {
        {"written alike", "<<" + count + ">>|<<" + count + ">>", "1|1", "1"},
        {"another case", "<<" + count + ">>|<<let ( $$n = $$n + 1 ; $$n )>>", "1|2", "2"},
        {"two-byte characters alike",
         "<<Let ( $$n = $$n + 1 ; \"é\" & $$n )>>|<<Let ( $$n = $$n "
         "+ 1 ; \"é\" & $$n )>>",
         "é1|é1", "1"},
        {"two-byte characters differing",
         "<<Let ( $$n = $$n + 1 ; \"é\" & $$n )>>|<<Let ( $$n = "
         "$$n + 1 ; \"è\" & $$n )>>",
         "é1|è2", "2"},
        {"three-byte characters alike",
         "<<Let ( $$n = $$n + 1 ; \"日\" & $$n )>>|<<Let ( $$n = "
         "$$n + 1 ; \"日\" & $$n )>>",
         "日1|日1", "1"},
        // The repeat's result comes through the same buffer: 10 units hold 6 such characters.
        {"alike up to the host's cut", "<<" + wide + " & 1>>|<<" + wide + " & 2>>",
         "日本語日本語日本語1|日本語日本語", ""},
        {"different before the host's cut", "<<" + wide + " & 1>>|<<\"日本語日本語日本日\" & 2>>",
         "日本語日本語日本語1|日本語日本語日本日2", ""},
        {"a span at the very start and end", "<<" + count + ">> and <<" + count + ">>", "1 and 1",
         "1"},
        {"adjacent spans", "<<1>><<" + count + ">><<" + count + ">><<2>>", "1112", "1"},
        {"a stray >> between repeats", "<<" + count + ">> >> <<" + count + ">>",
         "1 >> <<" + count + ">>", "1"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        eval("Let ( $$n = \"\" ; 1 )");
        const sim::EvalResult r = eval(mergeCalc(c.templ));
        EXPECT_EQ(r.error, 0);
        EXPECT_EQ(r.text, c.merged);
        EXPECT_EQ(eval("$$n").text, c.evaluations);
    }
}

// Expressions holding units the host must spell (a zero ends its UTF-8) meet expressions
// spelled by their units where the two spellings are one.
TEST_F(MergeText, CacheKeysOfUnitsAndOfHostSpellingsMeet) {
    const fmx::ExtPluginType merge = session_.host().findFunction(u"Ravelin_MergeText")->function;
    const struct {
        const char* name;
        std::u16string templ;
        std::u16string merged;
    } cases[] = {
        {"a zero after a cached expression", std::u16string(u"<<1+1>> <<1+1\0x>>", 17), u"2 2"},
        {"a zero before an expression", std::u16string(u"<<1+1\0x>> <<1+1>>", 17),
         std::u16string(u"1+1\0x 2", 7)},
        {"a lone surrogate", u"<<\"" + std::u16string(1, u'\xD800') + u"\">> <<\"?\">>",
         std::u16string(1, u'\xD800') + u" ?"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const sim::DataVectHandle args = sim::makeDataVect({sim::Value::text(c.templ)});
        const sim::DataHandle result = sim::makeData();
        EXPECT_EQ(merge(7, env_.handleRef(), *args, *result), 0);
        EXPECT_EQ(sim::valueOf(*result).asText().units(), c.merged);
    }
}

// Literal text keeps its styles unit for unit, wherever it stands: around spans, between
// adjacent ones, after a stray ">>" and after an unclosed "<<". Results are plain text here.
TEST_F(MergeText, LiteralStylesAroundSpans) {
    const char* const kBold = "TextStyleAdd ( \"%s\" ; Bold )";
    const char* const kRed = "TextColor ( \"%s\" ; RGB ( 255 ; 0 ; 0 ) )";
    const auto bold = [&](const std::string& t) { return format(kBold, t); };
    const auto red = [&](const std::string& t) { return format(kRed, t); };
    const struct {
        const char* name;
        std::string templ;     // a calculation giving the styled template
        std::string expected;  // one giving the merged text with the same styles
    } cases[] = {
        {"spans at both ends", "\"<<1>>\" & " + bold("ab") + " & \"<<2>>\"",
         "\"1\" & " + bold("ab") + " & \"2\""},
        {"adjacent spans between styles", bold("a") + " & \"<<1>><<1>>\" & " + red("b"),
         bold("a") + " & \"11\" & " + red("b")},
        {"a styled span", bold("x <<1>> y") + " & " + red("z"),
         bold("x ") + " & \"1\" & " + bold(" y") + " & " + red("z")},
        {"a stray >> first", bold(">> <<1>>") + " & " + red("<<2>> c"),
         bold(">> <<1>>") + " & " + red("<<2>> c")},
        {"an unclosed <<", bold("x <<1>> y") + " & " + red(" <<2"),
         bold("x ") + " & \"1\" & " + bold(" y") + " & " + red(" <<2")},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const sim::EvalResult merged = eval("Ravelin_MergeText ( " + c.templ + " )");
        const sim::EvalResult expected = eval(c.expected);
        ASSERT_EQ(merged.error, 0);
        ASSERT_EQ(merged.text, expected.text);
        const sim::Text& got = merged.value.textValue();
        const sim::Text& want = expected.value.textValue();
        for (uint32_t i = 0; i < got.size(); ++i) {
            EXPECT_EQ(got.styleAt(i), want.styleAt(i)) << i;
        }
    }
}

}  // namespace
