#include "frame/plugin_state.h"

extern "C" {
FMX_ExternCallPtr gFMX_ExternCallPtr = nullptr;
}
std::atomic<bool> gPlugInInitialized{false};
std::atomic<bool> gPrefsOpen{false};
