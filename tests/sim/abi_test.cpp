// The host's C interface as a plug-in sees it, through the fmx wrappers.
#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "host/fmx.h"
#include "sim/abi/faults.h"

// Exported by the host but not used by the plug-in, so not declared in host/.
extern "C" {
bool FM_QuadChar_operatorLT(const void*, const fmx::QuadChar&, fmx::_fmxcpt&) noexcept;
bool FM_QuadChar_operatorGE(const void*, const fmx::QuadChar&, fmx::_fmxcpt&) noexcept;
fmx::BinaryData* FM_BinaryData_Constructor4(const fmx::Text&, fmx::uint32*, fmx::_fmxcpt&) noexcept;
fmx::errcode FM_BinaryData_AddBegin(void*, const fmx::QuadChar&, fmx::uint32*,
                                    fmx::_fmxcpt&) noexcept;
fmx::errcode FM_BinaryData_AddAppend(void*, fmx::uint32, fmx::uint32, void*,
                                     fmx::_fmxcpt&) noexcept;
fmx::errcode FM_BinaryData_AddFinish(void*, fmx::uint32, fmx::_fmxcpt&) noexcept;
fmx::errcode FM_BinaryData_GetFNAMData(const void*, fmx::Text&, fmx::_fmxcpt&) noexcept;
fmx::errcode FM_BinaryData_AddSIZEData(void*, short, short, fmx::_fmxcpt&) noexcept;
fmx::errcode FM_BinaryData_GetSIZEData(const void*, short&, short&, fmx::_fmxcpt&) noexcept;
void FM_Text_Get(const void*, char*, fmx::uint32, fmx::uint32, fmx::uint32, fmx::_fmxcpt&) noexcept;
fmx::errcode FM_ExprEnv_EvaluateConvertToFileMakerPath(const void*, const fmx::Text&, fmx::int32,
                                                       fmx::Text&, fmx::_fmxcpt&) noexcept;
fmx::errcode FM_ExprEnv_EvaluateConvertFromFileMakerPath(const void*, const fmx::Text&, fmx::int32,
                                                         fmx::Text&, fmx::_fmxcpt&) noexcept;
}

