// The external functions of this folder, registered by the plug-in's function table.
#pragma once

#include "host/fmx.h"

// clang-format off
fmx::errcode Ravelin_Version(short funcId, const fmx::ExprEnv& env, const fmx::DataVect& args, fmx::Data& result);
fmx::errcode Ravelin_Get(short funcId, const fmx::ExprEnv& env, const fmx::DataVect& args, fmx::Data& result);
fmx::errcode Ravelin_Set(short funcId, const fmx::ExprEnv& env, const fmx::DataVect& args, fmx::Data& result);
fmx::errcode Ravelin_ValueType(short funcId, const fmx::ExprEnv& env, const fmx::DataVect& args, fmx::Data& result);
fmx::errcode Ravelin_GetTimestamp(short funcId, const fmx::ExprEnv& env, const fmx::DataVect& args, fmx::Data& result);
fmx::errcode Ravelin_DoSystemScript(short funcId, const fmx::ExprEnv& env, const fmx::DataVect& args, fmx::Data& result);
fmx::errcode Ravelin_GetDefaultPrinter(short funcId, const fmx::ExprEnv& env, const fmx::DataVect& args, fmx::Data& result);
fmx::errcode Ravelin_SetDefaultPrinter(short funcId, const fmx::ExprEnv& env, const fmx::DataVect& args, fmx::Data& result);
fmx::errcode Ravelin_GetPrinterNames(short funcId, const fmx::ExprEnv& env, const fmx::DataVect& args, fmx::Data& result);
fmx::errcode Ravelin_GetSpecialWindows(short funcId, const fmx::ExprEnv& env, const fmx::DataVect& args, fmx::Data& result);
fmx::errcode Ravelin_SetScriptShortcut(short funcId, const fmx::ExprEnv& env, const fmx::DataVect& args, fmx::Data& result);
// clang-format on
