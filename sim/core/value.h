// Typed values of the substitute host: what an fmx::Data holds, and what calculations compute.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "sim/core/datetime.h"
#include "sim/core/number.h"
#include "sim/core/text.h"

namespace sim {

enum class Type : uint8_t {
    Invalid = 0,
    Text = 1,
    Number = 2,
    Date = 3,
    Time = 4,
    Timestamp = 5,
    Binary = 6,
    Boolean = 7,
};

// Container data: a list of typed streams (four-character type, bytes).
struct Binary {
    struct Stream {
        std::array<char, 4> type{};
        std::string bytes;
        friend bool operator==(const Stream&, const Stream&) = default;
    };
    std::vector<Stream> streams;
    friend bool operator==(const Binary&, const Binary&) = default;
};

class Value {
public:
    Value() = default;  // invalid (empty) value
    static Value text(Text t);
    static Value text(std::u16string s);
    static Value number(Number n);
    static Value number(double d);
    static Value boolean(bool b);
    static Value date(DateTime d);
    static Value time(DateTime t);
    // A time that is an elapsed time rather than a time of day: its text has no AM/PM.
    static Value duration(DateTime t);
    static Value timestamp(DateTime ts);
    static Value binary(Binary b);
    // The empty value of a type (empty text, empty number, a date without value, ...).
    static Value emptyOf(Type t);

    Type type() const { return type_; }
    bool isDuration() const { return type_ == Type::Time && duration_; }
    int32_t locale() const { return locale_; }
    void setLocale(int32_t l) { locale_ = l; }

    // True for the invalid value, empty text, an empty number, and an empty container.
    bool isEmpty() const;

    // Conversions, as the host performs them between types.
    Text asText() const;      // styled for text values
    Number asNumber() const;  // dates give days, times seconds, timestamps seconds
    DateTime asDate() const;  // whole days
    DateTime asTime() const;  // seconds of day for timestamps; numbers as seconds
    DateTime asTimestamp() const;
    bool asBoolean() const;  // non-zero number
    const Binary& asBinary() const;
    // The same conversions, telling when there is no such value (unparsable text, an empty
    // number, a container).
    std::optional<DateTime> tryDate() const;
    std::optional<DateTime> tryTime() const;
    std::optional<DateTime> tryTimestamp() const;
    // This value converted to another type, keeping the locale (and the styles of a text).
    // A conversion without result gives the empty value of the target type.
    Value as(Type t) const;

    // Raw access for the value's own type.
    const Text& textValue() const { return text_; }
    Text& textValue() { return text_; }
    // The number of a number or boolean (an empty number for other types).
    const Number& numberValue() const;
    // The moment of a date, time or timestamp (the zero moment for an empty one or other types).
    const DateTime& dateTimeValue() const;

    // Values that come out of SQL results carry SQL's text forms: asText() of a date, time or
    // timestamp marked this way gives formatSqlDate/Time/Timestamp instead of the calculation
    // forms. The mark travels with copies of the value.
    void setSqlTextForm(bool on);
    bool sqlTextForm() const { return sqlTextForm_; }

    // The text of a text value, or the text form of any other: a value other than text carries
    // its form once made (asText() then gives it too).
    const Text& textForm() { return type_ == Type::Text || hasTextForm_ ? text_ : makeTextForm(); }
    // Gives the value the text textForm() gives, made elsewhere (a SQL result row's texts lie in
    // one block): the text of a text value, the text form asText() makes of any other.
    void setTextForm(SharedUnits form) {
        text_.assign(std::move(form));
        hasTextForm_ = type_ != Type::Text;
    }

    // Makes this the number `n`, keeping the locale: what assigning Value::number(n) with this
    // value's locale gives, without building a value first (a number's digits reuse the room).
    void setNumber(const Number& n);

private:
    Value(Type type, Text&& text) : type_(type), text_(std::move(text)) {}
    const Text& makeTextForm();
    // A date, time or timestamp without value holds no moment.
    bool hasMoment() const { return std::holds_alternative<DateTime>(payload_); }
    const std::shared_ptr<const Binary>* binaryPayload() const {
        return std::get_if<std::shared_ptr<const Binary>>(&payload_);
    }

    Type type_ = Type::Invalid;
    bool sqlTextForm_ = false;
    bool hasTextForm_ = false;
    bool duration_ = false;
    int32_t locale_ = 1;
    Text text_;  // the text of a text value; the carried text form of another
    // What the type holds besides text, only that: a number (numbers and booleans), a moment
    // (dates, times, timestamps), or a container's streams, which never change once made, so
    // that copies share them. Values are kept by the million (a query's result), so they do not
    // carry room for every type.
    std::variant<std::monostate, Number, DateTime, std::shared_ptr<const Binary>> payload_;
};

}  // namespace sim
