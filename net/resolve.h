// Name and address resolution through the system resolver. Failures come back as English
// messages in place of the answer, not as errors.
#pragma once

#include <string>

namespace slib {

inline constexpr char kInvalidIP[] = "Invalid IP address";
inline constexpr char kNoHostInformation[] = "Cannot get host information for IP";
inline constexpr char kNoIPForHost[] = "Cannot retrieve IP for host";

// The first IPv4 address the resolver lists for `hostName`, dotted; or kNoIPForHost.
std::string IPForName(std::string hostName);

// The name of the IPv4 address in `hostIP` (any form inet_addr takes; 255.255.255.255 is
// refused), or its numeric form when it has none; or kInvalidIP or kNoHostInformation.
std::string NameForIP(const std::string& hostIP);

}  // namespace slib
