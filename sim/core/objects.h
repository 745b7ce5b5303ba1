// The host objects behind the opaque fmx handles. A handle pointer is the address of one of these
// objects; the mapping is one to one and fixed by HandleOf below.
#pragma once

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <deque>
#include <memory>
#include <memory_resource>
#include <new>
#include <utility>
#include <vector>

#include "host/fmx_types.h"
#include "sim/core/value.h"

namespace sim {

// A moment, or no date at all (the result of unparsable text or of an empty value).
struct DateTimeObj {
    DateTime dt;
    bool valid = true;
};

struct LocaleObj {
    int32_t type = fmx::kLocale_System;
};

struct QuadCharObj {
    std::array<char, 4> chars{};
};

// A value plus the converted forms its getters hand out. Those stay where they are for the
// object's whole life and are refreshed on the first read after a change, so a borrowed pointer
// is valid until the value next changes (and never dangles before the object is deleted).
// A SQL result holds hundreds of thousands of these objects, most of them read once as text: the
// value keeps its text form itself, the other forms live in a block made on the first read that
// needs one.
class DataObj {
public:
    DataObj() = default;
    // Taken by reference rather than by value: a SQL result moves its values in by the hundred
    // thousand, and each extra move of a Value costs.
    explicit DataObj(Value&& v) : value_(std::move(v)) {}
    explicit DataObj(const Value& v) : value_(v) {}
    // A field of a SQL result, its value made in place (each move of a Value costs, and a result
    // makes them by the hundred thousand); its text moves in, so units in an arena stay there.
    explicit DataObj(Value::SqlField&& field) : value_(Value::fromSqlField(std::move(field))) {}
    DataObj(const DataObj& other) : value_(other.value_) {}
    DataObj& operator=(const DataObj& other) {
        set(other.value_);
        return *this;
    }

    const Value& value() const { return value_; }
    // Set for the values a SQL result keeps in its own blocks, which only the result may free.
    // `ownsMemory` is the result's record that one of them holds memory outside its arena; this
    // object sets it when it comes to hold some.
    bool pooled() const { return pool_ != nullptr; }
    void markPooled(std::atomic<bool>* ownsMemory) { pool_ = ownsMemory; }
    void set(Value v) {
        value_ = std::move(v);
        if (converted_) converted_->fresh = 0;
        notePoolMemory();
    }

    const Text& text() const { return value_.textForm(); }
    const Number& number() const;
    const DateTimeObj& date() const;
    const DateTimeObj& time() const;
    const DateTimeObj& timestamp() const;
    const Binary& binary() const;
    const LocaleObj& locale() const;

private:
    enum : unsigned { kNumber = 2, kDate = 4, kTime = 8, kTimestamp = 16, kLocale = 32 };
    struct Converted {
        Number number;
        DateTimeObj date, time, timestamp;
        LocaleObj locale;
        unsigned fresh = 0;  // the forms computed from the value as it is now
    };
    // The forms other than text (made once, kept until the object goes), and whether `which` of
    // them must be computed again from the value.
    Converted& converted() const;
    bool refresh(unsigned which) const;
    void notePoolMemory() const {
        if (pool_) pool_->store(true, std::memory_order_relaxed);
    }

    mutable Value value_;                // mutable: it keeps its text form once made
    std::atomic<bool>* pool_ = nullptr;  // never copied: a copy belongs to whoever made it
    mutable std::unique_ptr<Converted> converted_;
};

// Owns its value, unless the value is kept in bulk by the row vector of a SQL result, which then
// destroys it itself.
struct DataObjDeleter {
    DataObjDeleter() = default;
    DataObjDeleter(std::default_delete<DataObj>) noexcept {}  // heap values go in as they are
    void operator()(DataObj* d) const noexcept {
        if (!d->pooled()) delete d;
    }
};
using DataObjPtr = std::unique_ptr<DataObj, DataObjDeleter>;

struct DataVectObj {
    DataVectObj() = default;
    // Keeps its item pointers in `arena`, which must outlive it (as the rows of a SQL result do).
    explicit DataVectObj(std::pmr::memory_resource* arena) : items(arena) {}

    std::pmr::vector<DataObjPtr> items;
};

// Values built in place in storage that never moves. Each is destroyed with the block, unless
// the block is told that none holds memory of its own (then dropping the storage is all it takes,
// and a large result is freed without reading its values once more).
class DataBlock {
public:
    explicit DataBlock(std::size_t capacity)
        : slots_(std::make_unique_for_overwrite<Slot[]>(capacity)), capacity_(capacity) {}
    DataBlock(const DataBlock&) = delete;
    DataBlock& operator=(const DataBlock&) = delete;
    ~DataBlock() {
        if (!destroyValues_) return;
        for (std::size_t i = 0; i < size_; ++i) at(i).~DataObj();
    }

