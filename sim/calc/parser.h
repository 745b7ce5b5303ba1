// Parses calculation text into its tree, resolving names as the host does when a calculation is
// defined: functions must exist and get an allowed number of arguments, and every bare name must
// be a Let variable in scope, a constant, or a function written without parentheses.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "sim/calc/ast.h"
#include "sim/calc/context.h"

namespace sim::calc {

// `letNames` are the (lower-cased) Let variables visible around the text, for Evaluate; `depth`
// is the nesting already used by the caller. Throws CalcError with the host's syntax error code.
NodePtr parse(std::u16string_view source, Context& context,
              std::vector<std::u16string> letNames = {}, int depth = 0);

// Lower-cases a name the way names are compared.
std::u16string lowerName(std::u16string_view name);

}  // namespace sim::calc
