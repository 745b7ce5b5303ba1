// The engine's entry point: nothing thrown inside gets out.
#include <new>

#include "sim/calc/context.h"
#include "sim/calc/errors.h"
#include "sim/calc/evaluator.h"
#include "sim/calc/parser.h"

namespace sim::calc {

Result evaluate(std::u16string_view expression, Context& context) {
    NodePtr tree;
    try {
        tree = parse(expression, context);
    } catch (CalcError& e) {
        return Result{Value(), e.code, e.offset, std::move(e.hint)};
    } catch (...) {
        return Result{Value(), kGenericError};
    }
    try {
        Evaluator evaluator(context);
        return Result{evaluator.eval(*tree), 0};
    } catch (CalcError& e) {
        // A syntax error inside Evaluate is not one of this calculation's.
        return Result{Value(), e.code, -1, std::move(e.hint)};
    } catch (...) {
        // Out of memory or a fault in a lower layer: a failed calculation, not a failed host.
        return Result{Value(), kGenericError};
    }
}

}  // namespace sim::calc
