// The expressions one merge has evaluated so far, with their results, so that a template that
// repeats an expression evaluates it once per call.
//
// Expressions match as their UTF-8 forms do, byte for byte: expressions that differ in a blank
// or in case are different entries. That form is what the host spells into a buffer of two bytes
// per unit, so for units 1 to 0x7FF (at most two bytes each, no zero) it is the units' own UTF-8
// and such expressions are keyed by their units, with no host call. Any other expression is
// spelled by the host; its bytes, which may come back cut, are keyed by the units they spell when
// they are such units' UTF-8, so both kinds meet in one entry wherever their UTF-8 forms are one.
//
// A result is kept as it comes back from UTF-8 (without styles), made once when it is added.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <unordered_map>

#include "host/fmx.h"

class ResultsMap {
public:
    // The answer of find for an expression that is not cached.
    static constexpr int kNotCached = -2348;

    // Few entries per bucket, since every span of a template is looked up.
    ResultsMap() { byUnits_.max_load_factor(0.25F); }

    // An expression's key: units, or bytes the host spelled that are no units' UTF-8.
    struct Key {
        bool byUnits = true;
        std::u16string units;
        std::string bytes;
    };
    // Whether units alone make an expression's key.
    static bool keyedByUnits(std::u16string_view units);
    // The key of an expression as host text.
    static Key keyOf(const fmx::Text& expression);

    // 0 with `out` replaced by the cached result (which comes back without styles), or
    // kNotCached with `out` untouched.
    int find(const fmx::Text& expression, fmx::Text& out);
    // Caches `value` for `expression` unless it is cached already; an entry is never replaced.
    int add(const fmx::Text& expression, const fmx::Text& value);

    // The same by key; find answers the cached result, or nullptr. Units that do not make a key
    // are simply not found; add takes only units that do.
    const fmx::Text* find(std::u16string_view units) const;
    const fmx::Text* find(const Key& key) const;
    void add(std::u16string_view units, const fmx::Text& value);
    void add(const Key& key, const fmx::Text& value);

private:
    struct UnitsHash {
        using is_transparent = void;
        std::size_t operator()(std::u16string_view units) const;
    };
    struct SameUnits {
        using is_transparent = void;
        bool operator()(std::u16string_view a, std::u16string_view b) const;
    };
    static fmx::TextUniquePtr throughUtf8(const fmx::Text& value);

    std::unordered_map<std::u16string, fmx::TextUniquePtr, UnitsHash, SameUnits> byUnits_;
    std::map<std::string, fmx::TextUniquePtr, std::less<>> byBytes_;
};
