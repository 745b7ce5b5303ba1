#include "merge/results_map.h"

#include <cstring>
#include <optional>

#include "fmlib/convert.h"
#include "merge/unit_words.h"

namespace {

// The units whose UTF-8 `bytes` are exactly (one- and two-byte forms, none overlong, no zero),
// or nothing.
std::optional<std::u16string> unitsSpelledBy(std::string_view bytes) {
    std::u16string units;
    units.reserve(bytes.size());
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const auto lead = static_cast<unsigned char>(bytes[i]);
        if (lead > 0 && lead < 0x80) {
            units.push_back(lead);
            continue;
        }
        if (lead < 0xC2 || lead > 0xDF || i + 1 == bytes.size()) return std::nullopt;
        const auto next = static_cast<unsigned char>(bytes[++i]);
        if ((next & 0xC0) != 0x80) return std::nullopt;
        units.push_back(static_cast<char16_t>(((lead & 0x1F) << 6) | (next & 0x3F)));
    }
    return units;
}

}  // namespace

bool ResultsMap::keyedByUnits(std::u16string_view units) {
    return merge_units::allOneOrTwoUtf8Bytes(units);
}

std::size_t ResultsMap::UnitsHash::operator()(std::u16string_view units) const {
    return merge_units::hashUnits(units);
}

bool ResultsMap::SameUnits::operator()(std::u16string_view a, std::u16string_view b) const {
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof a[0]) == 0;
}

ResultsMap::Key ResultsMap::keyOf(const fmx::Text& expression) {
    std::string bytes = fmlib::StringFromFmText(expression);
    if (std::optional<std::u16string> units = unitsSpelledBy(bytes)) {
        return {true, std::move(*units), {}};
    }
    return {false, {}, std::move(bytes)};
}

int ResultsMap::find(const fmx::Text& expression, fmx::Text& out) {
    const fmx::Text* cached = find(keyOf(expression));
    if (cached == nullptr) return kNotCached;
    out.SetText(*cached, 0, fmx::kSize_End);
    return 0;
}

int ResultsMap::add(const fmx::Text& expression, const fmx::Text& value) {
    add(keyOf(expression), value);
    return 0;
}

const fmx::Text* ResultsMap::find(std::u16string_view units) const {
    const auto found = byUnits_.find(units);
    return found == byUnits_.end() ? nullptr : found->second.get();
}

const fmx::Text* ResultsMap::find(const Key& key) const {
    if (key.byUnits) return find(key.units);
    const auto found = byBytes_.find(key.bytes);
    return found == byBytes_.end() ? nullptr : found->second.get();
}

void ResultsMap::add(std::u16string_view units, const fmx::Text& value) {
    if (byUnits_.find(units) == byUnits_.end()) {
        byUnits_.emplace(std::u16string(units), throughUtf8(value));
    }
}

void ResultsMap::add(const Key& key, const fmx::Text& value) {
    if (key.byUnits) return add(key.units, value);
    if (!byBytes_.contains(key.bytes)) byBytes_.emplace(key.bytes, throughUtf8(value));
}

// What the cache has always handed out: the result's UTF-8, read as fmlib::StringFromFmText
// reads it, assigned to a fresh text.
fmx::TextUniquePtr ResultsMap::throughUtf8(const fmx::Text& value) {
    const std::string bytes = fmlib::StringFromFmText(value);
    fmx::TextUniquePtr text;
    fmlib::copyToFMText(bytes, *text);
    return text;
}
