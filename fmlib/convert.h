// Conversions between the host's texts and values and the plug-in's own strings. Host failures
// pass through as exceptions.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "host/fmx.h"

namespace fmlib {

// The text as UTF-8, read into a zero-filled buffer of two bytes per UTF-16 unit (plus the
// host's terminator) and ending at the first zero byte. Characters of three UTF-8 bytes per unit
// can fill that buffer before the end of the text, which then comes back cut.
std::string StringFromFmText(const fmx::Text& text);

// The text's bytes in the host's native encoding, read into a zero-filled buffer of `bufferBytes`
// (the host's terminator included) and ending at the first zero byte: at most bufferBytes - 1
// bytes. The buffer's last byte is always taken as the end, so a host that fills the whole
// buffer cannot make the read go past it. A zero `bufferBytes` gives nothing.
std::string NativeBytesCut(const fmx::Text& text, std::size_t bufferBytes);

// One wide character per UTF-16 unit (surrogate pairs stay two halves), up to the first zero.
std::wstring WStringFromFMText(const fmx::Text& text);

// UTF-8 to UTF-16, under one of the two rules the plug-in keeps for broken input.
enum class BrokenUtf8 {
    // One U+FFFD for each broken sequence (a stray continuation byte, a sequence cut short, a
    // value past U+10FFFF); overlong forms, encoded surrogates and leads F8..FF decode as they
    // come. Ravelin_GetAsHTML's tags, classes and CSS.
    kPerSequence,
    // ICU's substitution: one U+FFFD per maximal ill-formed subpart. Pattern counting.
    kIcu,
};
void AppendUtf16FromUtf8(std::u16string& out, std::string_view utf8, BrokenUtf8 rule);
std::u16string Utf16FromUtf8(std::string_view utf8, BrokenUtf8 rule);

// UTF-16 to UTF-8; an unpaired surrogate becomes '?'.
std::string Utf8FromUtf16(std::u16string_view units);

// Replaces the whole target with the bytes of `s` in the host's native encoding.
void copyToFMText(const std::string& s, fmx::Text& target);

// The spellings of the calling file's name that the plug-in evaluates: the store asks with
// blanks, everything else without.
inline constexpr char kFileNameCalculation[] = "Get(FileName)";
inline constexpr char kSpacedFileNameCalculation[] = "Get( FileName )";

// Replaces `name` with the text (styles included) of the file name that `calculation` gives in
// `env`, or with nothing when the host reports an error. Answers the evaluation's error code.
fmx::errcode EvaluateFileName(const fmx::ExprEnv& env, std::string_view calculation,
                              fmx::Text& name);

// The calling file's name, from "Get(FileName)"; that calculation failing is a programming error
// and stops the process.
void FillFMTextWithCurrentDatabaseFileName(fmx::Text& target, const fmx::ExprEnv& env);

// Sets `result` to `text` as text (type 1) with the result's own locale.
void SetResultText(fmx::Data& result, const fmx::Text& text);
// The same for bytes in `encoding`.
void SetResultText(fmx::Data& result, std::string_view text,
                   fmx::int32 encoding = fmx::kEncoding_Native);

// Copies a value keeping its type; a boolean is copied as a number. An invalid or unknown type
// leaves the target unchanged.
void FMData2FMData(const fmx::Data& from, fmx::Data& to);
// The same with the source's native type already read. Answers the type the target now has,
// or fmx::kDTInvalid when nothing was copied (the target kept its own).
fmx::int32 FMData2FMData(const fmx::Data& from, fmx::int32 fromType, fmx::Data& to);

// Sets the value to `code` as a number.
void FMErrCode2FMData(short code, fmx::Data& value);

// The current local time, with fractions of a second, from the system clock and its zone record.
void SetDateTimeToNow(fmx::DateTime& dateTime);

}  // namespace fmlib

namespace rvl {

// The text's UTF-16 units, all of them.
std::u16string FStringFromText(const fmx::Text& text);
// The value read as text, then as FStringFromText.
std::u16string FStringFromData(const fmx::Data& data);

}  // namespace rvl

// As fmlib::StringFromFmText.
std::string StringFromFmText(const fmx::Text& text);
std::string StringFromFmText(const fmx::TextAutoPtr& text);

// As fmlib::FMErrCode2FMData, for codes wider than the host's.
void storeErrorCode(int code, fmx::Data& value);
