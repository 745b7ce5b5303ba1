// The bodies of this folder's external functions. entry/function_table.cpp registers each
// with the host behind the boundary it declares for it (frame/boundary.h).
#pragma once

#include "frame/boundary.h"
#include "host/fmx.h"

namespace body {

// clang-format off
fmx::errcode Ravelin_Version(const fmx::ExprEnv& env, const rvl::Arguments& args, fmx::Data& result);
void Ravelin_Get(const fmx::ExprEnv& env, const rvl::Arguments& args, fmx::Data& result);
void Ravelin_Set(const fmx::ExprEnv& env, const rvl::Arguments& args, fmx::Data& result);
void Ravelin_ValueType(const fmx::ExprEnv& env, const rvl::Arguments& args, fmx::Data& result);
fmx::errcode Ravelin_GetTimestamp(const fmx::ExprEnv& env, const rvl::Arguments& args, fmx::Data& result);
void Ravelin_DoSystemScript(const fmx::ExprEnv& env, const rvl::Arguments& args, fmx::Data& result);
void Ravelin_GetDefaultPrinter(const fmx::ExprEnv& env, const rvl::Arguments& args, fmx::Data& result);
void Ravelin_SetDefaultPrinter(const fmx::ExprEnv& env, const rvl::Arguments& args, fmx::Data& result);
void Ravelin_GetPrinterNames(const fmx::ExprEnv& env, const rvl::Arguments& args, fmx::Data& result);
void Ravelin_GetSpecialWindows(const fmx::ExprEnv& env, const rvl::Arguments& args, fmx::Data& result);
void Ravelin_SetScriptShortcut(const fmx::ExprEnv& env, const rvl::Arguments& args, fmx::Data& result);
// clang-format on

}  // namespace body
