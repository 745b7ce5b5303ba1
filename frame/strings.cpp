#include "frame/strings.h"

#include <algorithm>

namespace {

constexpr char kMakerShortName[] = "RVL";
constexpr char kMakerLine[] = "Ravelin developers, 2024-2026";

std::u16string widen(const std::string& ascii) { return {ascii.begin(), ascii.end()}; }

}  // namespace

std::u16string pluginString(int kind) {
    switch (kind) {
        case kPluginName:
            return widen(std::string(kMakerShortName) + " Ravelin Plug-In");
        case kPluginDescription:
            return widen(
                std::string("Collection of useful and sometimes indispensable functions.") + "\\n" +
                kMakerLine + "\\n" + "Version " + kPluginVersion);
        default:
            return {};
    }
}

void ReadString(fmx::unichar16* buffer, fmx::uint32 size, int kind) {
    const std::u16string text = pluginString(kind);
    if (!text.empty()) copyToHostBuffer(text, buffer, size);
}

void copyToHostBuffer(std::u16string_view text, fmx::unichar16* buffer, fmx::uint32 size) {
    if (size == 0) return;
    const std::size_t units = std::min<std::size_t>(text.size(), size - 1);
    std::copy_n(text.begin(), units, buffer);
    buffer[units] = 0;
}
