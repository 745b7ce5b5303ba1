// What the fuzzers share: one substitute host with the plug-in loaded, kept for the whole run
// (loading it for every input would exercise the loader, not the code under test).
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "sim/session/session.h"

namespace fuzz {

inline sim::SessionOptions options() {
    sim::SessionOptions o;
    o.pluginPath = RAVELIN_PLUGIN_PATH;
    o.seedSql =
        "CREATE TABLE t (i INTEGER, r REAL, s TEXT, d DATE, tm TIME, ts TIMESTAMP, b BLOB);"
        "INSERT INTO t VALUES (1, 2.5, 'a,b', '2024-01-31', '13:05:00', '2024-01-31 13:05:00',"
        " x'00ff'), (NULL, -0.5, 'héllo', 'no date', '25:00:00', '', NULL);";
    return o;
}

inline sim::Session& session() {
    static sim::Session s(options());
    return s;
}

inline std::string_view bytesOf(const uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

// The input cut at byte 0x01 into at most `most` pieces; the last piece keeps any further cuts.
inline std::vector<std::string_view> piecesOf(std::string_view input, std::size_t most) {
    std::vector<std::string_view> out;
    for (std::size_t start = 0;;) {
        const std::size_t cut = input.find('\x01', start);
        out.push_back(input.substr(start, cut == std::string_view::npos ? cut : cut - start));
        if (cut == std::string_view::npos || out.size() == most) break;
        start = cut + 1;
    }
    return out;
}

}  // namespace fuzz
