// The binary operators of the calculation language (except the logical ones, which short-circuit
// in the evaluator).
#pragma once

#include "sim/calc/ast.h"
#include "sim/core/value.h"

namespace sim::calc {

// Arithmetic (+ - * / ^) and comparisons (= ≠ < ≤ > ≥) on two values; division and fractional
// powers round to `places` decimals.
Value applyBinary(Op op, const Value& left, const Value& right, int places);

// Appends the text form of a value (styles kept), failing when the text grows too long.
void appendTextOf(Text& out, const Value& v);

}  // namespace sim::calc
