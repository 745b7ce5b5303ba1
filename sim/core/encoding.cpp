#include "sim/core/encoding.h"

#include <unicode/ucnv.h>
#include <unicode/ucnv_cb.h>

#include <algorithm>
#include <array>
#include <memory>
#include <utility>
#include <vector>

namespace sim {

namespace {

constexpr char16_t kReplacement = 0xFFFD;

// A single-byte code page: each byte's unit, and the way back sorted by unit.
struct ByteTable {
    std::array<char16_t, 256> toUnit{};
    std::vector<std::pair<char16_t, char>> fromUnit;

    char byteFor(char16_t unit) const {
        auto it = std::lower_bound(fromUnit.begin(), fromUnit.end(), unit,
                                   [](const auto& e, char16_t u) { return e.first < u; });
        return it != fromUnit.end() && it->first == unit ? it->second : '?';
    }
};

// Reads the table once from ICU's converter of that code page; bytes the code page leaves
// undefined decode to U+FFFD.
ByteTable loadTable(const char* icuName) {
    ByteTable t;
    UErrorCode err = U_ZERO_ERROR;
    std::unique_ptr<UConverter, decltype(&ucnv_close)> conv(ucnv_open(icuName, &err), ucnv_close);
    for (int b = 0; b < 256; ++b) {
        char16_t unit = kReplacement;
        if (U_SUCCESS(err)) {
            UErrorCode e = U_ZERO_ERROR;
            ucnv_setToUCallBack(conv.get(), UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &e);
            const char byte = static_cast<char>(b);
            UChar out[4];
            const int32_t n = ucnv_toUChars(conv.get(), out, 4, &byte, 1, &e);
            if (U_SUCCESS(e) && n == 1) unit = out[0];
            ucnv_reset(conv.get());
        } else if (b < 0x80) {
            unit = static_cast<char16_t>(b);
        }
        t.toUnit[b] = unit;
    }
    for (int b = 0; b < 256; ++b) {
        if (t.toUnit[b] != kReplacement) t.fromUnit.emplace_back(t.toUnit[b], static_cast<char>(b));
    }
    // Where two bytes share a unit, the lower byte stays first and wins.
    std::stable_sort(t.fromUnit.begin(), t.fromUnit.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    return t;
}

ByteTable latin1Table() {
    ByteTable t;
    for (int b = 0; b < 256; ++b) {
        t.toUnit[b] = static_cast<char16_t>(b);
        t.fromUnit.emplace_back(static_cast<char16_t>(b), static_cast<char>(b));
    }
    return t;
}

// nullptr for the encodings that are UTF-8 here.
const ByteTable* byteTable(int32_t encoding) {
    switch (encoding) {
        case 2: {
            static const ByteTable dos = loadTable("ibm-437");
            return &dos;
        }
        case 3: {
            static const ByteTable windows = loadTable("windows-1252");
            return &windows;
        }
        case 4: {
            static const ByteTable mac = loadTable("macintosh");
            return &mac;
        }
        case 5: {
            static const ByteTable latin1 = latin1Table();
            return &latin1;
        }
        default:
            return nullptr;
    }
}

void appendCodePoint(std::u16string& out, char32_t c) {
    if (c < 0x10000) {
        out.push_back(static_cast<char16_t>(c));
    } else {
        c -= 0x10000;
        out.push_back(static_cast<char16_t>(0xD800 + (c >> 10)));
        out.push_back(static_cast<char16_t>(0xDC00 + (c & 0x3FF)));
    }
}

bool isContinuation(unsigned char b) { return (b & 0xC0) == 0x80; }

// Decodes one UTF-8 sequence at s[i], advancing i; a malformed sequence yields U+FFFD and skips
// only its well-formed prefix (at least one byte).
char32_t nextUtf8(std::string_view s, size_t& i) {
    const auto lead = static_cast<unsigned char>(s[i++]);
    if (lead < 0x80) return lead;
    int extra;
    char32_t c;
    char32_t min;
    if (lead >= 0xC2 && lead <= 0xDF) {
        extra = 1, c = lead & 0x1F, min = 0x80;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        extra = 2, c = lead & 0x0F, min = 0x800;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        extra = 3, c = lead & 0x07, min = 0x10000;
    } else {
        return kReplacement;
    }
    for (int k = 0; k < extra; ++k) {
        if (i >= s.size() || !isContinuation(static_cast<unsigned char>(s[i]))) return kReplacement;
        c = (c << 6) | (static_cast<unsigned char>(s[i++]) & 0x3F);
    }
    if (c < min || c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF)) return kReplacement;
    return c;
}

void appendUtf8(std::string& out, char32_t c) {
    if (c < 0x80) {
        out.push_back(static_cast<char>(c));
    } else if (c < 0x800) {
        out.push_back(static_cast<char>(0xC0 | (c >> 6)));
        out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    } else if (c < 0x10000) {
        out.push_back(static_cast<char>(0xE0 | (c >> 12)));
        out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    } else {
        out.push_back(static_cast<char>(0xF0 | (c >> 18)));
        out.push_back(static_cast<char>(0x80 | ((c >> 12) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    }
}

bool isLead(char16_t u) { return u >= 0xD800 && u <= 0xDBFF; }
bool isTrail(char16_t u) { return u >= 0xDC00 && u <= 0xDFFF; }

}  // namespace

bool isSingleByte(int32_t encoding) { return encoding >= 2 && encoding <= 5; }

std::u16string fromUtf8(std::string_view s) {
    std::u16string out;
    out.reserve(s.size());
    size_t i = 0;
    while (i < s.size()) appendCodePoint(out, nextUtf8(s, i));
    return out;
}

std::string toUtf8(std::u16string_view s) {
    std::string out;
    out.reserve(s.size());
    for (size_t i = 0; i < s.size(); ++i) {
        char16_t u = s[i];
        if (isLead(u) && i + 1 < s.size() && isTrail(s[i + 1])) {
            appendUtf8(out, 0x10000 + ((char32_t(u) - 0xD800) << 10) + (s[i + 1] - 0xDC00));
            ++i;
        } else if (isLead(u) || isTrail(u)) {
            appendUtf8(out, kReplacement);
        } else {
            appendUtf8(out, u);
        }
    }
    return out;
}

std::u16string decode(std::string_view bytes, int32_t encoding) {
    const ByteTable* table = byteTable(encoding);
    if (!table) return fromUtf8(bytes);
    std::u16string out(bytes.size(), u'\0');
    for (size_t i = 0; i < bytes.size(); ++i) {
        out[i] = table->toUnit[static_cast<unsigned char>(bytes[i])];
    }
    return out;
}

std::string encode(std::u16string_view units, int32_t encoding) {
    const ByteTable* table = byteTable(encoding);
    if (!table) return toUtf8(units);
    std::string out;
    out.reserve(units.size());
    for (size_t i = 0; i < units.size(); ++i) {
        const char16_t u = units[i];
        if (u < 0x80 && table->toUnit[u] == u) {
            out.push_back(static_cast<char>(u));
        } else if (isLead(u) && i + 1 < units.size() && isTrail(units[i + 1])) {
            out.push_back('?');  // one mark for the whole pair
            ++i;
        } else {
            out.push_back(table->byteFor(u));
        }
    }
    return out;
}

}  // namespace sim
