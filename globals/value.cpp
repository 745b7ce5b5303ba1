#include "globals/value.h"

#include "fmlib/convert.h"

namespace rvl {

Value::Value(const fmx::Data& from, fmx::int32 fromType) : type_(data_->GetNativeType()) {
    assign(from, fromType);
}

// A source of a type the copy does not know leaves the kept copy, and its type, as they were.
void Value::assign(const fmx::Data& from, fmx::int32 fromType) {
    const fmx::int32 copied = fmlib::FMData2FMData(from, fromType, *data_);
    if (copied != fmx::kDTInvalid) type_ = copied;
}

}  // namespace rvl
