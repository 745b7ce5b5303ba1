// The plug-in's own strings, as the host asks for them.
#pragma once

#include <string>
#include <string_view>

#include "host/fmx_types.h"

inline constexpr char kPluginVersion[] = "3.0.3";
// Identifier "RVLX", '1', then the option letters in the host's order.
inline constexpr char16_t kOptionString[] = u"RVLX1YnYYnn";

enum PluginStringKind { kPluginName = 1, kPluginDescription = 2 };

// Kind 1: "RVL Ravelin Plug-In". Kind 2: one line whose pieces are separated by a backslash and
// the letter n, as two plain characters (the host shows them as they stand). Other kinds: empty.
std::u16string pluginString(int kind);

// Copies the string of `kind` into `buffer` as copyToHostBuffer does; an unknown kind writes
// nothing.
void ReadString(fmx::unichar16* buffer, fmx::uint32 size, int kind);

// Copies `text` with its terminating zero into a buffer of `size` units. Never writes more than
// `size` units: a longer text is cut to fit (still terminated); a size of 0 writes nothing.
void copyToHostBuffer(std::u16string_view text, fmx::unichar16* buffer, fmx::uint32 size);
