#include "net/hosts_file.h"

#include <sys/stat.h>

#include <cstdio>
#include <memory>
#include <string_view>

namespace slib {

namespace {

struct FileClose {
    void operator()(std::FILE* f) const { std::fclose(f); }
};
using File = std::unique_ptr<std::FILE, FileClose>;

constexpr std::size_t kLineBuffer = 255;
constexpr std::int32_t kReplaceUpTo = 2;

// The next line with its line feed or carriage return kept, at most 254 bytes of it; a CR LF
// pair gives two lines. False once the end of the file was met (the line in hand still counts).
bool readLine(std::FILE* f, std::string& line) {
    line.clear();
    while (line.size() < kLineBuffer - 1) {
        const int c = std::fgetc(f);
        if (c == EOF) return false;
        line.push_back(static_cast<char>(c));
        if (c == '\n' || c == '\r') break;
    }
    return true;
}

}  // namespace

std::int32_t CheckIp(const std::string& entry, const std::string& value, std::int32_t mode,
                     const std::string& hostsPath, const std::string& backupPath) {
    File hosts(std::fopen(hostsPath.c_str(), "r"));
    long size = 0;
    if (hosts && std::fseek(hosts.get(), 0, SEEK_END) == 0) {
        size = std::ftell(hosts.get());
        std::rewind(hosts.get());
    }
    File backup(std::fopen(backupPath.c_str(), "w"));
    if (!backup) return -2;
    if (!hosts || size <= 0) {
        backup.reset();
        std::remove(backupPath.c_str());
        return -1;
    }

    bool modified = false;
    std::string line;
    for (bool more = true; more;) {
        more = readLine(hosts.get(), line);
        if (!line.empty() && std::string_view(line).find(entry) != std::string_view::npos) {
            if (mode > kReplaceUpTo) continue;
            std::fprintf(backup.get(), "%s\t%s\t# modifyed by Filemaker Ravelin plug-in\n",
                         entry.c_str(), value.c_str());
            modified = true;
            continue;
        }
        std::fwrite(line.data(), 1, line.size(), backup.get());
    }
    if (!modified) {
        std::fprintf(backup.get(), "%s\t%s\t# added by Filemaker Ravelin plug-in\n", entry.c_str(),
                     value.c_str());
    }
    hosts.reset();
    if (std::fclose(backup.release()) != 0) return -2;

    // Renaming over the old file replaces it in one step: it is never missing, even when the
    // rename fails.
    struct stat before {};
    const bool known = stat(hostsPath.c_str(), &before) == 0;
    chmod(hostsPath.c_str(), 0777);
    if (std::rename(backupPath.c_str(), hostsPath.c_str()) != 0) {
        if (known) chmod(hostsPath.c_str(), before.st_mode & 07777);
        return -2;
    }
    chmod(hostsPath.c_str(), 0444);
    return 0;
}

}  // namespace slib
