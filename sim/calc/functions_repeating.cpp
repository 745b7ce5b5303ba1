// The repeating function that makes sense without fields: a "$" or "$$" variable's repetitions
// stand in for a repeating field's, and any other value is a field of one repetition.
#include <cmath>

#include "sim/calc/builtins.h"
#include "sim/calc/evaluator.h"

namespace sim::calc {

namespace {

// GetRepetition ( repeatingField ; number ): repetition `number` of a variable; for any other
// expression its value as repetition 1 and empty beyond. A number below 1 gives empty.
Value fnGetRepetition(Evaluator& ev, const std::vector<NodePtr>& args) {
    const Number n = ev.eval(*args[1]).asNumber();
    const double r = std::trunc(n.toDouble());
    if (n.empty || !(r >= 1)) return Value();
    const Node& source = *args[0];
    if (source.kind == NodeKind::Variable && source.repetition == nullptr) {
        if (r > 2147483647.0) return Value();
        return ev.context().variable(source.name, static_cast<int>(r));
    }
    Value v = ev.eval(source);
    return r == 1 ? v : Value();
}

constexpr Builtin kFunctions[] = {
    {u"getrepetition", 2, 2, nullptr, fnGetRepetition},
};

}  // namespace

std::span<const Builtin> repeatingFunctions() { return kFunctions; }

}  // namespace sim::calc
