#include "fmlib/convert.h"

#include <sys/time.h>
#include <unicode/ustring.h>

#include <algorithm>
#include <ctime>
#include <limits>
#include <vector>

#include "fmlib/stop.h"

namespace {

// Host dates count from 0001-01-01; Unix time from 1970-01-01.
constexpr double kHostEpochToUnixEpoch = 62135596800.0;

void setNumber(fmx::int32 code, fmx::Data& value) {
    fmx::FixPtUniquePtr number(0, fmx::kDefltFixedPrecision);
    number->AssignInt(code);
    value.SetAsNumber(*number, fmx::kDTNumber);
}

void appendPerSequence(std::u16string& out, std::string_view s) {
    for (size_t i = 0; i < s.size();) {
        const auto b = static_cast<unsigned char>(s[i]);
        if (b < 0x80) {
            out.push_back(b);
            ++i;
            continue;
        }
        const int extra = b >= 0xF0 ? 3 : b >= 0xE0 ? 2 : b >= 0xC0 ? 1 : 0;
        char32_t c = extra == 3 ? b & 0x07 : extra == 2 ? b & 0x0F : b & 0x1F;
        size_t j = 1;
        for (; j <= static_cast<size_t>(extra) && i + j < s.size(); ++j) {
            const auto cont = static_cast<unsigned char>(s[i + j]);
            if ((cont & 0xC0) != 0x80) break;
            c = (c << 6) | (cont & 0x3F);
        }
        if (extra == 0 || j != static_cast<size_t>(extra) + 1 || c > 0x10FFFF) {
            out.push_back(u'\uFFFD');
            i += std::max<size_t>(j, 1);
            continue;
        }
        i += j;
        if (c >= 0x10000) {
            c -= 0x10000;
            out.push_back(static_cast<char16_t>(0xD800 + (c >> 10)));
            out.push_back(static_cast<char16_t>(0xDC00 + (c & 0x3FF)));
        } else {
            out.push_back(static_cast<char16_t>(c));
        }
    }
}

std::u16string icuUtf16(std::string_view utf8) {
    std::u16string units(utf8.size() + 1, u'\0');
    int32_t length = 0;
    UErrorCode status = U_ZERO_ERROR;
    u_strFromUTF8WithSub(units.data(), static_cast<int32_t>(units.size()), &length, utf8.data(),
                         static_cast<int32_t>(utf8.size()), 0xFFFD, nullptr, &status);
    units.resize(U_SUCCESS(status) ? static_cast<std::size_t>(length) : 0);
    return units;
}

bool isHighSurrogate(char32_t c) { return c >= 0xD800 && c <= 0xDBFF; }
bool isLowSurrogate(char32_t c) { return c >= 0xDC00 && c <= 0xDFFF; }

void appendUtf8(std::string& bytes, char32_t c) {
    if (c < 0x80) {
        bytes += static_cast<char>(c);
        return;
    }
    int continuation = c < 0x800 ? 1 : c < 0x10000 ? 2 : 3;
    static constexpr unsigned char kLead[] = {0, 0xC0, 0xE0, 0xF0};
    bytes += static_cast<char>(kLead[continuation] | (c >> (6 * continuation)));
    while (continuation-- > 0)
        bytes += static_cast<char>(0x80 | ((c >> (6 * continuation)) & 0x3F));
}

// The bytes of `text` in `encoding` that fit a zero-filled buffer of `bufferBytes`, terminator
// included, up to the first zero byte.
std::string bytesCut(const fmx::Text& text, std::size_t bufferBytes, fmx::int32 encoding) {
    const std::size_t bytes =
        std::min<std::size_t>(bufferBytes, std::numeric_limits<fmx::uint32>::max());
    if (bytes == 0) return {};
    std::vector<char> buffer(bytes, '\0');
    text.GetBytes(buffer.data(), static_cast<fmx::uint32>(bytes), 0, fmx::kSize_End, encoding);
    buffer.back() = '\0';
    return std::string(buffer.data());
}

std::vector<fmx::unichar16> unitsOf(const fmx::Text& text) {
    std::vector<fmx::unichar16> units(text.GetSize());
    if (!units.empty()) text.GetUnicode(units.data(), 0, static_cast<fmx::uint32>(units.size()));
    return units;
}

}  // namespace