    std::size_t size() const { return size_; }
    bool full() const { return size_ == capacity_; }
    DataObj& emplace(Value::SqlField&& field) {
        auto* d = ::new (static_cast<void*>(slots_[size_].bytes)) DataObj(std::move(field));
        ++size_;
        return *d;
    }
    void forgetValues() { destroyValues_ = false; }

private:
    struct Slot {
        alignas(DataObj) std::byte bytes[sizeof(DataObj)];
    };
    DataObj& at(std::size_t i) {
        return *std::launder(reinterpret_cast<DataObj*>(slots_[i].bytes));
    }

    std::unique_ptr<Slot[]> slots_;
    std::size_t size_ = 0;
    std::size_t capacity_;
    bool destroyValues_ = true;
};

// A SQL result can hold millions of values: they are kept in blocks that never move instead of
// one allocation each, their units in one arena, and the rows (in a deque, which never moves
// them either) point into the blocks.
struct RowVectObj {
    // Declared in the order that lets each go after what points into it.
    std::pmr::monotonic_buffer_resource arena;
    // Set once a kept value holds memory outside the arena (a container's streams, forms
    // converted on reading, a value replaced through a cast): the values are then destroyed one
    // by one.
    std::atomic<bool> valuesOwnMemory{false};
    std::deque<DataBlock> blocks;
    std::deque<DataVectObj> rows;

    RowVectObj() = default;
    RowVectObj(const RowVectObj&) = delete;
    RowVectObj& operator=(const RowVectObj&) = delete;
    ~RowVectObj() { dropValues(); }

    // Blocks grow with the result (256 values at first, then as many as are kept so far, up to
    // 65536), so a large result takes few large allocations.
    DataObjPtr keep(Value::SqlField&& field) {
        if (blocks.empty() || blocks.back().full()) {
            std::size_t kept = 0;
            for (const DataBlock& block : blocks) kept += block.size();
            blocks.emplace_back(std::clamp<std::size_t>(kept, 256, 65536));
        }
        if (field.binary) valuesOwnMemory.store(true, std::memory_order_relaxed);
        DataObj& d = blocks.back().emplace(std::move(field));
        d.markPooled(&valuesOwnMemory);
        return DataObjPtr(&d);
    }
    void clear() {
        dropValues();
        rows.clear();
        blocks.clear();
        arena.release();
        valuesOwnMemory.store(false, std::memory_order_relaxed);
    }

private:
    // Rows hold only values made by keep() (the host hands rows out read-only), so their pointers
    // are let go without reading the values they point to; the blocks destroy the values, or
    // drop them unread when none owns memory.
    void dropValues() {
        for (DataVectObj& row : rows) {
            for (DataObjPtr& item : row.items) static_cast<void>(item.release());
        }
        if (valuesOwnMemory.load(std::memory_order_relaxed)) return;
        for (DataBlock& block : blocks) block.forgetValues();
    }
};

// Object type <-> handle type.
template <class Obj>
struct HandleOf;
template <class Handle>
struct ObjectOf;

#define SIM_HANDLE_PAIR(Obj, Handle) \
    template <>                      \
    struct HandleOf<Obj> {           \
        using type = Handle;         \
    };                               \
    template <>                      \
    struct ObjectOf<Handle> {        \
        using type = Obj;            \
    };                               \
    template <>                      \
    struct ObjectOf<const Handle> {  \
        using type = const Obj;      \
    };

SIM_HANDLE_PAIR(Text, fmx::Text)
SIM_HANDLE_PAIR(DataObj, fmx::Data)
SIM_HANDLE_PAIR(DataVectObj, fmx::DataVect)
SIM_HANDLE_PAIR(RowVectObj, fmx::RowVect)
SIM_HANDLE_PAIR(Number, fmx::FixPt)
SIM_HANDLE_PAIR(DateTimeObj, fmx::DateTime)
SIM_HANDLE_PAIR(Binary, fmx::BinaryData)
SIM_HANDLE_PAIR(QuadCharObj, fmx::QuadChar)
SIM_HANDLE_PAIR(LocaleObj, fmx::Locale)
SIM_HANDLE_PAIR(Rgb, fmx::Color)
SIM_HANDLE_PAIR(CharStyle, fmx::CharacterStyle)

#undef SIM_HANDLE_PAIR

template <class Obj>
typename HandleOf<Obj>::type* handleOf(Obj* obj) {
    return reinterpret_cast<typename HandleOf<Obj>::type*>(obj);
}

template <class Obj>
const typename HandleOf<Obj>::type* handleOf(const Obj* obj) {
    return reinterpret_cast<const typename HandleOf<Obj>::type*>(obj);
}

// The object behind a handle the caller guarantees to be valid.
template <class Handle>
typename ObjectOf<Handle>::type& objectOf(Handle& h) {
    return *reinterpret_cast<typename ObjectOf<Handle>::type*>(&h);
}

}  // namespace sim
