// Every function the plug-in registers, ids 1..25 (16 is unused), in registration order, each
// with the boundary it has towards the host.
#pragma once

#include <span>

#include "frame/registry.h"

std::span<const FunctionRow> functionTable();

// Each function as the host calls it: its body behind the frame its row declares.
// clang-format off
extern const fmx::ExtPluginType Ravelin_Version, Ravelin_Get, Ravelin_Set, Ravelin_ExecuteSQL,
    Ravelin_Encode, Ravelin_Decode, Ravelin_MergeText, Ravelin_DoFileMakerScript,
    Ravelin_DoSystemScript, Ravelin_GetDefaultPrinter, Ravelin_SetDefaultPrinter,
    Ravelin_GetPrinterNames, Ravelin_RegExp_Substitute, Ravelin_RegExp_PatternCount,
    Ravelin_GetClientPublicIPAddress, Ravelin_GetNameForIP, Ravelin_GetIPforName,
    Ravelin_GetSpecialWindows, Ravelin_SetScriptShortcut, Ravelin_ValueType, Ravelin_GetTimestamp,
    Ravelin_SetGlobal, Ravelin_GetGlobal, Ravelin_GetAsHTML;
// clang-format on
