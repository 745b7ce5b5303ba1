// The client's public IPv4 address, read from the raw answer of a public address-echo service
// to a plain "GET /" over HTTP.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "host/fmx.h"

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

// How long one call may wait, so that a silent service cannot hold the calling thread (on a
// Server, other users' scripts) for minutes. Connection attempts of one method share the first
// budget: attempts that are refused are retried at once, up to 11 in all, but once the budget is
// spent the method gives up. The answer must start arriving within the second one. Name lookup
// takes what the system resolver's own time-out allows.
inline constexpr int kConnectBudgetMs = 3000;
inline constexpr int kReceiveWaitMs = 5000;

// At most 16 characters of the address and a terminating zero.
using AddressText = std::array<char, 17>;

// Reads the address after the method's marker in `answer` (the raw bytes, headers included; the
// marker counts only before the first zero byte). Writes what was read to `out`, even on failure,
// and returns kFound or kNoAddress.
std::int32_t ReadAddress(std::int32_t method, std::string_view answer, AddressText& out);

// Asks the method's endpoint of `endpoints` and reads the address from its answer into `out`.
// Returns kFound or one of the negative statuses above.
std::int32_t GetClientPublicIP(std::int32_t method, AddressText& out,
                               const EndpointTable& endpoints = kEndpoints);

// Ravelin_GetClientPublicIPAddress's work, asking `endpoints`.
void PerformGetClientPublicIPAddress(const fmx::ExprEnv& env, fmx::Data& result,
                                     const EndpointTable& endpoints);

}  // namespace slib
