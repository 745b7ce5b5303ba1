// Ravelin_ValueType( value ): the name of the value's native type.
#include <iterator>

#include "fmlib/convert.h"
#include "info/functions.h"

namespace {

// Indexed by the host's native type code; an invalid value has no name.
const char* const DataTypeNames[] = {"",     "Text",      "Number",    "Date",
                                     "Time", "Timestamp", "Container", "Boolean"};

const char* typeName(fmx::Data::DataType type) {
    const auto code = static_cast<std::size_t>(type);
    return code < std::size(DataTypeNames) ? DataTypeNames[code] : "";
}

}  // namespace

void body::Ravelin_ValueType(const fmx::ExprEnv&, const rvl::Arguments& args, fmx::Data& result) {
    fmlib::SetResultText(result, typeName(args.value(0).GetNativeType()));
}
