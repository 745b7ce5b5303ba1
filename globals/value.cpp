#include "globals/value.h"

#include "fmlib/convert.h"

namespace rvl {

namespace {

// The type a copy made by fmlib::FMData2FMData has: the source's, a boolean's as a number; a
// source of another type is not copied and leaves the target as it was.
fmx::int32 typeAfterCopy(fmx::int32 fromType, fmx::int32 before) {
    switch (fromType) {
        case fmx::kDTText:
        case fmx::kDTNumber:
        case fmx::kDTDate:
        case fmx::kDTTime:
        case fmx::kDTTimeStamp:
        case fmx::kDTBinary:
            return fromType;
        case fmx::kDTBoolean:
            return fmx::kDTNumber;
        default:
            return before;
    }
}

}  // namespace

Value::Value(const fmx::Data& from, fmx::int32 fromType) : type_(data_->GetNativeType()) {
    assign(from, fromType);
}

void Value::assign(const fmx::Data& from, fmx::int32 fromType) {
    fmlib::FMData2FMData(from, fromType, *data_);
    type_ = typeAfterCopy(fromType, type_);
}

}  // namespace rvl
