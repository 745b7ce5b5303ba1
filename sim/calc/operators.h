// The binary operators of the calculation language (except the logical ones, which short-circuit
// in the evaluator).
#pragma once

#include "sim/calc/ast.h"
#include "sim/core/value.h"

namespace sim::calc {

// Arithmetic (+ - * / ^) and comparisons (= ≠ < ≤ > ≥) on two values.
Value applyBinary(Op op, const Value& left, const Value& right);

// Appends the text form of a value (styles kept), failing when the text grows too long.
void appendTextOf(Text& out, const Value& v);

// Numbers as calculations compare and round them: the double's shortest decimal form up to 15
// significant digits, so that 0.1 + 0.2 equals 0.3.
double decimalClean(double d);

}  // namespace sim::calc
