// Ravelin_GetAsHTML through the substitute host with the built plug-in loaded: formatting of each
// face, tags, classes and inline styles, paragraphs and their escalations, escaping, the "$"
// variable path and the merge trace. Every output also passes an HTML5 parser.
#include "html/get_as_html.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "sim/session/env.h"
#include "sim/session/session.h"
#include "tests/plugin/html_test_support.h"

namespace {

const std::string kCR = "\r";
const std::string kStyleOpen = "<style type=\"text/css\">\r";
const std::string kStyleClose = "</style>\r";

struct Case {
    const char* name;
    std::string calc;
    std::string html;
    std::string trace = "";  // what the call writes on standard output
};

class GetAsHTML : public ::testing::Test {
protected:
    GetAsHTML() {
        sim::SessionOptions o;
        o.pluginPath = RAVELIN_PLUGIN_PATH;
        session_.emplace(o);
    }

    void check(const std::vector<Case>& cases) {
        std::vector<std::string> outputs;
        for (const Case& c : cases) {
            SCOPED_TRACE(c.name);
            ::testing::internal::CaptureStdout();
            const sim::EvalResult r = session_->eval(c.calc);
            const std::string trace = ::testing::internal::GetCapturedStdout();
            EXPECT_EQ(r.error, 0);
            EXPECT_EQ(r.type, "Text");
            EXPECT_EQ(r.text, c.html);
            EXPECT_EQ(trace, c.trace);
            outputs.push_back(r.text);
        }
        html_test::expectValidHtml5(outputs);
    }

