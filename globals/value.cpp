#include "globals/value.h"

#include "fmlib/convert.h"

namespace rvl {

Value::Value(const fmx::Data& from) { assign(from); }

void Value::assign(const fmx::Data& from) { fmlib::FMData2FMData(from, *data_); }

}  // namespace rvl
