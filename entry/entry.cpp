// The plug-in's only exported symbol: the host calls it for every lifecycle event.
#include "entry/entry.h"

#include <algorithm>
#include <vector>

#include "entry/function_table.h"
#include "entry/lifecycle.h"
#include "frame/plugin_state.h"
#include "frame/registry.h"
#include "frame/strings.h"

namespace {

constexpr short kBuiltForVersion = k160ExtnVersion;  // 57
constexpr short kOldestHost = k70ExtnVersion;        // 50
constexpr short kNewestHost = kMaxExtnVersion;       // 255

short initialise(short hostVersion) {
    if (hostVersion < kOldestHost || hostVersion > kNewestHost) return kBadExtnVersion;
    const RegistrationLock lock;
    if (!Startup()) return kDoNotEnable;
    if (!RegisterExternalFunctions(lock, functionTable())) {
        Shutdown();
        return kDoNotEnable;
    }
    gPlugInInitialized = true;
    return kBuiltForVersion;
}

void idle(FMX_IdleLevel kind) {
    switch (idleHookFor(gPlugInInitialized, kind)) {
        case IdleHook::kSafe:
            SafeIdle();
            break;
        case IdleHook::kSemiSafe:
            SemiSafeIdle(kind);
            break;
        case IdleHook::kUnsafe:
            UnsafeIdle();
            break;
        case IdleHook::kNone:
            break;
    }
}

void shutdown() {
    const RegistrationLock lock;
    gPlugInInitialized = false;
    UnRegisterExternalFunctions(lock);
    Shutdown();
}

void preferences() {
    if (gPrefsOpen.exchange(true)) return;
    Preferences();
    gPrefsOpen = false;
}

// The host lends a buffer of UTF-16 units: its address in `result`, its size in units in parm3.
void answerStringRequest(FMX_Strings which, fmx::unichar16* buffer, fmx::uint32 size) {
    if (buffer == nullptr) return;
    switch (which) {
        case kFMXT_NameStr:
            ReadString(buffer, size, kPluginName);
            break;
        case kFMXT_AppConfigStr: {
            std::vector<fmx::unichar16> scratch(size);
            ReadString(scratch.data(), size, kPluginDescription);
            std::copy(scratch.begin(), scratch.end(), buffer);
            break;
        }
        case kFMXT_OptionsStr:
            // Twelve units: the eleven letters and the terminating zero.
            copyToHostBuffer(kOptionString, buffer, size);
            break;
        default:
            break;
    }
}

}  // namespace

// Host failures inside registration and the hooks are not caught here; the host sees them.
void FMExternCallProc(FMX_ExternCallPtr pb) {
    gFMX_ExternCallPtr = pb;
    switch (pb->whichCall) {
        case kFMXT_Init:
            pb->result =
                static_cast<FMX_PtrType>(static_cast<fmx::int64>(initialise(pb->extnVersion)));
            break;
        case kFMXT_Idle:
            idle(pb->parm1);
            break;
        case kFMXT_Shutdown:
            shutdown();
            break;
        case kFMXT_DoAppPreferences:
            preferences();
            break;
        case kFMXT_GetString:
            answerStringRequest(pb->parm1, reinterpret_cast<fmx::unichar16*>(pb->result),
                                static_cast<fmx::uint32>(pb->parm3));
            break;
        default:
            break;
    }
}
