// Name and address resolution through the system resolver. Failures come back as English
// messages in place of the answer, not as errors.
#pragma once

#include <chrono>
#include <string>

#include "net/bounded_lookup.h"

namespace slib {

inline constexpr char kInvalidIP[] = "Invalid IP address";
inline constexpr char kNoHostInformation[] = "Cannot get host information for IP";
inline constexpr char kNoIPForHost[] = "Cannot retrieve IP for host";

// The longest a look-up keeps its caller waiting; past it, the look-up has failed.
inline constexpr auto kLookupWait = std::chrono::seconds(2);

// The first IPv4 address the resolver lists for `hostName`, dotted; or kNoIPForHost, also when
// the answer has not come within kLookupWait.
std::string IPForName(std::string hostName, const NameServers& servers = {});

// The name of the IPv4 address in `hostIP` (any form inet_addr takes; 255.255.255.255 is
// refused), or its numeric form when it has none; or kInvalidIP, or kNoHostInformation (also
// when the answer has not come within kLookupWait).
std::string NameForIP(const std::string& hostIP, const NameServers& servers = {});

}  // namespace slib
