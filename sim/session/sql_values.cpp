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

std::optional<Value> dateLikeValue(std::u16string_view text, ColumnKind kind) {
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
Value textValue(std::string_view bytes, ColumnKind kind) {
    std::u16string units = fromUtf8(bytes);
    if (kind != ColumnKind::Plain) {
        if (std::optional<Value> v = dateLikeValue(units, kind)) return sqlValue(std::move(*v));
    }
    return Value::text(std::move(units));
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

Value columnValue(sqlite3_stmt* st, int c, ColumnKind kind) {
    switch (sqlite3_column_type(st, c)) {
        case SQLITE_INTEGER:
            return sqlValue(Value::number(static_cast<double>(sqlite3_column_int64(st, c))));
        case SQLITE_FLOAT:
            return sqlValue(Value::number(sqlite3_column_double(st, c)));
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

int bindValue(sqlite3_stmt* st, int index, const Value& v) {
    if (v.isEmpty()) return sqlite3_bind_null(st, index);
    switch (v.type()) {
        case Type::Number:
        case Type::Boolean: {
            const double d = v.asNumber().value;
            if (std::trunc(d) == d && std::fabs(d) < 9.2e18) {
                return sqlite3_bind_int64(st, index, static_cast<sqlite3_int64>(d));
            }
            return sqlite3_bind_double(st, index, d);
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
