#include "sim/core/encoding.h"

#include <unicode/ucnv.h>
#include <unicode/ucnv_cb.h>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
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

bool isContinuation(unsigned char b) { return (b & 0xC0) == 0x80; }
bool isLead(char16_t u) { return u >= 0xD800 && u <= 0xDBFF; }
bool isTrail(char16_t u) { return u >= 0xDC00 && u <= 0xDFFF; }

// Whole blocks of sixteen ASCII units, then single units: only the caller knows whether what
// follows is worth another look.
size_t asciiUnits(const char16_t* s, size_t n) {
    constexpr uint64_t kHighBits = 0xFF80FF80FF80FF80u;
    size_t i = 0;
    for (; i + 16 <= n; i += 16) {
        uint64_t block[4];
        std::memcpy(block, s + i, sizeof block);
        if ((block[0] | block[1] | block[2] | block[3]) & kHighBits) break;
    }
    while (i < n && s[i] < 0x80) ++i;
    return i;
}

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

// A lead byte of C2..DF followed by a continuation: the letters of Latin, Greek, Cyrillic, Hebrew
// and Arabic text.
// `pair` holds the lead byte in its low eight bits and the next byte above them.
bool isTwoByteLetter(uint32_t pair) { return (pair & 0xC0E0) == 0x80C0 && (pair & 0x1E) != 0; }
char16_t twoByteUnit(uint32_t pair) {
    return static_cast<char16_t>((pair & 0x1F) << 6 | (pair >> 8 & 0x3F));
}
uint32_t bytePair(const unsigned char* from) { return from[0] | uint32_t{from[1]} << 8; }

// Writes one code point as UTF-16 units; answers the number written.
size_t putUnits(char16_t* out, char32_t c) {
    if (c < 0x10000) {
        out[0] = static_cast<char16_t>(c);
        return 1;
    }
    c -= 0x10000;
    out[0] = static_cast<char16_t>(0xD800 + (c >> 10));
    out[1] = static_cast<char16_t>(0xDC00 + (c & 0x3FF));
    return 2;
}

// The code point that starts at units[i] and the units it takes; unpaired surrogates are U+FFFD.
char32_t nextCodePoint(std::u16string_view units, size_t i, size_t& taken) {
    const char16_t u = units[i];
    taken = 1;
    if (isLead(u) && i + 1 < units.size() && isTrail(units[i + 1])) {
        taken = 2;
        return 0x10000 + ((char32_t(u) - 0xD800) << 10) + (units[i + 1] - 0xDC00);
    }
    return isLead(u) || isTrail(u) ? kReplacement : u;
}

size_t utf8Length(char32_t c) { return c < 0x80 ? 1 : c < 0x800 ? 2 : c < 0x10000 ? 3 : 4; }

void putUtf8(char* out, char32_t c) {
    if (c < 0x80) {
        out[0] = static_cast<char>(c);
    } else if (c < 0x800) {
        out[0] = static_cast<char>(0xC0 | (c >> 6));
        out[1] = static_cast<char>(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        out[0] = static_cast<char>(0xE0 | (c >> 12));
        out[1] = static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out[2] = static_cast<char>(0x80 | (c & 0x3F));
    } else {
        out[0] = static_cast<char>(0xF0 | (c >> 18));
        out[1] = static_cast<char>(0x80 | ((c >> 12) & 0x3F));
        out[2] = static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out[3] = static_cast<char>(0x80 | (c & 0x3F));
    }
}

// Writes the character at units[i], which is not ASCII, if it fits; advances i and written.
bool putCharacter(std::u16string_view units, size_t& i, char* out, size_t& written, size_t room) {
    // Latin, Greek, Cyrillic, Hebrew and Arabic letters take two bytes: the common case first.
    if (const char16_t u = units[i]; u < 0x800) {
        if (room - written < 2) return false;
        out[written] = static_cast<char>(0xC0 | (u >> 6));
        out[written + 1] = static_cast<char>(0x80 | (u & 0x3F));
        written += 2;
        ++i;
        return true;
    }
    size_t taken = 0;
    const char32_t c = nextCodePoint(units, i, taken);
    const size_t length = utf8Length(c);
    if (length > room - written) return false;
    putUtf8(out + written, c);
    written += length;
    i += taken;
    return true;
}

// ASCII is tested eight (or four) characters at a time, with one or two words.
template <size_t N>
bool asciiUnits(const char16_t* s) {
    uint64_t block[N / 4];
    std::memcpy(block, s, sizeof block);
    uint64_t any = 0;
    for (const uint64_t word : block) any |= word;
    return (any & 0xFF80FF80FF80FF80u) == 0;
}

constexpr uint64_t kHighBits = 0x8080808080808080u;

// How many of the eight bytes in `block` (in memory order) are ASCII before the first that is not.
size_t leadingAscii(uint64_t block) {
    const uint64_t high = block & kHighBits;
    if (high == 0) return 8;
    return static_cast<size_t>(std::endian::native == std::endian::little
                                   ? std::countr_zero(high)
                                   : std::countl_zero(high)) /
           8;
}

// Eight bytes as eight units, in one vector conversion.
void widen8(const unsigned char* from, char16_t* to) {
#if defined(__SSE2__)
    // GCC's generic lowering of the conversion below takes three times the instructions.
    const __m128i bytes = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(from));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to), _mm_unpacklo_epi8(bytes, _mm_setzero_si128()));
