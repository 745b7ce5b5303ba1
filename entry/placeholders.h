// Functions registered before their bodies exist: each answers -4 "Not implemented yet". To
// implement one, declare it in its own folder's functions.h, define it there, and delete its lines
// here and in placeholders.cpp.
#pragma once

#include "host/fmx.h"

// clang-format off
fmx::errcode Ravelin_GetClientPublicIPAddress(short funcId, const fmx::ExprEnv& env, const fmx::DataVect& args, fmx::Data& result);
fmx::errcode Ravelin_GetNameForIP(short funcId, const fmx::ExprEnv& env, const fmx::DataVect& args, fmx::Data& result);
fmx::errcode Ravelin_GetIPforName(short funcId, const fmx::ExprEnv& env, const fmx::DataVect& args, fmx::Data& result);
fmx::errcode Ravelin_GetAsHTML(short funcId, const fmx::ExprEnv& env, const fmx::DataVect& args, fmx::Data& result);
// clang-format on
