#include "sim/session/env.h"

namespace sim {

namespace {
thread_local const Env* tCallEnv = nullptr;
}

Env* envOf(const void* handle) noexcept {
    if (handle == nullptr) return nullptr;
    auto* env = static_cast<Env*>(const_cast<void*>(handle));
    return env->magic == Env::kMagic ? env : nullptr;
}

const Env* currentCallEnv() noexcept { return tCallEnv; }

CallEnvScope::CallEnvScope(const Env& env) noexcept : previous_(tCallEnv) { tCallEnv = &env; }

CallEnvScope::~CallEnvScope() { tCallEnv = previous_; }

}  // namespace sim
