// Name look-ups that cannot hold the calling thread longer than a deadline. The system resolver
// waits for a silent name server as long as its configuration says (ten seconds and more per
// name); a server's calculation threads cannot afford that. Each look-up therefore runs on a
// worker thread of its own, whose resolver gives up after kResolverTryTimeout per server, and the
// caller waits only until its deadline. A worker that outlives its caller finishes on its own and
// is joined later: by the next look-up, at shutdown, or when the plug-in is unloaded.
#pragma once

#include <netinet/in.h>

#include <chrono>
#include <functional>
#include <vector>

namespace slib {

using LookupClock = std::chrono::steady_clock;

// Which name servers the look-ups ask: none listed means the system's configuration. Tests point
// this at a loopback server; the hosts file is read first either way.
struct NameServers {
    std::vector<sockaddr_in> addresses;
};

// How long a worker's resolver waits for one server, trying each once.
inline constexpr int kResolverTryTimeoutSeconds = 1;
// Look-ups running at once; a further one waits, within its deadline, for one of them to end.
inline constexpr std::size_t kMaxLookupWorkers = 16;

// Runs `lookup` (which calls the system resolver and keeps its answer in what it captures) on a
// worker with `servers`, and waits for it until `deadline`. True when it finished in time; false
// when the deadline passed or no worker could be started. `lookup` must not throw, and whatever
// it captures must stay valid after a false return (hold it by shared pointer).
bool LookUpBefore(std::function<void()> lookup, const NameServers& servers,
                  LookupClock::time_point deadline);

// Waits for every worker still running and joins it (each is bounded by its resolver's time-out).
void JoinLookupWorkers();

}  // namespace slib
