#include "encoding/base64.h"

#include <array>
#include <cstdint>

namespace {

constexpr char base64EncTable[] =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// Every byte outside the alphabet maps to 0, the value of 'A'.
constexpr std::array<uint8_t, 256> base64DecTable = [] {
    std::array<uint8_t, 256> table{};
    for (uint8_t i = 0; i < 64; ++i) table[static_cast<uint8_t>(base64EncTable[i])] = i;
    return table;
}();

uint8_t byteAt(std::string_view s, std::size_t i) {
    return i < s.size() ? static_cast<uint8_t>(s[i]) : 0;
}

uint8_t valueAt(std::string_view s, std::size_t i) {
    return i < s.size() ? base64DecTable[static_cast<uint8_t>(s[i])] : 0;
}

std::string encode(std::string_view bytes) {
    const std::size_t length = bytes.size();
    const std::size_t groups = length == 0 ? 1 : (length + 2) / 3;
    std::string out(groups * 4, '\0');
    const auto* in = reinterpret_cast<const uint8_t*>(bytes.data());
    char* o = out.data();
    // Whole groups without bounds checks; the last group, full or not, below.
    const std::size_t whole = length == 0 ? 0 : (length - 1) / 3;
    for (std::size_t g = 0; g < whole; ++g, in += 3, o += 4) {
        const uint32_t v = (uint32_t{in[0]} << 16) | (uint32_t{in[1]} << 8) | in[2];
        o[0] = base64EncTable[v >> 18];
        o[1] = base64EncTable[(v >> 12) & 63];
        o[2] = base64EncTable[(v >> 6) & 63];
        o[3] = base64EncTable[v & 63];
    }
    const std::size_t i = whole * 3;
    const uint8_t b0 = byteAt(bytes, i), b1 = byteAt(bytes, i + 1), b2 = byteAt(bytes, i + 2);
    o[0] = base64EncTable[b0 >> 2];
    o[1] = base64EncTable[((b0 & 3) << 4) | (b1 >> 4)];
    o[2] = i + 1 < length ? base64EncTable[((b1 & 15) << 2) | (b2 >> 6)] : '=';
    o[3] = i + 2 < length ? base64EncTable[b2 & 63] : '=';
    return out;
}

}  // namespace

std::string B64_Encode(std::string_view bytes) { return encode(bytes); }

std::string B64_Decode(std::string_view characters) {
    const std::size_t length = characters.size();
    const std::size_t groups = length == 0 ? 1 : (length + 3) / 4;
    std::string out(groups * 3, '\0');
    const auto* in = reinterpret_cast<const uint8_t*>(characters.data());
    char* o = out.data();
    const std::size_t whole = length / 4 == groups ? groups - 1 : length / 4;
    for (std::size_t g = 0; g < whole; ++g, in += 4, o += 3) {
        const uint32_t v = (uint32_t{base64DecTable[in[0]]} << 18) |
                           (uint32_t{base64DecTable[in[1]]} << 12) |
                           (uint32_t{base64DecTable[in[2]]} << 6) | base64DecTable[in[3]];
        o[0] = static_cast<char>(v >> 16);
        o[1] = static_cast<char>((v >> 8) & 255);
        o[2] = static_cast<char>(v & 255);
    }
    const std::size_t j = whole * 4;
    const uint8_t a = valueAt(characters, j), b = valueAt(characters, j + 1),
                  c = valueAt(characters, j + 2), d = valueAt(characters, j + 3);
    o[0] = static_cast<char>((a << 2) | ((b >> 4) & 3));
    o[1] = static_cast<char>(((b & 15) << 4) | ((c >> 2) & 15));
    o[2] = static_cast<char>(((c << 6) & 255) | d);
    std::size_t count = groups * 3;
    for (std::size_t k = j + 1; k < j + 4 && k < length; ++k) {
        if (characters[k] == '=') --count;
    }
    out.resize(count);
    return out;
}
