// Ravelin_GetClientPublicIPAddress and the methods it draws on.
//
// Each method pairs a service with the marker after which its answer holds the caller's address
// and the character that ends the address there. The rules are strict on purpose: a service that
// changes its page must give a clear failure, not a wrong address.
#include "net/public_ip.h"

#include <netdb.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <system_error>
#include <utility>

#include "fmlib/convert.h"
#include "frame/answers.h"
#include "net/functions.h"

namespace slib {

// The services, methods 1 to 9. Each answers a plain HTTP GET of "/" on port 80 with the caller's
// address in the form its method reads:
//  1 whatismyipaddress.com's classic page, "My IP address: " before the address in the page;
//  2 api.ipify.org (IPv4 only), the address alone as the body;
//  3 www.ip-adress.com, "IP Information: " before the address;
//  4 checkip.dyndns.com with its page path: a host value with a path never resolves, so this
//    method always ends at the lookup, as intended;
//  5 ip1.dynupdate.no-ip.com, No-IP's plain address endpoint, whose last header is
//    "Connection: close";
//  6 ipv4.icanhazip.com, the address as a chunked plain-text body;
//  7 www.whatismyip.com, the address in <strong id="ip_address">;
//  8 www.showmyip.com, "Your IP is " before the address;
//  9 checkip.dyndns.org, Dyn's check page, "Current IP Address: " before the address.
const EndpointTable kEndpoints = {{
    {"whatismyipaddress.com", "http"},
    {"api.ipify.org", "http"},
    {"www.ip-adress.com", "http"},
    {"checkip.dyndns.com/checkip.html", "http"},
    {"ip1.dynupdate.no-ip.com", "http"},
    {"ipv4.icanhazip.com", "http"},
    {"www.whatismyip.com", "http"},
    {"www.showmyip.com", "http"},
    {"checkip.dyndns.org", "http"},
}};

namespace {

struct Rule {
    const char* marker;
    char end;
};

// Markers are searched in the raw answer, headers included. Methods 4 and 6 read chunked bodies
// and name the chunk size in their markers (d and b, hexadecimal): only an answer whose first
// chunk has exactly that size is recognised.
constexpr Rule kRules[9] = {
    {"My IP address: ", '<'},
    {"\r\n\r\n", '\0'},
    {"IP Information: ", '<'},
    {"\r\n\r\nd\r\n", '\0'},
    {"close\r\n\r\n", '\0'},
    {"\r\n\r\nb\r\n", '\r'},
    {"<strong id=\"ip_address\">", '<'},
    {"Your IP is ", '<'},
    {"Current IP Address: ", '<'},
};

std::size_t indexOf(std::int32_t method) {
    return method >= 2 && method <= 9 ? static_cast<std::size_t>(method - 1) : 0;
}

constexpr int kAttempts = 11;
constexpr std::size_t kReceiveSize = 16000;
constexpr std::size_t kAddressSize = 16;
constexpr std::size_t kMaxAddressIndex = 14;
constexpr int kMaxGroup = 3;
constexpr int kDots = 3;

using Clock = LookupClock;

struct AddrInfoFree {
    void operator()(addrinfo* list) const { freeaddrinfo(list); }
};
using AddrInfoList = std::unique_ptr<addrinfo, AddrInfoFree>;

// Closes on every path out, so that failures cannot leak descriptors.
class Socket {
public:
    explicit Socket(int fd) : fd_(fd) {}
    ~Socket() {
        if (fd_ >= 0) close(fd_);
    }
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;
    int fd() const { return fd_; }
    void swap(Socket& other) { std::swap(fd_, other.fd_); }

private:
    int fd_;
};

// Waits until `fd` is ready for `events` or `deadline` passes; false on time-out or failure.
bool waitFor(int fd, short events, Clock::time_point deadline) {
    for (;;) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
        if (left.count() <= 0) return false;
        pollfd p{fd, events, 0};
        const int n = poll(&p, 1, static_cast<int>(left.count()));
        if (n > 0) return true;
        if (n == 0 || errno != EINTR) return false;
    }
}

// One connection attempt on a non-blocking socket: 0, or the error number of the failure.
int connectOnce(int fd, const addrinfo& to, Clock::time_point deadline) {
    if (connect(fd, to.ai_addr, to.ai_addrlen) == 0) return 0;
    if (errno != EINPROGRESS && errno != EALREADY) return errno;
    if (!waitFor(fd, POLLOUT, deadline)) return ETIMEDOUT;
    int error = 0;
    socklen_t size = sizeof error;
    if (getsockopt(fd, SOL_SOCKET, SO_ERROR, &error, &size) != 0) return errno;
    return error;
}

// Up to 11 attempts, at once one after the other. A socket whose connection failed is not
// reusable alike on every system (some answer a second attempt with another error than the
// peer's), so each attempt gets a fresh socket of the same kind. Answers the connected socket, or
// the status of the failure.
std::int32_t connectWithRetries(const addrinfo& to, Socket& connected, Clock::time_point deadline) {
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        Socket socket(
            ::socket(to.ai_family, to.ai_socktype | SOCK_NONBLOCK | SOCK_CLOEXEC, to.ai_protocol));
        if (socket.fd() < 0) return kSocketFailed;
        const int error = connectOnce(socket.fd(), to, deadline);
        if (error == 0) {
            connected.swap(socket);
            return kFound;
        }
        std::printf("Error while connecting: %s", std::system_category().message(error).c_str());
        std::fflush(stdout);
        if (Clock::now() >= deadline) break;
    }
    return kConnectFailed;
}

