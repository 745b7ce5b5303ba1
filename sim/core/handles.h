// The objects behind the opaque fmx handles, and conversions between handles and the host's own
// types. A handle pointer is the address of the host object it names.
#pragma once

#include <array>
#include <memory>
#include <vector>

#include "host/fmx_types.h"
#include "sim/core/value.h"

namespace sim {

// Owned handles, freed as the matching FM_*_Delete frees them (the deleters below do that,
// without counting as host calls).
struct TextHandleDeleter {
    void operator()(fmx::Text* t) const noexcept;
};
struct DataHandleDeleter {
    void operator()(fmx::Data* d) const noexcept;
};
struct DataVectHandleDeleter {
    void operator()(fmx::DataVect* d) const noexcept;
};
struct RowVectHandleDeleter {
    void operator()(fmx::RowVect* d) const noexcept;
};
using TextHandle = std::unique_ptr<fmx::Text, TextHandleDeleter>;
using DataHandle = std::unique_ptr<fmx::Data, DataHandleDeleter>;
using DataVectHandle = std::unique_ptr<fmx::DataVect, DataVectHandleDeleter>;
using RowVectHandle = std::unique_ptr<fmx::RowVect, RowVectHandleDeleter>;

TextHandle makeText(Text t = {});
DataHandle makeData(Value v = {});
DataVectHandle makeDataVect(const std::vector<Value>& values);
RowVectHandle makeRowVect();

const Value& valueOf(const fmx::Data& d);
void setValue(fmx::Data& d, Value v);
// The value of `d`, moved out (a result handed back by a plug-in, which may be large).
Value takeValue(fmx::Data& d);
const Text& textOf(const fmx::Text& t);
Text& textOf(fmx::Text& t);
// Copies of the values of a vector, in order, read without going through the FM_* calls (so
// the host's own reads are not counted or failed by sim/faults.h).
std::vector<Value> valuesOf(const fmx::DataVect& v);
// Empties a row vector.
void clearRows(fmx::RowVect& rows);

// Reading argument vectors and the small value handles.
size_t sizeOf(const fmx::DataVect& v);
const Value& valueAt(const fmx::DataVect& v, size_t i);  // i < sizeOf(v)
std::vector<std::vector<Value>> rowsOf(const fmx::RowVect& rows);
std::array<char, 4> charsOf(const fmx::QuadChar& q);
int32_t localeTypeOf(const fmx::Locale& l);

}  // namespace sim
