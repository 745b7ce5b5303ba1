// The engine's entry point: nothing thrown inside gets out.
#include <new>

#include "sim/calc/context.h"
#include "sim/calc/errors.h"
#include "sim/calc/evaluator.h"
#include "sim/calc/parser.h"

namespace sim::calc {

Result evaluate(std::u16string_view expression, Context& context) {
    try {
        const NodePtr tree = parse(expression, context);
        Evaluator evaluator(context);
        return Result{evaluator.eval(*tree), 0};
    } catch (const CalcError& e) {
        return Result{Value(), e.code};
    } catch (...) {
        // Out of memory or a fault in a lower layer: a failed calculation, not a failed host.
        return Result{Value(), kGenericError};
    }
}

}  // namespace sim::calc
