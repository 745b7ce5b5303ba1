// The calculation environment behind an fmx::ExprEnv handle: which file a calculation runs in,
// the script parameter, and the local "$" variables of the running script.
#pragma once

#include <memory>
#include <mutex>
#include <string>

#include "host/fmx_types.h"
#include "sim/core/value.h"
#include "sim/session/variables.h"

namespace sim {

// What the host noticed during one top-level calculation for the user, beyond the error code the
// plug-in gets: SQLite's message for the last query that failed. Shared by every environment
// copied from the calculation's own (a plug-in's nested calls included), on any thread.
class EvalNotes {
public:
    void sqlFailed(std::string message) {
        std::lock_guard lock(mutex_);
        sql_ = std::move(message);
    }
    std::string sql() const {
        std::lock_guard lock(mutex_);
        return sql_;
    }

private:
    mutable std::mutex mutex_;
    std::string sql_;
};

struct EnvState {
    std::u16string file;  // empty: the current file at the time of use
    std::u16string scriptName;
    Value scriptParameter;
    // "$" variables: a script run's own set, or the file's set for calculations outside scripts
    // (null: use the file's set).
    std::shared_ptr<Variables> locals;
    // Null when nobody listens.
    std::shared_ptr<EvalNotes> notes;
};

// Every Env is live from its construction to its destruction, and the host keeps the set of live
// ones: a handle is checked against that set by its address alone, so a stale or stray handle is
// never read.
struct Env : EnvState {
    Env();
    Env(const Env& other);
    Env& operator=(const Env& other) = default;
    ~Env();

    fmx::ExprEnv* handle() { return reinterpret_cast<fmx::ExprEnv*>(this); }
    const fmx::ExprEnv& handleRef() const { return *reinterpret_cast<const fmx::ExprEnv*>(this); }
};

// The Env an fmx::ExprEnv handle names, or nullptr for a null or stale handle.
Env* envOf(const void* handle) noexcept;

// The environment of the plug-in function call running on this thread (what the current-env
// callback copies), or nullptr outside one.
const Env* currentCallEnv() noexcept;

// Marks `env` as the environment of the plug-in call running on this thread for its lifetime.
class CallEnvScope {
public:
    explicit CallEnvScope(const Env& env) noexcept;
    ~CallEnvScope();
    CallEnvScope(const CallEnvScope&) = delete;
    CallEnvScope& operator=(const CallEnvScope&) = delete;

private:
    const Env* previous_;
};

}  // namespace sim
