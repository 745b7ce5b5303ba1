// Ravelin_GetNameForIP and Ravelin_GetIPforName.
#include "net/resolve.h"

#include <arpa/inet.h>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <memory>
#include <string_view>
#include <vector>

#include "fmlib/convert.h"
#include "frame/answers.h"
#include "net/functions.h"

namespace slib {

namespace {
constexpr std::size_t kMaxAddressText = 16;
constexpr std::size_t kHostSize = 1025;
constexpr std::size_t kServiceSize = 32;

std::string ipForNameNow(const std::string& hostName) {
    // Not getaddrinfo: it sorts the addresses by route and prefix, and the answer is the first
    // address in the resolver's own order.
    hostent entry{};
    hostent* found = nullptr;
    int error = 0;
    std::vector<char> work(1024);
    while (gethostbyname2_r(hostName.c_str(), AF_INET, &entry, work.data(), work.size(), &found,
                            &error) == ERANGE) {
        work.resize(work.size() * 2);
    }
    if (found == nullptr || found->h_addr_list[0] == nullptr) return kNoIPForHost;
    in_addr address{};
    std::memcpy(&address, found->h_addr_list[0], sizeof address);
    char text[INET_ADDRSTRLEN] = {};
    if (inet_ntop(AF_INET, &address, text, sizeof text) == nullptr) return kNoIPForHost;
    return std::string(text).substr(0, kMaxAddressText);
}

std::string nameForAddressNow(in_addr_t parsed) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = 0;
    address.sin_addr.s_addr = parsed;
    char host[kHostSize] = {};
    char service[kServiceSize] = {};
    // Without NI_NAMEREQD an address that has no name comes back in numeric form.
    if (getnameinfo(reinterpret_cast<const sockaddr*>(&address), sizeof address, host, sizeof host,
                    service, sizeof service, NI_NUMERICSERV) != 0) {
        return kNoHostInformation;
    }
    return host;
}

// What `resolve` answers, or `failed` when it has not answered within kLookupWait.
template <class Resolve>
std::string resolveInTime(Resolve resolve, const NameServers& servers, const char* failed) {
    auto answer = std::make_shared<std::string>(failed);
    auto lookup = [answer, resolve] { *answer = resolve(); };
    if (!LookUpBefore(lookup, servers, LookupClock::now() + kLookupWait)) return failed;
    return *answer;
}

}  // namespace

std::string IPForName(std::string hostName, const NameServers& servers) {
    return resolveInTime([hostName] { return ipForNameNow(hostName); }, servers, kNoIPForHost);
}

std::string NameForIP(const std::string& hostIP, const NameServers& servers) {
    const in_addr_t parsed = inet_addr(hostIP.c_str());
    if (parsed == INADDR_NONE) return kInvalidIP;
    return resolveInTime([parsed] { return nameForAddressNow(parsed); }, servers,
                         kNoHostInformation);
}

}  // namespace slib

namespace {

// The argument is read into this many bytes, the terminator included.
constexpr std::size_t kArgumentBufferSize = 1024;

// The routine's answer, a message included, becomes the result text; the last error stays as
// it was.
template <class Resolve>
void answerResolved(const fmx::ExprEnv& env, const rvl::Arguments& args, fmx::Data& result,
                    std::string_view missing, Resolve resolve) {
    if (args.count() < 1) return rvl::AnswerBadParameters(missing, env, result);
    fmlib::SetResultText(result, resolve(fmlib::NativeBytesCut(args.text(0), kArgumentBufferSize)),
                         fmx::kEncoding_Native);
}

}  // namespace

void body::Ravelin_GetNameForIP(const fmx::ExprEnv& env, const rvl::Arguments& args,
                                fmx::Data& result) {
    answerResolved(env, args, result, "IP address is not specified",
                   [](const std::string& ip) { return slib::NameForIP(ip); });
}

void body::Ravelin_GetIPforName(const fmx::ExprEnv& env, const rvl::Arguments& args,
                                fmx::Data& result) {
    answerResolved(env, args, result, "Host name is not specified",
                   [](const std::string& name) { return slib::IPForName(name); });
}
