#include "sim/core/handles.h"

#include "sim/core/objects.h"

namespace sim {

// --- Owned handles --------------------------------------------------------------------------

void TextHandleDeleter::operator()(fmx::Text* t) const noexcept { delete &objectOf(*t); }
void DataHandleDeleter::operator()(fmx::Data* d) const noexcept { delete &objectOf(*d); }
void DataVectHandleDeleter::operator()(fmx::DataVect* d) const noexcept { delete &objectOf(*d); }
void RowVectHandleDeleter::operator()(fmx::RowVect* d) const noexcept { delete &objectOf(*d); }

TextHandle makeText(Text t) { return TextHandle(handleOf(new Text(std::move(t)))); }

DataHandle makeData(Value v) { return DataHandle(handleOf(new DataObj(std::move(v)))); }

DataVectHandle makeDataVect(const std::vector<Value>& values) {
    auto vect = std::make_unique<DataVectObj>();
    vect->items.reserve(values.size());
    for (const Value& v : values) vect->items.emplace_back(v);
    return DataVectHandle(handleOf(vect.release()));
}

RowVectHandle makeRowVect() { return RowVectHandle(handleOf(new RowVectObj)); }

// --- Reading and writing through handles ----------------------------------------------------

const Value& valueOf(const fmx::Data& d) { return objectOf(d).value(); }

void setValue(fmx::Data& d, Value v) { objectOf(d).set(std::move(v)); }

Value takeValue(fmx::Data& d) { return objectOf(d).take(); }

const Text& textOf(const fmx::Text& t) { return objectOf(t); }

Text& textOf(fmx::Text& t) { return objectOf(t); }

std::vector<Value> valuesOf(const fmx::DataVect& v) {
    std::vector<Value> out;
    out.reserve(objectOf(v).items.size());
    for (const auto& item : objectOf(v).items) out.push_back(item.value());
    return out;
}

void clearRows(fmx::RowVect& rows) { objectOf(rows).rows.clear(); }

size_t sizeOf(const fmx::DataVect& v) { return objectOf(v).items.size(); }

const Value& valueAt(const fmx::DataVect& v, size_t i) { return objectOf(v).items.at(i).value(); }

std::vector<std::vector<Value>> rowsOf(const fmx::RowVect& rows) {
    std::vector<std::vector<Value>> out;
    out.reserve(objectOf(rows).rows.size());
    for (const auto& row : objectOf(rows).rows) out.push_back(valuesOf(*handleOf(&row)));
    return out;
}

std::array<char, 4> charsOf(const fmx::QuadChar& q) { return objectOf(q).chars; }

int32_t localeTypeOf(const fmx::Locale& l) { return objectOf(l).type; }

}  // namespace sim