#else
    using Bytes8 = uint8_t __attribute__((vector_size(8)));
    using Units8 = uint16_t __attribute__((vector_size(16)));
    Bytes8 bytes;
    std::memcpy(&bytes, from, sizeof bytes);
    const Units8 units = __builtin_convertvector(bytes, Units8);
    std::memcpy(to, &units, sizeof units);
#endif
}

// Four ASCII characters between units and bytes, in one vector conversion.
void narrow4(const char16_t* from, char* to) {
    using Units4 = uint16_t __attribute__((vector_size(8)));
    using Bytes4 = uint8_t __attribute__((vector_size(4)));
    Units4 units;
    std::memcpy(&units, from, sizeof units);
    const Bytes4 bytes = __builtin_convertvector(units, Bytes4);
    std::memcpy(to, &bytes, sizeof bytes);
}

// Narrows the ASCII units at the start of s[0, n), sixteen at a time while they last; answers how
// many it narrowed.
size_t narrowAsciiRun(const char16_t* s, size_t n, char* to) {
    size_t done = 0;
#if defined(__SSE2__)
    // packus saturates a unit above 0xFF to 0xFF and one of 0x8000 or more to 0: the high bits of
    // the packed bytes and of the units themselves together flag every unit that is not ASCII.
    const auto narrow16 = [&](size_t at) {
        const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + at));
        const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + at + 8));
        const __m128i packed = _mm_packus_epi16(a, b);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(to + at), packed);
        return _mm_or_si128(packed, _mm_or_si128(a, b));
    };
    // Stored before they are tested: bytes past the run are written over by what follows. A run
    // that lasts sixteen units is taken on thirty-two at a time.
    if (n < 16 || _mm_movemask_epi8(narrow16(0)) != 0) return 0;
    for (done = 16; done + 32 <= n; done += 32) {
        if (_mm_movemask_epi8(_mm_or_si128(narrow16(done), narrow16(done + 16))) != 0) break;
    }
    for (; done + 16 <= n; done += 16) {
        if (_mm_movemask_epi8(narrow16(done)) != 0) break;
    }
#else
    for (; done + 16 <= n && asciiUnits<16>(s + done); done += 16) {
        for (size_t k = 0; k < 16; ++k) to[done + k] = static_cast<char>(s[done + k]);
    }
#endif
    return done;
}

// The UTF-8 of every unit below U+0800 (one or two bytes, in memory order) and, in the top byte,
// its length: Latin, Greek, Cyrillic, Hebrew and Arabic text converts without a branch per letter.
constexpr std::array<uint32_t, 0x800> kShortUtf8 = [] {
    std::array<uint32_t, 0x800> table{};
    for (uint32_t u = 0; u < 0x800; ++u) {
        const uint32_t first = u < 0x80 ? u : 0xC0 | (u >> 6);
        const uint32_t second = u < 0x80 ? 0 : 0x80 | (u & 0x3F);
        const uint32_t bytes = std::endian::native == std::endian::little ? first | (second << 8)
                                                                          : (first << 8) | second;
        table[u] = bytes | (u < 0x80 ? 1u : 2u) << 24;
    }
    return table;
}();

