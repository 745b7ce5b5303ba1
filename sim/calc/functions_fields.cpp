// Functions that read the fields of the current record. (Field references themselves are syntax,
// handled by the parser and evaluator.)
#include <string>

#include "sim/calc/builtins.h"
#include "sim/calc/errors.h"

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

constexpr Builtin kFunctions[] = {
    {u"getfield", 1, 1, fnGetField},
    {u"self", 0, 0, fnSelf},
};

}  // namespace

std::span<const Builtin> fieldFunctions() { return kFunctions; }

}  // namespace sim::calc
