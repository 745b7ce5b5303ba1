#include "sim/session/plugin.h"

#include <dlfcn.h>

#include <algorithm>

#include "sim/session/callbacks.h"
#include "sim/session/host.h"

namespace sim {

namespace {
// Guard units after a lent string buffer, to notice a plug-in writing past its size.
constexpr std::size_t kGuardUnits = 4096;
}  // namespace

std::u16string StringAnswer::text() const {
    auto end = std::find_if(buffer.begin(), buffer.end(),
                            [](char16_t u) { return u == 0 || u == kUnwritten; });
    return std::u16string(buffer.begin(), end);
}

std::size_t StringAnswer::unitsWritten() const {
    auto last =
        std::find_if(buffer.rbegin(), buffer.rend(), [](char16_t u) { return u != kUnwritten; });
    return static_cast<std::size_t>(buffer.rend() - last);
}

Plugin::Plugin(const std::string& path) : path_(path) {
    library_ = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library_ == nullptr) {
        const char* why = dlerror();
        throw PluginError("Could not load plug-in code, dlerror: " +
                          std::string(why ? why : "unknown"));
    }
    entry_ = reinterpret_cast<FMX_ExternCallProc>(dlsym(library_, "FMExternCallProc"));
    if (entry_ == nullptr) {
        dlclose(library_);
        throw PluginError("Plug-in entry point not found: " + path);
    }
    block_.unusedID = -1;
    block_.entryPoint = entry_;
    block_.instanceID = reinterpret_cast<FMX_PtrType>(library_);
    block_.cStartScript = &startScriptCallback;
    block_.cCurrentEnv = &currentEnvCallback;
}

Plugin::~Plugin() { dlclose(library_); }

FMX_PtrType Plugin::call(FMX_ExternCallSwitch kind, FMX_UChar parm1, FMX_PtrType parm2,
                         FMX_PtrType parm3, FMX_PtrType result) {
    std::lock_guard lock(callMutex_);
    block_.extnVersion = hostVersion_;
    block_.whichCall = kind;
    block_.unsafeCalls = 0;
    block_.parm1 = parm1;
    block_.parm2 = parm2;
    block_.parm3 = parm3;
    block_.result = result;
    lastEscape_.clear();
    try {
        entry_(&block_);
    } catch (const std::exception& e) {
        lastEscape_ = std::string("exception from the entry procedure: ") + e.what();
    } catch (...) {
        lastEscape_ = "unknown exception from the entry procedure";
    }
    return block_.result;
}

std::string Plugin::lastEscape() const {
    std::lock_guard lock(callMutex_);
    return lastEscape_;
}

short Plugin::initialise(short hostVersion, std::u16string applicationVersion) {
    hostVersion_ = hostVersion;
    applicationVersion_ = std::move(applicationVersion);
    const FMX_PtrType answer = call(kFMXT_Init, kApplicationKind,
                                    reinterpret_cast<FMX_PtrType>(applicationVersion_.c_str()));
    return static_cast<short>(static_cast<int64_t>(answer));
}

void Plugin::idle(FMX_IdleLevel kind) { call(kFMXT_Idle, kind, Host::kSessionId); }

void Plugin::preferences() { call(kFMXT_DoAppPreferences); }

void Plugin::shutdown() { call(kFMXT_Shutdown); }

StringAnswer Plugin::getString(FMX_Strings id, uint32_t bufferUnits) {
    std::u16string lent(bufferUnits + kGuardUnits, StringAnswer::kUnwritten);
    call(kFMXT_GetString, id, 0, bufferUnits, reinterpret_cast<FMX_PtrType>(lent.data()));
    StringAnswer answer;
    answer.overflowed = std::any_of(lent.begin() + bufferUnits, lent.end(),
                                    [](char16_t u) { return u != StringAnswer::kUnwritten; });
    lent.resize(bufferUnits);
    answer.buffer = std::move(lent);
    return answer;
}

}  // namespace sim
