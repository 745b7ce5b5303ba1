// Every function the plug-in registers, ids 1..25 (16 is unused), in registration order.
#pragma once

#include <span>

#include "frame/registry.h"

std::span<const FunctionRow> functionTable();