namespace fmlib {

void AppendUtf16FromUtf8(std::u16string& out, std::string_view utf8, BrokenUtf8 rule) {
    if (rule == BrokenUtf8::kIcu) {
        out += icuUtf16(utf8);
    } else {
        appendPerSequence(out, utf8);
    }
}

std::u16string Utf16FromUtf8(std::string_view utf8, BrokenUtf8 rule) {
    if (rule == BrokenUtf8::kIcu) return icuUtf16(utf8);
    std::u16string out;
    appendPerSequence(out, utf8);
    return out;
}

std::string Utf8FromUtf16(std::u16string_view units) {
    std::string bytes;
    for (std::size_t i = 0; i < units.size(); ++i) {
        char32_t c = units[i];
        if (isHighSurrogate(c) && i + 1 < units.size() && isLowSurrogate(units[i + 1])) {
            c = 0x10000 + ((c - 0xD800) << 10) + (units[++i] - 0xDC00);
        } else if (isHighSurrogate(c) || isLowSurrogate(c)) {
            c = U'?';
        }
        appendUtf8(bytes, c);
    }
    return bytes;
}

std::string StringFromFmText(const fmx::Text& text) {
    const std::size_t units = text.GetSize();
    if (units == 0) return {};
    // Two bytes per unit for the text, and one more for the terminator the host writes, so
    // that a text of one- and two-byte characters always comes back whole.
    return bytesCut(text, 2 * units + 1, fmx::kEncoding_UTF8);
}

std::string NativeBytesCut(const fmx::Text& text, std::size_t bufferBytes) {
    return bytesCut(text, bufferBytes, fmx::kEncoding_Native);
}

std::wstring WStringFromFMText(const fmx::Text& text) {
    const std::vector<fmx::unichar16> units = unitsOf(text);
    const auto end = std::find(units.begin(), units.end(), fmx::unichar16{0});
    return std::wstring(units.begin(), end);
}

void copyToFMText(const std::string& s, fmx::Text& target) {
    target.DeleteText(0, fmx::kSize_End);
    target.Assign(s.c_str(), fmx::kEncoding_Native);
}

fmx::errcode EvaluateFileName(const fmx::ExprEnv& env, std::string_view calculation,
                              fmx::Text& name) {
    fmx::DataUniquePtr value;
    const fmx::errcode err = env.Evaluate(calculation, *value);
    name.DeleteText(0, fmx::kSize_End);
    if (err == 0) name.AppendText(value->GetAsText(), 0, fmx::kSize_End);
    return err;
}

void FillFMTextWithCurrentDatabaseFileName(fmx::Text& target, const fmx::ExprEnv& env) {
    const fmx::errcode err = EvaluateFileName(env, kFileNameCalculation, target);
    StopUnless(err == 0, "err == 0", __func__);
}

void SetResultText(fmx::Data& result, const fmx::Text& text) {
    result.SetAsText(text, result.GetLocale(), fmx::kDTText);
}

void SetResultText(fmx::Data& result, std::string_view text, fmx::int32 encoding) {
    SetResultText(result, *fmx::TextUniquePtr(text, encoding));
}

void FMData2FMData(const fmx::Data& from, fmx::Data& to) {
    FMData2FMData(from, from.GetNativeType(), to);
}

fmx::int32 FMData2FMData(const fmx::Data& from, fmx::int32 fromType, fmx::Data& to) {
    switch (fromType) {
        case fmx::kDTText:
            to.SetAsText(from.GetAsText(), from.GetLocale(), fmx::kDTText);
            return fmx::kDTText;
        case fmx::kDTNumber:
        case fmx::kDTBoolean:
            to.SetAsNumber(from.GetAsNumber(), fmx::kDTNumber);
            return fmx::kDTNumber;
        case fmx::kDTDate:
            to.SetAsDate(from.GetAsDate(), fmx::kDTDate);
            return fmx::kDTDate;
        case fmx::kDTTime:
            to.SetAsTime(from.GetAsTime(), fmx::kDTTime);
            return fmx::kDTTime;
        case fmx::kDTTimeStamp:
            to.SetAsTimeStamp(from.GetAsTimeStamp(), fmx::kDTTimeStamp);
            return fmx::kDTTimeStamp;
        case fmx::kDTBinary:
            to.SetBinaryData(from.GetBinaryData(), true);
            return fmx::kDTBinary;
        default:
            return fmx::kDTInvalid;
    }
}

void FMErrCode2FMData(short code, fmx::Data& value) { setNumber(code, value); }

// The old zone record of gettimeofday (minutes west of Greenwich, daylight flag) is not kept by
// Linux, which leaves it zero whatever the process's time zone; it is filled here from the
// platform's local-time service instead, so that the result is local time as on other systems.
static struct timezone localZoneRecord(time_t at) {
    tm local{};
    localtime_r(&at, &local);
    const long dst = local.tm_isdst > 0 ? 1 : 0;
    return {static_cast<int>(-(local.tm_gmtoff - dst * 3600) / 60), static_cast<int>(dst)};
}

void SetDateTimeToNow(fmx::DateTime& dateTime) {
    timeval now{};
    gettimeofday(&now, nullptr);
    const struct timezone zone = localZoneRecord(now.tv_sec);
    const double seconds =
        now.tv_usec / 1000000.0 +
        static_cast<double>(now.tv_sec - zone.tz_minuteswest * 60L + zone.tz_dsttime * 3600L) +
        kHostEpochToUnixEpoch;
    fmx::FixPtUniquePtr number(0, fmx::kDefltFixedPrecision);
    number->AssignDouble(seconds);
    dateTime.SetSecondsSinceEpoch(*number);
}

}  // namespace fmlib

namespace rvl {

std::u16string FStringFromText(const fmx::Text& text) {
    const std::vector<fmx::unichar16> units = unitsOf(text);
    return std::u16string(units.begin(), units.end());
}

std::u16string FStringFromData(const fmx::Data& data) { return FStringFromText(data.GetAsText()); }

}  // namespace rvl

std::string StringFromFmText(const fmx::Text& text) {
    if (text.GetSize() == 0) return {};
    return fmlib::StringFromFmText(text);
}

std::string StringFromFmText(const fmx::TextAutoPtr& text) { return StringFromFmText(*text); }

void storeErrorCode(int code, fmx::Data& value) { setNumber(code, value); }
