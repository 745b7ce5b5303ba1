// One value kept by the global store: a host data object of its own, holding a typed copy of
// what a calculation passed in.
#pragma once

#include "host/fmx.h"

namespace rvl {

class Value {
public:
    // `fromType` is the source's native type (fmx::Data::GetNativeType), read by the caller.
    Value(const fmx::Data& from, fmx::int32 fromType);
    Value(const Value&) = delete;
    Value& operator=(const Value&) = delete;

    // Overwrites the kept copy in place, so every holder of this object sees the new value.
    void assign(const fmx::Data& from, fmx::int32 fromType);
    const fmx::Data& data() const { return *data_; }

private:
    fmx::DataUniquePtr data_;
};

}  // namespace rvl
