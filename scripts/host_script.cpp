#include "scripts/host_script.h"

#include "fmlib/convert.h"
#include "frame/plugin_state.h"

fmx::errcode startHostScript(const fmx::Text& fileName, const fmx::Text& scriptName,
                             const fmx::Data& parameter) {
    const FMX_ExternCallPtr block = gFMX_ExternCallPtr;
    if (block == nullptr) return kStartScriptUnavailable;
    const FMX_StartScriptCall start = block->cStartScript;
    if (start == nullptr) return kStartScriptUnavailable;
    return start(&fileName, &scriptName, kFMXT_Halt, &parameter);
}

fmx::errcode startScheduledScript(const FileMakerScript& script) {
    const fmx::TextUniquePtr fileName(script.file_name), scriptName(script.script_name);
    fmx::DataUniquePtr parameter;
    fmlib::SetResultText(*parameter, script.script_parameters);
    return startHostScript(*fileName, *scriptName, *parameter);
}
