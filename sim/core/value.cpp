#include "sim/core/value.h"

#include <cmath>

#include "sim/core/encoding.h"

namespace sim {

namespace {

// Day numbers beyond this are no dates (the host's calendar ends in the year 4000).
constexpr double kMaxDayNumber = 1e9;

bool isDateKind(Type t) { return t == Type::Date || t == Type::Time || t == Type::Timestamp; }

// The file name a container shows as its text.
std::u16string containerName(const Binary& b) {
    for (const auto& s : b.streams) {
        if (s.type == std::array<char, 4>{'F', 'N', 'A', 'M'}) return fromUtf8(s.bytes);
    }
    return u"";
}

DateTime wholeDay(const DateTime& d) { return DateTime::fromDays(d.days()); }

DateTime timeOfDay(const DateTime& d) { return DateTime::fromSeconds(d.secondsOfDay()); }

}  // namespace

Value Value::text(Text t) { return Value(Type::Text, std::move(t)); }

const Text& Value::makeTextForm() {
    text_ = asText();
    hasTextForm_ = true;
    return text_;
}

void Value::setSqlTextForm(bool on) {
    if (on == sqlTextForm_) return;
    sqlTextForm_ = on;
    if (hasTextForm_) {  // the form depends on the mark
        hasTextForm_ = false;
        text_ = Text();
    }
}

Value Value::text(std::u16string s) { return text(Text(std::move(s))); }

Value Value::number(Number n) {
    Value v;
    v.type_ = Type::Number;
    v.payload_ = std::move(n);
    return v;
}

void Value::setNumber(const Number& n) {
    if (Number* mine = std::get_if<Number>(&payload_)) {
        *mine = n;
    } else {
        Number copy = n;  // made first: a failure leaves this value as it was
        payload_.emplace<Number>(std::move(copy));
    }
    if (type_ == Type::Text || hasTextForm_) text_ = Text();
    type_ = Type::Number;
    sqlTextForm_ = false;
    hasTextForm_ = false;
    duration_ = false;
}

const Number& Value::numberValue() const {
    static const Number kEmpty = Number::none();
    const Number* n = std::get_if<Number>(&payload_);
    return n ? *n : kEmpty;
}

const DateTime& Value::dateTimeValue() const {
    static const DateTime kZero{};
    const DateTime* dt = std::get_if<DateTime>(&payload_);
    return dt ? *dt : kZero;
}

// Whole numbers exactly; fractions of binary arithmetic (counts, time parts) to 15 significant
// digits, below their binary noise.
Value Value::number(double d) {
    if (std::trunc(d) == d && std::fabs(d) < 9.2e18) {
        return number(Number::fromInt(static_cast<int64_t>(d)));
    }
    Number n;
    n.value = decimal::digitsOf(d, 15);
    return number(n);
}

Value Value::boolean(bool b) {
    Value v;
    v.type_ = Type::Boolean;
    v.payload_ = Number::fromInt(b ? 1 : 0);
    return v;
}

Value Value::date(DateTime d) {
    Value v;
    v.type_ = Type::Date;
    v.payload_ = wholeDay(d);
    return v;
}

Value Value::time(DateTime t) {
    Value v;
    v.type_ = Type::Time;
    v.payload_ = t;
    return v;
}

Value Value::duration(DateTime t) {
    Value v = time(t);
    v.duration_ = true;
    return v;
}

Value Value::timestamp(DateTime ts) {
    Value v;
    v.type_ = Type::Timestamp;
    v.payload_ = ts;
    return v;
}

Value Value::binary(Binary b) {
    Value v;
    v.type_ = Type::Binary;
    v.payload_ = std::make_shared<const Binary>(std::move(b));
    return v;
}

Value Value::emptyOf(Type t) {
    Value v;
    switch (t) {
        case Type::Invalid:
            return v;
        case Type::Text:  // its text is empty
            v.type_ = t;
            return v;
        case Type::Binary:
            return binary({});
        case Type::Number:
        case Type::Boolean:
            v.type_ = t;
            v.payload_ = Number::none();
            return v;
        default:  // a date, time or timestamp without a moment
            v.type_ = t;
            return v;
    }
}

bool Value::isEmpty() const {
    switch (type_) {
        case Type::Invalid:
            return true;
        case Type::Text:
            return text_.empty();
        case Type::Binary: {
            const auto* b = binaryPayload();
            return b == nullptr || *b == nullptr || (*b)->streams.empty();
        }
        case Type::Number:
        case Type::Boolean:
            return numberValue().empty;
        default:
            return !hasMoment();
    }
}

Text Value::asText() const {
    if (type_ == Type::Text || hasTextForm_) return text_;
    if (isDateKind(type_) && !hasMoment()) return Text();
    const DateTime& moment = dateTimeValue();
    if (sqlTextForm_) {
        if (type_ == Type::Date) return Text(formatSqlDate(moment));
        if (type_ == Type::Time) return Text(formatSqlTime(moment));
        if (type_ == Type::Timestamp) return Text(formatSqlTimestamp(moment));
    }
    switch (type_) {
        case Type::Number:
        case Type::Boolean:
            return Text(formatNumber(numberValue()));
        case Type::Date:
            return Text(formatDate(moment));
        case Type::Time:
            return Text(duration_ ? formatDuration(moment) : formatTime(moment));
        case Type::Timestamp:
            return Text(formatTimestamp(moment));
        case Type::Binary:
            return Text(containerName(asBinary()));
        default:
            return Text();
    }
}

Number Value::asNumber() const {
    if (isDateKind(type_) && !hasMoment()) return Number::none();
    const DateTime& moment = dateTimeValue();
    switch (type_) {
        case Type::Text:
            return parseNumber(text_.units());
        case Type::Number:
        case Type::Boolean:
            return numberValue();
        case Type::Date:
            return Number::fromInt(moment.days());
        case Type::Time:
        case Type::Timestamp:
            return Number::fromScaled(moment.usec, -6);
        default:
            return Number::none();
    }
}

std::optional<DateTime> Value::tryDate() const {
    if (isEmpty()) return std::nullopt;
    const Number& num = numberValue();
    const DateTime& moment = dateTimeValue();
    switch (type_) {
        case Type::Text:
            if (auto d = parseDate(text_.units())) return d;
            if (auto ts = parseTimestamp(text_.units())) return wholeDay(*ts);
            return std::nullopt;
        case Type::Number:
        case Type::Boolean:
            if (!(std::fabs(num.toDouble()) < kMaxDayNumber)) return std::nullopt;
            return DateTime::fromDays(static_cast<int64_t>(floorOf(num).toDouble()));
        case Type::Date:
        case Type::Time:
        case Type::Timestamp:
            return wholeDay(moment);
        default:
            return std::nullopt;
    }
}

std::optional<DateTime> Value::tryTime() const {
    if (isEmpty()) return std::nullopt;
    const Number& num = numberValue();
    const DateTime& moment = dateTimeValue();
    switch (type_) {
        case Type::Text:
            if (auto t = parseTime(text_.units())) return t;
            if (auto ts = parseTimestamp(text_.units())) return timeOfDay(*ts);
            return std::nullopt;
        case Type::Number:
        case Type::Boolean:
            return DateTime::fromSeconds(num);
        case Type::Date:
            return DateTime{};
        case Type::Time:
            return moment;
        case Type::Timestamp:
            return timeOfDay(moment);
        default:
            return std::nullopt;
    }
}

std::optional<DateTime> Value::tryTimestamp() const {
    if (isEmpty()) return std::nullopt;
    const Number& num = numberValue();
    const DateTime& moment = dateTimeValue();
    switch (type_) {
        case Type::Text:
            if (auto ts = parseTimestamp(text_.units())) return ts;
            return parseTime(text_.units());
        case Type::Number:
        case Type::Boolean:
            return DateTime::fromSeconds(num);
        case Type::Date:
        case Type::Time:
        case Type::Timestamp:
            return moment;
        default:
            return std::nullopt;
    }
}

DateTime Value::asDate() const { return tryDate().value_or(DateTime{}); }
DateTime Value::asTime() const { return tryTime().value_or(DateTime{}); }
DateTime Value::asTimestamp() const { return tryTimestamp().value_or(DateTime{}); }

bool Value::asBoolean() const {
    const Number n = asNumber();
    return !n.empty && !n.isZero();
}

const Binary& Value::asBinary() const {
    static const Binary kNone;
    const auto* b = binaryPayload();
    return type_ == Type::Binary && b != nullptr && *b != nullptr ? **b : kNone;
}

Value Value::as(Type t) const {
    Value out;
    switch (t) {
        case Type::Invalid:
            break;
        case Type::Text:
            out = text(asText());
            break;
        case Type::Number:
            out = number(asNumber());
            break;
        case Type::Boolean: {
            const Number n = asNumber();
            out = n.empty ? emptyOf(Type::Boolean) : boolean(asBoolean());
            break;
        }
        case Type::Date:
            out = tryDate() ? date(*tryDate()) : emptyOf(t);
            break;
        case Type::Time:
            out = tryTime() ? time(*tryTime()) : emptyOf(t);
            out.duration_ = isDuration();
            break;
        case Type::Timestamp:
            out = tryTimestamp() ? timestamp(*tryTimestamp()) : emptyOf(t);
            break;
        case Type::Binary:
            out = binary(asBinary());
            break;
    }
    out.locale_ = locale_;
    out.sqlTextForm_ = sqlTextForm_;
    return out;
}

}  // namespace sim
