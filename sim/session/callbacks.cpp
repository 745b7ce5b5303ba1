#include "sim/session/callbacks.h"

#include <new>

#include "sim/core/handles.h"
#include "sim/session/env.h"
#include "sim/session/host.h"

namespace sim {

namespace {
constexpr FMX_ErrorCode kMemoryError = 2;  // FileMaker's "Memory error"
constexpr FMX_ErrorCode kBadRequest = -1;
}  // namespace

FMX_ErrorCode startScriptCallback(const fmx::Text* fileName, const fmx::Text* scriptName,
                                  FMX_ScriptControl /*control*/,
                                  const fmx::Data* parameter) noexcept {
    try {
        if (scriptName == nullptr) return kScriptMissing;
        std::u16string file = fileName ? textOf(*fileName).unitsCopy() : std::u16string();
        std::u16string param =
            parameter ? valueOf(*parameter).asText().unitsCopy() : std::u16string();
        return Host::instance().startScript(file, textOf(*scriptName).units(), std::move(param));
    } catch (const std::bad_alloc&) {
        return kMemoryError;
    } catch (...) {
        return kBadRequest;
    }
}

FMX_ErrorCode currentEnvCallback(fmx::ExprEnv* handle) noexcept {
    try {
        Env* env = envOf(handle);
        if (env == nullptr) return kBadRequest;
        if (const Env* running = currentCallEnv()) {
            if (running != env) *env = *running;
        } else {
            *env = Env{};
            env->file = Host::instance().currentFile();
        }
        return 0;
    } catch (const std::bad_alloc&) {
        return kMemoryError;
    } catch (...) {
        return kBadRequest;
    }
}

}  // namespace sim
