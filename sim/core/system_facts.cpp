#include "sim/core/system_facts.h"

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <linux/if_packet.h>
#include <net/if.h>
#include <netinet/in.h>
#include <openssl/evp.h>
#include <pwd.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>

#include "sim/core/encoding.h"

namespace sim {

namespace {

std::u16string folder(std::string path) {
    if (path.empty() || path.back() != '/') path += '/';
    return fromUtf8(path);
}

std::string loginName() {
    const passwd* pw = getpwuid(geteuid());  // read once, while the facts are gathered
    return pw != nullptr && pw->pw_name != nullptr ? pw->pw_name : "";
}

std::string machineName() {
    char name[256] = {};
    if (gethostname(name, sizeof name - 1) != 0) return {};
    return name;
}

std::string kernel() {
    utsname u{};
    if (uname(&u) != 0) return "Linux";
    return std::string(u.sysname) + " " + u.release;
}

// An application-specific form of the machine's id, so that the id itself is not shown: the
// MD5 of "fmsim:" and the id, in hex. A machine without an id gets one of its name.
std::u16string persistentIdOf(const std::string& machineId) {
    const std::string input = "fmsim:" + machineId;
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int size = 0;
    if (EVP_Digest(input.data(), input.size(), digest, &size, EVP_md5(), nullptr) != 1) return {};
    static constexpr char kDigits[] = "0123456789ABCDEF";
    std::u16string out;
    for (unsigned int i = 0; i < size; ++i) {
        out += static_cast<char16_t>(kDigits[digest[i] >> 4]);
        out += static_cast<char16_t>(kDigits[digest[i] & 15]);
    }
    return out;
}

std::string firstLine(const std::string& path) {
    std::ifstream in(path);
    std::string line;
    std::getline(in, line);
    return line;
}

struct IfAddrsFree {
    void operator()(ifaddrs* a) const { freeifaddrs(a); }
};

void readInterfaces(SystemFacts& facts) {
    ifaddrs* list = nullptr;
    if (getifaddrs(&list) != 0) return;
    const std::unique_ptr<ifaddrs, IfAddrsFree> owner(list);
    for (const ifaddrs* a = list; a != nullptr; a = a->ifa_next) {
        if (a->ifa_addr == nullptr || (a->ifa_flags & IFF_LOOPBACK) || !(a->ifa_flags & IFF_UP)) {
            continue;
        }
        char text[INET6_ADDRSTRLEN] = {};
        const int family = a->ifa_addr->sa_family;
        if (family == AF_INET) {
            const auto* in = reinterpret_cast<const sockaddr_in*>(a->ifa_addr);
            if (inet_ntop(AF_INET, &in->sin_addr, text, sizeof text)) {
                facts.ipAddresses.push_back(fromUtf8(text));
            }
        } else if (family == AF_INET6) {
            const auto* in = reinterpret_cast<const sockaddr_in6*>(a->ifa_addr);
            if (inet_ntop(AF_INET6, &in->sin6_addr, text, sizeof text)) {
                facts.ipAddresses.push_back(fromUtf8(text));
            }
        } else if (family == AF_PACKET) {
            const auto* ll = reinterpret_cast<const sockaddr_ll*>(a->ifa_addr);
            if (ll->sll_halen != 6) continue;
            char mac[18];
            std::snprintf(mac, sizeof mac, "%02x-%02x-%02x-%02x-%02x-%02x", ll->sll_addr[0],
                          ll->sll_addr[1], ll->sll_addr[2], ll->sll_addr[3], ll->sll_addr[4],
                          ll->sll_addr[5]);
            facts.nicAddresses.push_back(fromUtf8(mac));
        }
    }
}

}  // namespace

SystemFacts readSystemFacts(const SystemSources& sources) {
    auto env = [&](const char* name) -> std::string {
        if (sources.environment) return sources.environment(name);
        const char* v = std::getenv(name);  // read once, while the facts are gathered
        return v != nullptr ? v : "";
    };
    SystemFacts facts;
    facts.userName = fromUtf8(loginName());
    facts.hostName = fromUtf8(machineName());
    facts.systemVersion = fromUtf8(kernel());
    std::string id = firstLine(sources.machineIdPath);
    facts.persistentId = persistentIdOf(id.empty() ? machineName() : id);
    const std::string tmp = env("TMPDIR");
    facts.temporaryPath = folder(tmp.empty() ? "/tmp" : tmp);
    const std::string home = env("HOME");
    const std::string base = home.empty() ? "/" : home;
    facts.documentsPath = folder(base + (base.back() == '/' ? "" : "/") + "Documents");
    facts.desktopPath = folder(base + (base.back() == '/' ? "" : "/") + "Desktop");
    const std::string config = env("XDG_CONFIG_HOME");
    facts.preferencesPath =
        folder(config.empty() ? base + (base.back() == '/' ? "" : "/") + ".config" : config);
    readInterfaces(facts);
    return facts;
}

}  // namespace sim
