// Conversions between the host's values and SQLite's: what a result column becomes, and how a
// parameter is bound.
#pragma once

#include <string>

#include "sim/core/value.h"

struct sqlite3_stmt;

namespace sim {

// What a column's declared type asks for: columns declared DATE, TIME or TIMESTAMP (also
// DATETIME) hold ISO text that becomes a date, time or timestamp.
enum class ColumnKind { Plain, Date, Time, Timestamp };
ColumnKind columnKind(const char* declaredType);

// Column `c` of the current row, marked with SQL's text forms: integers and reals as numbers,
// ISO text of a date-like column as that type (text it cannot read stays text), text as text,
// NULL as empty text, blobs as containers.
Value columnValue(sqlite3_stmt* st, int c, ColumnKind kind);
// The same value without its text: the units its textForm() gives are appended to `texts`.
Value columnValue(sqlite3_stmt* st, int c, ColumnKind kind, std::u16string& texts);

// Binds a parameter: an empty value as NULL, numbers as integers when whole, dates, times and
// timestamps in their SQL text forms, containers as the bytes of their first stream.
int bindValue(sqlite3_stmt* st, int index, const Value& v);

// A value's text in SQL results: numbers with '.' and no grouping, date-like values in the SQL
// forms, everything else its plain text.
std::u16string sqlText(const Value& v);

}  // namespace sim