// The endpoint's addresses, looked up on a worker so that a silent name server cannot hold the
// caller past `deadline`; empty when the look-up failed or did not finish in time.
std::shared_ptr<AddrInfoList> lookUp(const Endpoint& endpoint, const NameServers& servers,
                                     Clock::time_point deadline) {
    auto found = std::make_shared<AddrInfoList>();
    // A numeric address needs no name server, nor a worker.
    addrinfo numeric{};
    numeric.ai_socktype = SOCK_STREAM;
    numeric.ai_flags = AI_NUMERICHOST;
    addrinfo* list = nullptr;
    if (getaddrinfo(endpoint.host, endpoint.service, &numeric, &list) == 0) {
        found->reset(list);
        return found;
    }
    const std::string host = endpoint.host;
    const std::string service = endpoint.service;
    auto lookup = [found, host, service] {
        addrinfo hints{};
        hints.ai_socktype = SOCK_STREAM;
        addrinfo* list = nullptr;
        if (getaddrinfo(host.c_str(), service.c_str(), &hints, &list) == 0) found->reset(list);
    };
    if (!LookUpBefore(lookup, servers, deadline)) return std::make_shared<AddrInfoList>();
    return found;
}

}  // namespace

std::int32_t ReadAddress(std::int32_t method, std::string_view answer, AddressText& out) {
    const Rule& rule = kRules[indexOf(method)];
    char address[kAddressSize] = {};
    std::int32_t status = kNoAddress;
    // The marker is searched as in a C string, up to the first zero byte; the address is read
    // from the bytes as received, a zero byte among them being one more character.
    const std::size_t at = answer.substr(0, answer.find('\0')).find(rule.marker);
    if (at != std::string_view::npos) {
        const std::string_view rest = answer.substr(at + std::strlen(rule.marker));
        // The reading runs on past the data as into a zero-filled buffer.
        const auto charAt = [&](std::size_t i) { return i < rest.size() ? rest[i] : '\0'; };
        int dots = 0;
        int group = 0;
        for (std::size_t i = 0;; ++i) {
            const char c = charAt(i);
            if (c == rule.end) {
                if (dots == kDots) {
                    address[i] = '\0';
                    status = kFound;
                }
                break;
            }
            address[i] = c;
            if (i > kMaxAddressIndex) break;
            if (c == '.') {
                ++dots;
                group = 0;
            } else if (++group > kMaxGroup) {
                break;
            }
        }
    }
    std::memcpy(out.data(), address, kAddressSize);
    out[kAddressSize] = '\0';
    return status;
}

std::int32_t GetClientPublicIP(std::int32_t method, AddressText& out,
                               const EndpointTable& endpoints, const NameServers& servers,
                               Clock::time_point deadline) {
    const Endpoint& endpoint = endpoints[indexOf(method)];
    // The request belongs to this call: callers on other threads build their own.
    const std::string request =
        std::string("GET / HTTP/1.1\r\nHost: ") + endpoint.host + "\r\n\r\n";

    const std::shared_ptr<AddrInfoList> found = lookUp(endpoint, servers, deadline);
    if (!*found) return kLookupFailed;

    Socket socket(-1);
    if (const std::int32_t status = connectWithRetries(**found, socket, deadline);
        status != kFound) {
        return status;
    }

    // A peer that has gone away must not raise SIGPIPE in the host.
    if (send(socket.fd(), request.data(), request.size(), MSG_NOSIGNAL) !=
        static_cast<ssize_t>(request.size())) {
        return kSendFailed;
    }

    // One receive: an answer split in several packets counts with its first part only.
    std::array<char, kReceiveSize> answer{};
    if (!waitFor(socket.fd(), POLLIN, deadline)) return kReceiveFailed;
    const ssize_t received = recv(socket.fd(), answer.data(), answer.size(), 0);
    if (received < 0) return kReceiveFailed;
    return ReadAddress(method, std::string_view(answer.data(), static_cast<std::size_t>(received)),
                       out);
}

void PerformGetClientPublicIPAddress(const fmx::ExprEnv& env, fmx::Data& result,
                                     const EndpointTable& endpoints, const NameServers& servers) {
    AddressText address{};
    fmx::errcode status = rvl::kNoError;
    const Clock::time_point end = Clock::now() + kCallBudget;
    std::size_t left = kTryOrder.size();
    for (const std::int32_t method : kTryOrder) {
        const Clock::time_point deadline = Clock::now() + (end - Clock::now()) / left--;
        status = static_cast<fmx::errcode>(
            GetClientPublicIP(method, address, endpoints, servers, deadline));
        if (status == kFound) break;
    }
    if (status != kFound) {
        rvl::AnswerError(status, "Public IP is not available", env, result);
        return;
    }
    fmlib::SetResultText(result, std::string_view(address.data()), fmx::kEncoding_Native);
}

}  // namespace slib

void body::Ravelin_GetClientPublicIPAddress(const fmx::ExprEnv& env, const rvl::Arguments&,
                                              fmx::Data& result) {
    slib::PerformGetClientPublicIPAddress(env, result, slib::kEndpoints);
}
