#include "sim/core/objects.h"

namespace sim {

DataObj::Converted& DataObj::converted() const {
    if (!converted_) converted_ = std::make_unique<Converted>();
    return *converted_;
}

bool DataObj::refresh(unsigned which) const {
    Converted& c = converted();
    if (c.fresh & which) return false;
    c.fresh |= which;
    return true;
}

const Number& DataObj::number() const {
    if (value_.type() == Type::Number || value_.type() == Type::Boolean) {
        return value_.numberValue();
    }
    if (refresh(kNumber)) converted().number = value_.asNumber();
    return converted().number;
}

namespace {

void store(DateTimeObj& obj, const std::optional<DateTime>& dt) {
    obj.valid = dt.has_value();
    obj.dt = dt.value_or(DateTime{});
}

}  // namespace

const DateTimeObj& DataObj::date() const {
    if (refresh(kDate)) store(converted().date, value_.tryDate());
    return converted().date;
}

const DateTimeObj& DataObj::time() const {
    if (refresh(kTime)) store(converted().time, value_.tryTime());
    return converted().time;
}

const DateTimeObj& DataObj::timestamp() const {
    if (refresh(kTimestamp)) store(converted().timestamp, value_.tryTimestamp());
    return converted().timestamp;
}

const Binary& DataObj::binary() const { return value_.asBinary(); }

const LocaleObj& DataObj::locale() const {
    if (refresh(kLocale)) converted().locale.type = value_.locale();
    return converted().locale;
}

}  // namespace sim
