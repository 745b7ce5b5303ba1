// Conversions between the host's values and SQLite's: what a result column becomes, and how a
// parameter is bound.
#pragma once

#include <memory_resource>
#include <string>

#include "sim/core/value.h"

struct sqlite3_stmt;

namespace sim {

// What a column's declared type asks for: columns declared DATE, TIME or TIMESTAMP (also
// DATETIME) hold ISO text that becomes a date, time or timestamp.
enum class ColumnKind { Plain, Date, Time, Timestamp };
ColumnKind columnKind(const char* declaredType);

// One field of a result row: the payload of its value and its text (the text form, for a value
// that is not text), made together; Value::fromSqlField makes the value.
using SqlCell = Value::SqlField;

// Column `c` of the current row: integers and reals as numbers, ISO text of a date-like column
// as that type (text it cannot read stays text), text as text, NULL as empty text, blobs as
// containers. The units of its text are kept in `arena` (the heap when null), which must outlive
// them.
SqlCell columnCell(sqlite3_stmt* st, int c, ColumnKind kind, std::pmr::memory_resource* arena);

// Binds a parameter: an empty value as NULL, numbers as integers when whole, dates, times and
// timestamps in their SQL text forms, containers as the bytes of their first stream.
int bindValue(sqlite3_stmt* st, int index, const Value& v);

// A value's text in SQL results: numbers with '.' and no grouping, date-like values in the SQL
// forms, everything else its plain text.
std::u16string sqlText(const Value& v);

}  // namespace sim
