#include "sim/session/sql_values.h"

#include <sqlite3.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <optional>
#include <string>
#include <string_view>

#include "sim/core/encoding.h"

namespace sim {

namespace {

bool contains(const std::string& hay, const char* needle) {
    return hay.find(needle) != std::string::npos;
}

// Values read from a result carry SQL's text forms of numbers, dates and times.
Value sqlValue(Value v) {
    v.setSqlTextForm(true);
    return v;
}

// This and textValue are inlined into valueOfType, as it is into both readers of a field, so
// that reading a field is one function either way.
[[gnu::always_inline]] inline std::optional<Value> dateLikeValue(std::u16string_view text,
                                                                 ColumnKind kind) {
    std::optional<DateTime> parsed;
    switch (kind) {
        case ColumnKind::Date:
            if ((parsed = parseDate(text))) return Value::date(*parsed);
            break;
        case ColumnKind::Time:
            if ((parsed = parseTime(text))) return Value::time(*parsed);
            break;
        case ColumnKind::Timestamp:
            if ((parsed = parseTimestamp(text))) return Value::timestamp(*parsed);
            break;
        case ColumnKind::Plain:
            break;
    }
    return std::nullopt;
}

// Text of a date-like column becomes a date, time or timestamp when it reads as one.
[[gnu::always_inline]] inline Value textValue(std::string_view bytes, ColumnKind kind) {
    std::u16string units = fromUtf8(bytes);
    if (kind != ColumnKind::Plain) {
        if (std::optional<Value> v = dateLikeValue(units, kind)) return sqlValue(std::move(*v));
    }
    return Value::text(std::move(units));
}

// UTF-8 appended as UTF-16: ASCII unit by unit, anything else as fromUtf8 converts it.
void appendUtf8(std::u16string& texts, std::string_view bytes) {
    const bool ascii = std::all_of(bytes.begin(), bytes.end(),
                                   [](char b) { return static_cast<unsigned char>(b) < 0x80; });
    if (!ascii) {
        texts += fromUtf8(bytes);
        return;
    }
    const std::size_t start = texts.size();
    texts.resize(start + bytes.size());
    std::copy(bytes.begin(), bytes.end(), texts.begin() + static_cast<std::ptrdiff_t>(start));
}

int64_t integerOf(const Number& n) {
    int64_t v = 0;
    for (int k = 0; k < n.value.point; ++k) {
        const size_t i = static_cast<size_t>(k);
        v = v * 10 + (i < n.value.digits.size() ? n.value.digits[i] - '0' : 0);
    }
    return n.value.negative ? -v : v;
}

// How SQLite shows a REAL (its "%!.15g").
std::string sqliteText(double d) {
    char* text = sqlite3_mprintf("%!.15g", d);
    std::string s = text != nullptr ? text : "";
    sqlite3_free(text);
    return s;
}

int bindText(sqlite3_stmt* st, int index, const std::u16string& text) {
    return sqlite3_bind_text16(st, index, text.data(),
                               static_cast<int>(text.size() * sizeof(char16_t)), SQLITE_TRANSIENT);
}

}  // namespace

ColumnKind columnKind(const char* declaredType) {
    if (declaredType == nullptr) return ColumnKind::Plain;
    std::string upper(declaredType);
    std::transform(upper.begin(), upper.end(), upper.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    if (contains(upper, "TIMESTAMP") || contains(upper, "DATETIME")) return ColumnKind::Timestamp;
    if (contains(upper, "DATE")) return ColumnKind::Date;
    if (contains(upper, "TIME")) return ColumnKind::Time;
    return ColumnKind::Plain;
}

namespace {

// Column `c`, whose SQLite type is `type`: made part of both readers below, each of which reads
// the type once.
[[gnu::always_inline]] inline Value valueOfType(sqlite3_stmt* st, int c, ColumnKind kind,
                                                int type) {
    switch (type) {
        case SQLITE_INTEGER:
            return sqlValue(Value::number(Number::fromInt(sqlite3_column_int64(st, c))));
        case SQLITE_FLOAT: {
            // SQLite's own text of the value (what its shell prints), read as a decimal.
            const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(st, c));
            const std::optional<Number> n = parseDecimal(text ? text : "");
            if (!n) return Value::text(fromUtf8(text ? text : ""));  // "Inf", "-Inf", "NaN"
            return sqlValue(Value::number(*n));
        }
        case SQLITE_TEXT: {
            const auto* bytes = reinterpret_cast<const char*>(sqlite3_column_text(st, c));
            const auto size = static_cast<std::size_t>(sqlite3_column_bytes(st, c));
            return textValue(std::string_view(bytes ? bytes : "", bytes ? size : 0), kind);
        }
        case SQLITE_BLOB: {
            Binary b;
            const auto* bytes = static_cast<const char*>(sqlite3_column_blob(st, c));
            const auto size = static_cast<std::size_t>(sqlite3_column_bytes(st, c));
            b.streams.push_back({{'F', 'I', 'L', 'E'}, std::string(bytes ? bytes : "", size)});
            return sqlValue(Value::binary(std::move(b)));
        }
        default:
            return Value::text(std::u16string());  // NULL: empty text
    }
}

}  // namespace

Value columnValue(sqlite3_stmt* st, int c, ColumnKind kind) {
    return valueOfType(st, c, kind, sqlite3_column_type(st, c));
}

namespace {

// A value read as columnValue() reads it, its text appended to `texts`.
Value valueTextApart(sqlite3_stmt* st, int c, ColumnKind kind, int type, std::u16string& texts) {
    Value v = valueOfType(st, c, kind, type);
    texts += v.type() == Type::Text ? v.textValue().units() : v.asText().units();
    return v;
}

// A plain text: its units go straight to `texts`, not through a string of their own.
Value plainTextApart(sqlite3_stmt* st, int c, std::u16string& texts) {
    const auto* bytes = reinterpret_cast<const char*>(sqlite3_column_text(st, c));
    const auto size = static_cast<std::size_t>(sqlite3_column_bytes(st, c));
    appendUtf8(texts, std::string_view(bytes ? bytes : "", bytes ? size : 0));
    return Value::emptyOf(Type::Text);
}

}  // namespace

Value columnValue(sqlite3_stmt* st, int c, ColumnKind kind, std::u16string& texts) {
    const int type = sqlite3_column_type(st, c);
    if (kind == ColumnKind::Plain && type == SQLITE_TEXT) return plainTextApart(st, c, texts);
    return valueTextApart(st, c, kind, type, texts);
}

int bindValue(sqlite3_stmt* st, int index, const Value& v) {
    if (v.isEmpty()) return sqlite3_bind_null(st, index);
    switch (v.type()) {
        case Type::Number:
        case Type::Boolean: {
            const Number n = v.asNumber();
            if (n.isInteger() && n.value.point <= 18) {
                return sqlite3_bind_int64(st, index, integerOf(n));
            }
            // A double when it reads back as the same decimal, the decimal's text otherwise.
            const double d = n.toDouble();
            const std::optional<Number> back = parseDecimal(sqliteText(d));
            if (back && back->value == n.value) return sqlite3_bind_double(st, index, d);
            return bindText(st, index, formatNumber(n));
        }
        case Type::Binary: {
            if (v.asBinary().streams.empty()) return sqlite3_bind_null(st, index);
            const std::string& bytes = v.asBinary().streams.front().bytes;
            return sqlite3_bind_blob64(st, index, bytes.data(), bytes.size(), SQLITE_TRANSIENT);
        }
        default:
            return bindText(st, index, sqlText(v));
    }
}

std::u16string sqlText(const Value& v) {
    switch (v.type()) {
        case Type::Number:
        case Type::Boolean:
            return formatNumber(v.asNumber());
        case Type::Date:
            return formatSqlDate(v.asDate());
        case Type::Time:
            return formatSqlTime(v.asTime());
        case Type::Timestamp:
            return formatSqlTimestamp(v.asTimestamp());
        case Type::Invalid:
            return {};
        default:
            return v.asText().unitsCopy();
    }
}

}  // namespace sim
