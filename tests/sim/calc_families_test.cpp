// The function families FileMaker developers use every day, with the examples of FileMaker's
// reference where it gives them: value lists, JSON, While, Base64 and hex, SerialIncrement, Get.
#include <gtest/gtest.h>

#include <cstdlib>

#include "tests/sim/calc_test_support.h"

namespace {

using calc_test::Case;
using calc_test::run;
using sim::fake::FakeContext;

using calc_test::expectAll;

TEST(CalcFamilies, ValueListsEndEachValueWithAReturn) {
    expectAll({
        {R"(SortValues ( "Banana¶Apple¶Cherry" ))", "Apple\rBanana\rCherry\r"},
        {R"(SortValues ( "b¶a" ))", "a\rb\r"},
        {R"(SortValues ( "3¶10¶2" ))", "10\r2\r3\r"},
        {R"(SortValues ( "3¶10¶2" ; 2 ))", "2\r3\r10\r"},
        {R"(SortValues ( "3¶10¶2" ; -2 ))", "10\r3\r2\r"},
        {R"(SortValues ( "x¶3¶1" ; 2 ))", "1\r3\rx\r"},
        {R"(SortValues ( "1/2/2024¶12/1/2023" ; 3 ))", "12/1/2023\r1/2/2024\r"},
        {R"(SortValues ( "b¶a" ; 1 ; "German" ))", "a\rb\r"},
        {R"(SortValues ( "100000000000000000001¶100000000000000000000" ; 2 ))",
         "100000000000000000000\r100000000000000000001\r"},
        {R"(UniqueValues ( "1¶1.0¶100000000000000000001¶100000000000000000000" ; 2 ))",
         "1\r100000000000000000001\r100000000000000000000\r"},
        {R"(SortValues ( "b¶a" ; 7 ))", "a\rb\r"},
        {R"(SortValues ( "b¶a" ; 1 ; "Klingon" ))", "?"},
        {R"(SortValues ( "" ))", ""},
        {R"(UniqueValues ( "Apple¶Banana¶apple¶Cherry¶banana" ))", "Apple\rBanana\rCherry\r"},
        {R"(UniqueValues ( "1¶1.0¶01¶2" ; 2 ))", "1\r2\r"},
        {R"(UniqueValues ( "é¶e" ))", "é\re\r"},
        {R"(FilterValues ( "Plaid¶Canvas¶Suede¶Stripes" ; "Plaid¶Stripes" ))", "Plaid\rStripes\r"},
        {R"(FilterValues ( "A¶b" ; "a" ))", "A\r"},
    });
}

TEST(CalcFamilies, JsonElements) {
    expectAll({
        {R"(JSONGetElement ( "{\"a\":[1,2]}" ; "a[1]" ))", "2"},
        {R"(JSONGetElement ( "{\"a\":{\"b\":\"x\"}}" ; "a.b" ))", "x"},
        {R"(JSONGetElement ( "{\"a\":{\"b\":\"x\"}}" ; "a" ))", R"({"b":"x"})"},
        {R"(JSONGetElement ( "[10,20,30]" ; 2 ))", "30"},
        {R"(JSONGetElement ( "[10,20,30]" ; "[:]" ))", "30"},
        {R"(JSONGetElement ( "{\"a.b\":1}" ; "['a.b']" ))", "1"},
        {R"(JSONGetElement ( "{\"t\":true,\"f\":false,\"n\":null}" ; "t" ) & JSONGetElement ( "{\"t\":true,\"f\":false}" ; "f" ))",
         "10"},
        {R"(JSONGetElement ( "{\"a\":1}" ; "missing" ))", ""},
        {R"(JSONSetElement ( "{\"a\":11}" ; "b" ; 22 ; JSONNumber ))", R"({"a":11,"b":22})"},
        {R"(JSONSetElement ( "" ; "a.b" ; 1 ; JSONNumber ))", R"({"a":{"b":1}})"},
        {R"(JSONSetElement ( "{}" ; [ "z" ; "1" ; JSONString ] ; [ "a[1]" ; 1 ; JSONBoolean ] ))",
         R"({"a":[null,true],"z":"1"})"},
        {R"(JSONSetElement ( "[1]" ; "[+]" ; "{\"k\":2}" ; JSONObject ))", R"([1,{"k":2}])"},
        {R"(JSONSetElement ( "{}" ; "r" ; "not json" ; JSONRaw ))", R"({"r":"not json"})"},
        {R"(JSONSetElement ( "{}" ; "n" ; "" ; JSONNull ))", R"({"n":null})"},
        {R"(JSONSetElement ( "{}" ; "x" ; 0.5 ; JSONNumber ))", R"({"x":0.5})"},
        {R"(JSONDeleteElement ( "{\"a\":1,\"b\":2}" ; "a" ))", R"({"b":2})"},
        {R"(JSONDeleteElement ( "{\"a\":[1,2,3]}" ; "a[1]" ))", R"({"a":[1,3]})"},
        {R"(JSONListKeys ( "{\"b\":1,\"a\":{\"c\":2}}" ; "" ))", "a\rb"},
        {R"(JSONListKeys ( "[5,6,7]" ; "" ))", "0\r1\r2"},
        {R"(JSONListValues ( "{\"b\":\"x\",\"a\":[1]}" ; "" ))", "[1]\rx"},
        {R"(JSONFormatElements ( "{\"a\":1,\"b\":[1,2]}" ))",
         "{\r\t\"a\" : 1,\r\t\"b\" : [ 1, 2 ]\r}"},
        {R"(JSONFormatElements ( "{\"a\":{\"b\":1}}" ))",
         "{\r\t\"a\" : \r\t{\r\t\t\"b\" : 1\r\t}\r}"},
        {R"(JSONFormatElements ( "[]" ))", "[]"},
    });
}

