#include "globals/value.h"

#include "fmlib/convert.h"

namespace rvl {

Value::Value(const fmx::Data& from, fmx::int32 fromType) { assign(from, fromType); }

void Value::assign(const fmx::Data& from, fmx::int32 fromType) {
    fmlib::FMData2FMData(from, fromType, *data_);
}

}  // namespace rvl
