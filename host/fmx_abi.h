// The host's exported C functions. Member operations take the object as their first argument
// (`_self`); constructors return a new object that the matching Delete frees. Every function takes
// the failure record last and never throws.
#pragma once

#include "host/fmx_types.h"

#define FMX_API __attribute__((visibility("default")))

extern "C" {

using fmx::_fmxcpt;

// Text
FMX_API fmx::Text* FM_Text_Constructor1(_fmxcpt& x) noexcept;
FMX_API void FM_Text_Delete(void* self, _fmxcpt& x) noexcept;
FMX_API fmx::uint32 FM_Text_GetSize(const void* self, _fmxcpt& x) noexcept;
FMX_API void FM_Text_Assign(void* self, const char* s, fmx::int32 encoding, _fmxcpt& x) noexcept;
FMX_API void FM_Text_AssignWithLength(void* self, const char* s, fmx::uint32 strlength,
                                      fmx::int32 encoding, _fmxcpt& x) noexcept;
FMX_API void FM_Text_AssignWide(void* self, const wchar_t* s, _fmxcpt& x) noexcept;
FMX_API void FM_Text_AssignWideWithLength(void* self, const wchar_t* s, fmx::uint32 strlength,
                                          _fmxcpt& x) noexcept;
FMX_API void FM_Text_AssignUnicode(void* self, const fmx::uint16* s, _fmxcpt& x) noexcept;
FMX_API void FM_Text_AssignUnicodeWithLength(void* self, const fmx::uint16* s,
                                             fmx::uint32 strlength, _fmxcpt& x) noexcept;
FMX_API void FM_Text_GetUnicode(const void* self, fmx::uint16* buffer, fmx::uint32 position,
                                fmx::uint32 size, _fmxcpt& x) noexcept;
FMX_API void FM_Text_GetBytes(const void* self, char* buffer, fmx::uint32 buffersize,
                              fmx::uint32 position, fmx::uint32 size, fmx::int32 encoding,
                              _fmxcpt& x) noexcept;
FMX_API fmx::uint32 FM_Text_GetBytesEx(const void* self, char* buffer, fmx::uint32 buffersize,
                                       fmx::uint32 position, fmx::uint32 size,
                                       fmx::int32 encoding, _fmxcpt& x) noexcept;
FMX_API void FM_Text_SetText(void* self, const fmx::Text& other, fmx::uint32 position,
                             fmx::uint32 size, _fmxcpt& x) noexcept;
FMX_API void FM_Text_AppendText(void* self, const fmx::Text& other, fmx::uint32 position,
                                fmx::uint32 size, _fmxcpt& x) noexcept;
FMX_API void FM_Text_InsertText(void* self, const fmx::Text& other, fmx::uint32 position,
                                _fmxcpt& x) noexcept;
FMX_API void FM_Text_DeleteText(void* self, fmx::uint32 positionToDelete,
                                fmx::uint32 sizeToDelete, _fmxcpt& x) noexcept;
FMX_API fmx::uint32 FM_Text_Find(const void* self, const fmx::Text& other, fmx::uint32 position,
                                 _fmxcpt& x) noexcept;
FMX_API fmx::uint32 FM_Text_FindPrev(const void* self, const fmx::Text& other,
                                     fmx::uint32 position, _fmxcpt& x) noexcept;
FMX_API fmx::uint32 FM_Text_FindIgnoringCase(const void* self, const fmx::Text& other,
                                             fmx::uint32 position, _fmxcpt& x) noexcept;
FMX_API fmx::uint32 FM_Text_FindPrevIgnoringCase(const void* self, const fmx::Text& other,
                                                 fmx::uint32 position, _fmxcpt& x) noexcept;
FMX_API void FM_Text_Uppercase(const void* self, _fmxcpt& x) noexcept;
FMX_API void FM_Text_Lowercase(const void* self, _fmxcpt& x) noexcept;
FMX_API void FM_Text_GetStyle(const void* self, fmx::CharacterStyle& style, fmx::uint32 position,
                              _fmxcpt& x) noexcept;
FMX_API void FM_Text_GetDefaultStyle(const void* self, fmx::CharacterStyle& style,
                                     _fmxcpt& x) noexcept;
FMX_API void FM_Text_SetStyle(void* self, const fmx::CharacterStyle& style, fmx::uint32 position,
                              fmx::uint32 size, _fmxcpt& x) noexcept;
FMX_API void FM_Text_RemoveStyle(void* self, const fmx::CharacterStyle& style,
                                 _fmxcpt& x) noexcept;
FMX_API void FM_Text_ResetAllStyleBuffers(void* self, _fmxcpt& x) noexcept;
FMX_API bool FM_Text_operatorEQ(const void* self, const fmx::Text& that, _fmxcpt& x) noexcept;
FMX_API bool FM_Text_operatorNE(const void* self, const fmx::Text& that, _fmxcpt& x) noexcept;
FMX_API bool FM_Text_operatorLT(const void* self, const fmx::Text& that, _fmxcpt& x) noexcept;
FMX_API bool FM_Text_operatorLE(const void* self, const fmx::Text& that, _fmxcpt& x) noexcept;
FMX_API bool FM_Text_operatorGT(const void* self, const fmx::Text& that, _fmxcpt& x) noexcept;
FMX_API bool FM_Text_operatorGE(const void* self, const fmx::Text& that, _fmxcpt& x) noexcept;

// Data
FMX_API fmx::Data* FM_Data_Constructor1(_fmxcpt& x) noexcept;
FMX_API void FM_Data_Delete(void* self, _fmxcpt& x) noexcept;
FMX_API bool FM_Data_IsEmpty(const void* self, _fmxcpt& x) noexcept;
FMX_API bool FM_Data_IsValid(const void* self, _fmxcpt& x) noexcept;
FMX_API bool FM_Data_IsFindRequest(const void* self, _fmxcpt& x) noexcept;
FMX_API void FM_Data_Clear(void* self, fmx::int32 newNativeType, _fmxcpt& x) noexcept;
FMX_API const fmx::Text* FM_Data_GetAsText(const void* self, _fmxcpt& x) noexcept;
FMX_API const fmx::FixPt* FM_Data_GetAsNumber(const void* self, _fmxcpt& x) noexcept;
FMX_API const fmx::DateTime* FM_Data_GetAsDate(const void* self, _fmxcpt& x) noexcept;
FMX_API const fmx::DateTime* FM_Data_GetAsTime(const void* self, _fmxcpt& x) noexcept;
FMX_API const fmx::DateTime* FM_Data_GetAsTimeStamp(const void* self, _fmxcpt& x) noexcept;
FMX_API bool FM_Data_GetAsBoolean(const void* self, _fmxcpt& x) noexcept;
FMX_API const fmx::BinaryData* FM_Data_GetBinaryData(const void* self, _fmxcpt& x) noexcept;
FMX_API const fmx::Locale* FM_Data_GetLocale(const void* self, _fmxcpt& x) noexcept;
FMX_API fmx::int32 FM_Data_GetNativeType(const void* self, _fmxcpt& x) noexcept;
FMX_API void FM_Data_ConvertData(void* self, fmx::int32 nativeType, _fmxcpt& x) noexcept;
FMX_API fmx::errcode FM_Data_SetAsText(void* self, const fmx::Text& textData,
                                       const fmx::Locale& sourceLocale, fmx::int32 nativeType,
                                       _fmxcpt& x) noexcept;
FMX_API void FM_Data_SetAsNumber(void* self, const fmx::FixPt& numericData, fmx::int32 nativeType,
                                 _fmxcpt& x) noexcept;
FMX_API void FM_Data_SetAsDate(void* self, const fmx::DateTime& dateData, fmx::int32 nativeType,
                               _fmxcpt& x) noexcept;
FMX_API void FM_Data_SetAsTime(void* self, const fmx::DateTime& timeData, fmx::int32 nativeType,
                               _fmxcpt& x) noexcept;
FMX_API void FM_Data_SetAsTimeStamp(void* self, const fmx::DateTime& timeStampData,
                                    fmx::int32 nativeType, _fmxcpt& x) noexcept;
FMX_API void FM_Data_SetDateTime(void* self, const fmx::DateTime& dateTimeData,
                                 fmx::int32 dateTimeType, fmx::int32 nativeType,
                                 _fmxcpt& x) noexcept;
FMX_API void FM_Data_SetBinaryData(void* self, const fmx::BinaryData& binaryData,
                                   bool forceBinaryNativeType, _fmxcpt& x) noexcept;
FMX_API fmx::uint16 FM_Data_GetPostscriptFontID(const void* self,
                                                const fmx::Text& fontPostscriptName,
                                                const fmx::ExprEnv& env, _fmxcpt& x) noexcept;
FMX_API bool FM_Data_GetPostscriptFontInfo(const void* self, fmx::uint16 font,
                                           fmx::Text& fontPostscriptName, const fmx::ExprEnv& env,
                                           _fmxcpt& x) noexcept;
FMX_API fmx::uint16 FM_Data_GetFontID(const void* self, const fmx::Text& fontDisplayName,
                                      fmx::uint16 fontScript, const fmx::ExprEnv& env,
                                      _fmxcpt& x) noexcept;
FMX_API bool FM_Data_GetFontInfo(const void* self, fmx::uint16 font, fmx::Text& fontDisplayName,
                                 fmx::uint16& fontScript, const fmx::ExprEnv& env,
                                 _fmxcpt& x) noexcept;

// DataVect and RowVect
FMX_API fmx::DataVect* FM_DataVect_Constructor1(_fmxcpt& x) noexcept;
FMX_API void FM_DataVect_Delete(void* self, _fmxcpt& x) noexcept;
FMX_API fmx::uint32 FM_DataVect_Size(const void* self, _fmxcpt& x) noexcept;
FMX_API void FM_DataVect_Clear(void* self, _fmxcpt& x) noexcept;
FMX_API bool FM_DataVect_IsEmpty(const void* self, _fmxcpt& x) noexcept;
FMX_API void FM_DataVect_PushBack(void* self, const fmx::Data& data, _fmxcpt& x) noexcept;
FMX_API fmx::Data* FM_DataVect_PopBack(void* self, _fmxcpt& x) noexcept;
FMX_API const fmx::Data* FM_DataVect_At(const void* self, fmx::uint32 position,
                                        _fmxcpt& x) noexcept;
FMX_API const fmx::Text* FM_DataVect_AtAsText(const void* self, fmx::uint32 position,
                                              _fmxcpt& x) noexcept;
FMX_API const fmx::FixPt* FM_DataVect_AtAsNumber(const void* self, fmx::uint32 position,
                                                 _fmxcpt& x) noexcept;
FMX_API const fmx::DateTime* FM_DataVect_AtAsDate(const void* self, fmx::uint32 position,
                                                  _fmxcpt& x) noexcept;
FMX_API const fmx::DateTime* FM_DataVect_AtAsTime(const void* self, fmx::uint32 position,
                                                  _fmxcpt& x) noexcept;
FMX_API const fmx::DateTime* FM_DataVect_AtAsTimeStamp(const void* self, fmx::uint32 position,
                                                       _fmxcpt& x) noexcept;
FMX_API bool FM_DataVect_AtAsBoolean(const void* self, fmx::uint32 position, _fmxcpt& x) noexcept;
FMX_API const fmx::BinaryData* FM_DataVect_AtAsBinaryData(const void* self, fmx::uint32 position,
                                                          _fmxcpt& x) noexcept;
FMX_API fmx::RowVect* FM_RowVect_Constructor1(_fmxcpt& x) noexcept;
FMX_API void FM_RowVect_Delete(void* self, _fmxcpt& x) noexcept;
FMX_API fmx::uint32 FM_RowVect_Size(const void* self, _fmxcpt& x) noexcept;
FMX_API bool FM_RowVect_IsEmpty(const void* self, _fmxcpt& x) noexcept;
FMX_API const fmx::DataVect* FM_RowVect_At(const void* self, fmx::uint32 position,
                                           _fmxcpt& x) noexcept;

// ExprEnv
FMX_API fmx::ExprEnv* FM_ExprEnv_Constructor1(_fmxcpt& x) noexcept;
FMX_API void FM_ExprEnv_Delete(void* self, _fmxcpt& x) noexcept;
FMX_API fmx::errcode FM_ExprEnv_Evaluate(const void* self, const fmx::Text& expression,
                                         fmx::Data& result, _fmxcpt& x) noexcept;
FMX_API fmx::errcode FM_ExprEnv_EvaluateGetFunction(const void* self, short functionValue,
                                                    fmx::Data& result, _fmxcpt& x) noexcept;
FMX_API fmx::errcode FM_ExprEnv_ExecuteFileSQL(const void* self, const fmx::Text& expression,
                                               const fmx::Text& filename,
                                               const fmx::DataVect& parameters,
                                               fmx::RowVect& result, _fmxcpt& x) noexcept;
FMX_API fmx::errcode FM_ExprEnv_ExecuteFileSQLTextResult(
    const void* self, const fmx::Text& expression, const fmx::Text& filename,
    const fmx::DataVect& parameters, fmx::Data& result, fmx::uint16 colSep, fmx::uint16 rowSep,
    _fmxcpt& x) noexcept;
FMX_API fmx::ptrtype FM_ExprEnv_SessionID(const void* self, _fmxcpt& x) noexcept;
FMX_API fmx::ptrtype FM_ExprEnv_FileID(const void* self, _fmxcpt& x) noexcept;
FMX_API fmx::errcode FM_ExprEnv_RegisterExternalFunction(
    const fmx::QuadChar& pluginId, short functionId, const fmx::Text& functionName,
    const fmx::Text& functionPrototype, short minArgs, short maxArgs,
    fmx::uint32 compatibleOnFlags, fmx::ExtPluginType funcPtr, _fmxcpt& x) noexcept;
FMX_API fmx::errcode FM_ExprEnv_RegisterExternalFunctionEx(
    const fmx::QuadChar& pluginId, short functionId, const fmx::Text& functionName,
    const fmx::Text& functionPrototype, const fmx::Text& functionDescription, short minArgs,
    short maxArgs, fmx::uint32 compatibleOnFlags, fmx::ExtPluginType funcPtr,
    _fmxcpt& x) noexcept;
FMX_API fmx::errcode FM_ExprEnv_UnRegisterExternalFunction(const fmx::QuadChar& pluginId,
                                                           short functionId, _fmxcpt& x) noexcept;

// FixPt
FMX_API fmx::FixPt* FM_FixPt_Constructor1(fmx::int32 val, int precision, _fmxcpt& x) noexcept;
FMX_API fmx::FixPt* FM_FixPt_Constructor2(fmx::int32 val, const fmx::FixPt& precisionExample,
                                          _fmxcpt& x) noexcept;
FMX_API void FM_FixPt_Delete(void* self, _fmxcpt& x) noexcept;
FMX_API void FM_FixPt_AssignInt(void* self, fmx::int32 that, _fmxcpt& x) noexcept;
FMX_API void FM_FixPt_AssignInt64(void* self, fmx::int64 that, _fmxcpt& x) noexcept;
FMX_API void FM_FixPt_AssignDouble(void* self, double that, _fmxcpt& x) noexcept;
FMX_API void FM_FixPt_AssignFixPt(void* self, const fmx::FixPt& that, _fmxcpt& x) noexcept;
FMX_API bool FM_FixPt_operatorEQ(const void* self, const fmx::FixPt& that, _fmxcpt& x) noexcept;
FMX_API bool FM_FixPt_operatorNE(const void* self, const fmx::FixPt& that, _fmxcpt& x) noexcept;
FMX_API bool FM_FixPt_operatorLT(const void* self, const fmx::FixPt& that, _fmxcpt& x) noexcept;
FMX_API bool FM_FixPt_operatorLE(const void* self, const fmx::FixPt& that, _fmxcpt& x) noexcept;
FMX_API bool FM_FixPt_operatorGT(const void* self, const fmx::FixPt& that, _fmxcpt& x) noexcept;
FMX_API bool FM_FixPt_operatorGE(const void* self, const fmx::FixPt& that, _fmxcpt& x) noexcept;
FMX_API void FM_FixPt_Increment(void* self, fmx::int32 n, _fmxcpt& x) noexcept;
FMX_API void FM_FixPt_Increment64(void* self, fmx::int64 n, _fmxcpt& x) noexcept;
FMX_API void FM_FixPt_Decrement(void* self, fmx::int32 n, _fmxcpt& x) noexcept;
FMX_API void FM_FixPt_Decrement64(void* self, fmx::int64 n, _fmxcpt& x) noexcept;
FMX_API void FM_FixPt_Negate(void* self, _fmxcpt& x) noexcept;
FMX_API int FM_FixPt_GetPrecision(const void* self, _fmxcpt& x) noexcept;
FMX_API void FM_FixPt_SetPrecision(void* self, int precision, _fmxcpt& x) noexcept;
FMX_API void FM_FixPt_Add(const void* self, const fmx::FixPt& arg, fmx::FixPt& result,
                          _fmxcpt& x) noexcept;
FMX_API void FM_FixPt_Subtract(const void* self, const fmx::FixPt& arg, fmx::FixPt& result,
                               _fmxcpt& x) noexcept;
FMX_API void FM_FixPt_Multiply(const void* self, const fmx::FixPt& arg, fmx::FixPt& result,
                               _fmxcpt& x) noexcept;
FMX_API fmx::errcode FM_FixPt_Divide(const void* self, const fmx::FixPt& arg, fmx::FixPt& result,
                                     _fmxcpt& x) noexcept;
FMX_API bool FM_FixPt_AsBool(const void* self, _fmxcpt& x) noexcept;
FMX_API fmx::int32 FM_FixPt_AsLong(const void* self, _fmxcpt& x) noexcept;
FMX_API fmx::int64 FM_FixPt_AsLong64(const void* self, _fmxcpt& x) noexcept;
FMX_API double FM_FixPt_AsFloat(const void* self, _fmxcpt& x) noexcept;

// DateTime
FMX_API fmx::DateTime* FM_DateTime_Constructor1(_fmxcpt& x) noexcept;
FMX_API fmx::DateTime* FM_DateTime_Constructor2(const fmx::unichar16* dateString,
                                                fmx::uint32 dateLength, const fmx::Locale& intl,
                                                _fmxcpt& x) noexcept;
FMX_API fmx::DateTime* FM_DateTime_Constructor3(const fmx::Text& dateText,
                                                const fmx::Locale& intl, _fmxcpt& x) noexcept;
FMX_API void FM_DateTime_Delete(void* self, _fmxcpt& x) noexcept;
FMX_API bool FM_DateTime_operatorEQ(const void* self, const fmx::DateTime& that,
                                    _fmxcpt& x) noexcept;
FMX_API bool FM_DateTime_operatorNE(const void* self, const fmx::DateTime& that,
                                    _fmxcpt& x) noexcept;
FMX_API bool FM_DateTime_IsLeapYear(const void* self, _fmxcpt& x) noexcept;
FMX_API fmx::int16 FM_DateTime_DayOfWeek(const void* self, _fmxcpt& x) noexcept;
FMX_API fmx::int16 FM_DateTime_DayOfYear(const void* self, _fmxcpt& x) noexcept;
FMX_API fmx::int16 FM_DateTime_WeekOfYear(const void* self, _fmxcpt& x) noexcept;
FMX_API void FM_DateTime_Now(void* self, _fmxcpt& x) noexcept;
FMX_API void FM_DateTime_SetDate(void* self, const fmx::DateTime& datetime, _fmxcpt& x) noexcept;
FMX_API void FM_DateTime_SetTime(void* self, const fmx::DateTime& datetime, _fmxcpt& x) noexcept;
FMX_API fmx::errcode FM_DateTime_SetNormalizedDate1(void* self, fmx::int16 month, fmx::int16 day,
                                                    fmx::int16 year, _fmxcpt& x) noexcept;
FMX_API fmx::errcode FM_DateTime_SetNormalizedDate2(void* self, const fmx::FixPt& year,
                                                    const fmx::FixPt& month,
                                                    const fmx::FixPt& day, _fmxcpt& x) noexcept;
FMX_API void FM_DateTime_SetDaysSinceEpoch(void* self, fmx::int64 days, _fmxcpt& x) noexcept;
FMX_API fmx::errcode FM_DateTime_SetNormalizedTime1(void* self, fmx::int64 hour,
                                                    fmx::int16 minute, fmx::int16 sec,
                                                    fmx::int32 usec, _fmxcpt& x) noexcept;
FMX_API fmx::errcode FM_DateTime_SetNormalizedTime2(void* self, const fmx::FixPt& hour,
                                                    const fmx::FixPt& minute,
                                                    const fmx::FixPt& sec, _fmxcpt& x) noexcept;
FMX_API void FM_DateTime_SetSecsSinceMidnight(void* self, const fmx::FixPt& secs,
                                              _fmxcpt& x) noexcept;
FMX_API void FM_DateTime_SetSecondsSinceEpoch(void* self, const fmx::FixPt& seconds,
                                              _fmxcpt& x) noexcept;
FMX_API fmx::int16 FM_DateTime_GetYear(const void* self, _fmxcpt& x) noexcept;
FMX_API fmx::int16 FM_DateTime_GetMonth(const void* self, _fmxcpt& x) noexcept;
FMX_API fmx::int16 FM_DateTime_GetDay(const void* self, _fmxcpt& x) noexcept;
FMX_API fmx::int32 FM_DateTime_GetDaysSinceEpoch(const void* self, _fmxcpt& x) noexcept;
FMX_API fmx::int32 FM_DateTime_GetHour(const void* self, _fmxcpt& x) noexcept;
FMX_API fmx::int16 FM_DateTime_GetMinute(const void* self, _fmxcpt& x) noexcept;
FMX_API fmx::int16 FM_DateTime_GetSec(const void* self, _fmxcpt& x) noexcept;
FMX_API fmx::int32 FM_DateTime_GetUSec(const void* self, _fmxcpt& x) noexcept;
FMX_API void FM_DateTime_GetSeconds(const void* self, fmx::FixPt& results, _fmxcpt& x) noexcept;
FMX_API void FM_DateTime_GetSecsSinceMidnight(const void* self, fmx::FixPt& results,
                                              _fmxcpt& x) noexcept;
FMX_API void FM_DateTime_GetSecondsSinceEpoch(const void* self, fmx::FixPt& results,
                                              _fmxcpt& x) noexcept;

// QuadChar and Locale
FMX_API fmx::QuadChar* FM_QuadChar_Constructor1(_fmxcpt& x) noexcept;
FMX_API fmx::QuadChar* FM_QuadChar_Constructor2(char c0, char c1, char c2, char c3,
                                                _fmxcpt& x) noexcept;
FMX_API fmx::QuadChar* FM_QuadChar_Constructor3(const fmx::QuadChar& value, _fmxcpt& x) noexcept;
FMX_API void FM_QuadChar_Delete(void* self, _fmxcpt& x) noexcept;
FMX_API const fmx::QuadChar* FM_QuadChar_operatorAS(void* self, const fmx::QuadChar& value,
                                                    _fmxcpt& x) noexcept;
FMX_API fmx::uchar FM_QuadChar_operatorAR(void* self, int i, _fmxcpt& x) noexcept;
FMX_API fmx::uchar FM_QuadChar_operatorCAR(const void* self, int i, _fmxcpt& x) noexcept;
FMX_API bool FM_QuadChar_operatorEQ(const void* self, const fmx::QuadChar& value,
                                    _fmxcpt& x) noexcept;
FMX_API bool FM_QuadChar_operatorNE(const void* self, const fmx::QuadChar& value,
                                    _fmxcpt& x) noexcept;
FMX_API fmx::uint32 FM_QuadChar_GetMacType(const void* self, _fmxcpt& x) noexcept;
FMX_API void FM_QuadChar_SetMacType(void* self, fmx::uint32 value, _fmxcpt& x) noexcept;
FMX_API fmx::Locale* FM_Locale_Constructor1(fmx::int32 inputType, _fmxcpt& x) noexcept;
FMX_API fmx::Locale* FM_Locale_Constructor2(const fmx::Locale& copyConstruct, _fmxcpt& x) noexcept;
FMX_API fmx::Locale* FM_Locale_operatorAS(void* self, const fmx::Locale& rhs, _fmxcpt& x) noexcept;
FMX_API void FM_Locale_Delete(void* self, _fmxcpt& x) noexcept;

// Color
FMX_API fmx::Color* FM_Color_Constructor1(_fmxcpt& x) noexcept;
FMX_API fmx::Color* FM_Color_Constructor2(fmx::uchar red, fmx::uchar green, fmx::uchar blue,
                                          fmx::uchar alpha, _fmxcpt& x) noexcept;
FMX_API fmx::Color* FM_Color_Constructor3(const fmx::Color& color, _fmxcpt& x) noexcept;
FMX_API void FM_Color_Delete(void* self, _fmxcpt& x) noexcept;
FMX_API void FM_Color_SetRed(void* self, fmx::uchar r, _fmxcpt& x) noexcept;
FMX_API void FM_Color_SetGreen(void* self, fmx::uchar g, _fmxcpt& x) noexcept;
FMX_API void FM_Color_SetBlue(void* self, fmx::uchar b, _fmxcpt& x) noexcept;
FMX_API void FM_Color_SetAlpha(void* self, fmx::uchar a, _fmxcpt& x) noexcept;
FMX_API fmx::uchar FM_Color_GetRed(const void* self, _fmxcpt& x) noexcept;
FMX_API fmx::uchar FM_Color_GetGreen(const void* self, _fmxcpt& x) noexcept;
FMX_API fmx::uchar FM_Color_GetBlue(const void* self, _fmxcpt& x) noexcept;
FMX_API fmx::uchar FM_Color_GetAlpha(const void* self, _fmxcpt& x) noexcept;
FMX_API fmx::uint16 FM_Color_GetRedUpsample(const void* self, _fmxcpt& x) noexcept;
FMX_API fmx::uint16 FM_Color_GetGreenUpsample(const void* self, _fmxcpt& x) noexcept;
FMX_API fmx::uint16 FM_Color_GetBlueUpsample(const void* self, _fmxcpt& x) noexcept;
FMX_API fmx::uint16 FM_Color_GetAlphaUpsample(const void* self, _fmxcpt& x) noexcept;
FMX_API fmx::Color* FM_Color_operatorAS(void* self, const fmx::Color& rhs, _fmxcpt& x) noexcept;
FMX_API bool FM_Color_operatorEQ(const void* self, const fmx::Color& rhs, _fmxcpt& x) noexcept;
FMX_API bool FM_Color_operatorNE(const void* self, const fmx::Color& rhs, _fmxcpt& x) noexcept;
FMX_API const fmx::Color* FM_Color_White() noexcept;
FMX_API const fmx::Color* FM_Color_Black() noexcept;

// CharacterStyle
FMX_API fmx::CharacterStyle* FM_CharacterStyle_Constructor1(_fmxcpt& x) noexcept;
FMX_API fmx::CharacterStyle* FM_CharacterStyle_Constructor2(fmx::uint16 font, fmx::uint16 face,
                                                            fmx::uint16 size,
                                                            const fmx::Color& color,
                                                            _fmxcpt& x) noexcept;
FMX_API fmx::CharacterStyle* FM_CharacterStyle_Constructor3(const fmx::CharacterStyle& style,
                                                            _fmxcpt& x) noexcept;
FMX_API void FM_CharacterStyle_Delete(void* self, _fmxcpt& x) noexcept;
FMX_API void FM_CharacterStyle_EnableFont(void* self, _fmxcpt& x) noexcept;
FMX_API void FM_CharacterStyle_EnableFace(void* self, fmx::uint16 face, _fmxcpt& x) noexcept;
FMX_API void FM_CharacterStyle_EnableSize(void* self, _fmxcpt& x) noexcept;
FMX_API void FM_CharacterStyle_EnableColor(void* self, _fmxcpt& x) noexcept;
FMX_API void FM_CharacterStyle_DisableFont(void* self, _fmxcpt& x) noexcept;
FMX_API void FM_CharacterStyle_DisableFace(void* self, fmx::uint16 face, _fmxcpt& x) noexcept;
FMX_API void FM_CharacterStyle_DisableAllFaces(void* self, _fmxcpt& x) noexcept;
FMX_API void FM_CharacterStyle_DisableSize(void* self, _fmxcpt& x) noexcept;
FMX_API void FM_CharacterStyle_DisableColor(void* self, _fmxcpt& x) noexcept;
FMX_API void FM_CharacterStyle_DisableAll(void* self, _fmxcpt& x) noexcept;
FMX_API bool FM_CharacterStyle_IsAllDisabled(const void* self, _fmxcpt& x) noexcept;
FMX_API bool FM_CharacterStyle_IsFontEnabled(const void* self, _fmxcpt& x) noexcept;
FMX_API bool FM_CharacterStyle_IsFaceEnabled(const void* self, fmx::uint16 face,
                                             _fmxcpt& x) noexcept;
FMX_API bool FM_CharacterStyle_IsAnyFaceEnabled(const void* self, _fmxcpt& x) noexcept;
FMX_API bool FM_CharacterStyle_IsSizeEnabled(const void* self, _fmxcpt& x) noexcept;
FMX_API bool FM_CharacterStyle_IsColorEnabled(const void* self, _fmxcpt& x) noexcept;
FMX_API void FM_CharacterStyle_SetFontInformation(void* self, fmx::uint16 font, fmx::uint16 face,
                                                  fmx::uint16 size, _fmxcpt& x) noexcept;
FMX_API void FM_CharacterStyle_GetFontInformation(void* self, fmx::uint16& font,
                                                  fmx::uint16& face, fmx::uint16& size,
                                                  _fmxcpt& x) noexcept;
FMX_API void FM_CharacterStyle_SetFont(void* self, fmx::uint16 font, _fmxcpt& x) noexcept;
FMX_API void FM_CharacterStyle_SetFace(void* self, fmx::uint16 face, _fmxcpt& x) noexcept;
FMX_API void FM_CharacterStyle_SetSize(void* self, fmx::uint16 size, _fmxcpt& x) noexcept;
FMX_API fmx::uint16 FM_CharacterStyle_GetFont(const void* self, _fmxcpt& x) noexcept;
FMX_API fmx::uint16 FM_CharacterStyle_GetFace(const void* self, _fmxcpt& x) noexcept;
FMX_API fmx::uint16 FM_CharacterStyle_GetSize(const void* self, _fmxcpt& x) noexcept;
FMX_API void FM_CharacterStyle_SetColor(void* self, const fmx::Color& color, _fmxcpt& x) noexcept;
FMX_API const fmx::Color* FM_CharacterStyle_GetColor(const void* self, _fmxcpt& x) noexcept;
FMX_API fmx::CharacterStyle* FM_CharacterStyle_operatorAS(void* self,
                                                          const fmx::CharacterStyle& rhs,
                                                          _fmxcpt& x) noexcept;
FMX_API bool FM_CharacterStyle_operatorEQ(const void* self, const fmx::CharacterStyle& rhs,
                                          _fmxcpt& x) noexcept;
FMX_API bool FM_CharacterStyle_operatorNE(const void* self, const fmx::CharacterStyle& rhs,
                                          _fmxcpt& x) noexcept;

// BinaryData
FMX_API fmx::BinaryData* FM_BinaryData_Constructor1(_fmxcpt& x) noexcept;
FMX_API fmx::BinaryData* FM_BinaryData_Constructor2(const fmx::BinaryData& sourceData,
                                                    _fmxcpt& x) noexcept;
FMX_API fmx::BinaryData* FM_BinaryData_Constructor3(const fmx::Text& name, fmx::uint32 amount,
                                                    void* buffer, _fmxcpt& x) noexcept;
FMX_API void FM_BinaryData_Delete(void* self, _fmxcpt& x) noexcept;
FMX_API fmx::BinaryData* FM_BinaryData_operatorAS(void* self, const fmx::BinaryData& source,
                                                  _fmxcpt& x) noexcept;
FMX_API bool FM_BinaryData_operatorEQ(const void* self, const fmx::BinaryData& compareData,
                                      _fmxcpt& x) noexcept;
FMX_API bool FM_BinaryData_operatorNE(const void* self, const fmx::BinaryData& compareData,
                                      _fmxcpt& x) noexcept;
FMX_API fmx::int32 FM_BinaryData_GetCount(const void* self, _fmxcpt& x) noexcept;
FMX_API fmx::int32 FM_BinaryData_GetIndex(const void* self, const fmx::QuadChar& dataType,
                                          _fmxcpt& x) noexcept;
FMX_API fmx::uint32 FM_BinaryData_GetTotalSize(const void* self, _fmxcpt& x) noexcept;
FMX_API void FM_BinaryData_GetType(const void* self, fmx::int32 index, fmx::QuadChar& dataType,
                                   _fmxcpt& x) noexcept;
FMX_API fmx::uint32 FM_BinaryData_GetSize(const void* self, fmx::int32 index, _fmxcpt& x) noexcept;
FMX_API fmx::errcode FM_BinaryData_GetData(const void* self, fmx::int32 index, fmx::uint32 offset,
                                           fmx::uint32 amount, void* buffer, _fmxcpt& x) noexcept;
FMX_API fmx::errcode FM_BinaryData_Add(void* self, const fmx::QuadChar& dataType,
                                       fmx::uint32 amount, void* buffer, _fmxcpt& x) noexcept;
FMX_API bool FM_BinaryData_Remove(void* self, const fmx::QuadChar& dataType, _fmxcpt& x) noexcept;
FMX_API void FM_BinaryData_RemoveAll(void* self, _fmxcpt& x) noexcept;

}  // extern "C"
