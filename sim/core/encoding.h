// Conversions between UTF-16 and the byte encodings of the host's encoding list. Native (0) is
// UTF-8 on this host; Mac Roman (4), Windows-1252 (3), DOS code page 437 (2) and ISO 8859-1 (5)
// are single-byte tables; any other code is treated as native.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace sim {

// Decodes bytes; invalid UTF-8 sequences become U+FFFD, characters outside the BMP become
// surrogate pairs.
std::u16string decode(std::string_view bytes, int32_t encoding);
// Encodes units; characters the encoding cannot hold become '?'. Unpaired surrogates in UTF-8
// become U+FFFD.
std::string encode(std::u16string_view units, int32_t encoding);
// The bytes encode() gives, written into out[0, room): whole characters only, as many as fit.
// Answers the number of bytes written.
size_t encodeInto(std::u16string_view units, int32_t encoding, char* out, size_t room);
// The number of bytes encode() gives.
size_t encodedSize(std::u16string_view units, int32_t encoding);

// True for the single-byte code pages (2 to 5); every other encoding is UTF-8 here.
bool isSingleByte(int32_t encoding);

std::u16string fromUtf8(std::string_view s);
std::string toUtf8(std::u16string_view s);

}  // namespace sim