    std::optional<sim::Session> session_;
};

// Ravelin_GetAsHTML ( text ; "" ; "" ; "all" ): everything written inline.
std::string inlineOnly(const std::string& text) {
    return "Ravelin_GetAsHTML ( " + text + " ; \"\" ; \"\" ; \"all\" )";
}

std::string span(const std::string& css, const std::string& text) {
    return "<span style=\"" + css + "\">" + text + "</span>";
}

TEST_F(GetAsHTML, WritesEachFormattingAsCSS) {
    check({
        {"bold", inlineOnly("TextStyleAdd ( \"x\" ; Bold )"), span("font-weight:bold;", "x")},
        {"italic", inlineOnly("TextStyleAdd ( \"x\" ; Italic )"), span("font-style:italic;", "x")},
        {"highlight", inlineOnly("TextStyleAdd ( \"x\" ; HighlightYellow )"),
         span("background-color:#FFFF00;", "x")},
        {"underline", inlineOnly("TextStyleAdd ( \"x\" ; Underline )"),
         span("text-decoration:underline;", "x")},
        {"double underline", inlineOnly("TextStyleAdd ( \"x\" ; DoubleUnderline )"),
         span("-webkit-text-decoration-style:double;text-decoration:underline;"
              "text-decoration-style:double;",
              "x")},
        {"underline wins over double underline",
         inlineOnly("TextStyleAdd ( \"x\" ; Underline + DoubleUnderline )"),
         span("text-decoration:underline;", "x")},
        {"underline plus strikethrough",
         inlineOnly("TextStyleAdd ( \"x\" ; Underline + Strikethrough )"),
         span("text-decoration:underline line-through;", "x")},
        {"strikethrough", inlineOnly("TextStyleAdd ( \"x\" ; Strikethrough )"),
         span("text-decoration:line-through;", "x")},
        {"word underline: the space only", inlineOnly("TextStyleAdd ( \"a b\" ; WordUnderline )"),
         "a" + span("text-decoration:underline;", " ") + "b"},
        {"condense", inlineOnly("TextStyleAdd ( \"x\" ; Condense )"),
         span("letter-spacing:-2px;", "x")},
        {"extend", inlineOnly("TextStyleAdd ( \"x\" ; Extend )"), span("letter-spacing:2px;", "x")},
        {"condense wins over extend", inlineOnly("TextStyleAdd ( \"x\" ; Condense + Extend )"),
         span("letter-spacing:-2px;", "x")},
        {"superscript", inlineOnly("TextStyleAdd ( \"x\" ; Superscript )"),
         span("vertical-align:super;", "x")},
        {"superscript wins over subscript",
         inlineOnly("TextStyleAdd ( \"x\" ; Superscript + Subscript )"),
         span("vertical-align:super;", "x")},
        {"subscript", inlineOnly("TextStyleAdd ( \"x\" ; Subscript )"),
         span("vertical-align:sub;", "x")},
        {"small caps", inlineOnly("TextStyleAdd ( \"x\" ; SmallCaps )"),
         span("font-variant:small-caps;", "x")},
        {"upper case", inlineOnly("TextStyleAdd ( \"x\" ; Uppercase )"),
         span("text-transform:uppercase;", "x")},
        {"lower case", inlineOnly("TextStyleAdd ( \"x\" ; Lowercase )"),
         span("text-transform:lowercase;", "x")},
        {"title case", inlineOnly("TextStyleAdd ( \"x\" ; Titlecase )"),
         span("text-transform:capitalize;", "x")},
        {"colour in lower-case hex", inlineOnly("TextColor ( \"x\" ; RGB ( 255 ; 0 ; 16 ) )"),
         span("color:#ff0010;", "x")},
        {"font", inlineOnly("TextFont ( \"x\" ; \"Courier New\" )"),
         span("font-family:Courier New;", "x")},
        {"size", inlineOnly("TextSize ( \"x\" ; 14 )"), span("font-size:14px;", "x")},
        {"plain style", inlineOnly("TextStyleAdd ( \"x\" ; Plain )"), "x"},
        {"keys in property order",
         inlineOnly("TextSize ( TextColor ( TextStyleAdd ( \"x\" ; Italic + Bold ) ; RGB ( 0 ; 0 ; "
                    "255 ) ) ; 9 )"),
         span("color:#0000ff;font-size:9px;font-style:italic;font-weight:bold;", "x")},
    });
}

TEST_F(GetAsHTML, TagsClassesAndStyles) {
    const std::string red = "TextColor ( \"r\" ; RGB ( 255 ; 0 ; 16 ) )";
    const std::string boldItalic = "TextStyleAdd ( \"bi\" ; Bold + Italic )";
    check({
        {"the host's example",
         "Ravelin_GetAsHTML ( TextStyleAdd ( \"bold\" ; Bold ) & TextColor ( \"red\" ; RGB ( 255 ; "
         "0 ; 16 ) ) )",
         kStyleOpen + ".rvl { color:#ff0010; }\r" + kStyleClose +
             "<b>bold</b><span class=\"rvl\">red</span>"},
        {"text without styles", "Ravelin_GetAsHTML ( \"plain \\\"text\\\"\" )", "plain \"text\""},
        {"the default tag mapping",
         "Ravelin_GetAsHTML ( TextStyleAdd ( \"a\" ; Bold + Italic + Underline + Strikethrough + "
         "HighlightYellow + Superscript ) & TextStyleAdd ( \"b\" ; Subscript ) )",
         "<b><i><u><s><mark><sup>a</sup></mark></s></u></i></b><sub>b</sub>"},
        {"shared classes: prefix, then prefix1",
         "Ravelin_GetAsHTML ( " + red + " & \"x\" & " + red +
             " & TextColor ( \"b\" ; RGB ( 0 ; 0 ; 255 ) ) ; \"all\" ; \"all=cls\" )",
         kStyleOpen + ".cls { color:#ff0010; }\r.cls1 { color:#0000ff; }\r" + kStyleClose +
             "<span class=\"cls\">r</span>x<span class=\"cls\">r</span><span "
             "class=\"cls1\">b</span>"},
        {"an empty tags argument: no tags",
         "Ravelin_GetAsHTML ( TextStyleAdd ( \"b\" ; Bold ) ; \"\" )",
         kStyleOpen + ".rvl { font-weight:bold; }\r" + kStyleClose +
             "<span class=\"rvl\">b</span>"},
        {"a combination tag",
         "Ravelin_GetAsHTML ( " + boldItalic + " ; \"bold+italic=em\" ; \"\" )", "<em>bi</em>"},
        {"a combination needs every key",
         "Ravelin_GetAsHTML ( TextStyleAdd ( \"b\" ; Bold ) ; \"bold+italic=em\" ; \"\" )",
         span("font-weight:bold;", "b")},
        {"a combination class, the rest inline",
         "Ravelin_GetAsHTML ( " + boldItalic + " ; \"\" ; \"BOLD=k\" )",
         kStyleOpen + ".k { font-weight:bold; }\r" + kStyleClose +
             "<span class=\"k\" style=\"font-style:italic;\">bi</span>"},
        {"the first tag carries class and style",
         "Ravelin_GetAsHTML ( TextColor ( " + boldItalic +
             " ; RGB ( 1 ; 2 ; 3 ) ) ; \"bold=b¶italic=i\" ; \"\" )",
         "<b style=\"color:#010203;\"><i>bi</i></b>"},
        {"entries after the first all class are ignored",
         "Ravelin_GetAsHTML ( " + boldItalic + " ; \"\" ; \"italic=it¶all=a¶bold=bb\" )",
         kStyleOpen + ".a { font-weight:bold; }\r.it { font-style:italic; }\r" + kStyleClose +
             "<span class=\"it a\">bi</span>"},
        {"styles allow listed keys only",
         "Ravelin_GetAsHTML ( TextSize ( " + boldItalic + " ; 12 ) ; \"\" ; \"\" ; \"Bold¶size\" )",
         span("font-size:12px;font-weight:bold;", "bi")},
        {"an entry without = adds nothing",
         "Ravelin_GetAsHTML ( " + boldItalic + " ; \"bold\" ; \"italic\" ; \"\" )", "bi"},
        {"arguments after the fourth are ignored",
         "Ravelin_GetAsHTML ( " + boldItalic + " ; \"\" ; \"\" ; \"\" ; \"x\" )", "bi"},
        {"an unknown alignment key is no formatting",
         "Ravelin_GetAsHTML ( " + boldItalic + " ; \"right=div\" ; \"center=c\" ; \"\" )", "bi"},
    });
}

TEST_F(GetAsHTML, ParagraphsAndEscaping) {
    // Three values: right, left and full; the fourth centred.
    const std::string letter =
        "Let ( $t = FMSim_TextAlign ( TextStyleAdd ( \"one\" ; Bold ) ; \"right\" ) & ¶ & "
        "FMSim_TextAlign ( \"two\" ; \"left\" ) & ¶ & FMSim_TextAlign ( TextStyleAdd ( \"thr\" ; "
        "Italic ) & \" ee\" ; \"full\" ) & ¶ & FMSim_TextAlign ( \"four\" ; \"center\" ) ; ";
    const std::string sharedBold =
        "Let ( $t = FMSim_TextAlign ( TextStyleAdd ( \"x\" ; Bold ) & TextStyleAdd ( \"y\" ; Bold "
        "+ Italic ) ; \"right\" ) ; ";
    const std::string red = "RGB ( 255 ; 0 ; 0 )";
    const std::string sharedColour =
        "Let ( $t = FMSim_TextAlign ( TextColor ( TextStyleAdd ( "
        "\"x\" ; Bold ) ; " +
        red + " ) & TextColor ( \"y\" ; " + red + " ) ; \"center\" ) ; ";
    check({
        {"plain paragraphs follow one another", "Ravelin_GetAsHTML ( \"a¶b¶c¶\" )", "abc"},
        {"styled paragraphs keep their styles",
         "Ravelin_GetAsHTML ( TextStyleAdd ( \"a¶b\" ; Bold ) & ¶ & \"c\" )", "<b>a</b><b>b</b>c"},
        {"empty text", "Ravelin_GetAsHTML ( \"\" )", ""},
        {"values with alignment, classes", letter + "Ravelin_GetAsHTML ( \"$t\" ) )",
         kStyleOpen + ".rvl { text-align:right; }\r.rvl1 { text-align:justify; }\r" +
             ".rvl2 { text-align:center; }\r" + kStyleClose +
             "<p class=\"rvl\"><b>one</b></p>\rtwo<p class=\"rvl1\"><i>thr</i> ee</p>\r" +
             "<p class=\"rvl2\">four</p>\r"},
        {"values with alignment, inline",
         letter + "Ravelin_GetAsHTML ( \"$t\" ; \"\" ; \"\" ; \"all\" ) )",
         "<p style=\"font-weight:bold;text-align:right;\">one</p>\rtwo<p "
         "style=\"text-align:justify;\"><span style=\"font-style:italic;\">thr</span> ee</p>\r"
         "<p style=\"text-align:center;\">four</p>\r"},
        {"alignment written only where styles allow it",
         letter + "Ravelin_GetAsHTML ( \"$t\" ; \"\" ; \"\" ; \"center\" ) )",
         "<p>one</p>\rtwo<p>thr ee</p>\r<p style=\"text-align:center;\">four</p>\r",
         "Merging 2 fragments: 'thr' + ' ee' \n"},
        {"alignment tags and classes",
         letter + "Ravelin_GetAsHTML ( \"$t\" ; \"right=div¶bold=b\" ; \"full=j¶all=c\" ) )",
         kStyleOpen + ".c { font-style:italic; }\r.c1 { text-align:center; }\r" +
             ".j { text-align:justify; }\r" + kStyleClose +
             "<div><b>one</b></div>\rtwo<p class=\"j\"><span class=\"c\">thr</span> ee</p>\r" +
             "<p class=\"c1\">four</p>\r"},
        {"a shared block tag replaces p",
         sharedBold + "Ravelin_GetAsHTML ( \"$t\" ; \"bold=h1¶italic=i\" ; \"\" ) )",
         "<h1 style=\"text-align:right;\">x<i>y</i></h1>\r"},
        {"only p gives way to a block tag",
         sharedBold + "Ravelin_GetAsHTML ( \"$t\" ; \"right=div¶bold=h2\" ; \"\" ) )",
         "<div><h2>x</h2><h2 style=\"font-style:italic;\">y</h2></div>\r"},
        {"shared declarations go to the paragraph",
         sharedColour + "Ravelin_GetAsHTML ( \"$t\" ; \"\" ; \"bold=bc\" ) )",
         kStyleOpen + ".bc { font-weight:bold; }\r" + kStyleClose +
             "<p style=\"color:#ff0000;text-align:center;\"><span class=\"bc\">x</span>y</p>\r"},
        {"shared classes go to the paragraph",
         sharedColour + "Ravelin_GetAsHTML ( \"$t\" ; \"bold=b\" ; \"all=c\" ) )",
         kStyleOpen + ".c { color:#ff0000; }\r.c1 { text-align:center; }\r" + kStyleClose +
             "<p class=\"c1 c\"><b>x</b>y</p>\r"},
        {"values after a line feed, U+2028 and U+2029 keep their own alignment",
         "Let ( $t = FMSim_TextAlign ( \"one\" ; \"right\" ) & Char ( 10 ) & \"two\" & Char ( "
         "8232 ) & FMSim_TextAlign ( \"x\" ; \"center\" ) & Char ( 8233 ) & \"y\" ; "
         "Ravelin_GetAsHTML ( \"$t\" ; \"\" ; \"\" ; \"all\" ) )",
         "<p style=\"text-align:right;\">one</p>\rtwo<p style=\"text-align:center;\">x</p>\ry"},
        // The host's GetAsCSS of this list does not read as one "<br>" per return: the values
        // are then asked for one by one, with the same result.
        {"a font name the list's GetAsCSS cannot be read with",
         "Let ( $t = FMSim_TextAlign ( TextFont ( \"x\" ; \"A\\\"><br>\" ) & ¶ & \"y\" ; "
         "\"center\" ) ; Ravelin_GetAsHTML ( \"$t\" ; \"\" ; \"\" ; \"all\" ) )",
         "<p style=\"font-family:'A\\22 \\3e \\3c br\\3e ';text-align:center;\">x</p>\r"
         "<p style=\"text-align:center;\">y</p>\r"},
        {"a name not holding values is text", "Ravelin_GetAsHTML ( \"$unset\" )", "$unset"},
        {"not a variable name", "Ravelin_GetAsHTML ( \"$ & <\" )", "$ &amp; &lt;"},
        {"escaping",
         "Ravelin_GetAsHTML ( \"a<b>&c'\\\"\" & Char ( 10 ) & \"d\" & Char ( 8232 ) & \"e\" & "
         "Char ( 160 ) & \"f\" )",
         "a&lt;b&gt;&amp;c'\"<br/>\rd<br/>\re&nbsp;f"},
    });
}

// The escaping scan goes several units a step: each character to escape is found at every
// position of a step and of the last, overlapping one, and nothing past the text's end counts.
TEST(GetAsHTMLEscaping, FindsEveryCharacterWhereverAStepPutsIt) {
    const std::pair<char16_t, std::u16string> escaped[] = {
        {u'<', u"&lt;"},     {u'>', u"&gt;"},         {u'&', u"&amp;"},
        {u'\n', u"<br/>\r"}, {u'\u2028', u"<br/>\r"}, {u'\u00A0', u"&nbsp;"},
    };
    for (size_t n = 1; n <= 24; ++n) {
        for (size_t p = 0; p < n; ++p) {
            for (const auto& [c, entity] : escaped) {
                std::u16string text(n, u'a');
                text[p] = c;
                text += u"<&";  // outside the view
                std::u16string out;
                rvl::html::addEntitiesAndFixEndlines(std::u16string_view(text).substr(0, n), out);
                EXPECT_EQ(out, std::u16string(p, u'a') + entity + std::u16string(n - p - 1, u'a'))
                    << n << " " << p << " " << static_cast<int>(c);
            }
        }
    }
}

TEST_F(GetAsHTML, MergesNeighboursOfEqualAppearance) {
    check({
        {"equal CSS from different bits stays one fragment",
         "Ravelin_GetAsHTML ( TextStyleAdd ( \"a\" ; Underline ) & TextStyleAdd ( \" \" ; "
         "WordUnderline ) & \"b\" )",
         "<u>a </u>b"},
        {"unstyled neighbours are one fragment",
         "Ravelin_GetAsHTML ( TextStyleAdd ( \"a\" ; Plain ) & \"b\" )", "ab"},
        {"each join writes a trace line",
         "Ravelin_GetAsHTML ( TextStyleAdd ( \"a\" ; Bold ) & TextStyleAdd ( \"bé\" ; Bold + "
         "Italic ) & TextStyleAdd ( \"c\" ; Bold ) ; \"\" ; \"\" ; \"bold\" )",
         span("font-weight:bold;", "abéc"),
         // The trace converts character by character, into two bytes per unit: "é" fits.
         "Merging 2 fragments: 'a' + 'bé' \nMerging 2 fragments: 'abé' + 'c' \n"},
        {"joined by tag",
         "Ravelin_GetAsHTML ( TextStyleAdd ( \"a\" ; Bold ) & TextStyleAdd ( \"b\" "
         "; Bold + Italic ) ; \"bold=b\" ; \"\" ; \"\" )",
         "<b>ab</b>", "Merging 2 fragments: 'a' + 'b' \n"},
    });
}

// One call's trace stays small however long the text: a fragment's text is cut after 64 units
// with its length named, and after 1000 lines the joins are only counted.
TEST_F(GetAsHTML, TraceOfALongMergeStaysSmall) {
    // 65,536 letters, red and blue in turn: with no styles allowed all of them are one fragment.
    const std::string calc =
        "Let ( $t = While ( [ i = 1 ; t = TextColor ( \"a\" ; RGB ( 255 ; 0 ; 0 ) ) & TextColor "
        "( \"b\" ; RGB ( 0 ; 0 ; 255 ) ) ] ; i < 16 ; [ t = t & t ; i = i + 1 ] ; t ) ; "
        "Length ( Ravelin_GetAsHTML ( $t ; \"\" ; \"\" ; \"\" ) ) )";
    ::testing::internal::CaptureStdout();
    const sim::EvalResult r = session_->eval(calc);
    const std::string trace = ::testing::internal::GetCapturedStdout();
    EXPECT_EQ(r.text, "65536");
    EXPECT_LT(trace.size(), size_t{1} << 20);
    std::string ab;
    for (int i = 0; i < 32; ++i) ab += "ab";
    EXPECT_NE(trace.find("Merging 2 fragments: 'a' + 'b' \n"), std::string::npos);
    EXPECT_NE(trace.find("Merging 2 fragments: '" + ab + "... (1000 characters)' + 'a' \n"),
              std::string::npos);
    EXPECT_TRUE(trace.ends_with("Merging fragments: 64535 further joins not traced \n"));
    EXPECT_EQ(std::count(trace.begin(), trace.end(), '\n'), 1001);
}

// Font names reach the browser as names. Ordinary ones are written as they are; any other is
// quoted and escaped so that it cannot end the declaration, the style element or the attribute.
TEST_F(GetAsHTML, FontNamesCannotEndTheirContext) {
    const char* const ordinary[] = {"Arial", "Times New Roman", "Helvetica Neue",
                                    "DejaVu Sans-Bold", "Noto_Sans 2.0"};
    std::vector<Case> cases;
    for (const char* name : ordinary) {
        const std::string font = std::string("TextFont ( \"x\" ; \"") + name + "\" )";
        cases.push_back(
            {name, inlineOnly(font), span(std::string("font-family:") + name + ";", "x")});
        cases.push_back({name, "Ravelin_GetAsHTML ( " + font + " )",
                         kStyleOpen + ".rvl { font-family:" + name + "; }\r" + kStyleClose +
                             "<span class=\"rvl\">x</span>"});
    }
    check(cases);

    // The name as a calculation, and as the host holds it.
    const std::pair<std::string, std::string> hostile[] = {
        {R"~("Arial; } </style><script>alert(1)</script>")~",
         "Arial; } </style><script>alert(1)</script>"},
        {R"~("A\"><script>alert(1)</script>")~", "A\"><script>alert(1)</script>"},
        {R"~("A'; color:red; x:'")~", "A'; color:red; x:'"},
        {R"~("A\\'} p { color:red")~", "A\\'} p { color:red"},
        {R"~("x{}.y{color:red}")~", "x{}.y{color:red}"},
        {R"~("A</span><img src=x onerror=alert(1)>")~", "A</span><img src=x onerror=alert(1)>"},
        {R"~("Fish &amp; Chips")~", "Fish &amp; Chips"},
        {R"~("Tab" & Char ( 9 ) & "Line" & Char ( 10 ) & "End")~", "Tab\tLine\nEnd"},
        {R"~("/* x */ 'y'")~", "/* x */ 'y'"},
    };
    std::vector<std::pair<std::string, std::string>> outputs;
    for (const auto& [calc, name] : hostile) {
        SCOPED_TRACE(name);
        const std::string font = "TextFont ( \"x\" ; " + calc + " )";
        for (const std::string& form : {"Ravelin_GetAsHTML ( " + font + " )", inlineOnly(font)}) {
            const sim::EvalResult r = session_->eval(form);
            EXPECT_EQ(r.type, "Text");
            EXPECT_EQ(r.text.find("<script"), std::string::npos) << r.text;
            outputs.emplace_back(r.text, name);
        }
    }
    html_test::expectFontFamilies(outputs);
}