// Writes the unit's one or two bytes (two always land, the room allowing) and moves past them.
void putShort(char*& o, char16_t u) {
    const uint32_t entry = kShortUtf8[u];
    const auto bytes = static_cast<uint16_t>(entry);
    std::memcpy(o, &bytes, 2);
    o += entry >> 24;
}

// Writes the character at units[i] (a pair may take the unit after it) and moves past it.
void putAny(std::u16string_view units, size_t& i, char*& o) {
    if (units[i] < 0x800) {
        putShort(o, units[i++]);
        return;
    }
    size_t taken = 0;
    const char32_t c = nextCodePoint(units, i, taken);
    putUtf8(o, c);
    o += utf8Length(c);
    i += taken;
}

// Converts units[i, end) into out + written, which has room for three bytes per unit and one
// more, so no character needs a check (a pair may take the unit at end as its second half, and
// a short character's second byte may land past the end of what is written). Answers the new i.
size_t utf8Stretch(std::u16string_view units, size_t i, size_t end, char* out, size_t& written) {
    const char16_t* s = units.data();
    char* o = out + written;
#if defined(__SSE2__)
    // Eight units a step: narrowed at once, of which the ASCII before the first other unit are
    // kept, and that unit written after them. The room for three bytes per unit holds the eight.
    const __m128i nonAscii = _mm_set1_epi16(static_cast<short>(0xFF80));
    while (i + 8 <= end) {
        const __m128i eight = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + i));
        _mm_storel_epi64(reinterpret_cast<__m128i*>(o), _mm_packus_epi16(eight, eight));
        const auto asciiLanes = static_cast<unsigned>(_mm_movemask_epi8(
            _mm_cmpeq_epi16(_mm_and_si128(eight, nonAscii), _mm_setzero_si128())));
        if (asciiLanes == 0xFFFF) {
            const size_t run = 8 + narrowAsciiRun(s + i + 8, end - i - 8, o + 8);
            o += run;
            i += run;
            continue;
        }
        const auto ascii = static_cast<size_t>(std::countr_one(asciiLanes)) / 2;
        o += ascii;
        i += ascii;
        if (s[i] < 0x800) {
            putShort(o, s[i++]);
        } else {
            putAny(units, i, o);
        }
    }
#endif
    // Four units a step: ASCII narrowed at once, a mix of ASCII and two-byte letters through the
    // table. After two ASCII steps in a row, a run of ASCII is looked for eight units at a time
    // and narrowed in one loop the compiler vectorizes.
    unsigned asciiSteps = 0;
    while (i + 4 <= end) {
        uint64_t four;
        std::memcpy(&four, s + i, sizeof four);
        if ((four & 0xFF80FF80FF80FF80u) == 0) {
            if (++asciiSteps >= 2) {
                if (const size_t run = narrowAsciiRun(s + i, end - i, o)) {
                    o += run;
                    i += run;
                    asciiSteps = 0;
                    continue;
                }
            }
            narrow4(s + i, o);
            o += 4;
            i += 4;
            continue;
        }
        asciiSteps = 0;
        if ((four & 0xF800F800F800F800u) == 0) {
            for (size_t k = 0; k < 4; ++k) putShort(o, s[i + k]);
            i += 4;
            continue;
        }
        putAny(units, i, o);
    }
    while (i < end) putAny(units, i, o);
    written = static_cast<size_t>(o - out);
    return i;
}

size_t utf8Into(std::u16string_view units, char* out, size_t room) {
    size_t written = 0;
    for (size_t i = 0; i < units.size();) {
        const size_t left = room - written;
        if (const size_t sure = left == 0 ? 0 : std::min(units.size() - i, (left - 1) / 3)) {
            i = utf8Stretch(units, i, i + sure, out, written);
            continue;
        }
        // Near the end of the room: whole characters only, one at a time.
        if (units[i] < 0x80) {
            if (written == room) break;
            out[written++] = static_cast<char>(units[i++]);
            continue;
        }
        if (!putCharacter(units, i, out, written, room)) break;
    }
    return written;
}

