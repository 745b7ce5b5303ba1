// TextEncode and TextDecode: text to and from a container of bytes in a named character encoding,
// through ICU's converters (which know the names FileMaker lists and their usual aliases).
#include <unicode/ucnv.h>

#include <memory>
#include <optional>
#include <string>

#include "sim/calc/builtins.h"
#include "sim/calc/errors.h"
#include "sim/core/encoding.h"

namespace sim::calc {

namespace {

struct ConverterClose {
    void operator()(UConverter* c) const { ucnv_close(c); }
};
using Converter = std::unique_ptr<UConverter, ConverterClose>;

// nullptr for an encoding ICU does not know, and for an empty name.
Converter converterFor(std::u16string_view name) {
    const std::string ascii = toUtf8(name);
    if (ascii.empty()) return nullptr;
    UErrorCode status = U_ZERO_ERROR;
    Converter c(ucnv_open(ascii.c_str(), &status));
    if (U_FAILURE(status)) return nullptr;
    return c;
}

// FileMaker writes returns as CR; lineEndings 2 keeps CR, 3 writes CR LF, 4 LF, and 1 (or any
// other value) leaves the text as it is.
std::u16string withLineEndings(std::u16string_view text, double lineEndings) {
    if (lineEndings != 2 && lineEndings != 3 && lineEndings != 4) return std::u16string(text);
    const std::u16string_view newline = lineEndings == 2   ? u"\r"
                                        : lineEndings == 3 ? u"\r\n"
                                                           : u"\n";
    std::u16string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char16_t c = text[i];
        if (c == u'\r' || c == u'\n') {
            if (c == u'\r' && i + 1 < text.size() && text[i + 1] == u'\n') ++i;
            out += newline;
        } else {
            out += c;
        }
    }
    return out;
}

std::optional<std::string> encodeWith(UConverter* c, std::u16string_view text) {
    UErrorCode status = U_ZERO_ERROR;
    const auto length = static_cast<int32_t>(text.size());
    const int32_t needed = ucnv_fromUChars(c, nullptr, 0, text.data(), length, &status);
    if (status != U_BUFFER_OVERFLOW_ERROR && U_FAILURE(status)) return std::nullopt;
    std::string out(static_cast<std::size_t>(needed), '\0');
    status = U_ZERO_ERROR;
    ucnv_fromUChars(c, out.data(), needed, text.data(), length, &status);
    if (U_FAILURE(status) && status != U_STRING_NOT_TERMINATED_WARNING) return std::nullopt;
    return out;
}

// TextEncode ( text ; encoding ; lineEndings ): a container holding the file Untitled.txt.
Value fnTextEncode(Args& a) {
    const Converter c = converterFor(a.units(1));
    if (!c) return questionMark();
    const std::u16string text = withLineEndings(a.units(0), a.number(2));
    if (text.size() > kMaxTextUnits) raise(kGenericError);
    std::optional<std::string> bytes = encodeWith(c.get(), text);
    if (!bytes) return questionMark();
    Binary b;
    b.streams.push_back({{'F', 'N', 'A', 'M'}, "Untitled.txt"});
    b.streams.push_back({{'F', 'I', 'L', 'E'}, std::move(*bytes)});
    return Value::binary(std::move(b));
}

// TextDecode ( container ; encoding ): the bytes read in the encoding (a text argument is read as
// its UTF-8 bytes).
Value fnTextDecode(Args& a) {
    const Converter c = converterFor(a.units(1));
    if (!c) return questionMark();
    const std::string bytes = bytesOfArgument(a, 0);
    if (bytes.size() > kMaxTextUnits) raise(kGenericError);
    UErrorCode status = U_ZERO_ERROR;
    const auto length = static_cast<int32_t>(bytes.size());
    const int32_t needed = ucnv_toUChars(c.get(), nullptr, 0, bytes.data(), length, &status);
    if (status != U_BUFFER_OVERFLOW_ERROR && U_FAILURE(status)) return questionMark();
    std::u16string out(static_cast<std::size_t>(needed), u'\0');
    status = U_ZERO_ERROR;
    ucnv_toUChars(c.get(), out.data(), needed, bytes.data(), length, &status);
    if (U_FAILURE(status) && status != U_STRING_NOT_TERMINATED_WARNING) return questionMark();
    return textValue(std::move(out));
}

constexpr Builtin kFunctions[] = {
    {u"textencode", 3, 3, fnTextEncode},
    {u"textdecode", 2, 2, fnTextDecode},
};

}  // namespace

std::span<const Builtin> textCodecFunctions() { return kFunctions; }

}  // namespace sim::calc
