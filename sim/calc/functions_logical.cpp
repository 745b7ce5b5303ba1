// If, Case, Choose, the error-aware functions and Evaluate. Most of them evaluate only the
// arguments they need.
#include <algorithm>
#include <cmath>

#include "sim/calc/builtins.h"
#include "sim/calc/errors.h"
#include "sim/calc/evaluator.h"
#include "sim/calc/parser.h"

namespace sim::calc {

namespace {

using Nodes = std::vector<NodePtr>;

// If ( test ; result1 { ; result2 } ): no result2 and a false test give an empty text.
Value fnIf(Evaluator& ev, const Nodes& a) {
    if (isTrue(ev.eval(*a[0]))) return ev.eval(*a[1]);
    return a.size() > 2 ? ev.eval(*a[2]) : emptyText();
}

// Case ( test1 ; result1 { ; test2 ; result2 ; ... } { ; default } )
Value fnCase(Evaluator& ev, const Nodes& a) {
    size_t i = 0;
    for (; i + 1 < a.size(); i += 2) {
        if (isTrue(ev.eval(*a[i]))) return ev.eval(*a[i + 1]);
    }
    return i < a.size() ? ev.eval(*a[i]) : emptyText();
}

// Choose ( index ; result0 { ; result1 ; ... } )
Value fnChoose(Evaluator& ev, const Nodes& a) {
    const double index = std::trunc(ev.eval(*a[0]).asNumber().toDouble());
    if (!(index >= 0 && index + 1 < static_cast<double>(a.size()))) return emptyText();
    return ev.eval(*a[static_cast<size_t>(index) + 1]);
}

// 1 for an empty value and for an expression whose evaluation fails.
Value fnIsEmpty(Evaluator& ev, const Nodes& a) {
    try {
        return booleanValue(ev.eval(*a[0]).isEmpty());
    } catch (const CalcError&) {
        return booleanValue(true);
    }
}

Value fnIsValid(Evaluator& ev, const Nodes& a) {
    try {
        ev.eval(*a[0]);
        return booleanValue(true);
    } catch (const CalcError&) {
        return booleanValue(false);
    }
}

Value fnEvaluationError(Evaluator& ev, const Nodes& a) {
    try {
        ev.eval(*a[0]);
        return Value::number(0.0);
    } catch (const CalcError& e) {
        return Value::number(static_cast<double>(e.code));
    }
}

// Evaluate ( expression { ; [ fields ] } ): the trigger fields do not matter here. Errors of the
// inner calculation, syntax errors included, are the error of this one.
Value fnEvaluate(Evaluator& ev, const Nodes& a) {
    const Value source = ev.eval(*a[0]);
    return ev.evaluateText(source.asText().units());
}

// SetRecursion ( expression ; maxIterations ): While inside the expression may go round up to
// maxIterations times (at least 1) instead of 50,000.
Value fnSetRecursion(Evaluator& ev, const Nodes& a) {
    const double limit = std::trunc(ev.eval(*a[1]).asNumber().toDouble());
    const int outer = ev.whileLimit();
    ev.setWhileLimit(static_cast<int>(std::clamp(std::isnan(limit) ? 1.0 : limit, 1.0, 2.0e9)));
    try {
        Value v = ev.eval(*a[0]);
        ev.setWhileLimit(outer);
        return v;
    } catch (...) {
        ev.setWhileLimit(outer);
        throw;
    }
}

// IsValidExpression ( expression ): 1 when the text is a calculation this host can read.
Value fnIsValidExpression(Args& a) {
    try {
        parse(a.units(0), a.context());
        return booleanValue(true);
    } catch (const CalcError&) {
        return booleanValue(false);
    }
}

// Extend and Last over a value that does not repeat: the value itself.
Value fnItself(Args& a) { return a[0]; }

Value fnGetAsBoolean(Args& a) { return booleanValue(isTrue(a[0])); }
Value fnTrue(Args&) { return booleanValue(true); }
Value fnFalse(Args&) { return booleanValue(false); }

constexpr Builtin kFunctions[] = {
    {u"if", 2, 3, nullptr, fnIf},
    {u"case", 2, -1, nullptr, fnCase},
    {u"choose", 2, -1, nullptr, fnChoose},
    {u"isempty", 1, 1, nullptr, fnIsEmpty},
    {u"isvalid", 1, 1, nullptr, fnIsValid},
    {u"evaluationerror", 1, 1, nullptr, fnEvaluationError},
    {u"evaluate", 1, 2, nullptr, fnEvaluate, true},
    {u"getasboolean", 1, 1, fnGetAsBoolean},
    {u"setrecursion", 2, 2, nullptr, fnSetRecursion},
    {u"isvalidexpression", 1, 1, fnIsValidExpression},
    {u"extend", 1, 1, fnItself},
    {u"last", 1, 1, fnItself},
    {u"true", 0, 0, fnTrue},
    {u"false", 0, 0, fnFalse},
};

}  // namespace

std::span<const Builtin> logicalFunctions() { return kFunctions; }

}  // namespace sim::calc
