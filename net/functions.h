// The bodies of this folder's external functions. entry/function_table.cpp registers each
// with the host behind the boundary it declares for it (frame/boundary.h).
#pragma once

#include "frame/boundary.h"
#include "host/fmx.h"

namespace body {

// clang-format off
void Ravelin_GetClientPublicIPAddress(const fmx::ExprEnv& env, const rvl::Arguments& args, fmx::Data& result);
void Ravelin_GetNameForIP(const fmx::ExprEnv& env, const rvl::Arguments& args, fmx::Data& result);
void Ravelin_GetIPforName(const fmx::ExprEnv& env, const rvl::Arguments& args, fmx::Data& result);
// clang-format on

}  // namespace body
