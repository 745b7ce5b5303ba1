#include "sim/core/paths.h"

#include <algorithm>

#include "sim/core/encoding.h"

namespace sim {

namespace {

// The path formats.
constexpr int32_t kPosixPath = 1;
constexpr int32_t kWinPath = 2;
constexpr int32_t kUrlPath = 3;
constexpr std::u16string_view kLinuxPrefix = u"filelinux:";
constexpr std::u16string_view kWindowsPrefix = u"filewin:";
constexpr std::u16string_view kUrlPrefix = u"file://";

bool startsWith(std::u16string_view s, std::u16string_view prefix) {
    return s.substr(0, prefix.size()) == prefix;
}

bool isUnreserved(char16_t c) {
    return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || (c >= u'0' && c <= u'9') ||
           c == u'-' || c == u'.' || c == u'_' || c == u'~' || c == u'/';
}

std::u16string percentEncoded(std::u16string_view path) {
    static constexpr char kHex[] = "0123456789ABCDEF";
    std::u16string out;
    for (unsigned char byte : toUtf8(path)) {
        if (isUnreserved(byte)) {
            out += static_cast<char16_t>(byte);
        } else {
            out += {u'%', static_cast<char16_t>(kHex[byte >> 4]),
                    static_cast<char16_t>(kHex[byte & 15])};
        }
    }
    return out;
}

// Empty when the text holds a malformed escape.
std::optional<std::u16string> percentDecoded(std::u16string_view path) {
    std::string bytes;
    auto hex = [](char16_t c) -> int {
        if (c >= u'0' && c <= u'9') return c - u'0';
        if (c >= u'a' && c <= u'f') return c - u'a' + 10;
        if (c >= u'A' && c <= u'F') return c - u'A' + 10;
        return -1;
    };
    const std::string utf8 = toUtf8(path);
    for (std::size_t i = 0; i < utf8.size(); ++i) {
        if (utf8[i] != '%') {
            bytes += utf8[i];
            continue;
        }
        if (i + 2 >= utf8.size()) return std::nullopt;
        const int high = hex(static_cast<unsigned char>(utf8[i + 1]));
        const int low = hex(static_cast<unsigned char>(utf8[i + 2]));
        if (high < 0 || low < 0) return std::nullopt;
        bytes += static_cast<char>(high * 16 + low);
        i += 2;
    }
    return fromUtf8(bytes);
}

}  // namespace

std::optional<std::u16string> toFileMakerPath(std::u16string_view path, int32_t format) {
    switch (format) {
        case kPosixPath:
            if (!startsWith(path, u"/")) return std::nullopt;
            return std::u16string(kLinuxPrefix) + std::u16string(path);
        case kWinPath: {
            std::u16string p(path);
            std::replace(p.begin(), p.end(), u'\\', u'/');
            const bool drive = p.size() >= 3 && p[1] == u':' && p[2] == u'/';
            if (!drive && !startsWith(p, u"//")) return std::nullopt;
            return std::u16string(kWindowsPrefix) + (drive ? u"/" : u"") + p;
        }
        case kUrlPath: {
            if (!startsWith(path, kUrlPrefix)) return std::nullopt;
            const std::u16string_view rest = path.substr(kUrlPrefix.size());
            if (!startsWith(rest, u"/")) return std::nullopt;  // only local files: no host part
            auto decoded = percentDecoded(rest);
            if (!decoded) return std::nullopt;
            return std::u16string(kLinuxPrefix) + *decoded;
        }
        default:
            return std::nullopt;
    }
}

std::optional<std::u16string> fromFileMakerPath(std::u16string_view fmPath, int32_t format) {
    std::u16string_view path;
    for (std::u16string_view prefix :
         {kLinuxPrefix, kWindowsPrefix, std::u16string_view(u"filemac:"),
          std::u16string_view(u"file:")}) {
        if (startsWith(fmPath, prefix)) {
            path = fmPath.substr(prefix.size());
            break;
        }
    }
    if (!startsWith(path, u"/")) return std::nullopt;
    switch (format) {
        case kPosixPath:
            return std::u16string(path);
        case kWinPath: {
            const bool drive = path.size() >= 3 && path[2] == u':';
            std::u16string p(drive ? path.substr(1) : path);
            std::replace(p.begin(), p.end(), u'/', u'\\');
            return p;
        }
        case kUrlPath:
            return std::u16string(kUrlPrefix) + percentEncoded(path);
        default:
            return std::nullopt;
    }
}

}  // namespace sim
