// Base64 over byte buffers (the RFC 4648 alphabet, no line breaks), independent of the host.
//
// Decoding is deliberately lenient: it skips nothing, so every byte outside the alphabet ("=",
// blanks and line breaks included) counts as six zero bits, and only the last group's "=" shorten
// the result.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// Four characters per started group of three bytes; "=" fills the third and fourth character of
// a short last group. At least one group is always written: no bytes give "AA==". A byte that
// the last group needs past the input counts as zero.
std::string B64_Encode(std::string_view bytes);

// The pieces of B64_Encode for input that arrives a part at a time. B64_EncodeGroups writes the
// four characters of each whole group of three bytes (a trailing partial group is left alone)
// and answers the number of bytes it consumed; B64_EncodeRest writes the padded last group of
// the 1 or 2 bytes left, nothing for none, and "AA==" when the whole input was empty
// (`nothingBefore`). Both advance `out`, which must have room for every character.
std::size_t B64_EncodeGroups(std::string_view bytes, char*& out);
void B64_EncodeRest(std::string_view rest, bool nothingBefore, char*& out);

// Three bytes per started group of four characters (at least one group), less one for each "="
// among the second, third and fourth character of the last group. Characters missing from a
// short last group count as zero bits, never as "=".
std::string B64_Decode(std::string_view characters);

// B64_Decode into `out`, which has room for three bytes per started group (at least three) and
// may be the characters' own buffer: each group is read before its bytes are written. Answers the
// byte count.
std::size_t B64_DecodeInto(std::string_view characters, char* out);
