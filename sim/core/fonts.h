// The host-wide font table: font names and their ids as character styles carry them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace sim::fonts {

// The id of a font name (matched ignoring case), created on first use. Never 0xFFFF.
uint16_t idOf(std::u16string_view name);
std::optional<std::u16string> nameOf(uint16_t id);

}  // namespace sim::fonts
