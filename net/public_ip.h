// The client's public IPv4 address, read from the raw answer of a public address-echo service
// to a plain "GET /" over HTTP.
#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <string_view>

#include "host/fmx.h"
#include "net/bounded_lookup.h"

namespace slib {

// Where one method asks: the host value (sent as the Host header and looked up by name) and the
// service looked up with it.
struct Endpoint {
    const char* host;
    const char* service;
};

// Methods 1 to 9, index 0 first; any other method number is answered as method 1.
using EndpointTable = std::array<Endpoint, 9>;

// The public services the plug-in asks (documented with the table in public_ip.cpp).
extern const EndpointTable kEndpoints;

// The methods Ravelin_GetClientPublicIPAddress tries, in order.
inline constexpr std::array<std::int32_t, 5> kTryOrder = {2, 6, 5, 8, 9};

// Statuses of GetClientPublicIP.
inline constexpr std::int32_t kFound = 0;
inline constexpr std::int32_t kLookupFailed = -3;
inline constexpr std::int32_t kSocketFailed = -4;
inline constexpr std::int32_t kConnectFailed = -5;
inline constexpr std::int32_t kSendFailed = -6;
inline constexpr std::int32_t kReceiveFailed = -7;
inline constexpr std::int32_t kNoAddress = -8;

// How long one call of Ravelin_GetClientPublicIPAddress may take in all, name look-ups,
// connections and answers of every method included, so that silent services or name servers
// cannot hold the calling thread (on a Server, other users' scripts). Each method may use its
// share of what is left: the time left divided by the number of methods not yet asked, so a
// method that fails at once leaves its time to the next ones. Within a method, connection
// attempts that are refused are retried at once, up to 11 in all, until its deadline.
inline constexpr auto kCallBudget = std::chrono::seconds(5);

// At most 16 characters of the address and a terminating zero.
using AddressText = std::array<char, 17>;

// Reads the address after the method's marker in `answer` (the raw bytes, headers included; the
// marker counts only before the first zero byte). Writes what was read to `out`, even on failure,
// and returns kFound or kNoAddress.
std::int32_t ReadAddress(std::int32_t method, std::string_view answer, AddressText& out);

// Asks the method's endpoint of `endpoints` (its name looked up with `servers`) and reads the
// address from its answer into `out`, giving up at `deadline` with the status of the step that
// was waiting (kLookupFailed, kConnectFailed or kReceiveFailed). Returns kFound or one of the
// negative statuses above.
std::int32_t GetClientPublicIP(std::int32_t method, AddressText& out,
                               const EndpointTable& endpoints = kEndpoints,
                               const NameServers& servers = {},
                               LookupClock::time_point deadline = LookupClock::now() + kCallBudget);

// Ravelin_GetClientPublicIPAddress's work, asking `endpoints`, all within kCallBudget.
void PerformGetClientPublicIPAddress(const fmx::ExprEnv& env, fmx::Data& result,
                                     const EndpointTable& endpoints,
                                     const NameServers& servers = {});

}  // namespace slib
