#include "entry/lifecycle.h"

#include "net/bounded_lookup.h"
#include "scripts/host_script.h"
#include "scripts/ravelin.h"

// Nothing else to prepare or release on this platform: the subsystems' state lives in statics
// that are built on first use and destroyed when the library is unloaded.
bool Startup() { return true; }
// Name look-ups that outlived their callers still run code of this library.
void Shutdown() { slib::JoinLookupWorkers(); }
void Preferences() {}

// The only place where scheduled scripts start.
void SafeIdle() { Ravelin::instance().performScheduledScripts(startScheduledScript); }
void SemiSafeIdle(FMX_IdleLevel) {}
void UnsafeIdle() {}

IdleHook idleHookFor(bool initialised, FMX_IdleLevel kind) {
    if (!initialised) return IdleHook::kNone;
    switch (kind) {
        case kFMXT_UserIdle:
            return IdleHook::kSafe;
        case kFMXT_Unsafe:
            return IdleHook::kUnsafe;
        default:
            return IdleHook::kSemiSafe;
    }
}
