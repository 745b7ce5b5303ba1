// Scanning UTF-16 units several at a time, for the few tests a merge makes over every unit of
// its template: eight at a time with SSE2, else four in a 64-bit word (little-endian hosts;
// others go unit by unit).
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace merge_units {

inline constexpr bool kWords = std::endian::native == std::endian::little;
inline constexpr uint64_t kLowBits = 0x0001000100010001;
inline constexpr uint64_t kHighBits = 0x8000800080008000;

inline uint64_t wordAt(const char16_t* units) {
    uint64_t w;
    std::memcpy(&w, units, sizeof w);
    return w;
}

// A high bit in each lane of `w` that is zero; lanes above the lowest such lane may be flagged
// falsely (a borrow runs on), so only the lowest flag counts.
inline uint64_t zeroLanes(uint64_t w) { return (w - kLowBits) & ~w & kHighBits; }

// '<' (0x3C) and '>' (0x3E) are the units that give 0x3E once bit 1 is set.
inline bool isAngle(char16_t u) { return (u | 2) == u'>'; }

// The first '<' or '>' at or after `from`, or the size.
inline std::size_t nextAngle(std::u16string_view units, std::size_t from) {
    std::size_t i = from;
#if defined(__SSE2__)
    const __m128i bit1 = _mm_set1_epi16(2);
    const __m128i angle = _mm_set1_epi16(0x3E);
    for (; i + 8 <= units.size(); i += 8) {
        const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(units.data() + i));
        const auto hits =
            static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi16(_mm_or_si128(v, bit1), angle)));
        if (hits != 0) return i + static_cast<std::size_t>(std::countr_zero(hits)) / 2;
    }
#endif
    if constexpr (kWords) {
        constexpr uint64_t kBit1 = 0x0002000200020002;
        constexpr uint64_t kAngle = 0x003E003E003E003E;
        for (; i + 4 <= units.size(); i += 4) {
            const uint64_t hits = zeroLanes((wordAt(units.data() + i) | kBit1) ^ kAngle);
            if (hits != 0) return i + static_cast<std::size_t>(std::countr_zero(hits)) / 16;
        }
    }
    for (; i < units.size(); ++i) {
        if (isAngle(units[i])) return i;
    }
    return units.size();
}

// Whether every unit is in 1..0x7FF.
inline bool allOneOrTwoUtf8Bytes(std::u16string_view units) {
    std::size_t i = 0;
    if constexpr (kWords) {
        constexpr uint64_t kAbove7FF = 0xF800F800F800F800;
        for (; i + 4 <= units.size(); i += 4) {
            const uint64_t w = wordAt(units.data() + i);
            if ((w & kAbove7FF) != 0 || zeroLanes(w) != 0) return false;
        }
    }
    for (; i < units.size(); ++i) {
        if (units[i] == 0 || units[i] >= 0x800) return false;
    }
    return true;
}

// A hash of the units, a word at a time (FNV-1a's multiplier over 64-bit words); the table
// takes it modulo a prime, which every bit reaches.
inline std::size_t hashUnits(std::u16string_view units) {
    constexpr uint64_t kPrime = 0x100000001B3;
    uint64_t h = 0xCBF29CE484222325;
    std::size_t i = 0;
    for (; i + 4 <= units.size(); i += 4) h = (h ^ wordAt(units.data() + i)) * kPrime;
    for (; i < units.size(); ++i) h = (h ^ units[i]) * kPrime;
    return static_cast<std::size_t>(h);
}

}  // namespace merge_units
