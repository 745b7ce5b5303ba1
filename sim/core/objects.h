// The host objects behind the opaque fmx handles. A handle pointer is the address of one of these
// objects; the mapping is one to one and fixed by HandleOf below.
#pragma once

#include <array>
#include <memory>
#include <type_traits>
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
// is valid until the value next changes (and never dangles before the object is deleted). The
// text form is kept by the value itself; the other forms live in a block made on the first read
// that needs one.
class DataObj {
public:
    DataObj() = default;
    explicit DataObj(Value&& v) : value_(std::move(v)) {}
    explicit DataObj(const Value& v) : value_(v) {}
    // Made in place from what `make()` returns, so that a value is built where it is kept.
    template <class Make, class = std::enable_if_t<std::is_invocable_r_v<Value, Make&>>>
    explicit DataObj(Make&& make) : value_(make()) {}
    DataObj(const DataObj& other) : value_(other.value_) {}
    DataObj& operator=(const DataObj& other) {
        set(other.value_);
        return *this;
    }
    DataObj(DataObj&&) noexcept = default;
    DataObj& operator=(DataObj&&) noexcept = default;

    const Value& value() const { return value_; }
    void set(const Value& v) {
        value_ = v;
        changed();
    }
    void set(Value&& v) {
        value_ = std::move(v);
        changed();
    }
    // The same as set(Value::number(n)) with the value's own locale kept.
    void setNumber(const Number& n) {
        value_.setNumber(n);
        changed();
    }

    // The value, for an object that is done with: moving it out costs one move.
    Value&& release() && { return std::move(value_); }

    // Moves the value out, leaving the invalid value.
    Value take() {
        Value v = std::move(value_);
        set(Value{});
        return v;
    }

    const Text& text() const { return value_.textForm(); }
    // See Value::setTextForm: the value stays the same, and so do its borrowed forms.
    void setTextForm(SharedUnits form) const { value_.setTextForm(std::move(form)); }
    const Number& number() const;
    const DateTimeObj& date() const;
    const DateTimeObj& time() const;
    const DateTimeObj& timestamp() const;
    const Binary& binary() const;
    const LocaleObj& locale() const;

private:
    void changed() {
        if (converted_) converted_->fresh = 0;
    }

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

    mutable Value value_;  // mutable: it keeps its text form once made
    mutable std::unique_ptr<Converted> converted_;
};

// The items lie side by side (a row of a SQL result is one block, not one block per field), so
// an item's handle is valid until the vector changes, as a value's borrowed forms are valid until
// the value changes.
struct DataVectObj {
    std::vector<DataObj> items;
};

struct RowVectObj {
    std::vector<DataVectObj> rows;
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