namespace {

using fmx::_fmxcpt;

struct FaultsCleared : ::testing::Test {
    void TearDown() override { sim::faults::clear(); }
};

fmx::TextUniquePtr textOf(const char* utf8) {
    fmx::TextUniquePtr t;
    t->Assign(utf8, fmx::kEncoding_UTF8);
    return t;
}

std::string bytesOf(const fmx::Text& t, fmx::int32 encoding = fmx::kEncoding_UTF8) {
    std::string buf(t.GetSize() * 4 + 1, '\0');
    t.GetBytes(buf.data(), static_cast<fmx::uint32>(buf.size()), 0, fmx::kSize_End, encoding);
    return buf.c_str();
}

TEST(Abi, ParameterBlockLayout) {
    EXPECT_EQ(sizeof(FMX_ExternCallStruct), 74u);
    EXPECT_EQ(offsetof(FMX_ExternCallStruct, unusedID), 2u);
    EXPECT_EQ(offsetof(FMX_ExternCallStruct, unsafeCalls), 16u);
    EXPECT_EQ(offsetof(FMX_ExternCallStruct, instanceID), 34u);
    EXPECT_EQ(offsetof(FMX_ExternCallStruct, unused), 50u);
}

TEST(Abi, AssignAndGetBytesByEncoding) {
    struct Case {
        fmx::int32 encoding;
        std::string bytes;
        std::u16string units;
    };
    const Case cases[] = {
        {fmx::kEncoding_Native, "caf\xC3\xA9 \xF0\x9F\x98\x80", u"café \U0001F600"},
        {fmx::kEncoding_ASCII_Mac, "caf\x8E \xDB", u"café €"},
        {fmx::kEncoding_ASCII_Windows, "\x80 \xE9", u"€ é"},
        {57, "\xC3\xA9", u"é"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.encoding);
        fmx::TextUniquePtr t;
        t->Assign(c.bytes.c_str(), c.encoding);
        ASSERT_EQ(t->GetSize(), c.units.size());
        std::u16string units(c.units.size(), u'\0');
        t->GetUnicode(reinterpret_cast<fmx::uint16*>(units.data()), 0, t->GetSize());
        EXPECT_EQ(units, c.units);
        EXPECT_EQ(bytesOf(*t, c.encoding), c.bytes);
    }
}

TEST(Abi, GetBytesNeverSplitsACharacter) {
    auto t = textOf("a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80");  // a é € 😀: 1+2+3+4 bytes
    struct Case {
        fmx::uint32 buffersize;
        std::string expected;
    };
    const Case cases[] = {{1, ""},
                          {2, "a"},
                          {3, "a"},
                          {4, "a\xC3\xA9"},
                          {6, "a\xC3\xA9"},
                          {7, "a\xC3\xA9\xE2\x82\xAC"},
                          {10, "a\xC3\xA9\xE2\x82\xAC"},
                          {11, "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.buffersize);
        std::string buf(16, 'Z');
        t->GetBytes(buf.data(), c.buffersize, 0, fmx::kSize_End, fmx::kEncoding_UTF8);
        EXPECT_EQ(std::string(buf.c_str()), c.expected);
        EXPECT_EQ(buf[c.expected.size() + 1], 'Z');  // nothing written past the terminator
    }
    std::string untouched(4, 'Z');
    t->GetBytes(untouched.data(), 0);
    EXPECT_EQ(untouched, "ZZZZ");

    EXPECT_EQ(t->GetBytesEx(nullptr, 0), 10u);
    char buf[8] = {};
    EXPECT_EQ(t->GetBytesEx(buf, 8, 1, 2), 5u);  // é € from position 1, no terminator
    EXPECT_EQ(std::string(buf, 5), "\xC3\xA9\xE2\x82\xAC");
    EXPECT_EQ(t->GetBytesEx(buf, 8, 3, fmx::kSize_End), 4u);  // the pair from its first unit
}

TEST(Abi, WideAndUnicodeAssignment) {
    fmx::TextUniquePtr t;
    t->AssignWide(L"x\U0001F600");
    EXPECT_EQ(t->GetSize(), 3u);
    fmx::uint16 units[4] = {};
    t->GetUnicode(units, 1, 99);  // clamped to the text
    EXPECT_EQ(units[0], 0xD83D);
    EXPECT_EQ(units[1], 0xDE00);
    EXPECT_EQ(units[2], 0);
    const fmx::uint16 abc[] = {'a', 'b', 'c', 0};
    t->AssignUnicodeWithLength(abc, 2);
    EXPECT_EQ(bytesOf(*t), "ab");
}

TEST(Abi, EditingAndSearching) {
    auto t = textOf("Hello World");
    auto other = textOf("o");
    EXPECT_EQ(t->Find(*other, 5), 7u);
    EXPECT_EQ(t->Find(*textOf("x"), 0), fmx::kSize_Invalid);
    EXPECT_EQ(t->FindIgnoringCase(*textOf("WORLD"), 0), 6u);
    EXPECT_EQ(t->FindPrev(*other, 6), 4u);

    fmx::TextUniquePtr copy;
    copy->SetText(*t, 6, fmx::kSize_End);
    copy->AppendText(*t, 0, 5);
    copy->InsertText(*textOf(", "), 5);
    copy->DeleteText(0, 1);
    EXPECT_EQ(bytesOf(*copy), "orld, Hello");
    copy->Uppercase();
    EXPECT_EQ(bytesOf(*copy), "ORLD, HELLO");
    EXPECT_TRUE(*copy == *textOf("ORLD, HELLO"));
    EXPECT_TRUE(*copy < *textOf("ORLD, HELLOx"));
}

TEST(Abi, CharacterStyles) {
    fmx::ColorUniquePtr red(255, 0, 0);
    fmx::CharacterStyleUniquePtr style(7, fmx::kFace_Bold | fmx::kFace_Italic, 14, *red);
    EXPECT_TRUE(style->IsFontEnabled());
    EXPECT_TRUE(style->IsSizeEnabled());
    EXPECT_TRUE(style->IsColorEnabled());
    EXPECT_TRUE(style->IsFaceEnabled(fmx::kFace_Bold));
    EXPECT_FALSE(style->IsFaceEnabled(fmx::kFace_Underline));
    EXPECT_EQ(style->GetColor().GetRed(), 255);

    auto t = textOf("plain styled");
    fmx::CharacterStyleUniquePtr read;
    t->GetStyle(*read, 0);
    EXPECT_TRUE(read->IsAllDisabled());

    t->SetStyle(*style, 6, fmx::kSize_End);
    t->GetStyle(*read, 8);
    EXPECT_TRUE(*read == *style);
    read->DisableColor();
    EXPECT_TRUE(*read != *style);
    t->GetStyle(*read, 2);
    EXPECT_TRUE(read->IsAllDisabled());

    fmx::TextUniquePtr slice;
    slice->SetText(*t, 6, 3);
    slice->GetStyle(*read, 0);
    EXPECT_EQ(read->GetSize(), 14);
    t->Assign("reset");
    t->GetStyle(*read, 0);
    EXPECT_TRUE(read->IsAllDisabled());

    EXPECT_EQ(fmx::Color::Black().GetAlpha(), 255);
    EXPECT_EQ(fmx::Color::White().GetBlue(), 255);
    EXPECT_EQ(FM_Color_White(), FM_Color_White());
}

TEST(Abi, DataSetAndGet) {
    fmx::DataUniquePtr d;
    fmx::LocaleUniquePtr locale;
    d->SetAsText(*textOf("2024-01-31"), *locale, fmx::kDTDate);
    EXPECT_EQ(d->GetNativeType(), fmx::kDTDate);
    EXPECT_EQ(bytesOf(d->GetAsText()), "1/31/2024");
    EXPECT_EQ(d->GetAsDate().GetDaysSinceEpoch(), 738916);

    fmx::FixPtUniquePtr one(1);
    d->SetAsNumber(*one, fmx::kDTBoolean);
    EXPECT_EQ(d->GetNativeType(), fmx::kDTBoolean);
    EXPECT_TRUE(d->GetAsBoolean());

    // An empty number stays empty through a round trip.
    fmx::DataUniquePtr source;
    source->SetAsText(*textOf("No Error Message"), source->GetLocale());
    d->SetAsNumber(source->GetAsNumber());
    EXPECT_EQ(d->GetNativeType(), fmx::kDTNumber);
    EXPECT_TRUE(d->IsEmpty());
    EXPECT_EQ(bytesOf(d->GetAsText()), "");

    // Borrowed results stay put while the value is unchanged.
    source->SetAsText(*textOf("text"), source->GetLocale());
    const fmx::Text* first = &source->GetAsText();
    EXPECT_EQ(first, &source->GetAsText());
    d->SetAsNumber(*one);
    const fmx::Text* numberText = &d->GetAsText();
    EXPECT_EQ(numberText, &d->GetAsText());
    EXPECT_EQ(bytesOf(*numberText), "1");
}

std::string numberText(const fmx::FixPt& n) {
    fmx::DataUniquePtr d;
    d->SetAsNumber(n);
    return bytesOf(d->GetAsText());
}

fmx::FixPtUniquePtr fromDouble(double v) {
    fmx::FixPtUniquePtr n;
    n->AssignDouble(v);
    return n;
}

// Decimal FixPt: doubles come in as their shortest decimal form, sums and products are exact and
// division rounds to the number's precision.
TEST(Abi, FixPtIsDecimal) {
    using Make = std::string (*)();
    const struct {
        const char* what;
        Make make;
        const char* text;
    } cases[] = {
        {"0.1 as double", [] { return numberText(*fromDouble(0.1)); }, "0.1"},
        {"65.01 as double", [] { return numberText(*fromDouble(65.01)); }, "65.01"},
        {"0.1 + 0.2",
         [] {
             fmx::FixPtUniquePtr sum;
             fromDouble(0.1)->Add(*fromDouble(0.2), *sum);
             return numberText(*sum);
         },
         "0.3"},
        {"52 * 1.25",
         [] {
             fmx::FixPtUniquePtr product;
             fmx::FixPtUniquePtr(52)->Multiply(*fromDouble(1.25), *product);
             return numberText(*product);
         },
         "65"},
        {"10 / 3",
         [] {
             fmx::FixPtUniquePtr q;
             fmx::FixPtUniquePtr(10)->Divide(*fmx::FixPtUniquePtr(3), *q);
             return numberText(*q);
         },
         "3.3333333333333333"},
        {"10 / 3 at 20 places",
         [] {
             fmx::FixPtUniquePtr ten(10);
             ten->SetPrecision(20);
             fmx::FixPtUniquePtr q;
             ten->Divide(*fmx::FixPtUniquePtr(3), *q);
             return numberText(*q);
         },
         "3.33333333333333333333"},
        {"2^53 + 1 as int64",
         [] {
             fmx::FixPtUniquePtr n;
             n->AssignInt64(9007199254740993);
             n->Increment(1);
             return numberText(*n) + " " + std::to_string(n->AsLong64());
         },
         "9007199254740994 9007199254740994"},
        {"a microsecond past midnight",
         [] {
             fmx::DateTimeUniquePtr dt;
             dt->SetNormalizedDate(1, 1, 2020);
             dt->SetNormalizedTime(0, 0, 0, 1);
             fmx::FixPtUniquePtr seconds;
             dt->GetSecondsSinceEpoch(*seconds);
             return numberText(*seconds);
         },
         "63713433600.000001"},
    };
    for (const auto& c : cases) EXPECT_EQ(c.make(), c.text) << c.what;

    fmx::FixPtUniquePtr sum;
    fromDouble(0.1)->Add(*fromDouble(0.2), *sum);
    EXPECT_TRUE(*sum == *fromDouble(0.3));
    EXPECT_TRUE(*fromDouble(0.3) < *fromDouble(0.30000000000000004));
    EXPECT_EQ(fromDouble(-2.7)->AsLong(), -2);
    EXPECT_EQ(fromDouble(0.1)->AsFloat(), 0.1);
    EXPECT_EQ(fromDouble(1e300)->AsLong(), INT32_MAX);
    fmx::FixPtUniquePtr unchanged(7);
    EXPECT_EQ(fmx::FixPtUniquePtr(1)->Divide(*fmx::FixPtUniquePtr(0), *unchanged), 1);
    EXPECT_EQ(unchanged->AsLong(), 7);
}

TEST(Abi, DateTimeAndSeconds) {
    fmx::DateTimeUniquePtr dt;
    dt->SetNormalizedDate(10, 10, 2019);
    EXPECT_EQ(dt->GetDaysSinceEpoch(), 737342);
    dt->SetNormalizedDate(14, 1, 2023);  // month 14 of 2023
    EXPECT_EQ(dt->GetYear(), 2024);
    EXPECT_EQ(dt->GetMonth(), 2);

    fmx::FixPtUniquePtr seconds;
    seconds->AssignDouble(62135596800.5);
    dt->SetSecondsSinceEpoch(*seconds);
    EXPECT_EQ(dt->GetYear(), 1970);
    EXPECT_EQ(dt->GetUSec(), 500000);
    fmx::FixPtUniquePtr back;
    dt->GetSecondsSinceEpoch(*back);
    EXPECT_EQ(back->AsFloat(), 62135596800.5);

    dt->SetNormalizedTime(25, 0, 0);
    EXPECT_EQ(dt->GetDay(), 2);
    EXPECT_EQ(dt->GetHour(), 1);

    dt->Now();
    EXPECT_GT(dt->GetYear(), 2000);
}

TEST(Abi, FontsAndContainers) {
    fmx::DataUniquePtr d;
    fmx::ExprEnvUniquePtr env;
    _fmxcpt x;
    const fmx::uint16 id = FM_Data_GetPostscriptFontID(d.get(), *textOf("Helvetica"), *env, x);
    fmx::TextUniquePtr name;
    EXPECT_TRUE(d->GetFontInfo(id, *name, *env));
    EXPECT_EQ(bytesOf(*name), "Helvetica");
    EXPECT_EQ(FM_Data_GetPostscriptFontID(d.get(), *textOf("HELVETICA"), *env, x), id);
    EXPECT_FALSE(d->GetFontInfo(0xFFF0, *name, *env));
    EXPECT_EQ(x.m_code, 0);

    char bytes[] = "%PDF";
    fmx::BinaryDataUniquePtr file(*textOf("report.pdf"), 4, bytes);
    fmx::QuadCharUniquePtr fileType('F', 'I', 'L', 'E');
    EXPECT_EQ(file->GetCount(), 2);
    const fmx::int32 index = file->GetIndex(*fileType);
    ASSERT_GE(index, 0);
    char out[4];
    EXPECT_EQ(file->GetData(index, 0, 4, out), 0);
    EXPECT_EQ(std::string(out, 4), "%PDF");
    EXPECT_NE(file->GetData(index, 2, 4, out), 0);
    d->SetBinaryData(*file);
    EXPECT_EQ(d->GetNativeType(), fmx::kDTBinary);
    EXPECT_EQ(bytesOf(d->GetAsText()), "report.pdf");
    EXPECT_TRUE(d->GetBinaryData() == *file);
}

TEST(Abi, ExportsThePluginDoesNotUse) {
    _fmxcpt x;
    fmx::QuadCharUniquePtr jpeg('J', 'P', 'E', 'G'), file('F', 'I', 'L', 'E');
    EXPECT_TRUE(FM_QuadChar_operatorLT(file.get(), *jpeg, x));
    EXPECT_FALSE(FM_QuadChar_operatorGE(file.get(), *jpeg, x));

    // A file streamed in pieces, then its image size.
    fmx::uint32 context = 0;
    fmx::BinaryData* b = FM_BinaryData_Constructor4(*textOf("a.jpg"), &context, x);
    ASSERT_NE(b, nullptr);
    char part[] = "abc";
    EXPECT_EQ(FM_BinaryData_AddAppend(b, context, 3, part, x), 0);
    EXPECT_EQ(FM_BinaryData_AddAppend(b, context, 2, part, x), 0);
    EXPECT_EQ(FM_BinaryData_AddFinish(b, context, x), 0);
    EXPECT_NE(FM_BinaryData_AddAppend(b, 0, 1, part, x), 0);
    EXPECT_NE(FM_BinaryData_AddFinish(b, 9, x), 0);
    fmx::uint32 jpegContext = 0;
    EXPECT_EQ(FM_BinaryData_AddBegin(b, *jpeg, &jpegContext, x), 0);
    EXPECT_EQ(FM_BinaryData_AddAppend(b, jpegContext, 1, part, x), 0);
    short width = 0, height = 0;
    EXPECT_NE(FM_BinaryData_GetSIZEData(b, width, height, x), 0);
    EXPECT_EQ(FM_BinaryData_AddSIZEData(b, 640, 480, x), 0);
    EXPECT_EQ(FM_BinaryData_GetSIZEData(b, width, height, x), 0);
    EXPECT_EQ(width, 640);
    EXPECT_EQ(height, 480);
    fmx::TextUniquePtr name;
    EXPECT_EQ(FM_BinaryData_GetFNAMData(b, *name, x), 0);
    EXPECT_EQ(bytesOf(*name), "a.jpg");
    char out[8] = {};
    EXPECT_EQ(b->GetData(b->GetIndex(*file), 0, 5, out), 0);
    EXPECT_EQ(std::string(out), "abcab");
    EXPECT_EQ(b->GetSize(b->GetIndex(*jpeg)), 1u);
    delete b;

    char bytes[8];
    FM_Text_Get(textOf("h\xC3\xA9llo").get(), bytes, 1, 2, fmx::kEncoding_UTF8, x);
    EXPECT_EQ(std::string(bytes), "\xC3\xA9l");
    EXPECT_EQ(x.m_code, 0);

    struct PathCase {
        fmx::int32 format;
        const char* path;
        const char* fileMakerPath;
    };
    const PathCase paths[] = {
        {1, "/srv/a b.txt", "filelinux:/srv/a b.txt"},
        {2, "C:\\Data\\a.txt", "filewin:/C:/Data/a.txt"},
        {3, "file:///srv/a%20b.txt", "filelinux:/srv/a b.txt"},
    };
    fmx::ExprEnvUniquePtr env;
    for (const PathCase& c : paths) {
        fmx::TextUniquePtr there, back;
        EXPECT_EQ(FM_ExprEnv_EvaluateConvertToFileMakerPath(env.get(), *textOf(c.path), c.format,
                                                            *there, x),
                  0);
        EXPECT_EQ(bytesOf(*there), c.fileMakerPath) << c.path;
        EXPECT_EQ(
            FM_ExprEnv_EvaluateConvertFromFileMakerPath(env.get(), *there, c.format, *back, x), 0);
        EXPECT_EQ(bytesOf(*back), c.path);
    }
    fmx::TextUniquePtr unchanged;
    EXPECT_NE(
        FM_ExprEnv_EvaluateConvertToFileMakerPath(env.get(), *textOf("rel/a"), 1, *unchanged, x),
        0);
    EXPECT_NE(FM_ExprEnv_EvaluateConvertToFileMakerPath(env.get(), *textOf("/a"), 7, *unchanged, x),
              0);
    EXPECT_EQ(bytesOf(*unchanged), "");
}

// The font table and the call counter are host-wide: several threads use them at once.
TEST(Abi, FontsAcrossThreads) {
    std::atomic<int> mismatches{0};
    std::vector<std::thread> threads;
    for (int k = 0; k < 4; ++k) {
        threads.emplace_back([&] {
            fmx::ExprEnvUniquePtr env;
            fmx::DataUniquePtr d;
            for (int i = 0; i < 200; ++i) {
                const std::string name = "Font " + std::to_string(i % 20);
                _fmxcpt x;
                const fmx::uint16 id =
                    FM_Data_GetPostscriptFontID(d.get(), *textOf(name.c_str()), *env, x);
                fmx::TextUniquePtr back;
                if (!d->GetFontInfo(id, *back, *env) || bytesOf(*back) != name) ++mismatches;
            }
        });
    }
    for (auto& t : threads) t.join();
    EXPECT_EQ(mismatches.load(), 0);
}

TEST(Abi, Vectors) {
    fmx::DataVectUniquePtr v;
    fmx::DataUniquePtr d;
    fmx::FixPtUniquePtr n(42);
    d->SetAsNumber(*n);
    v->PushBack(*d);
    d->SetAsText(*textOf("x"), d->GetLocale());
    v->PushBack(*d);
    ASSERT_EQ(v->Size(), 2u);
    EXPECT_EQ(v->AtAsNumber(0).AsLong(), 42);
    EXPECT_EQ(bytesOf(v->AtAsText(1)), "x");
    EXPECT_EQ(&v->At(1).GetAsText(), &v->AtAsText(1));
    EXPECT_THROW(v->At(2), std::exception);

    _fmxcpt x;
    fmx::Data* popped = FM_DataVect_PopBack(v.get(), x);
    ASSERT_NE(popped, nullptr);
    EXPECT_EQ(bytesOf(popped->GetAsText()), "x");
    delete popped;
    EXPECT_EQ(v->Size(), 1u);

    fmx::RowVectUniquePtr rows;
    EXPECT_TRUE(rows->IsEmpty());
    EXPECT_THROW(rows->At(0), std::exception);
}

TEST_F(FaultsCleared, InjectedFailuresSetTheRecord) {
    auto t = textOf("abc");
    auto needle = textOf("b");

    sim::faults::failFunction("FM_Text_GetSize", 1);
    EXPECT_THROW(t->GetSize(), std::bad_alloc);
    sim::faults::failFunction("FM_Text_GetSize", 2);
    _fmxcpt x;
    EXPECT_EQ(FM_Text_GetSize(t.get(), x), 0u);
    EXPECT_EQ(x.m_code, 2);

    sim::faults::failFunction("FM_Text_Find", 2);
    _fmxcpt y;
    EXPECT_EQ(FM_Text_Find(t.get(), *needle, 0, y), 0xFFFFFFFFu);
    EXPECT_EQ(y.m_code, 2);

    sim::faults::clear();
    sim::faults::failNthCall(2, 1);
    EXPECT_EQ(t->GetSize(), 3u);
    EXPECT_THROW(t->Find(*needle, 0), std::bad_alloc);
    EXPECT_EQ(t->Find(*needle, 0), 1u);
    EXPECT_EQ(sim::faults::callCount(), 3u);
}

// A failing Delete reports the failure and frees all the same (the leak checker would see it).
TEST_F(FaultsCleared, FailedDeletesStillFree) {
    sim::faults::failFunction("FM_Text_Delete", 1);
    sim::faults::failFunction("FM_Data_Delete", 2);
    _fmxcpt x;
    FM_Text_Delete(FM_Text_Constructor1(x), x);
    EXPECT_EQ(x.m_code, 1);
    _fmxcpt y;
    FM_Data_Delete(FM_Data_Constructor1(y), y);
    EXPECT_EQ(y.m_code, 2);
    EXPECT_EQ(sim::faults::lastFailedFunction(), "FM_Data_Delete");
}

TEST(Abi, BadArgumentsFailWithCodeTwo) {
    struct Case {
        const char* what;
        int (*call)();
    };
    const Case cases[] = {
        {"null self",
         [] {
             _fmxcpt x;
             FM_Text_Assign(nullptr, "a", 0, x);
             return x.m_code;
         }},
        {"null bytes with a length",
         [] {
             _fmxcpt x;
             fmx::TextUniquePtr t;
             FM_Text_AssignWithLength(t.get(), nullptr, 3, 0, x);
             return x.m_code;
         }},
        {"null buffer",
         [] {
             _fmxcpt x;
             auto t = textOf("abc");
             FM_Text_GetBytes(t.get(), nullptr, 8, 0, fmx::kSize_End, 1, x);
             return x.m_code;
         }},
        {"quad char index",
         [] {
             _fmxcpt x;
             fmx::QuadCharUniquePtr q('R', 'V', 'L', 'X');
             FM_QuadChar_operatorCAR(q.get(), 4, x);
             return x.m_code;
         }},
    };
    for (const auto& c : cases) EXPECT_EQ(c.call(), 2) << c.what;

    _fmxcpt x;
    fmx::TextUniquePtr t;
    FM_Text_Assign(t.get(), nullptr, 0, x);  // a null string is the empty text
    EXPECT_EQ(x.m_code, 0);
}

}  // namespace
