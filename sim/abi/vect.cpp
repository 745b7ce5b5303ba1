// FM_DataVect_* and FM_RowVect_*: argument vectors and SQL result rows.
#include "sim/abi/guard.h"

using namespace sim;
using namespace sim::abi;

namespace {

const DataObj& itemAt(const void* self, fmx::uint32 position) {
    const auto& items = abi::self<DataVectObj>(self).items;
    require(position < items.size());
    return items[position];
}

}  // namespace

extern "C" {

fmx::DataVect* FM_DataVect_Constructor1(_fmxcpt& x) noexcept {
    return guard(__func__, x, [] { return handleOf(new DataVectObj); });
}

void FM_DataVect_Delete(void* self, _fmxcpt& x) noexcept {
    guardRelease(__func__, x, [&] { delete static_cast<DataVectObj*>(self); });
}

fmx::uint32 FM_DataVect_Size(const void* self, _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] {
        return static_cast<fmx::uint32>(abi::self<DataVectObj>(self).items.size());
    });
}

void FM_DataVect_Clear(void* self, _fmxcpt& x) noexcept {
    guard(__func__, x, [&] { abi::self<DataVectObj>(self).items.clear(); });
}

bool FM_DataVect_IsEmpty(const void* self, _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] { return abi::self<DataVectObj>(self).items.empty(); });
}

// The vector keeps its own copy of the value.
void FM_DataVect_PushBack(void* self, const fmx::Data& data, _fmxcpt& x) noexcept {
    guard(__func__, x, [&] {
        auto& items = abi::self<DataVectObj>(self).items;
        items.emplace_back(arg(data));
    });
}

// The last element passes to the caller, who frees it with FM_Data_Delete.
fmx::Data* FM_DataVect_PopBack(void* self, _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] {
        auto& items = abi::self<DataVectObj>(self).items;
        require(!items.empty());
        auto last = std::make_unique<DataObj>(std::move(items.back()));
        items.pop_back();
        return handleOf(last.release());
    });
}

const fmx::Data* FM_DataVect_At(const void* self, fmx::uint32 position, _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] { return handleOf(&itemAt(self, position)); });
}

const fmx::Text* FM_DataVect_AtAsText(const void* self, fmx::uint32 position, _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] { return handleOf(&itemAt(self, position).text()); });
}

const fmx::FixPt* FM_DataVect_AtAsNumber(const void* self, fmx::uint32 position,
                                         _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] { return handleOf(&itemAt(self, position).number()); });
}

const fmx::DateTime* FM_DataVect_AtAsDate(const void* self, fmx::uint32 position,
                                          _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] { return handleOf(&itemAt(self, position).date()); });
}

const fmx::DateTime* FM_DataVect_AtAsTime(const void* self, fmx::uint32 position,
                                          _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] { return handleOf(&itemAt(self, position).time()); });
}

const fmx::DateTime* FM_DataVect_AtAsTimeStamp(const void* self, fmx::uint32 position,
                                               _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] { return handleOf(&itemAt(self, position).timestamp()); });
}

bool FM_DataVect_AtAsBoolean(const void* self, fmx::uint32 position, _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] { return itemAt(self, position).value().asBoolean(); });
}

const fmx::BinaryData* FM_DataVect_AtAsBinaryData(const void* self, fmx::uint32 position,
                                                  _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] { return handleOf(&itemAt(self, position).binary()); });
}

fmx::RowVect* FM_RowVect_Constructor1(_fmxcpt& x) noexcept {
    return guard(__func__, x, [] { return handleOf(new RowVectObj); });
}

void FM_RowVect_Delete(void* self, _fmxcpt& x) noexcept {
    guardRelease(__func__, x, [&] { delete static_cast<RowVectObj*>(self); });
}

fmx::uint32 FM_RowVect_Size(const void* self, _fmxcpt& x) noexcept {
    return guard(__func__, x,
                 [&] { return static_cast<fmx::uint32>(abi::self<RowVectObj>(self).rows.size()); });
}

bool FM_RowVect_IsEmpty(const void* self, _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] { return abi::self<RowVectObj>(self).rows.empty(); });
}

const fmx::DataVect* FM_RowVect_At(const void* self, fmx::uint32 position, _fmxcpt& x) noexcept {
    return guard(__func__, x, [&]() -> const fmx::DataVect* {
        const auto& rows = abi::self<RowVectObj>(self).rows;
        require(position < rows.size());
        return handleOf(&rows[position]);
    });
}

}  // extern "C"