// Cut points where the styles change: runs of one unit, a run at the very end, a style change
// between the halves of a surrogate pair, neighbouring runs whose styles differ but give the same
// CSS, and runs that go on over returns and changes of paragraph alignment.
TEST_F(GetAsHTML, CutsWhereTheStylesChange) {
    check({
        {"runs of one unit, classes",
         "Ravelin_GetAsHTML ( TextColor ( \"a\" ; RGB ( 255 ; 0 ; 0 ) ) & TextColor ( \"b\" ; RGB "
         "( 0 ; 0 ; 255 ) ) & TextColor ( \"c\" ; RGB ( 255 ; 0 ; 0 ) ) & TextStyleAdd ( \"d\" ; "
         "Bold ) & \"e\" & TextStyleAdd ( \"f\" ; Italic ) )",
         "<style type=\"text/css\">\r.rvl { color:#ff0000; }\r.rvl1 { color:#0000ff; "
         "}\r</style>\r<span class=\"rvl\">a</span><span class=\"rvl1\">b</span><span "
         "class=\"rvl\">c</span><b>d</b>e<i>f</i>"},
        {"runs of one unit, tags only",
         "Ravelin_GetAsHTML ( TextStyleAdd ( TextColor ( \"a\" ; RGB ( 255 ; 0 ; 0 ) ) ; Bold ) & "
         "TextStyleAdd ( TextColor ( \"b\" ; RGB ( 0 ; 0 ; 255 ) ) ; Bold ) & TextStyleAdd ( \"c\" "
         "; Bold ) & \"d\" & TextColor ( \"e\" ; RGB ( 1 ; 2 ; 3 ) ) & TextSize ( \"f\" ; 20 ) ; "
         "\"all\" ; \"\" ; \"\" )",
         "<b>abc</b>def",
         "Merging 2 fragments: 'a' + 'b' \nMerging 2 fragments: 'ab' + 'c' \nMerging 2 fragments: "
         "'d' + 'e' \nMerging 2 fragments: 'de' + 'f' \n"},
        {"a run of one unit at the very end",
         "Ravelin_GetAsHTML ( \"abc\" & TextColor ( \"d\" ; RGB ( 1 ; 2 ; 3 ) ) ; \"\" ; \"\" ; "
         "\"all\" )",
         "abc<span style=\"color:#010203;\">d</span>"},
        {"a run at the end joined by merging",
         "Ravelin_GetAsHTML ( TextStyleAdd ( \"ab\" ; Bold ) & TextStyleAdd ( TextColor ( \"c\" ; "
         "RGB ( 9 ; 9 ; 9 ) ) ; Bold ) ; \"all\" ; \"\" ; \"\" )",
         "<b>abc</b>", "Merging 2 fragments: 'ab' + 'c' \n"},
        {"a run at the end after a return",
         "Ravelin_GetAsHTML ( TextStyleAdd ( \"ab\" ; Bold ) & ¶ & TextFont ( \"c\" ; \"Georgia\" "
         ") )",
         "<style type=\"text/css\">\r.rvl { font-family:Georgia; }\r</style>\r<b>ab</b><span "
         "class=\"rvl\">c</span>"},
        {"a style change inside a surrogate pair",
         "Let ( e = \"😀\" ; Ravelin_GetAsHTML ( \"x\" & TextColor ( Left ( e ; 1 ) ; RGB ( 255 ; 0 "
         "; 0 ) ) & "
         "Right ( e ; 1 ) & \"y\" ; \"\" ; \"\" ; \"all\" ) )",
         "x<span style=\"color:#ff0000;\">\uFFFD</span>\uFFFDy"},
        {"a surrogate pair split by a joined run",
         "Let ( e = \"😀\" ; Ravelin_GetAsHTML ( TextStyleAdd ( \"a\" & Left ( e ; 1 ) ; Bold ) & "
         "TextStyleAdd ( "
         "TextColor ( Right ( e ; 1 ) & \"b\" ; RGB ( 0 ; 128 ; 0 ) ) ; Bold ) ; \"all\" ; \"\" ; "
         "\"\" ) )",
         "<b>a😀b</b>", "Merging 2 fragments: 'a' + 'b' \n"},
        {"underline and word underline on a space",
         "Ravelin_GetAsHTML ( TextStyleAdd ( \"a\" ; Underline ) & TextStyleAdd ( \" \" ; "
         "WordUnderline ) & TextStyleAdd ( \"b c\" ; WordUnderline ) & \"d\" ; \"\" ; \"\" ; "
         "\"all\" )",
         "<span style=\"text-decoration:underline;\">a </span>b<span "
         "style=\"text-decoration:underline;\"> </span>cd"},
        {"word underline next to plain bold",
         "Ravelin_GetAsHTML ( TextStyleAdd ( \"x\" ; Bold ) & TextStyleAdd ( \"y z\" ; Bold + "
         "WordUnderline ) & TextStyleAdd ( \"w\" ; Bold ) )",
         "<b>xy</b><b><u> </u></b><b>zw</b>"},
        {"plain face next to no style",
         "Ravelin_GetAsHTML ( TextStyleAdd ( \"ab\" ; Plain ) & \"cd\" & TextStyleAdd ( "
         "TextStyleRemove ( TextStyleAdd ( \"ef\" ; Bold ) ; Bold ) ; Italic ) )",
         "abcd<i>ef</i>"},
        {"a style removed again",
         "Ravelin_GetAsHTML ( TextStyleRemove ( TextStyleAdd ( \"ab\" ; Italic ) ; Italic ) & "
         "\"cd\" & TextColor ( \"e\" ; RGB ( 0 ; 0 ; 0 ) ) ; \"\" ; \"\" ; \"all\" )",
         "abcd<span style=\"color:#000000;\">e</span>"},
        {"one run over two paragraphs of other alignments",
         "Let ( $t = TextStyleAdd ( FMSim_TextAlign ( \"one\" ; \"right\" ) & ¶ & FMSim_TextAlign "
         "( \"two\" ; \"center\" ) & ¶ & \"three\" ; Bold ) ; Ravelin_GetAsHTML ( \"$t\" ) )",
         "<style type=\"text/css\">\r.rvl { text-align:right; }\r.rvl1 { text-align:center; "
         "}\r</style>\r<p class=\"rvl\"><b>one</b></p>\r<p "
         "class=\"rvl1\"><b>two</b></p>\r<b>three</b>"},
        {"one run over two paragraphs, inline",
         "Let ( $t = TextColor ( FMSim_TextAlign ( \"one\" ; \"full\" ) & ¶ & FMSim_TextAlign ( "
         "\"two\" ; \"right\" ) ; RGB ( 0 ; 0 ; 255 ) ) ; Ravelin_GetAsHTML ( "
         "\"$t\" ; \"\" ; \"\" ; \"all\" ) )",
         "<p style=\"color:#0000ff;text-align:justify;\">one</p>\r<p "
         "style=\"color:#0000ff;text-align:right;\">two</p>\r"},
        {"one run over returns of a plain source",
         "Ravelin_GetAsHTML ( TextColor ( \"ab¶cd\" ; RGB ( 255 ; 0 ; 0 ) ) & \"¶\" & TextColor ( "
         "\"e\" ; RGB ( 255 ; 0 ; 0 ) ) )",
         "<style type=\"text/css\">\r.rvl { color:#ff0000; }\r</style>\r<span "
         "class=\"rvl\">ab</span><span class=\"rvl\">cd</span><span class=\"rvl\">e</span>"},
        {"joins across paragraphs stay apart",
         "Ravelin_GetAsHTML ( TextStyleAdd ( \"a\" ; Bold ) & TextStyleAdd ( TextColor ( \"b¶c\" ; "
         "RGB ( 1 ; 1 ; 1 ) ) ; Bold ) & TextStyleAdd ( \"d\" ; Bold ) ; \"all\" ; \"\" ; "
         "\"\" )",
         "<b>ab</b><b>cd</b>",
         "Merging 2 fragments: 'a' + 'b' \nMerging 2 fragments: 'c' + 'd' \n"},
    });
}

