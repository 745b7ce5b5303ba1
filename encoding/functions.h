// The external functions of this folder, registered by the plug-in's function table.
#pragma once

#include "host/fmx.h"

// clang-format off
fmx::errcode Ravelin_Encode(short funcId, const fmx::ExprEnv& env, const fmx::DataVect& args, fmx::Data& result);
fmx::errcode Ravelin_Decode(short funcId, const fmx::ExprEnv& env, const fmx::DataVect& args, fmx::Data& result);
// clang-format on
