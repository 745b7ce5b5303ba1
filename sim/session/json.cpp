#include "sim/session/json.h"

#include <cstdio>

namespace sim::json {

std::string quote(std::string_view utf8) {
    std::string out;
    out.reserve(utf8.size() + 2);
    out.push_back('"');
    for (char c : utf8) {
        switch (c) {
            case '"':
                out += "\\\"";
                break;
            case '\\':
                out += "\\\\";
                break;
            case '\r':
                out += "\\r";
                break;
            case '\n':
                out += "\\n";
                break;
            case '\t':
                out += "\\t";
                break;
            case '\b':
                out += "\\b";
                break;
            case '\f':
                out += "\\f";
                break;
            default:
                if (static_cast<unsigned char>(c) < 0x20) {
                    char escaped[8];
                    std::snprintf(escaped, sizeof escaped, "\\u%04x", static_cast<unsigned>(c));
                    out += escaped;
                } else {
                    out.push_back(c);
                }
        }
    }
    out.push_back('"');
    return out;
}

std::string resultLine(std::string_view type, std::string_view text, int error,
                       std::string_view message, std::string_view detail, int position) {
    std::string line = "{\"type\": " + quote(type) + ", \"text\": " + quote(text) +
                       ", \"error\": " + std::to_string(error);
    if (!message.empty()) line += ", \"message\": " + quote(message);
    if (position > 0) line += ", \"position\": " + std::to_string(position);
    if (!detail.empty()) line += ", \"detail\": " + quote(detail);
    return line + "}";
}

std::string scriptLine(std::string_view script, std::string_view file, std::string_view parameter,
                       int error, std::string_view message) {
    std::string line = "{\"script\": " + quote(script) + ", \"file\": " + quote(file) +
                       ", \"parameter\": " + quote(parameter);
    if (error != 0) line += ", \"error\": " + std::to_string(error);
    if (!message.empty()) line += ", \"message\": " + quote(message);
    return line + "}";
}

std::string initLine(int result) { return "{\"init\": " + std::to_string(result) + "}"; }

}  // namespace sim::json
