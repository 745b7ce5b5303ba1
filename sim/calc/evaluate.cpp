// The engine's entry point: nothing thrown inside gets out.
#include <chrono>
#include <new>

#include "sim/calc/context.h"
#include "sim/calc/errors.h"
#include "sim/calc/evaluator.h"
#include "sim/calc/parser.h"

namespace sim::calc {

// The Unix epoch is 62,135,596,800 seconds after 1/1/0001.
double Context::utcMilliseconds() {
    const auto since = std::chrono::system_clock::now().time_since_epoch();
    return static_cast<double>(
               std::chrono::duration_cast<std::chrono::milliseconds>(since).count()) +
           62135596800000.0;
}

const SystemFacts& Context::systemFacts() {
    static const SystemFacts facts = readSystemFacts();
    return facts;
}

Result evaluate(std::u16string_view expression, Context& context) {
    NodePtr tree;
    try {
        tree = parse(expression, context, {}, callerNesting());
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
