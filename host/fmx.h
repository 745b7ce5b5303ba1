// Thin C++ handles over the host's C interface. Every class is an opaque, never-instantiated
// handle; members forward to the matching FM_* function and turn the host's failure record into
// an exception (std::bad_alloc for code 1, std::exception for code 2). Objects are created only
// through the owning pointers at the end of this file and are released with the host's Delete.
#pragma once

#include <exception>
#include <memory>
#include <new>
#include <type_traits>

#include "host/fmx_abi.h"

namespace fmx {

inline void _fmxcpt::Check() const {
    switch (m_code) {
        case kBadAlloc:
            throw std::bad_alloc();
        case kUnknown:
            throw std::exception();
        default:
            break;
    }
}

// Runs one host call with a fresh failure record and checks it afterwards.
template <class Call>
inline auto checked(Call call) {
    _fmxcpt x;
    if constexpr (std::is_void_v<decltype(call(x))>) {
        call(x);
        x.Check();
    } else {
        auto r = call(x);
        x.Check();
        return r;
    }
}

// Releasing never throws: a failure reported by a host Delete is ignored.
#define FMX_OPAQUE_HANDLE(Class)                                 \
  public:                                                        \
    Class() = delete;                                            \
    Class(const Class&) = delete;                                \
    Class& operator=(const Class&) = delete;                     \
    static void operator delete(void* obj) {                     \
        _fmxcpt x;                                               \
        FM_##Class##_Delete(obj, x);                             \
    }

class QuadChar {
    FMX_OPAQUE_HANDLE(QuadChar)
    uchar operator[](int i) const {
        return checked([&](_fmxcpt& x) { return FM_QuadChar_operatorCAR(this, i, x); });
    }
    bool operator==(const QuadChar& v) const {
        return checked([&](_fmxcpt& x) { return FM_QuadChar_operatorEQ(this, v, x); });
    }
    bool operator!=(const QuadChar& v) const { return !(*this == v); }
    uint32 GetMacType() const {
        return checked([&](_fmxcpt& x) { return FM_QuadChar_GetMacType(this, x); });
    }
    void SetMacType(uint32 v) {
        checked([&](_fmxcpt& x) { FM_QuadChar_SetMacType(this, v, x); });
    }
};

class Locale {
    FMX_OPAQUE_HANDLE(Locale)
};

class Color {
    FMX_OPAQUE_HANDLE(Color)
    uchar GetRed() const { return checked([&](_fmxcpt& x) { return FM_Color_GetRed(this, x); }); }
    uchar GetGreen() const {
        return checked([&](_fmxcpt& x) { return FM_Color_GetGreen(this, x); });
    }
    uchar GetBlue() const {
        return checked([&](_fmxcpt& x) { return FM_Color_GetBlue(this, x); });
    }
    uchar GetAlpha() const {
        return checked([&](_fmxcpt& x) { return FM_Color_GetAlpha(this, x); });
    }
    void SetRed(uchar v) { checked([&](_fmxcpt& x) { FM_Color_SetRed(this, v, x); }); }
    void SetGreen(uchar v) { checked([&](_fmxcpt& x) { FM_Color_SetGreen(this, v, x); }); }
    void SetBlue(uchar v) { checked([&](_fmxcpt& x) { FM_Color_SetBlue(this, v, x); }); }
    void SetAlpha(uchar v) { checked([&](_fmxcpt& x) { FM_Color_SetAlpha(this, v, x); }); }
    bool operator==(const Color& c) const {
        return checked([&](_fmxcpt& x) { return FM_Color_operatorEQ(this, c, x); });
    }
    bool operator!=(const Color& c) const { return !(*this == c); }
    static const Color& White() { return *FM_Color_White(); }
    static const Color& Black() { return *FM_Color_Black(); }
};

class CharacterStyle {
    FMX_OPAQUE_HANDLE(CharacterStyle)
    using Face = uint16;
    using FontID = uint16;
    using FontSize = uint16;
    void EnableFont() { checked([&](_fmxcpt& x) { FM_CharacterStyle_EnableFont(this, x); }); }
    void EnableFace(Face f) {
        checked([&](_fmxcpt& x) { FM_CharacterStyle_EnableFace(this, f, x); });
    }
    void EnableSize() { checked([&](_fmxcpt& x) { FM_CharacterStyle_EnableSize(this, x); }); }
    void EnableColor() { checked([&](_fmxcpt& x) { FM_CharacterStyle_EnableColor(this, x); }); }
    void DisableFont() { checked([&](_fmxcpt& x) { FM_CharacterStyle_DisableFont(this, x); }); }
    void DisableFace(Face f) {
        checked([&](_fmxcpt& x) { FM_CharacterStyle_DisableFace(this, f, x); });
    }
    void DisableAllFaces() {
        checked([&](_fmxcpt& x) { FM_CharacterStyle_DisableAllFaces(this, x); });
    }
    void DisableSize() { checked([&](_fmxcpt& x) { FM_CharacterStyle_DisableSize(this, x); }); }
    void DisableColor() {
        checked([&](_fmxcpt& x) { FM_CharacterStyle_DisableColor(this, x); });
    }
    void DisableAll() { checked([&](_fmxcpt& x) { FM_CharacterStyle_DisableAll(this, x); }); }
    bool IsAllDisabled() const {
        return checked([&](_fmxcpt& x) { return FM_CharacterStyle_IsAllDisabled(this, x); });
    }
    bool IsFontEnabled() const {
        return checked([&](_fmxcpt& x) { return FM_CharacterStyle_IsFontEnabled(this, x); });
    }
    bool IsFaceEnabled(Face f) const {
        return checked([&](_fmxcpt& x) { return FM_CharacterStyle_IsFaceEnabled(this, f, x); });
    }
    bool IsAnyFaceEnabled() const {
        return checked([&](_fmxcpt& x) { return FM_CharacterStyle_IsAnyFaceEnabled(this, x); });
    }
    bool IsSizeEnabled() const {
        return checked([&](_fmxcpt& x) { return FM_CharacterStyle_IsSizeEnabled(this, x); });
    }
    bool IsColorEnabled() const {
        return checked([&](_fmxcpt& x) { return FM_CharacterStyle_IsColorEnabled(this, x); });
    }
    void SetFontInformation(FontID font, Face face, FontSize size) {
        checked([&](_fmxcpt& x) {
            FM_CharacterStyle_SetFontInformation(this, font, face, size, x);
        });
    }
    void GetFontInformation(FontID& font, Face& face, FontSize& size) {
        checked([&](_fmxcpt& x) {
            FM_CharacterStyle_GetFontInformation(this, font, face, size, x);
        });
    }
    void SetFont(FontID f) { checked([&](_fmxcpt& x) { FM_CharacterStyle_SetFont(this, f, x); }); }
    void SetFace(Face f) { checked([&](_fmxcpt& x) { FM_CharacterStyle_SetFace(this, f, x); }); }
    void SetSize(FontSize s) {
        checked([&](_fmxcpt& x) { FM_CharacterStyle_SetSize(this, s, x); });
    }
    FontID GetFont() const {
        return checked([&](_fmxcpt& x) { return FM_CharacterStyle_GetFont(this, x); });
    }
    Face GetFace() const {
        return checked([&](_fmxcpt& x) { return FM_CharacterStyle_GetFace(this, x); });
    }
    FontSize GetSize() const {
        return checked([&](_fmxcpt& x) { return FM_CharacterStyle_GetSize(this, x); });
    }
    void SetColor(const Color& c) {
        checked([&](_fmxcpt& x) { FM_CharacterStyle_SetColor(this, c, x); });
    }
    const Color& GetColor() const {
        return *checked([&](_fmxcpt& x) { return FM_CharacterStyle_GetColor(this, x); });
    }
    void Assign(const CharacterStyle& rhs) {
        checked([&](_fmxcpt& x) { FM_CharacterStyle_operatorAS(this, rhs, x); });
    }
    bool operator==(const CharacterStyle& rhs) const {
        return checked([&](_fmxcpt& x) { return FM_CharacterStyle_operatorEQ(this, rhs, x); });
    }
    bool operator!=(const CharacterStyle& rhs) const {
        return checked([&](_fmxcpt& x) { return FM_CharacterStyle_operatorNE(this, rhs, x); });
    }
};

class Text {
    FMX_OPAQUE_HANDLE(Text)
    uint32 GetSize() const {
        return checked([&](_fmxcpt& x) { return FM_Text_GetSize(this, x); });
    }
    void Assign(const char* s, int32 encoding = kEncoding_Native) {
        checked([&](_fmxcpt& x) { FM_Text_Assign(this, s, encoding, x); });
    }
    void AssignWithLength(const char* s, uint32 length, int32 encoding = kEncoding_Native) {
        checked([&](_fmxcpt& x) { FM_Text_AssignWithLength(this, s, length, encoding, x); });
    }
    void AssignWide(const wchar_t* s) {
        checked([&](_fmxcpt& x) { FM_Text_AssignWide(this, s, x); });
    }
    void AssignUnicode(const uint16* s) {
        checked([&](_fmxcpt& x) { FM_Text_AssignUnicode(this, s, x); });
    }
    void AssignUnicodeWithLength(const uint16* s, uint32 length) {
        checked([&](_fmxcpt& x) { FM_Text_AssignUnicodeWithLength(this, s, length, x); });
    }
    void GetUnicode(uint16* buffer, uint32 position, uint32 size) const {
        checked([&](_fmxcpt& x) { FM_Text_GetUnicode(this, buffer, position, size, x); });
    }
    void GetBytes(char* buffer, uint32 buffersize, uint32 position = 0, uint32 size = kSize_End,
                  int32 encoding = kEncoding_Native) const {
        checked([&](_fmxcpt& x) {
            FM_Text_GetBytes(this, buffer, buffersize, position, size, encoding, x);
        });
    }
    uint32 GetBytesEx(char* buffer, uint32 buffersize, uint32 position = 0,
                      uint32 size = kSize_End, int32 encoding = kEncoding_UTF8) const {
        return checked([&](_fmxcpt& x) {
            return FM_Text_GetBytesEx(this, buffer, buffersize, position, size, encoding, x);
        });
    }
    void SetText(const Text& other, uint32 position = 0, uint32 size = kSize_End) {
        checked([&](_fmxcpt& x) { FM_Text_SetText(this, other, position, size, x); });
    }
    void AppendText(const Text& other, uint32 position = 0, uint32 size = kSize_End) {
        checked([&](_fmxcpt& x) { FM_Text_AppendText(this, other, position, size, x); });
    }
    void InsertText(const Text& other, uint32 position) {
        checked([&](_fmxcpt& x) { FM_Text_InsertText(this, other, position, x); });
    }
    void DeleteText(uint32 position, uint32 size = kSize_End) {
        checked([&](_fmxcpt& x) { FM_Text_DeleteText(this, position, size, x); });
    }
    uint32 Find(const Text& other, uint32 position) const {
        return checked([&](_fmxcpt& x) { return FM_Text_Find(this, other, position, x); });
    }
    uint32 FindPrev(const Text& other, uint32 position) const {
        return checked([&](_fmxcpt& x) { return FM_Text_FindPrev(this, other, position, x); });
    }
    uint32 FindIgnoringCase(const Text& other, uint32 position) const {
        return checked(
            [&](_fmxcpt& x) { return FM_Text_FindIgnoringCase(this, other, position, x); });
    }
    void Uppercase() const { checked([&](_fmxcpt& x) { FM_Text_Uppercase(this, x); }); }
    void Lowercase() const { checked([&](_fmxcpt& x) { FM_Text_Lowercase(this, x); }); }
    void GetStyle(CharacterStyle& style, uint32 position) const {
        checked([&](_fmxcpt& x) { FM_Text_GetStyle(this, style, position, x); });
    }
    void GetDefaultStyle(CharacterStyle& style) const {
        checked([&](_fmxcpt& x) { FM_Text_GetDefaultStyle(this, style, x); });
    }
    void SetStyle(const CharacterStyle& style, uint32 position = 0, uint32 size = kSize_End) {
        checked([&](_fmxcpt& x) { FM_Text_SetStyle(this, style, position, size, x); });
    }
    void RemoveStyle(const CharacterStyle& style) {
        checked([&](_fmxcpt& x) { FM_Text_RemoveStyle(this, style, x); });
    }
    void ResetAllStyleBuffers() {
        checked([&](_fmxcpt& x) { FM_Text_ResetAllStyleBuffers(this, x); });
    }
    bool operator==(const Text& that) const {
        return checked([&](_fmxcpt& x) { return FM_Text_operatorEQ(this, that, x); });
    }
    bool operator!=(const Text& that) const {
        return checked([&](_fmxcpt& x) { return FM_Text_operatorNE(this, that, x); });
    }
    bool operator<(const Text& that) const {
        return checked([&](_fmxcpt& x) { return FM_Text_operatorLT(this, that, x); });
    }
};

class FixPt {
    FMX_OPAQUE_HANDLE(FixPt)
    void AssignInt(int32 v) { checked([&](_fmxcpt& x) { FM_FixPt_AssignInt(this, v, x); }); }
    void AssignInt64(int64 v) { checked([&](_fmxcpt& x) { FM_FixPt_AssignInt64(this, v, x); }); }
    void AssignDouble(double v) {
        checked([&](_fmxcpt& x) { FM_FixPt_AssignDouble(this, v, x); });
    }
    void AssignFixPt(const FixPt& v) {
        checked([&](_fmxcpt& x) { FM_FixPt_AssignFixPt(this, v, x); });
    }
    bool operator==(const FixPt& v) const {
        return checked([&](_fmxcpt& x) { return FM_FixPt_operatorEQ(this, v, x); });
    }
    bool operator!=(const FixPt& v) const { return !(*this == v); }
    bool operator<(const FixPt& v) const {
        return checked([&](_fmxcpt& x) { return FM_FixPt_operatorLT(this, v, x); });
    }
    void Increment(int32 n) { checked([&](_fmxcpt& x) { FM_FixPt_Increment(this, n, x); }); }
    void Decrement(int32 n) { checked([&](_fmxcpt& x) { FM_FixPt_Decrement(this, n, x); }); }
    void Negate() { checked([&](_fmxcpt& x) { FM_FixPt_Negate(this, x); }); }
    int GetPrecision() const {
        return checked([&](_fmxcpt& x) { return FM_FixPt_GetPrecision(this, x); });
    }
    void SetPrecision(int p) { checked([&](_fmxcpt& x) { FM_FixPt_SetPrecision(this, p, x); }); }
    void Add(const FixPt& arg, FixPt& result) const {
        checked([&](_fmxcpt& x) { FM_FixPt_Add(this, arg, result, x); });
    }
    void Subtract(const FixPt& arg, FixPt& result) const {
        checked([&](_fmxcpt& x) { FM_FixPt_Subtract(this, arg, result, x); });
    }
    void Multiply(const FixPt& arg, FixPt& result) const {
        checked([&](_fmxcpt& x) { FM_FixPt_Multiply(this, arg, result, x); });
    }
    errcode Divide(const FixPt& arg, FixPt& result) const {
        return checked([&](_fmxcpt& x) { return FM_FixPt_Divide(this, arg, result, x); });
    }
    bool AsBool() const { return checked([&](_fmxcpt& x) { return FM_FixPt_AsBool(this, x); }); }
    int32 AsLong() const {
        return checked([&](_fmxcpt& x) { return FM_FixPt_AsLong(this, x); });
    }
    int64 AsLong64() const {
        return checked([&](_fmxcpt& x) { return FM_FixPt_AsLong64(this, x); });
    }
    double AsFloat() const {
        return checked([&](_fmxcpt& x) { return FM_FixPt_AsFloat(this, x); });
    }
};

class DateTime {
    FMX_OPAQUE_HANDLE(DateTime)
    bool operator==(const DateTime& v) const {
        return checked([&](_fmxcpt& x) { return FM_DateTime_operatorEQ(this, v, x); });
    }
    bool operator!=(const DateTime& v) const { return !(*this == v); }
    void Now() { checked([&](_fmxcpt& x) { FM_DateTime_Now(this, x); }); }
    void SetDate(const DateTime& v) {
        checked([&](_fmxcpt& x) { FM_DateTime_SetDate(this, v, x); });
    }
    void SetTime(const DateTime& v) {
        checked([&](_fmxcpt& x) { FM_DateTime_SetTime(this, v, x); });
    }
    errcode SetNormalizedDate(int16 month, int16 day, int16 year) {
        return checked([&](_fmxcpt& x) {
            return FM_DateTime_SetNormalizedDate1(this, month, day, year, x);
        });
    }
    void SetDaysSinceEpoch(int64 days) {
        checked([&](_fmxcpt& x) { FM_DateTime_SetDaysSinceEpoch(this, days, x); });
    }
    errcode SetNormalizedTime(int64 hour, int16 minute, int16 sec, int32 usec = 0) {
        return checked([&](_fmxcpt& x) {
            return FM_DateTime_SetNormalizedTime1(this, hour, minute, sec, usec, x);
        });
    }
    void SetSecsSinceMidnight(const FixPt& secs) {
        checked([&](_fmxcpt& x) { FM_DateTime_SetSecsSinceMidnight(this, secs, x); });
    }
    void SetSecondsSinceEpoch(const FixPt& seconds) {
        checked([&](_fmxcpt& x) { FM_DateTime_SetSecondsSinceEpoch(this, seconds, x); });
    }
    int16 GetYear() const {
        return checked([&](_fmxcpt& x) { return FM_DateTime_GetYear(this, x); });
    }
    int16 GetMonth() const {
        return checked([&](_fmxcpt& x) { return FM_DateTime_GetMonth(this, x); });
    }
    int16 GetDay() const {
        return checked([&](_fmxcpt& x) { return FM_DateTime_GetDay(this, x); });
    }
    int32 GetDaysSinceEpoch() const {
        return checked([&](_fmxcpt& x) { return FM_DateTime_GetDaysSinceEpoch(this, x); });
    }
    int32 GetHour() const {
        return checked([&](_fmxcpt& x) { return FM_DateTime_GetHour(this, x); });
    }
    int16 GetMinute() const {
        return checked([&](_fmxcpt& x) { return FM_DateTime_GetMinute(this, x); });
    }
    int16 GetSec() const {
        return checked([&](_fmxcpt& x) { return FM_DateTime_GetSec(this, x); });
    }
    int32 GetUSec() const {
        return checked([&](_fmxcpt& x) { return FM_DateTime_GetUSec(this, x); });
    }
    void GetSecsSinceMidnight(FixPt& results) const {
        checked([&](_fmxcpt& x) { FM_DateTime_GetSecsSinceMidnight(this, results, x); });
    }
    void GetSecondsSinceEpoch(FixPt& results) const {
        checked([&](_fmxcpt& x) { FM_DateTime_GetSecondsSinceEpoch(this, results, x); });
    }
};

class BinaryData {
    FMX_OPAQUE_HANDLE(BinaryData)
    int32 GetCount() const {
        return checked([&](_fmxcpt& x) { return FM_BinaryData_GetCount(this, x); });
    }
    int32 GetIndex(const QuadChar& type) const {
        return checked([&](_fmxcpt& x) { return FM_BinaryData_GetIndex(this, type, x); });
    }
    uint32 GetTotalSize() const {
        return checked([&](_fmxcpt& x) { return FM_BinaryData_GetTotalSize(this, x); });
    }
    void GetType(int32 index, QuadChar& type) const {
        checked([&](_fmxcpt& x) { FM_BinaryData_GetType(this, index, type, x); });
    }
    uint32 GetSize(int32 index) const {
        return checked([&](_fmxcpt& x) { return FM_BinaryData_GetSize(this, index, x); });
    }
    errcode GetData(int32 index, uint32 offset, uint32 amount, void* buffer) const {
        return checked([&](_fmxcpt& x) {
            return FM_BinaryData_GetData(this, index, offset, amount, buffer, x);
        });
    }
    errcode Add(const QuadChar& type, uint32 amount, void* buffer) {
        return checked(
            [&](_fmxcpt& x) { return FM_BinaryData_Add(this, type, amount, buffer, x); });
    }
    bool operator==(const BinaryData& v) const {
        return checked([&](_fmxcpt& x) { return FM_BinaryData_operatorEQ(this, v, x); });
    }
};

class Data {
    FMX_OPAQUE_HANDLE(Data)
    using DataType = fmx::DataType;
    bool IsEmpty() const { return checked([&](_fmxcpt& x) { return FM_Data_IsEmpty(this, x); }); }
    bool IsValid() const { return checked([&](_fmxcpt& x) { return FM_Data_IsValid(this, x); }); }
    void Clear(DataType newNativeType = kDTInvalid) {
        checked([&](_fmxcpt& x) { FM_Data_Clear(this, newNativeType, x); });
    }
    const Text& GetAsText() const {
        return *checked([&](_fmxcpt& x) { return FM_Data_GetAsText(this, x); });
    }
    const FixPt& GetAsNumber() const {
        return *checked([&](_fmxcpt& x) { return FM_Data_GetAsNumber(this, x); });
    }
    const DateTime& GetAsDate() const {
        return *checked([&](_fmxcpt& x) { return FM_Data_GetAsDate(this, x); });
    }
    const DateTime& GetAsTime() const {
        return *checked([&](_fmxcpt& x) { return FM_Data_GetAsTime(this, x); });
    }
    const DateTime& GetAsTimeStamp() const {
        return *checked([&](_fmxcpt& x) { return FM_Data_GetAsTimeStamp(this, x); });
    }
    bool GetAsBoolean() const {
        return checked([&](_fmxcpt& x) { return FM_Data_GetAsBoolean(this, x); });
    }
    const BinaryData& GetBinaryData() const {
        return *checked([&](_fmxcpt& x) { return FM_Data_GetBinaryData(this, x); });
    }
    const Locale& GetLocale() const {
        return *checked([&](_fmxcpt& x) { return FM_Data_GetLocale(this, x); });
    }
    DataType GetNativeType() const {
        return static_cast<DataType>(
            checked([&](_fmxcpt& x) { return FM_Data_GetNativeType(this, x); }));
    }
    void ConvertData(DataType nativeType) {
        checked([&](_fmxcpt& x) { FM_Data_ConvertData(this, nativeType, x); });
    }
    errcode SetAsText(const Text& text, const Locale& locale, DataType nativeType = kDTText) {
        return checked(
            [&](_fmxcpt& x) { return FM_Data_SetAsText(this, text, locale, nativeType, x); });
    }
    void SetAsNumber(const FixPt& number, DataType nativeType = kDTNumber) {
        checked([&](_fmxcpt& x) { FM_Data_SetAsNumber(this, number, nativeType, x); });
    }
    void SetAsDate(const DateTime& date, DataType nativeType = kDTDate) {
        checked([&](_fmxcpt& x) { FM_Data_SetAsDate(this, date, nativeType, x); });
    }
    void SetAsTime(const DateTime& time, DataType nativeType = kDTTime) {
        checked([&](_fmxcpt& x) { FM_Data_SetAsTime(this, time, nativeType, x); });
    }
    void SetAsTimeStamp(const DateTime& ts, DataType nativeType = kDTTimeStamp) {
        checked([&](_fmxcpt& x) { FM_Data_SetAsTimeStamp(this, ts, nativeType, x); });
    }
    void SetBinaryData(const BinaryData& data, bool forceBinaryNativeType = true) {
        checked([&](_fmxcpt& x) { FM_Data_SetBinaryData(this, data, forceBinaryNativeType, x); });
    }
    bool GetFontInfo(CharacterStyle::FontID font, Text& fontName, const ExprEnv& env) const {
        uint16 script = 0;
        return checked(
            [&](_fmxcpt& x) { return FM_Data_GetFontInfo(this, font, fontName, script, env, x); });
    }
};

class DataVect {
    FMX_OPAQUE_HANDLE(DataVect)
    uint32 Size() const { return checked([&](_fmxcpt& x) { return FM_DataVect_Size(this, x); }); }
    void Clear() { checked([&](_fmxcpt& x) { FM_DataVect_Clear(this, x); }); }
    bool IsEmpty() const {
        return checked([&](_fmxcpt& x) { return FM_DataVect_IsEmpty(this, x); });
    }
    void PushBack(const Data& data) {
        checked([&](_fmxcpt& x) { FM_DataVect_PushBack(this, data, x); });
    }
    const Data& At(uint32 i) const {
        return *checked([&](_fmxcpt& x) { return FM_DataVect_At(this, i, x); });
    }
    const Text& AtAsText(uint32 i) const {
        return *checked([&](_fmxcpt& x) { return FM_DataVect_AtAsText(this, i, x); });
    }
    const FixPt& AtAsNumber(uint32 i) const {
        return *checked([&](_fmxcpt& x) { return FM_DataVect_AtAsNumber(this, i, x); });
    }
    const DateTime& AtAsDate(uint32 i) const {
        return *checked([&](_fmxcpt& x) { return FM_DataVect_AtAsDate(this, i, x); });
    }
    const DateTime& AtAsTime(uint32 i) const {
        return *checked([&](_fmxcpt& x) { return FM_DataVect_AtAsTime(this, i, x); });
    }
    const DateTime& AtAsTimeStamp(uint32 i) const {
        return *checked([&](_fmxcpt& x) { return FM_DataVect_AtAsTimeStamp(this, i, x); });
    }
    bool AtAsBoolean(uint32 i) const {
        return checked([&](_fmxcpt& x) { return FM_DataVect_AtAsBoolean(this, i, x); });
    }
    const BinaryData& AtAsBinaryData(uint32 i) const {
        return *checked([&](_fmxcpt& x) { return FM_DataVect_AtAsBinaryData(this, i, x); });
    }
};

class RowVect {
    FMX_OPAQUE_HANDLE(RowVect)
    uint32 Size() const { return checked([&](_fmxcpt& x) { return FM_RowVect_Size(this, x); }); }
    bool IsEmpty() const {
        return checked([&](_fmxcpt& x) { return FM_RowVect_IsEmpty(this, x); });
    }
    const DataVect& At(uint32 i) const {
        return *checked([&](_fmxcpt& x) { return FM_RowVect_At(this, i, x); });
    }
};

class ExprEnv {
    FMX_OPAQUE_HANDLE(ExprEnv)
    errcode Evaluate(const Text& expression, Data& result) const {
        return checked(
            [&](_fmxcpt& x) { return FM_ExprEnv_Evaluate(this, expression, result, x); });
    }
    errcode EvaluateGetFunction(short functionValue, Data& result) const {
        return checked([&](_fmxcpt& x) {
            return FM_ExprEnv_EvaluateGetFunction(this, functionValue, result, x);
        });
    }
    errcode ExecuteFileSQL(const Text& expression, const Text& filename,
                           const DataVect& parameters, RowVect& result) const {
        return checked([&](_fmxcpt& x) {
            return FM_ExprEnv_ExecuteFileSQL(this, expression, filename, parameters, result, x);
        });
    }
    errcode ExecuteFileSQLTextResult(const Text& expression, const Text& filename,
                                     const DataVect& parameters, Data& result, uint16 colSep,
                                     uint16 rowSep) const {
        return checked([&](_fmxcpt& x) {
            return FM_ExprEnv_ExecuteFileSQLTextResult(this, expression, filename, parameters,
                                                       result, colSep, rowSep, x);
        });
    }
    static errcode RegisterExternalFunction(const QuadChar& pluginId, short functionId,
                                            const Text& functionName,
                                            const Text& functionPrototype, short minArgs,
                                            short maxArgs, uint32 compatibleOnFlags,
                                            ExtPluginType funcPtr) {
        return checked([&](_fmxcpt& x) {
            return FM_ExprEnv_RegisterExternalFunction(pluginId, functionId, functionName,
                                                       functionPrototype, minArgs, maxArgs,
                                                       compatibleOnFlags, funcPtr, x);
        });
    }
    static errcode UnRegisterExternalFunction(const QuadChar& pluginId, short functionId) {
        return checked([&](_fmxcpt& x) {
            return FM_ExprEnv_UnRegisterExternalFunction(pluginId, functionId, x);
        });
    }
};

#undef FMX_OPAQUE_HANDLE

// Owning pointers: the only way to create host objects. Each releases its object through the
// host's Delete when it goes out of scope or is reset.
struct TextUniquePtr : std::unique_ptr<Text> {
    TextUniquePtr() { reset(checked([](_fmxcpt& x) { return FM_Text_Constructor1(x); })); }
};
struct DataUniquePtr : std::unique_ptr<Data> {
    DataUniquePtr() { reset(checked([](_fmxcpt& x) { return FM_Data_Constructor1(x); })); }
};
struct DataVectUniquePtr : std::unique_ptr<DataVect> {
    DataVectUniquePtr() {
        reset(checked([](_fmxcpt& x) { return FM_DataVect_Constructor1(x); }));
    }
};
struct RowVectUniquePtr : std::unique_ptr<RowVect> {
    RowVectUniquePtr() { reset(checked([](_fmxcpt& x) { return FM_RowVect_Constructor1(x); })); }
};
struct ExprEnvUniquePtr : std::unique_ptr<ExprEnv> {
    ExprEnvUniquePtr() { reset(checked([](_fmxcpt& x) { return FM_ExprEnv_Constructor1(x); })); }
};
struct FixPtUniquePtr : std::unique_ptr<FixPt> {
    explicit FixPtUniquePtr(int32 val = 0, int precision = kDefltFixedPrecision) {
        reset(checked([&](_fmxcpt& x) { return FM_FixPt_Constructor1(val, precision, x); }));
    }
    FixPtUniquePtr(int32 val, const FixPt& precisionExample) {
        reset(checked(
            [&](_fmxcpt& x) { return FM_FixPt_Constructor2(val, precisionExample, x); }));
    }
};
struct DateTimeUniquePtr : std::unique_ptr<DateTime> {
    DateTimeUniquePtr() { reset(checked([](_fmxcpt& x) { return FM_DateTime_Constructor1(x); })); }
    DateTimeUniquePtr(const Text& dateText, const Locale& intl) {
        reset(checked([&](_fmxcpt& x) { return FM_DateTime_Constructor3(dateText, intl, x); }));
    }
};
struct BinaryDataUniquePtr : std::unique_ptr<BinaryData> {
    BinaryDataUniquePtr() {
        reset(checked([](_fmxcpt& x) { return FM_BinaryData_Constructor1(x); }));
    }
    explicit BinaryDataUniquePtr(const BinaryData& source) {
        reset(checked([&](_fmxcpt& x) { return FM_BinaryData_Constructor2(source, x); }));
    }
    BinaryDataUniquePtr(const Text& name, uint32 amount, void* buffer) {
        reset(checked(
            [&](_fmxcpt& x) { return FM_BinaryData_Constructor3(name, amount, buffer, x); }));
    }
};
struct QuadCharUniquePtr : std::unique_ptr<QuadChar> {
    QuadCharUniquePtr() { reset(checked([](_fmxcpt& x) { return FM_QuadChar_Constructor1(x); })); }
    QuadCharUniquePtr(char c0, char c1, char c2, char c3) {
        reset(checked(
            [&](_fmxcpt& x) { return FM_QuadChar_Constructor2(c0, c1, c2, c3, x); }));
    }
};
struct LocaleUniquePtr : std::unique_ptr<Locale> {
    explicit LocaleUniquePtr(int32 type = kLocale_System) {
        reset(checked([&](_fmxcpt& x) { return FM_Locale_Constructor1(type, x); }));
    }
    explicit LocaleUniquePtr(const Locale& copy) {
        reset(checked([&](_fmxcpt& x) { return FM_Locale_Constructor2(copy, x); }));
    }
};
struct ColorUniquePtr : std::unique_ptr<Color> {
    ColorUniquePtr() { reset(checked([](_fmxcpt& x) { return FM_Color_Constructor1(x); })); }
    ColorUniquePtr(uchar r, uchar g, uchar b, uchar a = 255) {
        reset(checked([&](_fmxcpt& x) { return FM_Color_Constructor2(r, g, b, a, x); }));
    }
};
struct CharacterStyleUniquePtr : std::unique_ptr<CharacterStyle> {
    CharacterStyleUniquePtr() {
        reset(checked([](_fmxcpt& x) { return FM_CharacterStyle_Constructor1(x); }));
    }
    CharacterStyleUniquePtr(uint16 font, uint16 face, uint16 size,
                            const Color& color = Color::Black()) {
        reset(checked([&](_fmxcpt& x) {
            return FM_CharacterStyle_Constructor2(font, face, size, color, x);
        }));
    }
    explicit CharacterStyleUniquePtr(const CharacterStyle& style) {
        reset(checked([&](_fmxcpt& x) { return FM_CharacterStyle_Constructor3(style, x); }));
    }
};

// The older owning-pointer names, kept as aliases of the unique kinds.
using TextAutoPtr = TextUniquePtr;
using DataAutoPtr = DataUniquePtr;
using FixPtAutoPtr = FixPtUniquePtr;
using DateTimeAutoPtr = DateTimeUniquePtr;
using QuadCharAutoPtr = QuadCharUniquePtr;
using LocaleAutoPtr = LocaleUniquePtr;
using RowVectAutoPtr = RowVectUniquePtr;
using DataVectAutoPtr = DataVectUniquePtr;
using CharacterStyleAutoPtr = CharacterStyleUniquePtr;

}  // namespace fmx
