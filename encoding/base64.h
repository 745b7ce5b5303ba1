// Base64 over byte buffers (the RFC 4648 alphabet, no line breaks), independent of the host.
//
// Decoding is deliberately lenient: it skips nothing, so every byte outside the alphabet ("=",
// blanks and line breaks included) counts as six zero bits, and only the last group's "=" shorten
// the result.
#pragma once

#include <string>
#include <string_view>

// Four characters per started group of three bytes; "=" fills the third and fourth character of
// a short last group. At least one group is always written: no bytes give "AA==". A byte that
// the last group needs past the input counts as zero.
std::string B64_Encode(std::string_view bytes);

// Three bytes per started group of four characters (at least one group), less one for each "="
// among the second, third and fourth character of the last group. Characters missing from a
// short last group count as zero bits, never as "=".
std::string B64_Decode(std::string_view characters);