// Thousands of fragments joined across the batches they are made in: every join is counted,
// the first thousand traced.
TEST_F(GetAsHTML, JoinsManyFragmentsAcrossBatches) {
    ::testing::internal::CaptureStdout();
    const sim::EvalResult r = session_->eval(
        "Let ( [ p = TextStyleAdd ( \"a\" ; Bold ) & TextStyleAdd ( TextColor ( \"b\" ; RGB ( 1 ; "
        "1 "
        "; 1 ) ) ; Bold ) & TextStyleAdd ( \"c\" ; Italic ) ; t = While ( [ s = p ; i = 0 ] ; i < "
        "11 ; [ s = s & s ; i = i + 1 ] ; s ) ] ; Ravelin_GetAsHTML ( t ; \"all\" ; \"\" ; \"\" ) "
        ")");
    const std::string trace = ::testing::internal::GetCapturedStdout();
    std::string html;
    std::string lines;
    for (int i = 0; i < 2048; ++i) html += "<b>ab</b><i>c</i>";
    for (int i = 0; i < 1000; ++i) lines += "Merging 2 fragments: 'a' + 'b' \n";
    EXPECT_EQ(r.text, html);
    EXPECT_EQ(trace, lines + "Merging fragments: 1048 further joins not traced \n");
}

