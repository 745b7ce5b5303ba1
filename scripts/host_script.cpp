#include "scripts/host_script.h"

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
    fmx::TextUniquePtr fileName, scriptName, parameterText;
    fileName->Assign(script.file_name.c_str(), fmx::kEncoding_Native);
    scriptName->Assign(script.script_name.c_str(), fmx::kEncoding_Native);
    parameterText->Assign(script.script_parameters.c_str(), fmx::kEncoding_Native);
    fmx::DataUniquePtr parameter;
    parameter->SetAsText(*parameterText, parameter->GetLocale());
    return startHostScript(*fileName, *scriptName, *parameter);
}