TEST(CalcFamilies, JsonFailuresAreQuestionMarkTexts) {
    expectAll({
        {R"(JSONGetElement ( "{\"a\":" ; "a" ))",
         "? * Line 1, Column 6\r  Syntax error: value, object or array expected.\r"},
        {R"(JSONGetElement ( "[1 2]" ; "" ))",
         "? * Line 1, Column 4\r  Missing ',' or ']' in array declaration\r"},
        {R"(JSONGetElement ( "{\"a\" 1}" ; "" ))",
         "? * Line 1, Column 6\r  Missing ':' after object member name\r"},
        {R"(JSONGetElement ( "{}x" ; "" ))",
         "? * Line 1, Column 3\r  Extra non-whitespace after JSON value.\r"},
        {R"(JSONGetElement ( "{}" ; "a[" ))", "? Invalid path: a["},
        {R"(JSONSetElement ( "{\"a\":1}" ; "a.b" ; 1 ; JSONNumber ))",
         "? Path error: \"a.b\" goes through a value that is neither an object nor an array"},
        {R"(JSONSetElement ( "{}" ; "a" ; "[1]" ; JSONObject ))", "? Value is not an object"},
        {R"(JSONGetElement ( While ( [ i = 0 ; s = "" ] ; i < 1001 ; [ i = i + 1 ; s = s & "[" ] ; s ) ; "" ))",
         "? Nesting deeper than 1000 levels"},
    });
}

TEST(CalcFamilies, WhileLoopsUpToItsLimit) {
    expectAll({
        {"While ( [ i = 0 ] ; i < 3 ; [ i = i + 1 ] ; i )", "3"},
        {R"(While ( [ i = 0 ; out = "" ] ; i < 5 ; [ i = i + 1 ; out = out & "Line " & i & ¶ ] ; out ))",
         "Line 1\rLine 2\rLine 3\rLine 4\rLine 5\r"},
        {"While ( i = 10 ; i > 0 ; i = i - 4 ; i )", "-2"},
        {"While ( [ ] ; 0 ; [ ] ; 7 )", "7"},
        {"While ( [ $n = 0 ] ; $n < 2 ; [ $n = $n + 1 ] ; $n ) & $n", "22"},
        {"While ( i = 0 ; 1 ; i = i + 1 ; i )", "?"},
        {"Let ( i = 5 ; While ( i = 0 ; i < 2 ; i = i + 1 ; i ) & i )", "25"},
    });
    FakeContext context;
    const calc_test::ErrorCase errors[] = {
        {"While ( i = 0 ; i < 3 ; i = i + 1 )", 1201},
        {"While ( i = 0 ; i < 3 ; i = i + 1 ; i ; 5 )", 1202},
        {"While ( [ i = 0 ; i = 1 ] ; 0 ; [ ] ; i )", 1213},
        {"While ( [ i = 0 ; 0 ; [ ] ; i )", 1209},
    };
    for (const auto& c : errors)
        EXPECT_EQ(run(context, c.calculation).error, c.error) << c.calculation;
}

