// The host's callbacks in the entry parameter block.
#pragma once

#include "host/fmx_abi.h"

namespace sim {

// Start-script: checks the file and the script and queues the run (Host::startScript); the
// host runs it after the calculation in progress, or at the next idle call. An empty file name
// means the current file; a missing parameter is empty text.
FMX_ErrorCode startScriptCallback(const fmx::Text* fileName, const fmx::Text* scriptName,
                                  FMX_ScriptControl control, const fmx::Data* parameter) noexcept;

// Current-environment: fills an environment the plug-in made with FM_ExprEnv_Constructor1 with
// that of the plug-in function running on this thread (outside one: the current file).
FMX_ErrorCode currentEnvCallback(fmx::ExprEnv* env) noexcept;

}  // namespace sim
