// What the machine and its user are, for the Get functions that report them: read from the
// operating system once, from places a caller may replace (tests never read the real ones).
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace sim {

struct SystemFacts {
    std::u16string userName;       // the login name
    std::u16string hostName;       // the machine's name
    std::u16string systemVersion;  // the kernel's name and release, e.g. "Linux 6.1.0-18-amd64"
    std::u16string persistentId;   // 32 upper-case hex digits, the same for every run on a machine
    // Folders, each ending in "/".
    std::u16string temporaryPath;
    std::u16string documentsPath;
    std::u16string desktopPath;
    std::u16string preferencesPath;
    std::vector<std::u16string> ipAddresses;   // of the interfaces that are up, loopback aside
    std::vector<std::u16string> nicAddresses;  // their hardware addresses, "aa-bb-cc-dd-ee-ff"
};

struct SystemSources {
    std::string machineIdPath = "/etc/machine-id";
    // The process environment by default.
    std::function<std::string(const char*)> environment;
};

SystemFacts readSystemFacts(const SystemSources& sources = {});

}  // namespace sim
