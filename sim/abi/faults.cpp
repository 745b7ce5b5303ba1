#include "sim/abi/faults.h"

#include <atomic>
#include <map>
#include <mutex>
#include <vector>

#include "sim/session/host_context.h"

namespace sim::faults {

namespace {

struct Armed {
    std::vector<std::pair<uint64_t, int>> nthCalls;  // (call number since clear, code)
    std::map<std::string, int, std::less<>> functions;
    std::string lastFailed;
};

std::atomic<uint64_t> calls{0};
std::mutex mutex;

Armed& state() {
    static Armed a;
    return a;
}

}  // namespace

std::atomic<bool> armed{false};

void failNthCall(uint64_t n, int code) {
    std::lock_guard lock(mutex);
    state().nthCalls.emplace_back(calls.load() + (n == 0 ? 1 : n), code);
    armed.store(true);
}

void failFunction(const std::string& name, int code) {
    std::lock_guard lock(mutex);
    if (code == 0) {
        state().functions.erase(name);
    } else {
        state().functions[name] = code;
    }
    armed.store(true);
}

void clear() {
    std::lock_guard lock(mutex);
    state() = Armed{};
    calls.store(0);
    armed.store(false);
    resetFunctionEscapes();
}

std::string lastFailedFunction() {
    std::lock_guard lock(mutex);
    return state().lastFailed;
}

uint64_t callCount() { return calls.load(std::memory_order_relaxed); }

bool armedCallFails(const char* function, fmx::_fmxcpt& x) noexcept {
    const uint64_t n = calls.fetch_add(1) + 1;
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
        if (code != 0) state().lastFailed = function ? function : "";
    }
    if (code == 0) return false;
    x.m_code = code;
    return true;
}

}  // namespace sim::faults
