#include "encoding/base64.h"

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

namespace {

constexpr char base64EncTable[] =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// Every byte outside the alphabet maps to 0, the value of 'A'.
constexpr std::array<uint8_t, 256> base64DecTable = [] {
    std::array<uint8_t, 256> table{};
    for (uint8_t i = 0; i < 64; ++i) table[static_cast<uint8_t>(base64EncTable[i])] = i;
    return table;
}();

// The two characters of each 12-bit value: three bytes take two lookups.
using CharPair = std::array<char, 2>;
constexpr std::array<CharPair, 4096> pairTable = [] {
    std::array<CharPair, 4096> table{};
    for (unsigned v = 0; v < 4096; ++v) table[v] = {base64EncTable[v >> 6], base64EncTable[v & 63]};
    return table;
}();

void putPair(char* out, uint64_t twelveBits) { std::memcpy(out, pairTable[twelveBits].data(), 2); }

// Eight bytes read as one big-endian number: six of them feed four pairs.
uint64_t bigEndian64(const unsigned char* in) {
    uint64_t v;
    std::memcpy(&v, in, 8);
    if constexpr (std::endian::native == std::endian::little) v = __builtin_bswap64(v);
    return v;
}

// Decoding: each character's six bits, already moved to where they land in the group's three
// bytes as a 32-bit word stored in memory order, so that a group is four lookups and three ORs.
constexpr unsigned byteShift(unsigned k) {
    return std::endian::native == std::endian::little ? 8 * k : 24 - 8 * k;
}
using PlacedTable = std::array<uint32_t, 256>;
template <typename Place>
constexpr PlacedTable placed(Place place) {
    PlacedTable table{};
    for (unsigned b = 0; b < 256; ++b) table[b] = place(uint32_t{base64DecTable[b]});
    return table;
}
constexpr PlacedTable decode0 = placed([](uint32_t a) { return (a << 2) << byteShift(0); });
constexpr PlacedTable decode1 = placed(
    [](uint32_t b) { return ((b >> 4) << byteShift(0)) | (((b & 15) << 4) << byteShift(1)); });
constexpr PlacedTable decode2 = placed(
    [](uint32_t c) { return ((c >> 2) << byteShift(1)) | (((c & 3) << 6) << byteShift(2)); });
constexpr PlacedTable decode3 = placed([](uint32_t d) { return d << byteShift(2); });

uint8_t valueAt(std::string_view s, std::size_t i) {
    return i < s.size() ? base64DecTable[static_cast<uint8_t>(s[i])] : 0;
}

std::size_t groupsFor(std::size_t length, std::size_t per) {
    return length == 0 ? 1 : (length + per - 1) / per;
}

}  // namespace

std::size_t B64_EncodeGroups(std::string_view bytes, char*& out) {
    const auto* in = reinterpret_cast<const unsigned char*>(bytes.data());
    const std::size_t whole = bytes.size() / 3 * 3;
    std::size_t i = 0;
    char* o = out;
    // Two groups from each eight bytes read (the last two unused), four groups a step while
    // fourteen bytes can be read; whole >= size - 2 keeps every group whole.
    const auto twoGroups = [](const unsigned char* from, char* to) {
        const uint64_t v = bigEndian64(from);
        putPair(to, v >> 52);
        putPair(to + 2, (v >> 40) & 0xFFF);
        putPair(to + 4, (v >> 28) & 0xFFF);
        putPair(to + 6, (v >> 16) & 0xFFF);
    };
    for (; i + 14 <= bytes.size(); i += 12, o += 16) {
        twoGroups(in + i, o);
        twoGroups(in + i + 6, o + 8);
    }
    for (; i + 8 <= bytes.size(); i += 6, o += 8) twoGroups(in + i, o);
    for (; i < whole; i += 3, o += 4) {
        const uint32_t v = (uint32_t{in[i]} << 16) | (uint32_t{in[i + 1]} << 8) | in[i + 2];
        putPair(o, v >> 12);
        putPair(o + 2, v & 0xFFF);
    }
    out = o;
    return whole;
}

void B64_EncodeRest(std::string_view rest, bool nothingBefore, char*& out) {
    if (rest.empty() && !nothingBefore) return;
    const auto byteAt = [&](std::size_t i) {
        return i < rest.size() ? static_cast<uint8_t>(rest[i]) : uint8_t{0};
    };
    const uint8_t b0 = byteAt(0), b1 = byteAt(1), b2 = byteAt(2);
    out[0] = base64EncTable[b0 >> 2];
    out[1] = base64EncTable[((b0 & 3) << 4) | (b1 >> 4)];
    out[2] = rest.size() > 1 ? base64EncTable[((b1 & 15) << 2) | (b2 >> 6)] : '=';
    out[3] = rest.size() > 2 ? base64EncTable[b2 & 63] : '=';
    out += 4;
}

std::string B64_Encode(std::string_view bytes) {
    std::string out(groupsFor(bytes.size(), 3) * 4, '\0');
    char* o = out.data();
    const std::size_t done = B64_EncodeGroups(bytes, o);
    B64_EncodeRest(bytes.substr(done), bytes.empty(), o);
    return out;
}

std::size_t B64_DecodeInto(std::string_view characters, char* out) {
    const std::size_t length = characters.size();
    const std::size_t groups = groupsFor(length, 4);
    const auto* in = reinterpret_cast<const uint8_t*>(characters.data());
    char* o = out;
    // Each group is stored as four bytes, the fourth overwritten by the next group; the last
    // group is written below, so no store passes the three bytes per group. In place, the
    // extra byte lands on characters already read.
    const std::size_t whole = groups - 1;
    const auto group = [](const uint8_t* at) {
        return decode0[at[0]] | decode1[at[1]] | decode2[at[2]] | decode3[at[3]];
    };
    std::size_t g = 0;
    for (; g + 2 <= whole; g += 2, in += 8, o += 6) {
        const uint32_t first = group(in), second = group(in + 4);
        std::memcpy(o, &first, 4);
        std::memcpy(o + 3, &second, 4);
    }
    if (g < whole) {
        const uint32_t v = group(in);
        std::memcpy(o, &v, 4);
        in += 4;
        o += 3;
    }
    const std::size_t j = whole * 4;
    const uint8_t a = valueAt(characters, j), b = valueAt(characters, j + 1),
                  c = valueAt(characters, j + 2), d = valueAt(characters, j + 3);
    std::size_t count = groups * 3;
    for (std::size_t k = j + 1; k < j + 4 && k < length; ++k) {
        if (characters[k] == '=') --count;
    }
    o[0] = static_cast<char>((a << 2) | ((b >> 4) & 3));
    o[1] = static_cast<char>(((b & 15) << 4) | ((c >> 2) & 15));
    o[2] = static_cast<char>(((c << 6) & 255) | d);
    return count;
}

std::string B64_Decode(std::string_view characters) {
    std::string out(groupsFor(characters.size(), 4) * 3, '\0');
    out.resize(B64_DecodeInto(characters, out.data()));
    return out;
}