TEST(CalcFamilies, Base64AndHex) {
    const std::string long76(76, 'A');
    expectAll({
        {R"(Base64Encode ( "Hello" ))", "SGVsbG8="},
        {R"(Base64Encode ( "" ))", ""},
        {R"(Base64EncodeRFC ( 4648 ; "FileMaker" ))", "RmlsZU1ha2Vy"},
        {R"(Base64EncodeRFC ( 3501 ; "??>" ))", "Pz8+"},
        {R"(Base64EncodeRFC ( 3501 ; "???" ))", "Pz8,"},
        {R"(Base64EncodeRFC ( 2152 ; "a" ))", "YQ"},
        {R"(Base64EncodeRFC ( 9999 ; "a" ))", "YQ=="},
        {R"(Base64Decode ( "SGVsbG8=" ))", "Hello"},
        {R"(Base64Decode ( "SGVs¶bG8" ))", "Hello"},
        {R"(Base64Decode ( "S" ))", "?"},
        {R"(Base64Decode ( "SGVsbG8=" ; "hello.txt" ))", "hello.txt"},
        {R"(Base64Decode ( Base64Encode ( "é€😀" ) ))", "é€😀"},
        {R"(HexEncode ( "FileMaker" ))", "46696C654D616B6572"},
        {R"(HexDecode ( "46696c654D616B6572" ))", "FileMaker"},
        {R"(HexDecode ( "4" ))", "?"},
        {R"(HexDecode ( "zz" ))", "?"},
        {R"(HexDecode ( HexEncode ( "¶é" ) ; "a.bin" ))", "a.bin"},
        {R"(Length ( Base64Encode ( Left ( "AAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAA" ; 60 ) ) ))",
         "82"},
    });
}

TEST(CalcFamilies, SerialIncrement) {
    expectAll({
        {R"(SerialIncrement ( "abc12" ; 1 ))", "abc13"},
        {R"(SerialIncrement ( "abc12" ; 4 ))", "abc16"},
        {R"(SerialIncrement ( "abc12" ; -1 ))", "abc11"},
        {R"(SerialIncrement ( "abc7" ; 1.9 ))", "abc8"},
        {R"(SerialIncrement ( "abc0099" ; 1 ))", "abc0100"},
        {R"(SerialIncrement ( "x99" ; 1 ))", "x100"},
        {R"(SerialIncrement ( "x1" ; -3 ))", "x-2"},
        {R"(SerialIncrement ( "x10" ; -10 ))", "x00"},
        {R"(SerialIncrement ( "INV-2024-0007-A" ; 1 ))", "INV-2024-0008-A"},
        {R"(SerialIncrement ( "99999999999999999999" ; 1 ))", "100000000000000000000"},
        {R"(SerialIncrement ( "abc" ; 1 ))", "abc"},
    });
}

TEST(CalcFamilies, GetAnswersWhatASubstituteHostKnows) {
    expectAll({
        {"Get ( SystemPlatform )", "5"},
        {"Get ( SystemLanguage )", "English"},
        {"Get ( LastError )", "0"},
        {"Get ( FoundCount )", "0"},
        {"Get ( ScriptName )", ""},
        {"Get ( CurrentTimeUTCMilliseconds ) > 63900000000000", "1"},
    });
}

}  // namespace
