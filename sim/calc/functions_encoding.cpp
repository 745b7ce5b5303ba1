// Base64 and hexadecimal forms of data, and SerialIncrement. Text is encoded as its UTF-8 bytes,
// a container as the bytes of its file; decoding gives text, or a container when a file name is
// given.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <optional>
#include <string>

#include "sim/calc/builtins.h"
#include "sim/calc/errors.h"
#include "sim/core/encoding.h"

namespace sim::calc {

namespace {

constexpr char kStandard[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr char kImap[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+,";

std::string bytesOf(Args& a, size_t i) { return bytesOfArgument(a, i); }

// Decoded bytes: a container named `fileName`, or the bytes read as UTF-8 text.
Value decodedValue(std::string bytes, Args& a, size_t nameArg) {
    if (!a.has(nameArg) || a.units(nameArg).empty()) return textValue(fromUtf8(bytes));
    Binary b;
    b.streams.push_back({{'F', 'N', 'A', 'M'}, toUtf8(a.units(nameArg))});
    b.streams.push_back({{'F', 'I', 'L', 'E'}, std::move(bytes)});
    return Value::binary(std::move(b));
}

struct Base64Style {
    const char* alphabet = kStandard;
    bool padding = true;
    std::size_t lineLength = 0;  // 0: one line
};

std::u16string base64(const std::string& bytes, const Base64Style& style) {
    if (bytes.size() / 3 * 4 > kMaxTextUnits) raise(kGenericError);
    std::u16string out;
    out.reserve((bytes.size() + 2) / 3 * 4 + bytes.size() / 20);
    std::size_t onLine = 0;
    auto put = [&](char c) {
        if (style.lineLength != 0 && onLine == style.lineLength) {
            out += u"\r\n";
            onLine = 0;
        }
        out += static_cast<char16_t>(c);
        ++onLine;
    };
    std::size_t i = 0;
    for (; i + 3 <= bytes.size(); i += 3) {
        const uint32_t n = static_cast<uint32_t>(static_cast<unsigned char>(bytes[i])) << 16 |
                           static_cast<uint32_t>(static_cast<unsigned char>(bytes[i + 1])) << 8 |
                           static_cast<unsigned char>(bytes[i + 2]);
        for (int shift = 18; shift >= 0; shift -= 6) put(style.alphabet[(n >> shift) & 63]);
    }
    const std::size_t rest = bytes.size() - i;
    if (rest > 0) {
        uint32_t n = static_cast<uint32_t>(static_cast<unsigned char>(bytes[i])) << 16;
        if (rest == 2) n |= static_cast<uint32_t>(static_cast<unsigned char>(bytes[i + 1])) << 8;
        put(style.alphabet[(n >> 18) & 63]);
        put(style.alphabet[(n >> 12) & 63]);
        if (rest == 2) put(style.alphabet[(n >> 6) & 63]);
        if (style.padding) {
            for (std::size_t k = rest; k < 3; ++k) put('=');
        }
    }
    return out;
}

// Accepts the standard and the URL-safe alphabet (and IMAP's ","), with or without padding, and
// skips blanks and line breaks; nullopt for anything else.
std::optional<std::string> unbase64(std::u16string_view text) {
    std::string out;
    uint32_t bits = 0;
    int count = 0;
    bool ended = false;
    for (char16_t c : text) {
        int v = -1;
        if (c >= u'A' && c <= u'Z') v = c - u'A';
        if (c >= u'a' && c <= u'z') v = c - u'a' + 26;
        if (c >= u'0' && c <= u'9') v = c - u'0' + 52;
        if (c == u'+' || c == u'-') v = 62;
        if (c == u'/' || c == u'_' || c == u',') v = 63;
        if (c == u' ' || c == u'\t' || c == u'\r' || c == u'\n') continue;
        if (c == u'=') {
            ended = true;
            continue;
        }
        if (v < 0 || ended) return std::nullopt;
        bits = bits << 6 | static_cast<uint32_t>(v);
        if (++count == 4) {
            out += static_cast<char>(bits >> 16);
            out += static_cast<char>(bits >> 8 & 0xFF);
            out += static_cast<char>(bits & 0xFF);
            bits = 0;
            count = 0;
        }
    }
    if (count == 1) return std::nullopt;
    if (count == 2) out += static_cast<char>(bits >> 4);
    if (count == 3) {
        out += static_cast<char>(bits >> 10);
        out += static_cast<char>(bits >> 2 & 0xFF);
    }
    return out;
}

// FileMaker's Base64Encode breaks lines after 76 characters with CR LF.
Value fnBase64Encode(Args& a) { return textValue(base64(bytesOf(a, 0), {kStandard, true, 76})); }

// OpenPGP's CRC-24 (RFC 4880, section 6.1).
uint32_t crc24(const std::string& bytes) {
    uint32_t crc = 0xB704CE;
    for (unsigned char c : bytes) {
        crc ^= static_cast<uint32_t>(c) << 16;
        for (int i = 0; i < 8; ++i) {
            crc <<= 1;
            if (crc & 0x1000000) crc ^= 0x1864CFB;
        }
    }
    return crc & 0xFFFFFF;
}

// Base64EncodeRFC ( RFCNumber ; data ): the line length and alphabet of the RFC named; an RFC
// the function does not know is read as 4648. RFC 4880 adds its checksum, "=" and the Base64 of
// the CRC-24, on a line of its own.
Value fnBase64EncodeRfc(Args& a) {
    const double rfc = a.number(0);
    const std::string bytes = bytesOf(a, 1);
    Base64Style style;
    if (rfc == 1421) {
        style.lineLength = 64;
    } else if (rfc == 2045 || rfc == 4880) {
        style.lineLength = 76;
    } else if (rfc == 2152) {
        style.padding = false;
    } else if (rfc == 3501) {
        style.alphabet = kImap;
        style.padding = false;
    }
    std::u16string out = base64(bytes, style);
    if (rfc == 4880) {
        const uint32_t crc = crc24(bytes);
        const std::string crcBytes{static_cast<char>(crc >> 16), static_cast<char>(crc >> 8 & 0xFF),
                                   static_cast<char>(crc & 0xFF)};
        if (!out.empty()) out += u"\r\n";
        out += u'=';
        out += base64(crcBytes, {});
    }
    return textValue(std::move(out));
}

// GetAsURLEncoded ( text ): the UTF-8 bytes of the text, styles dropped, every byte other than
// an ASCII letter or digit written as "%" and two lower-case hexadecimal digits.
Value fnGetAsUrlEncoded(Args& a) {
    static constexpr char kDigits[] = "0123456789abcdef";
    const std::string bytes = toUtf8(a.units(0));
    if (bytes.size() > kMaxTextUnits / 3) raise(kGenericError);
    std::u16string out;
    out.reserve(bytes.size());
    for (unsigned char c : bytes) {
        if ((c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z')) {
            out += static_cast<char16_t>(c);
            continue;
        }
        out += u'%';
        out += static_cast<char16_t>(kDigits[c >> 4]);
        out += static_cast<char16_t>(kDigits[c & 15]);
    }
    return textValue(std::move(out));
}

Value fnBase64Decode(Args& a) {
    std::optional<std::string> bytes = unbase64(a.units(0));
    if (!bytes) return questionMark();
    return decodedValue(std::move(*bytes), a, 1);
}

Value fnHexEncode(Args& a) {
    static constexpr char kDigits[] = "0123456789ABCDEF";
    const std::string bytes = bytesOf(a, 0);
    if (bytes.size() > kMaxTextUnits / 2) raise(kGenericError);
    std::u16string out;
    out.reserve(bytes.size() * 2);
    for (unsigned char c : bytes) {
        out += static_cast<char16_t>(kDigits[c >> 4]);
        out += static_cast<char16_t>(kDigits[c & 15]);
    }
    return textValue(std::move(out));
}

int hexDigit(char16_t c) {
    if (c >= u'0' && c <= u'9') return c - u'0';
    if (c >= u'a' && c <= u'f') return c - u'a' + 10;
    if (c >= u'A' && c <= u'F') return c - u'A' + 10;
    return -1;
}

// Either case; an odd number of digits or another character gives "?".
Value fnHexDecode(Args& a) {
    const std::u16string_view text = a.units(0);
    if (text.size() % 2 != 0) return questionMark();
    std::string bytes;
    bytes.reserve(text.size() / 2);
    for (std::size_t i = 0; i < text.size(); i += 2) {
        const int high = hexDigit(text[i]);
        const int low = hexDigit(text[i + 1]);
        if (high < 0 || low < 0) return questionMark();
        bytes += static_cast<char>(high << 4 | low);
    }
    return decodedValue(std::move(bytes), a, 1);
}

// Adds `by` to a number written in decimal digits, keeping at least as many digits (leading
// zeros stay), and tells whether the result went below zero (then `digits` is its magnitude).
bool addToDigits(std::string& digits, int64_t by) {
    const std::size_t width = digits.size();
    const bool down = by < 0;
    uint64_t amount = down ? 0 - static_cast<uint64_t>(by) : static_cast<uint64_t>(by);
    // Subtracting more than the number holds turns it around: |n - amount| = amount - n.
    if (down) {
        std::string amountDigits = std::to_string(amount);
        const std::string n = digits.substr(digits.find_first_not_of('0') == std::string::npos
                                                ? digits.size()
                                                : digits.find_first_not_of('0'));
        const bool bigger =
            amountDigits.size() > n.size() || (amountDigits.size() == n.size() && amountDigits > n);
        if (bigger) {
            // amount - n, with n small enough to fit (n < amount <= 2^63).
            const uint64_t rest = amount - (n.empty() ? 0 : std::stoull(n));
            digits = std::to_string(rest);
            if (digits.size() < width) digits.insert(0, width - digits.size(), '0');
            return rest != 0;
        }
    }
    int carry = 0;
    for (std::size_t i = digits.size(); i-- > 0;) {
        const int d = digits[i] - '0';
        const int step = static_cast<int>(amount % 10) + carry;
        amount /= 10;
        int next = down ? d - step : d + step;
        carry = 0;
        if (next < 0) {
            next += 10;
            carry = 1;
        } else if (next > 9) {
            next -= 10;
            carry = 1;
        }
        digits[i] = static_cast<char>('0' + next);
        if (amount == 0 && carry == 0) return false;
    }
    // Growing past the digits written: the rest of the amount and the carry go in front.
    const uint64_t front = amount + static_cast<uint64_t>(carry);
    if (front != 0) digits.insert(0, std::to_string(front));
    return false;
}

// SerialIncrement ( text ; incrementBy ): the last run of digits in text, plus incrementBy (its
// whole part), keeping leading zeros; a text without digits comes back as it is.
Value fnSerialIncrement(Args& a) {
    const std::u16string_view text = a.units(0);
    const double by = std::trunc(std::clamp(a.number(1), -9.0e18, 9.0e18));
    std::size_t end = text.size();
    while (end > 0 && !(text[end - 1] >= u'0' && text[end - 1] <= u'9')) --end;
    if (end == 0) return textValue(std::u16string(text));
    std::size_t start = end;
    while (start > 0 && text[start - 1] >= u'0' && text[start - 1] <= u'9') --start;
    std::string digits(text.begin() + static_cast<std::ptrdiff_t>(start),
                       text.begin() + static_cast<std::ptrdiff_t>(end));
    const bool negative = addToDigits(digits, static_cast<int64_t>(by));
    std::u16string out(text.substr(0, start));
    if (negative) out += u'-';
    out += fromUtf8(digits);
    out += text.substr(end);
    return textValue(std::move(out));
}

constexpr Builtin kFunctions[] = {
    {u"base64encode", 1, 1, fnBase64Encode},
    {u"base64encoderfc", 2, 2, fnBase64EncodeRfc},
    {u"base64decode", 1, 2, fnBase64Decode},
    {u"hexencode", 1, 1, fnHexEncode},
    {u"hexdecode", 1, 2, fnHexDecode},
    {u"serialincrement", 2, 2, fnSerialIncrement},
    {u"getasurlencoded", 1, 1, fnGetAsUrlEncoded},
};

}  // namespace

std::span<const Builtin> encodingFunctions() { return kFunctions; }

}  // namespace sim::calc
