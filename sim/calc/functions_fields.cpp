// Functions that read the fields of the current record, and repetitions of fields and variables.
// (Field references themselves are syntax, handled by the parser and evaluator.)
#include <cmath>
#include <string>

#include "sim/calc/builtins.h"
#include "sim/calc/errors.h"
#include "sim/calc/evaluator.h"

namespace sim::calc {

namespace {

// GetField ( fieldName ): "Table::Field", or "Field" of the current table.
Value fnGetField(Args& a) {
    const std::u16string name(a.units(0));
    const auto separator = name.find(u"::");
    const std::u16string table =
        separator == std::u16string::npos ? u"" : name.substr(0, separator);
    const std::u16string field =
        separator == std::u16string::npos ? name : name.substr(separator + 2);
    std::optional<Value> v;
    if (!field.empty()) v = a.context().field(table, field, 1);
    if (!v) raise(kFieldMissing, u"no field " + name);
    return std::move(*v);
}

// Self is the field or layout object whose formula is being evaluated: there is none here.
Value fnSelf(Args&) { raise(kNotSupportedHere, u"Self needs a field or layout object"); }

// GetRepetition ( repeatingField ; number ): a field or a "$" variable, never an expression. A
// number outside 1 .. 2^31-1 gives an empty result.
Value fnGetRepetition(Evaluator& ev, const std::vector<NodePtr>& a) {
    const Node& source = *a[0];
    if (source.kind != NodeKind::Field && source.kind != NodeKind::Variable) raise(kFieldRequired);
    const double n = std::trunc(ev.eval(*a[1]).asNumber().toDouble());
    if (!(n >= 1 && n <= 2147483647.0)) return emptyText();
    const int repetition = static_cast<int>(n);
    if (source.kind == NodeKind::Variable) return ev.context().variable(source.name, repetition);
    std::optional<Value> v = ev.context().field(source.name, source.field, repetition);
    if (!v) raise(kFieldMissing, u"no field " + source.name + u"::" + source.field);
    return std::move(*v);
}

constexpr Builtin kFunctions[] = {
    {u"getfield", 1, 1, fnGetField},
    {u"self", 0, 0, fnSelf},
    {u"getrepetition", 2, 2, nullptr, fnGetRepetition},
};

}  // namespace

std::span<const Builtin> fieldFunctions() { return kFunctions; }

}  // namespace sim::calc
