#include "sim/faults.h"

#include <atomic>
#include <map>
#include <mutex>
#include <vector>

namespace sim::faults {

namespace {

struct Armed {
    std::vector<std::pair<uint64_t, int>> nthCalls;  // (call number since clear, code)
    std::map<std::string, int, std::less<>> functions;
};

// `armed` lets an unarmed host skip the lock on every call; the count is kept always.
std::atomic<bool> armed{false};
std::atomic<uint64_t> calls{0};
std::mutex mutex;

Armed& state() {
    static Armed a;
    return a;
}

void updateArmed() { armed.store(!state().nthCalls.empty() || !state().functions.empty()); }

}  // namespace

void failNthCall(uint64_t n, int code) {
    std::lock_guard lock(mutex);
    state().nthCalls.emplace_back(calls.load() + (n == 0 ? 1 : n), code);
    updateArmed();
}

void failFunction(const std::string& name, int code) {
    std::lock_guard lock(mutex);
    if (code == 0) {
        state().functions.erase(name);
    } else {
        state().functions[name] = code;
    }
    updateArmed();
}

void clear() {
    std::lock_guard lock(mutex);
    state() = Armed{};
    calls.store(0);
    updateArmed();
}

uint64_t callCount() { return calls.load(std::memory_order_relaxed); }

bool shouldFail(const char* function, fmx::_fmxcpt& x) noexcept {
    // A plain load and store rather than a locked increment: this runs on every host call (millions
    // for one large SQL result), and calls made at the same moment on several threads may then
    // count once, which no use of the count depends on.
    const uint64_t n = calls.load(std::memory_order_relaxed) + 1;
    calls.store(n, std::memory_order_relaxed);
    if (!armed.load(std::memory_order_acquire)) return false;
    int code = 0;
    {
        std::lock_guard lock(mutex);
        auto& nth = state().nthCalls;
        for (auto it = nth.begin(); it != nth.end(); ++it) {
            if (it->first == n) {
                code = it->second;
                nth.erase(it);
                break;
            }
        }
        if (code == 0 && function) {
            if (auto it = state().functions.find(function); it != state().functions.end()) {
                code = it->second;
            }
        }
        updateArmed();
    }
    if (code == 0) return false;
    x.m_code = code;
    return true;
}

}  // namespace sim::faults
