// FileMaker's own path form on Linux ("filelinux:/srv/a b.txt") and the three others it converts
// to and from: a POSIX path (format 1), a Windows path (2, "filewin:/C:/a" is C:\a) and a file
// URL (3). Used by the plug-in interface's EvaluateConvert* and the calculation functions
// ConvertToFileMakerPath and ConvertFromFileMakerPath.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace sim {

// nullopt for a path of another form, or another format.
std::optional<std::u16string> toFileMakerPath(std::u16string_view path, int32_t format);
std::optional<std::u16string> fromFileMakerPath(std::u16string_view fmPath, int32_t format);

}  // namespace sim
