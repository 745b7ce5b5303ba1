// Starting scripts through the host: its start-script call, reached through the parameter block
// of the current entry call.
#pragma once

#include "host/fmx.h"
#include "scripts/file_maker_script.h"

// FileMaker's "Command is unavailable": answered when there is no host call to make (no entry
// call has passed a parameter block, or it carries no start-script call).
inline constexpr fmx::errcode kStartScriptUnavailable = 3;

// Script control 0 (halt whatever runs).
fmx::errcode startHostScript(const fmx::Text& fileName, const fmx::Text& scriptName,
                             const fmx::Data& parameter);

// A pending record: its UTF-8 strings go to host texts as native-encoding bytes (code 0), and
// the parameter becomes text data in that data's own locale.
fmx::errcode startScheduledScript(const FileMakerScript& script);
