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
    // The kept copy's native type, known from what was copied into it, so that reading it
    // back needs no host call to ask.
    fmx::int32 type() const { return type_; }

private:
    fmx::DataUniquePtr data_;
    fmx::int32 type_;
};

}  // namespace rvl
