// Thin C++ handles over the host's C interface. Every class is an opaque, never-instantiated
// handle; members forward to the matching FM_* function and turn the host's failure record into
// an exception (std::bad_alloc for code 1, std::exception for code 2). Objects are created only
// through the owning pointers at the end of this file and are released with the host's Delete.
#pragma once

#include <exception>
#include <memory>
#include <new>
#include <string_view>
#include <type_traits>
#include <utility>

#include "host/fmx_abi.h"

namespace fmx {

// Out of line and marked cold, so that the check after every host call is one compare with
// zero. Only the two codes the host defines are failures; anything else is ignored.
[[gnu::cold, gnu::noinline]] inline void ThrowIfHostFailure(int32 code) {
    if (code == _fmxcpt::kBadAlloc) throw std::bad_alloc();
    if (code == _fmxcpt::kUnknown) throw std::exception();
}

inline void _fmxcpt::Check() const {
    if (m_code != kNoErr) [[unlikely]] {
        ThrowIfHostFailure(m_code);
    }
}

// Calls a host function with a fresh failure record as its last argument and turns a failure
// it reports into an exception.
template <class Result, class... Params, class... Args>
inline Result call(Result (*function)(Params...), Args&&... args) {
    _fmxcpt x;
    if constexpr (std::is_void_v<Result>) {
        function(std::forward<Args>(args)..., x);
        x.Check();
    } else {
        Result r = function(std::forward<Args>(args)..., x);
        x.Check();
        return r;
    }
}

// Releasing never throws: a failure reported by a host Delete is ignored.
#define FMX_OPAQUE_HANDLE(Class)             \
public:                                      \
    Class() = delete;                        \
    Class(const Class&) = delete;            \
    Class& operator=(const Class&) = delete; \
    static void operator delete(void* obj) { \
        _fmxcpt x;                           \
        FM_##Class##_Delete(obj, x);         \
    }

class QuadChar {
    FMX_OPAQUE_HANDLE(QuadChar)
    uchar operator[](int i) const { return call(FM_QuadChar_operatorCAR, this, i); }
    bool operator==(const QuadChar& v) const { return call(FM_QuadChar_operatorEQ, this, v); }
    bool operator!=(const QuadChar& v) const { return !(*this == v); }
    uint32 GetMacType() const { return call(FM_QuadChar_GetMacType, this); }
    void SetMacType(uint32 v) { call(FM_QuadChar_SetMacType, this, v); }
};

class Locale {
    FMX_OPAQUE_HANDLE(Locale)
};

class Color {
    FMX_OPAQUE_HANDLE(Color)
    uchar GetRed() const { return call(FM_Color_GetRed, this); }
    uchar GetGreen() const { return call(FM_Color_GetGreen, this); }
    uchar GetBlue() const { return call(FM_Color_GetBlue, this); }
    uchar GetAlpha() const { return call(FM_Color_GetAlpha, this); }
    void SetRed(uchar v) { call(FM_Color_SetRed, this, v); }
    void SetGreen(uchar v) { call(FM_Color_SetGreen, this, v); }
    void SetBlue(uchar v) { call(FM_Color_SetBlue, this, v); }
    void SetAlpha(uchar v) { call(FM_Color_SetAlpha, this, v); }
    bool operator==(const Color& c) const { return call(FM_Color_operatorEQ, this, c); }
    bool operator!=(const Color& c) const { return !(*this == c); }
    static const Color& White() { return *FM_Color_White(); }
    static const Color& Black() { return *FM_Color_Black(); }
};

class CharacterStyle {
    FMX_OPAQUE_HANDLE(CharacterStyle)
    using Face = uint16;
    using FontID = uint16;
    using FontSize = uint16;
    void EnableFont() { call(FM_CharacterStyle_EnableFont, this); }
    void EnableFace(Face f) { call(FM_CharacterStyle_EnableFace, this, f); }
    void EnableSize() { call(FM_CharacterStyle_EnableSize, this); }
    void EnableColor() { call(FM_CharacterStyle_EnableColor, this); }
    void DisableFont() { call(FM_CharacterStyle_DisableFont, this); }
    void DisableFace(Face f) { call(FM_CharacterStyle_DisableFace, this, f); }
    void DisableAllFaces() { call(FM_CharacterStyle_DisableAllFaces, this); }
    void DisableSize() { call(FM_CharacterStyle_DisableSize, this); }
    void DisableColor() { call(FM_CharacterStyle_DisableColor, this); }
    void DisableAll() { call(FM_CharacterStyle_DisableAll, this); }
    bool IsAllDisabled() const { return call(FM_CharacterStyle_IsAllDisabled, this); }
    bool IsFontEnabled() const { return call(FM_CharacterStyle_IsFontEnabled, this); }
    bool IsFaceEnabled(Face f) const { return call(FM_CharacterStyle_IsFaceEnabled, this, f); }
    bool IsAnyFaceEnabled() const { return call(FM_CharacterStyle_IsAnyFaceEnabled, this); }
    bool IsSizeEnabled() const { return call(FM_CharacterStyle_IsSizeEnabled, this); }
    bool IsColorEnabled() const { return call(FM_CharacterStyle_IsColorEnabled, this); }
    void SetFontInformation(FontID font, Face face, FontSize size) {
        call(FM_CharacterStyle_SetFontInformation, this, font, face, size);
    }
    // The host declares this getter on a mutable style; it changes nothing.
    void GetFontInformation(FontID& font, Face& face, FontSize& size) const {
        call(FM_CharacterStyle_GetFontInformation, const_cast<CharacterStyle*>(this), font, face,
             size);
    }
    void SetFont(FontID f) { call(FM_CharacterStyle_SetFont, this, f); }
    void SetFace(Face f) { call(FM_CharacterStyle_SetFace, this, f); }
    void SetSize(FontSize s) { call(FM_CharacterStyle_SetSize, this, s); }
    FontID GetFont() const { return call(FM_CharacterStyle_GetFont, this); }
    Face GetFace() const { return call(FM_CharacterStyle_GetFace, this); }
    FontSize GetSize() const { return call(FM_CharacterStyle_GetSize, this); }
    void SetColor(const Color& c) { call(FM_CharacterStyle_SetColor, this, c); }
    const Color& GetColor() const { return *call(FM_CharacterStyle_GetColor, this); }
    void Assign(const CharacterStyle& rhs) { call(FM_CharacterStyle_operatorAS, this, rhs); }
    bool operator==(const CharacterStyle& rhs) const {
        return call(FM_CharacterStyle_operatorEQ, this, rhs);
    }
    bool operator!=(const CharacterStyle& rhs) const {
        return call(FM_CharacterStyle_operatorNE, this, rhs);
    }
};

class Text {
    FMX_OPAQUE_HANDLE(Text)
    uint32 GetSize() const { return call(FM_Text_GetSize, this); }
    void Assign(const char* s, int32 encoding = kEncoding_Native) {
        call(FM_Text_Assign, this, s, encoding);
    }
    // The bytes of `s` (no terminator needed) in `encoding`.
    void Assign(std::string_view s, int32 encoding) {
        AssignWithLength(s.empty() ? "" : s.data(), static_cast<uint32>(s.size()), encoding);
    }
    void AssignWithLength(const char* s, uint32 length, int32 encoding = kEncoding_Native) {
        call(FM_Text_AssignWithLength, this, s, length, encoding);
    }
    void AssignWide(const wchar_t* s) { call(FM_Text_AssignWide, this, s); }
    void AssignUnicode(const uint16* s) { call(FM_Text_AssignUnicode, this, s); }
    void AssignUnicodeWithLength(const uint16* s, uint32 length) {
        call(FM_Text_AssignUnicodeWithLength, this, s, length);
    }
    void GetUnicode(uint16* buffer, uint32 position, uint32 size) const {
        call(FM_Text_GetUnicode, this, buffer, position, size);
    }
    void GetBytes(char* buffer, uint32 buffersize, uint32 position = 0, uint32 size = kSize_End,
                  int32 encoding = kEncoding_Native) const {
        call(FM_Text_GetBytes, this, buffer, buffersize, position, size, encoding);
    }
    uint32 GetBytesEx(char* buffer, uint32 buffersize, uint32 position = 0, uint32 size = kSize_End,
                      int32 encoding = kEncoding_UTF8) const {
        return call(FM_Text_GetBytesEx, this, buffer, buffersize, position, size, encoding);
    }
    void SetText(const Text& other, uint32 position = 0, uint32 size = kSize_End) {
        call(FM_Text_SetText, this, other, position, size);
    }
    void AppendText(const Text& other, uint32 position = 0, uint32 size = kSize_End) {
        call(FM_Text_AppendText, this, other, position, size);
    }
    void InsertText(const Text& other, uint32 position) {
        call(FM_Text_InsertText, this, other, position);
    }
    void DeleteText(uint32 position, uint32 size = kSize_End) {
        call(FM_Text_DeleteText, this, position, size);
    }
    uint32 Find(const Text& other, uint32 position) const {
        return call(FM_Text_Find, this, other, position);
    }
    uint32 FindPrev(const Text& other, uint32 position) const {
        return call(FM_Text_FindPrev, this, other, position);
    }
    uint32 FindIgnoringCase(const Text& other, uint32 position) const {
        return call(FM_Text_FindIgnoringCase, this, other, position);
    }
    void Uppercase() { call(FM_Text_Uppercase, this); }
    void Lowercase() { call(FM_Text_Lowercase, this); }
    void GetStyle(CharacterStyle& style, uint32 position) const {
        call(FM_Text_GetStyle, this, style, position);
    }
    void GetDefaultStyle(CharacterStyle& style) const {
        call(FM_Text_GetDefaultStyle, this, style);
    }
    void SetStyle(const CharacterStyle& style, uint32 position = 0, uint32 size = kSize_End) {
        call(FM_Text_SetStyle, this, style, position, size);
    }
    void RemoveStyle(const CharacterStyle& style) { call(FM_Text_RemoveStyle, this, style); }
    void ResetAllStyleBuffers() { call(FM_Text_ResetAllStyleBuffers, this); }
    bool operator==(const Text& that) const { return call(FM_Text_operatorEQ, this, that); }
    bool operator!=(const Text& that) const { return call(FM_Text_operatorNE, this, that); }
    bool operator<(const Text& that) const { return call(FM_Text_operatorLT, this, that); }
};

class FixPt {
    FMX_OPAQUE_HANDLE(FixPt)
    void AssignInt(int32 v) { call(FM_FixPt_AssignInt, this, v); }
    void AssignInt64(int64 v) { call(FM_FixPt_AssignInt64, this, v); }
    void AssignDouble(double v) { call(FM_FixPt_AssignDouble, this, v); }
    void AssignFixPt(const FixPt& v) { call(FM_FixPt_AssignFixPt, this, v); }
    bool operator==(const FixPt& v) const { return call(FM_FixPt_operatorEQ, this, v); }
    bool operator!=(const FixPt& v) const { return !(*this == v); }
    bool operator<(const FixPt& v) const { return call(FM_FixPt_operatorLT, this, v); }
    void Increment(int32 n) { call(FM_FixPt_Increment, this, n); }
    void Decrement(int32 n) { call(FM_FixPt_Decrement, this, n); }
    void Negate() { call(FM_FixPt_Negate, this); }
    int GetPrecision() const { return call(FM_FixPt_GetPrecision, this); }
    void SetPrecision(int p) { call(FM_FixPt_SetPrecision, this, p); }
    void Add(const FixPt& arg, FixPt& result) const { call(FM_FixPt_Add, this, arg, result); }
    void Subtract(const FixPt& arg, FixPt& result) const {
        call(FM_FixPt_Subtract, this, arg, result);
    }
    void Multiply(const FixPt& arg, FixPt& result) const {
        call(FM_FixPt_Multiply, this, arg, result);
    }
    errcode Divide(const FixPt& arg, FixPt& result) const {
        return call(FM_FixPt_Divide, this, arg, result);
    }
    bool AsBool() const { return call(FM_FixPt_AsBool, this); }
    int32 AsLong() const { return call(FM_FixPt_AsLong, this); }
    int64 AsLong64() const { return call(FM_FixPt_AsLong64, this); }
    double AsFloat() const { return call(FM_FixPt_AsFloat, this); }
};

class DateTime {
    FMX_OPAQUE_HANDLE(DateTime)
    bool operator==(const DateTime& v) const { return call(FM_DateTime_operatorEQ, this, v); }
    bool operator!=(const DateTime& v) const { return !(*this == v); }
    void Now() { call(FM_DateTime_Now, this); }
    void SetDate(const DateTime& v) { call(FM_DateTime_SetDate, this, v); }
    void SetTime(const DateTime& v) { call(FM_DateTime_SetTime, this, v); }
    errcode SetNormalizedDate(int16 month, int16 day, int16 year) {
        return call(FM_DateTime_SetNormalizedDate1, this, month, day, year);
    }
    void SetDaysSinceEpoch(int64 days) { call(FM_DateTime_SetDaysSinceEpoch, this, days); }
    errcode SetNormalizedTime(int64 hour, int16 minute, int16 sec, int32 usec = 0) {
        return call(FM_DateTime_SetNormalizedTime1, this, hour, minute, sec, usec);
    }
    void SetSecsSinceMidnight(const FixPt& secs) {
        call(FM_DateTime_SetSecsSinceMidnight, this, secs);
    }
    void SetSecondsSinceEpoch(const FixPt& seconds) {
        call(FM_DateTime_SetSecondsSinceEpoch, this, seconds);
    }
    int16 GetYear() const { return call(FM_DateTime_GetYear, this); }
    int16 GetMonth() const { return call(FM_DateTime_GetMonth, this); }
    int16 GetDay() const { return call(FM_DateTime_GetDay, this); }
    int32 GetDaysSinceEpoch() const { return call(FM_DateTime_GetDaysSinceEpoch, this); }
    int32 GetHour() const { return call(FM_DateTime_GetHour, this); }
    int16 GetMinute() const { return call(FM_DateTime_GetMinute, this); }
    int16 GetSec() const { return call(FM_DateTime_GetSec, this); }
    int32 GetUSec() const { return call(FM_DateTime_GetUSec, this); }
    void GetSecsSinceMidnight(FixPt& results) const {
        call(FM_DateTime_GetSecsSinceMidnight, this, results);
    }
    void GetSecondsSinceEpoch(FixPt& results) const {
        call(FM_DateTime_GetSecondsSinceEpoch, this, results);
    }
};

class BinaryData {
    FMX_OPAQUE_HANDLE(BinaryData)
    int32 GetCount() const { return call(FM_BinaryData_GetCount, this); }
    int32 GetIndex(const QuadChar& type) const { return call(FM_BinaryData_GetIndex, this, type); }
    uint32 GetTotalSize() const { return call(FM_BinaryData_GetTotalSize, this); }
    void GetType(int32 index, QuadChar& type) const {
        call(FM_BinaryData_GetType, this, index, type);
    }
    uint32 GetSize(int32 index) const { return call(FM_BinaryData_GetSize, this, index); }
    errcode GetData(int32 index, uint32 offset, uint32 amount, void* buffer) const {
        return call(FM_BinaryData_GetData, this, index, offset, amount, buffer);
    }
    errcode Add(const QuadChar& type, uint32 amount, void* buffer) {
        return call(FM_BinaryData_Add, this, type, amount, buffer);
    }
    bool operator==(const BinaryData& v) const { return call(FM_BinaryData_operatorEQ, this, v); }
};

class Data {
    FMX_OPAQUE_HANDLE(Data)
    using DataType = fmx::DataType;
    bool IsEmpty() const { return call(FM_Data_IsEmpty, this); }
    bool IsValid() const { return call(FM_Data_IsValid, this); }
    void Clear(DataType newNativeType = kDTInvalid) { call(FM_Data_Clear, this, newNativeType); }
    const Text& GetAsText() const { return *call(FM_Data_GetAsText, this); }
    const FixPt& GetAsNumber() const { return *call(FM_Data_GetAsNumber, this); }
    const DateTime& GetAsDate() const { return *call(FM_Data_GetAsDate, this); }
    const DateTime& GetAsTime() const { return *call(FM_Data_GetAsTime, this); }
    const DateTime& GetAsTimeStamp() const { return *call(FM_Data_GetAsTimeStamp, this); }
    bool GetAsBoolean() const { return call(FM_Data_GetAsBoolean, this); }
    const BinaryData& GetBinaryData() const { return *call(FM_Data_GetBinaryData, this); }
    const Locale& GetLocale() const { return *call(FM_Data_GetLocale, this); }
    DataType GetNativeType() const {
        return static_cast<DataType>(call(FM_Data_GetNativeType, this));
    }
    void ConvertData(DataType nativeType) { call(FM_Data_ConvertData, this, nativeType); }
    errcode SetAsText(const Text& text, const Locale& locale, DataType nativeType = kDTText) {
        return call(FM_Data_SetAsText, this, text, locale, nativeType);
    }
    void SetAsNumber(const FixPt& number, DataType nativeType = kDTNumber) {
        call(FM_Data_SetAsNumber, this, number, nativeType);
    }
    void SetAsDate(const DateTime& date, DataType nativeType = kDTDate) {
        call(FM_Data_SetAsDate, this, date, nativeType);
    }
    void SetAsTime(const DateTime& time, DataType nativeType = kDTTime) {
        call(FM_Data_SetAsTime, this, time, nativeType);
    }
    void SetAsTimeStamp(const DateTime& ts, DataType nativeType = kDTTimeStamp) {
        call(FM_Data_SetAsTimeStamp, this, ts, nativeType);
    }
    void SetBinaryData(const BinaryData& data, bool forceBinaryNativeType = true) {
        call(FM_Data_SetBinaryData, this, data, forceBinaryNativeType);
    }
    bool GetFontInfo(CharacterStyle::FontID font, Text& fontName, const ExprEnv& env) const {
        uint16 script = 0;
        return call(FM_Data_GetFontInfo, this, font, fontName, script, env);
    }
};

class DataVect {
    FMX_OPAQUE_HANDLE(DataVect)
    uint32 Size() const { return call(FM_DataVect_Size, this); }
    void Clear() { call(FM_DataVect_Clear, this); }
    bool IsEmpty() const { return call(FM_DataVect_IsEmpty, this); }
    void PushBack(const Data& data) { call(FM_DataVect_PushBack, this, data); }
    const Data& At(uint32 i) const { return *call(FM_DataVect_At, this, i); }
    const Text& AtAsText(uint32 i) const { return *call(FM_DataVect_AtAsText, this, i); }
    const FixPt& AtAsNumber(uint32 i) const { return *call(FM_DataVect_AtAsNumber, this, i); }
    const DateTime& AtAsDate(uint32 i) const { return *call(FM_DataVect_AtAsDate, this, i); }
    const DateTime& AtAsTime(uint32 i) const { return *call(FM_DataVect_AtAsTime, this, i); }
    const DateTime& AtAsTimeStamp(uint32 i) const {
        return *call(FM_DataVect_AtAsTimeStamp, this, i);
    }
    bool AtAsBoolean(uint32 i) const { return call(FM_DataVect_AtAsBoolean, this, i); }
    const BinaryData& AtAsBinaryData(uint32 i) const {
        return *call(FM_DataVect_AtAsBinaryData, this, i);
    }
};

class RowVect {
    FMX_OPAQUE_HANDLE(RowVect)
    uint32 Size() const { return call(FM_RowVect_Size, this); }
    bool IsEmpty() const { return call(FM_RowVect_IsEmpty, this); }
    const DataVect& At(uint32 i) const { return *call(FM_RowVect_At, this, i); }
};

class ExprEnv {
    FMX_OPAQUE_HANDLE(ExprEnv)
    errcode Evaluate(const Text& expression, Data& result) const {
        return call(FM_ExprEnv_Evaluate, this, expression, result);
    }
    // A calculation given as bytes of the host's native encoding.
    errcode Evaluate(std::string_view expression, Data& result) const;
    errcode EvaluateGetFunction(short functionValue, Data& result) const {
        return call(FM_ExprEnv_EvaluateGetFunction, this, functionValue, result);
    }
    errcode ExecuteFileSQL(const Text& expression, const Text& filename, const DataVect& parameters,
                           RowVect& result) const {
        return call(FM_ExprEnv_ExecuteFileSQL, this, expression, filename, parameters, result);
    }
    errcode ExecuteFileSQLTextResult(const Text& expression, const Text& filename,
                                     const DataVect& parameters, Data& result, uint16 colSep,
                                     uint16 rowSep) const {
        return call(FM_ExprEnv_ExecuteFileSQLTextResult, this, expression, filename, parameters,
                    result, colSep, rowSep);
    }
    static errcode RegisterExternalFunction(const QuadChar& pluginId, short functionId,
                                            const Text& functionName, const Text& functionPrototype,
                                            short minArgs, short maxArgs, uint32 compatibleOnFlags,
                                            ExtPluginType funcPtr) {
        return call(FM_ExprEnv_RegisterExternalFunction, pluginId, functionId, functionName,
                    functionPrototype, minArgs, maxArgs, compatibleOnFlags, funcPtr);
    }
    static errcode UnRegisterExternalFunction(const QuadChar& pluginId, short functionId) {
        return call(FM_ExprEnv_UnRegisterExternalFunction, pluginId, functionId);
    }
};

#undef FMX_OPAQUE_HANDLE

// Owning pointers: the only way to create host objects. Each releases its object through the
// host's Delete when it goes out of scope or is reset.
struct TextUniquePtr : std::unique_ptr<Text> {
    TextUniquePtr() { reset(call(FM_Text_Constructor1)); }
    // A text holding the bytes of `s` in `encoding`.
    explicit TextUniquePtr(std::string_view s, int32 encoding = kEncoding_Native)
        : TextUniquePtr() {
        get()->Assign(s, encoding);
    }
};
struct DataUniquePtr : std::unique_ptr<Data> {
    DataUniquePtr() { reset(call(FM_Data_Constructor1)); }
};
struct DataVectUniquePtr : std::unique_ptr<DataVect> {
    DataVectUniquePtr() { reset(call(FM_DataVect_Constructor1)); }
};
struct RowVectUniquePtr : std::unique_ptr<RowVect> {
    RowVectUniquePtr() { reset(call(FM_RowVect_Constructor1)); }
};
struct ExprEnvUniquePtr : std::unique_ptr<ExprEnv> {
    ExprEnvUniquePtr() { reset(call(FM_ExprEnv_Constructor1)); }
};
struct FixPtUniquePtr : std::unique_ptr<FixPt> {
    explicit FixPtUniquePtr(int32 val = 0, int precision = kDefltFixedPrecision) {
        reset(call(FM_FixPt_Constructor1, val, precision));
    }
    FixPtUniquePtr(int32 val, const FixPt& precisionExample) {
        reset(call(FM_FixPt_Constructor2, val, precisionExample));
    }
};
struct DateTimeUniquePtr : std::unique_ptr<DateTime> {
    DateTimeUniquePtr() { reset(call(FM_DateTime_Constructor1)); }
    DateTimeUniquePtr(const Text& dateText, const Locale& intl) {
        reset(call(FM_DateTime_Constructor3, dateText, intl));
    }
};
struct BinaryDataUniquePtr : std::unique_ptr<BinaryData> {
    BinaryDataUniquePtr() { reset(call(FM_BinaryData_Constructor1)); }
    explicit BinaryDataUniquePtr(const BinaryData& source) {
        reset(call(FM_BinaryData_Constructor2, source));
    }
    BinaryDataUniquePtr(const Text& name, uint32 amount, void* buffer) {
        reset(call(FM_BinaryData_Constructor3, name, amount, buffer));
    }
};
struct QuadCharUniquePtr : std::unique_ptr<QuadChar> {
    QuadCharUniquePtr() { reset(call(FM_QuadChar_Constructor1)); }
    QuadCharUniquePtr(char c0, char c1, char c2, char c3) {
        reset(call(FM_QuadChar_Constructor2, c0, c1, c2, c3));
    }
};
struct LocaleUniquePtr : std::unique_ptr<Locale> {
    explicit LocaleUniquePtr(int32 type = kLocale_System) {
        reset(call(FM_Locale_Constructor1, type));
    }
    explicit LocaleUniquePtr(const Locale& copy) { reset(call(FM_Locale_Constructor2, copy)); }
};
struct ColorUniquePtr : std::unique_ptr<Color> {
    ColorUniquePtr() { reset(call(FM_Color_Constructor1)); }
    ColorUniquePtr(uchar r, uchar g, uchar b, uchar a = 255) {
        reset(call(FM_Color_Constructor2, r, g, b, a));
    }
};
struct CharacterStyleUniquePtr : std::unique_ptr<CharacterStyle> {
    CharacterStyleUniquePtr() { reset(call(FM_CharacterStyle_Constructor1)); }
    CharacterStyleUniquePtr(uint16 font, uint16 face, uint16 size,
                            const Color& color = Color::Black()) {
        reset(call(FM_CharacterStyle_Constructor2, font, face, size, color));
    }
    explicit CharacterStyleUniquePtr(const CharacterStyle& style) {
        reset(call(FM_CharacterStyle_Constructor3, style));
    }
};

inline errcode ExprEnv::Evaluate(std::string_view expression, Data& result) const {
    return Evaluate(*TextUniquePtr(expression), result);
}

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
