// Ravelin_ValueType( value ): the name of the value's native type.
#include <iterator>

#include "fmlib/convert.h"
#include "frame/exception_frame.h"
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

// Answers 0 in every case, also when the frame caught an exception.
fmx::errcode Ravelin_ValueType(short, const fmx::ExprEnv& env, const fmx::DataVect& args,
                               fmx::Data& result) {
    rvl::RunInExceptionFrame(
        env, result, [&] { fmlib::SetResultText(result, typeName(args.At(0).GetNativeType())); });
    return 0;
}
