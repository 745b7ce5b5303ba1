// The hosts-file entry writer on any file: the first byte is the mode, the bytes up to the first
// line feed the entry, the rest the hosts file, all in a folder of its own under the system's
// temporary folder. A non-empty file must always be rewritten to hold the entry's new line.
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "net/hosts_file.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    // Removed again when the run ends.
    static const struct Folder {
        Folder() { std::filesystem::create_directories(path); }
        ~Folder() { std::filesystem::remove_all(path); }
        std::filesystem::path path = std::filesystem::temp_directory_path() /
                                     ("ravelin-check-ip-" + std::to_string(getpid()));
    } folder;
    const std::filesystem::path& dir = folder.path;
    if (size == 0) return 0;
    const std::string input(reinterpret_cast<const char*>(data + 1), size - 1);
    const std::size_t cut = input.find('\n');
    if (cut == std::string::npos || cut == 0) return 0;
    const std::string entry = input.substr(0, cut);
    if (entry.find('\0') != std::string::npos || entry.find('\r') != std::string::npos) return 0;
    const std::filesystem::path hosts = dir / "hosts";
    std::filesystem::remove(hosts);
    std::ofstream(hosts, std::ios::binary) << input.substr(cut + 1);
    const std::int32_t status =
        slib::CheckIp(entry, "10.0.0.1", data[0] % 5, hosts, dir / "backup");
    if (status == 0) {
        std::ifstream in(hosts, std::ios::binary);
        std::stringstream written;
        written << in.rdbuf();
        if (written.str().find(entry + "\t10.0.0.1\t# ") == std::string::npos) std::abort();
    } else if (status != -1 || size - 1 != cut + 1) {
        std::abort();  // only an empty hosts file may be refused
    }
    return 0;
}
