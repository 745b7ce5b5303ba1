#include "frame/plugin_state.h"

std::atomic<FMX_ExternCallPtr> gFMX_ExternCallPtr{nullptr};
std::atomic<bool> gPlugInInitialized{false};
std::atomic<bool> gPrefsOpen{false};
