#include "sim/session/sql_values.h"

#include <sqlite3.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>

#include "sim/encoding.h"

namespace sim {

namespace {

bool contains(const std::string& hay, const char* needle) {
    return hay.find(needle) != std::string::npos;
}

// SQLite keeps text as UTF-8; reading it so and widening here spares SQLite's own UTF-16 copy.
// Most stored text is ASCII, which widens unit for byte.
bool isAscii(std::string_view bytes) {
    unsigned char any = 0;
    for (char b : bytes) any |= static_cast<unsigned char>(b);
    return any < 0x80;
}

std::u16string unitsOfUtf8(std::string_view bytes) {
    if (!isAscii(bytes)) return fromUtf8(bytes);
    return std::u16string(bytes.begin(), bytes.end());
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

// Short ASCII text in a date-like column (the usual ISO forms) is read from a buffer on the
// stack: only text that stays text needs a string of its own.
Value textColumn(std::string_view bytes, ColumnKind kind) {
    if (kind == ColumnKind::Plain) return Value::text(unitsOfUtf8(bytes));
    char16_t buffer[40];
    if (bytes.size() <= std::size(buffer) && isAscii(bytes)) {
        std::copy(bytes.begin(), bytes.end(), buffer);
        const std::u16string_view units(buffer, bytes.size());
        if (std::optional<Value> v = dateLikeValue(units, kind)) return std::move(*v);
        return Value::text(std::u16string(units));
    }
    std::u16string units = unitsOfUtf8(bytes);
    if (std::optional<Value> v = dateLikeValue(units, kind)) return std::move(*v);
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

namespace {

// The value of column `c`, not yet marked as coming from SQL. Built in place and marked once, since
// a large result makes one per field.
Value unmarkedColumnValue(sqlite3_stmt* st, int c, ColumnKind kind) {
    switch (sqlite3_column_type(st, c)) {
        case SQLITE_INTEGER:
            return Value::number(static_cast<double>(sqlite3_column_int64(st, c)));
        case SQLITE_FLOAT:
            return Value::number(sqlite3_column_double(st, c));
        case SQLITE_TEXT: {
            const auto* bytes = reinterpret_cast<const char*>(sqlite3_column_text(st, c));
            const auto size = static_cast<std::size_t>(sqlite3_column_bytes(st, c));
            return textColumn(std::string_view(bytes ? bytes : "", bytes ? size : 0), kind);
        }
        case SQLITE_BLOB: {
            Binary b;
            const auto* bytes = static_cast<const char*>(sqlite3_column_blob(st, c));
            const auto size = static_cast<std::size_t>(sqlite3_column_bytes(st, c));
            b.streams.push_back({{'F', 'I', 'L', 'E'}, std::string(bytes ? bytes : "", size)});
            return Value::binary(std::move(b));
        }
        default:
            return Value::text(std::u16string());
    }
}

}  // namespace

Value columnValue(sqlite3_stmt* st, int c, ColumnKind kind) {
    Value v = unmarkedColumnValue(st, c, kind);
    v.setSqlTextForm(true);
    return v;
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
            return v.asText().units();
    }
}

}  // namespace sim
