#include <gtest/gtest.h>

#include "sim/session/json.h"

namespace {

TEST(SessionJson, QuoteEscapesWhatJsonNeedsAndKeepsTheRest) {
    struct Case {
        std::string in, out;
    };
    const Case cases[] = {
        {"plain", "\"plain\""},
        {"a\"b\\c", "\"a\\\"b\\\\c\""},
        {"one\rtwo\nthree\tfour", "\"one\\rtwo\\nthree\\tfour\""},
        {std::string("nul\0bell\x07", 9), "\"nul\\u0000bell\\u0007\""},
        {"\x1f\x7f", "\"\\u001f\x7f\""},
        {"héllo 😀 ¶", "\"héllo 😀 ¶\""},
        {"", "\"\""},
    };
    for (const Case& c : cases) EXPECT_EQ(sim::json::quote(c.in), c.out) << c.in;
}

TEST(SessionJson, LinesHaveTheShellsShape) {
    EXPECT_EQ(sim::json::resultLine("Number", "3", 0),
              R"({"type": "Number", "text": "3", "error": 0})");
    EXPECT_EQ(sim::json::resultLine("", "", 1207), R"({"type": "", "text": "", "error": 1207})");
    EXPECT_EQ(sim::json::scriptLine("Hello", "Demo", "7"),
              R"({"script": "Hello", "file": "Demo", "parameter": "7"})");
    EXPECT_EQ(sim::json::initLine(-2), R"({"init": -2})");
}

}  // namespace
