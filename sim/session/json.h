// The shell's JSON lines.
#pragma once

#include <string>
#include <string_view>

namespace sim::json {

// A JSON string literal of UTF-8 text: quotes, backslashes and control characters escaped
// (\r, \n, \t, \b, \f by name, the others as \u00XX); everything else, non-ASCII included,
// kept as it is.
std::string quote(std::string_view utf8);

// {"type": T, "text": S, "error": N}, then "message" (the error's text), "position" (of a syntax
// error, from 1) and "detail" (what the host adds, such as SQLite's message) when there are any.
std::string resultLine(std::string_view type, std::string_view text, int error,
                       std::string_view message = {}, std::string_view detail = {},
                       int position = 0);
// {"script": NAME, "file": FILE, "parameter": TEXT}, then "error" and "message" for a run whose
// calculation failed.
std::string scriptLine(std::string_view script, std::string_view file, std::string_view parameter,
                       int error = 0, std::string_view message = {});
// {"init": RESULT}
std::string initLine(int result);

}  // namespace sim::json
