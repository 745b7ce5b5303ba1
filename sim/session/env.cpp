#include "sim/session/env.h"

#include <mutex>
#include <unordered_set>

namespace sim {

namespace {

// Initial-exec, as the calculation engine's nesting slot: set and restored around every plug-in
// call without a call to find it.
[[gnu::tls_model("initial-exec")]] thread_local const Env* tCallEnv = nullptr;

// The live environments. Plug-ins make and delete them from any thread.
struct LiveEnvs {
    std::mutex mutex;
    std::unordered_set<const void*> addresses;
};

// Never destroyed: environments with static storage may outlive any other static.
LiveEnvs& liveEnvs() {
    static LiveEnvs& live = *new LiveEnvs;
    return live;
}

void markLive(const Env* env) {
    LiveEnvs& live = liveEnvs();
    std::lock_guard lock(live.mutex);
    live.addresses.insert(env);
}

}  // namespace

Env::Env() { markLive(this); }

Env::Env(const Env& other) : EnvState(other) { markLive(this); }

Env::~Env() {
    LiveEnvs& live = liveEnvs();
    std::lock_guard lock(live.mutex);
    live.addresses.erase(this);
}

Env* envOf(const void* handle) noexcept {
    if (handle == nullptr) return nullptr;
    LiveEnvs& live = liveEnvs();
    std::lock_guard lock(live.mutex);
    if (!live.addresses.contains(handle)) return nullptr;
    return static_cast<Env*>(const_cast<void*>(handle));
}

const Env* currentCallEnv() noexcept { return tCallEnv; }

CallEnvScope::CallEnvScope(const Env& env) noexcept : previous_(tCallEnv) { tCallEnv = &env; }

CallEnvScope::~CallEnvScope() { tCallEnv = previous_; }

}  // namespace sim