size_t singleByteInto(const ByteTable& table, std::u16string_view units, char* out, size_t room) {
    size_t written = 0;
    for (size_t i = 0; i < units.size() && written < room; ++i) {
        const char16_t u = units[i];
        if (u < 0x80 && table.toUnit[u] == u) {
            out[written++] = static_cast<char>(u);
        } else if (isLead(u) && i + 1 < units.size() && isTrail(units[i + 1])) {
            out[written++] = '?';  // one mark for the whole pair
            ++i;
        } else {
            out[written++] = table.byteFor(u);
        }
    }
    return written;
}

}  // namespace

bool isSingleByte(int32_t encoding) { return encoding >= 2 && encoding <= 5; }

std::u16string fromUtf8(std::string_view s) {
    // Converted a block at a time through a buffer in the cache: the result is written once,
    // never filled first.
    constexpr size_t kBlock = 4096;
    std::array<char16_t, kBlock + 12> buffer;
    std::u16string out;
    out.reserve(s.size());  // never more units than bytes
    const auto* bytes = reinterpret_cast<const unsigned char*>(s.data());
    for (size_t i = 0; i < s.size();) {
        const size_t end = i + std::min(s.size() - i, kBlock);
        char16_t* o = buffer.data();
        while (i < end) {
            // Eight bytes at a time: widened at once, of which the ASCII before the first other
            // byte are kept, with a two-byte letter there taken in the same step. A block never
            // gives more units than bytes, so the widened eight fit.
            while (i + 9 <= end) {  // the ninth byte: a letter's second, after seven ASCII
                uint64_t block;
                std::memcpy(&block, bytes + i, sizeof block);
                widen8(bytes + i, o);
                const size_t ascii = leadingAscii(block);
                if (ascii == 8) {
                    o += 8;
                    i += 8;
                    continue;
                }
                o += ascii;
                i += ascii;
                const uint32_t pair = bytePair(bytes + i);
                if (!isTwoByteLetter(pair)) break;
                *o++ = twoByteUnit(pair);
                i += 2;
            }
            if (i >= end) break;
            if (bytes[i] < 0x80) {
                *o++ = bytes[i++];
            } else if (i + 1 < s.size() && isTwoByteLetter(bytePair(bytes + i))) {
                *o++ = twoByteUnit(bytePair(bytes + i));
                i += 2;
            } else {
                // A sequence may end past the block; it still gives fewer units than bytes.
                o += putUnits(o, nextUtf8(s, i));
            }
        }
        out.append(buffer.data(), static_cast<size_t>(o - buffer.data()));
    }
    return out;
}

std::string toUtf8(std::u16string_view s) {
    std::string out(encodedSize(s, 0), '\0');
    utf8Into(s, out.data(), out.size());
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

size_t encodedSize(std::u16string_view units, int32_t encoding) {
    size_t bytes = 0;
    if (isSingleByte(encoding)) {
        for (size_t i = 0; i < units.size(); ++i, ++bytes) {
            if (isLead(units[i]) && i + 1 < units.size() && isTrail(units[i + 1])) ++i;
        }
        return bytes;
    }
    for (size_t i = 0; i < units.size();) {
        const size_t run = asciiUnits(units.data() + i, units.size() - i);
        bytes += run;
        i += run;
        if (i == units.size()) break;
        size_t taken = 0;
        bytes += utf8Length(nextCodePoint(units, i, taken));
        i += taken;
    }
    return bytes;
}

size_t encodeInto(std::u16string_view units, int32_t encoding, char* out, size_t room) {
    const ByteTable* table = byteTable(encoding);
    return table ? singleByteInto(*table, units, out, room) : utf8Into(units, out, room);
}

std::string encode(std::u16string_view units, int32_t encoding) {
    std::string out(encodedSize(units, encoding), '\0');
    encodeInto(units, encoding, out.data(), out.size());
    return out;
}

}  // namespace sim
