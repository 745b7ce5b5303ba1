// The "sort" selector of Ravelin_Get: numbers, one per line, sorted ascending.
#pragma once

#include <string>
#include <string_view>

#include "host/fmx.h"

namespace rvl {

// `lines` split at carriage returns only (a text ending in one has a last, empty line). Each
// line gives the number "%lf" reads from its start, or repeats the previous line's number when
// it holds none (0 for the first line). The numbers come back sorted, each printed as a
// default-formatted stream double (six significant digits) followed by a carriage return.
std::string sortNumberLines(std::string_view lines);

// The same over a host text, read and written in the host's encoding 4 (Mac Roman); sets
// `result` to the sorted text.
void SortNumberInFMText(const fmx::Text& list, fmx::Data& result);

}  // namespace rvl
