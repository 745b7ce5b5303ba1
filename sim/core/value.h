// Typed values of the substitute host: what an fmx::Data holds, and what calculations compute.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

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

// A number as the host's FixPt holds it. `empty` marks the number of a text without digits
// (GetAsNumber ( "abc" ) is empty, not 0); arithmetic reads an empty number as 0.
struct Number {
    double value = 0;
    bool empty = false;
    int precision = 16;
};

// Text form: at most 16 significant digits, no exponent, no trailing zeros, '.' as decimal
// separator, "0.5" for one half; an empty number gives "".
std::u16string formatNumber(const Number& n);

// The same text form, made without allocating when it is short (as nearly every one is).
class NumberText {
public:
    explicit NumberText(const Number& n);
    std::u16string_view view() const {
        return longer_.empty() ? std::u16string_view(buffer_, size_) : longer_;
    }

private:
    char16_t buffer_[32];
    std::size_t size_ = 0;
    std::u16string longer_;  // very large and very small numbers only
};
// The `count` lowest decimal digits of `v`, leading zeros included, written so that they end just
// before `end` (number and date forms share it).
void writeDigits(uint64_t v, int count, char16_t* end);

// FileMaker's text-to-number rule: every non-digit is dropped except the first decimal point and
// a leading minus sign or parentheses; no digit at all gives an empty number.
Number parseNumber(std::u16string_view text);

// Microseconds since 0001-01-01 00:00:00 (proleptic Gregorian). Dates count days from there
// with 0001-01-01 as day 1; times count seconds from midnight (and may exceed 24 hours).
struct DateTime {
    int64_t usec = 0;

    static DateTime fromDays(int64_t day1Based);
    static DateTime fromYmd(int year, int month, int day);  // normalises overflowing fields
    static DateTime fromSeconds(double seconds);
    int64_t days() const;    // 1-based day number
    double seconds() const;  // seconds since the epoch, with fractions
    double secondsOfDay() const;
    void ymd(int& year, int& month, int& day) const;
    friend bool operator==(const DateTime&, const DateTime&) = default;
};

// The current local date and time (the system's time zone), with microseconds.
DateTime localNow();

// Host text forms (en-US, the only locale this host formats): "1/31/2024", "1:05:00 PM",
// "1/31/2024 1:05:00 PM"; fractions of a second are printed when present (".5").
std::u16string formatDate(const DateTime& d);
std::u16string formatTime(const DateTime& t);
std::u16string formatTimestamp(const DateTime& ts);
// Parse the host's text forms (and ISO forms "2024-01-31", "13:05:00", "2024-01-31 13:05:00").
std::optional<DateTime> parseDate(std::u16string_view text);
std::optional<DateTime> parseTime(std::u16string_view text);
std::optional<DateTime> parseTimestamp(std::u16string_view text);
// SQL text forms, which ExecuteSQL results use whatever the locale: "2024-01-31", "13:05:00",
// "2024-01-31 13:05:00"; fractions of a second only when present ("13:05:00.5").
// (Implemented with the host's SQL support in sim/session/sql_text.cpp.)
std::u16string formatSqlDate(const DateTime& d);
std::u16string formatSqlTime(const DateTime& t);
std::u16string formatSqlTimestamp(const DateTime& ts);
// The same forms written into `out`, which has room for kSqlTextCapacity units; they return the
// number of units written.
constexpr std::size_t kSqlTextCapacity = 96;
std::size_t writeSqlDate(const DateTime& d, char16_t* out);
std::size_t writeSqlTime(const DateTime& t, char16_t* out);
std::size_t writeSqlTimestamp(const DateTime& ts, char16_t* out);

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
    static Value timestamp(DateTime ts);
    static Value binary(Binary b);
    // The empty value of a type (empty text, empty number, a date without value, ...).
    static Value emptyOf(Type t);

    Type type() const { return type_; }
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
    const Number& numberValue() const { return number_; }
    const DateTime& dateTimeValue() const { return dt_; }

    // Values that come out of SQL results carry SQL's text forms: asText() of a date, time or
    // timestamp marked this way gives formatSqlDate/Time/Timestamp instead of the calculation
    // forms. The mark travels with copies of the value.
    void setSqlTextForm(bool on);
    bool sqlTextForm() const { return sqlTextForm_; }

    // The text of a text value, or the text form of any other: a value other than text carries
    // its form once made (asText() then gives it too).
    const Text& textForm() { return type_ == Type::Text || hasTextForm_ ? text_ : makeTextForm(); }

    // A field of a SQL result, marked with SQL's text forms: of `type` (Text, Number, Date, Time,
    // Timestamp or Binary) with the payload of that type, and `text`, which is the text of a text
    // value and the carried text form of any other. The text is moved in: units kept in an arena
    // stay there.
    struct SqlField {
        Type type = Type::Text;
        double number = 0;
        DateTime moment;
        std::shared_ptr<const Binary> binary;
        Text text;
    };
    static Value fromSqlField(SqlField&& field);

private:
    // Move the text in (an assignment would copy units kept in an arena out of it).
    explicit Value(Text&& t) : type_(Type::Text), text_(std::move(t)) {}
    const Text& makeTextForm();

    // Laid out small: a SQL result keeps one value per field.
    Type type_ = Type::Invalid;
    bool sqlTextForm_ = false;
    bool hasTextForm_ = false;
    int32_t locale_ = 1;
    Text text_;      // the text of a text value; the carried text form of another
    Number number_;  // for dates, times and timestamps only `empty` is used
    DateTime dt_;
    // Containers are rare next to the other types (a SQL result makes values by the hundred
    // thousand), so their streams live elsewhere; they never change once made, so copies share
    // them.
    std::shared_ptr<const Binary> binary_;
};

}  // namespace sim
