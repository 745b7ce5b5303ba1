// The objects behind the opaque fmx handles, and conversions between handles and the host's own
// types. A handle pointer is the address of the host object it names.
#pragma once

#include <memory>
#include <vector>

#include "host/fmx_types.h"
#include "sim/value.h"

namespace sim {

// Owned handles, freed with the matching FM_*_Delete (the deleters below do that).
struct DataHandleDeleter {
    void operator()(fmx::Data* d) const noexcept;
};
struct DataVectHandleDeleter {
    void operator()(fmx::DataVect* d) const noexcept;
};
struct RowVectHandleDeleter {
    void operator()(fmx::RowVect* d) const noexcept;
};
using DataHandle = std::unique_ptr<fmx::Data, DataHandleDeleter>;
using DataVectHandle = std::unique_ptr<fmx::DataVect, DataVectHandleDeleter>;
using RowVectHandle = std::unique_ptr<fmx::RowVect, RowVectHandleDeleter>;

DataHandle makeData(Value v = {});
DataVectHandle makeDataVect(const std::vector<Value>& values);
RowVectHandle makeRowVect();

const Value& valueOf(const fmx::Data& d);
void setValue(fmx::Data& d, Value v);
const Text& textOf(const fmx::Text& t);
Text& textOf(fmx::Text& t);
// Copies of the values of a vector, in order, read without going through the FM_* calls (so
// the host's own reads are not counted or failed by sim/faults.h).
std::vector<Value> valuesOf(const fmx::DataVect& v);
// Appends one row (moved in) to a row vector.
void appendRow(fmx::RowVect& rows, std::vector<Value> row);
void clearRows(fmx::RowVect& rows);

}  // namespace sim
