// The function table: what the plug-in registers with the host, in registration order, and the
// names and prototypes the host asks for.
#pragma once

#include <span>

#include "host/fmx.h"

struct FunctionRow {
    short id;
    const char* prototype;  // the name is the prototype up to its first "("
    short minArgs;
    short maxArgs;  // -1: no upper limit
    fmx::uint32 flags;
    fmx::ExtPluginType function;
};

// Every registered function, ids 1..25 (16 is unused), in registration order.
std::span<const FunctionRow> functionTable();

// The identifier every registration and unregistration passes: "RVLX".
fmx::QuadCharUniquePtr pluginId();

// Registers the whole table in order; on the first refusal unregisters what this pass registered,
// in reverse order, and answers false.
bool RegisterExternalFunctions();
// Unregisters ids 25 down to 1, ignoring the host's answers.
void UnRegisterExternalFunctions();

// The host's error code; 0 is success. Name and prototype come from Do_GetString(id + 100, ...).
fmx::errcode RegisterExternalFunction(short id, short minArgs, short maxArgs, fmx::uint32 flags,
                                      fmx::ExtPluginType function);
fmx::errcode UnRegisterExternalFunction(short id);

// Fills `text` with the prototype of the function whose string id (function id + 100) is given,
// or with its name alone; "ERROR" for an id of no function.
void Do_GetString(unsigned stringId, fmx::Text& text, bool nameOnly);