// A server converts on many threads at once, each with its own variables; the generated classes
// of one call never reach another.
TEST_F(GetAsHTML, ConvertsOnManyThreadsAtOnce) {
    constexpr int kThreads = 6;
    constexpr int kRounds = 40;
    auto letter = [](int t) {
        return "Let ( $t = FMSim_TextAlign ( TextColor ( \"thread" + std::to_string(t) +
               "\" ; RGB ( " + std::to_string(t) +
               " ; 0 ; 0 ) ) ; \"center\" ) ; Ravelin_GetAsHTML "
               "( \"$t\" ) )";
    };
    auto expected = [](int t) {
        return kStyleOpen + ".rvl { color:#0" + std::to_string(t) +
               "0000; }\r.rvl1 { text-align:center; }\r" + kStyleClose +
               "<p class=\"rvl1 rvl\">thread" + std::to_string(t) + "</p>\r";
    };
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            sim::Env env;
            env.locals = std::make_shared<sim::Variables>();
            for (int round = 0; round < kRounds; ++round) {
                if (session_->eval(letter(t), env).text != expected(t)) ++wrong;
            }
        });
    }
    for (std::thread& t : threads) t.join();
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(session_->eval(letter(3)).text, expected(3));
}

TEST_F(GetAsHTML, WithoutArgumentsReportsTheMissingInput) {
    const sim::EvalResult r = session_->eval("Ravelin_GetAsHTML");
    EXPECT_EQ(r.type, "Number");
    EXPECT_EQ(r.text, "-50");
    EXPECT_EQ(session_->eval("$$Ravelin_LastError").text, "-50");
    EXPECT_EQ(session_->eval("$$Ravelin_LastErrorMessage").text, "Input parameter is missing");
}

}  // namespace
