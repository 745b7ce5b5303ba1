// A file's SQLite database and the host's SQL on it: typed result values, parameters bound to
// "?" markers, and SQLite's failures mapped to the host's SQL error code.
#pragma once

#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "sim/core/value.h"
#include "sim/session/sql_values.h"

struct sqlite3;
struct sqlite3_stmt;

namespace sim {

// FileMaker's "Error in SQL query syntax"; every failure reported by SQLite becomes this code.
constexpr short kSqlErrorCode = 8310;

class DatabaseError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

class Database {
public:
    // An empty path gives a private in-memory database. An existing file is opened as it is;
    // a missing one is created only when `create` is set. Throws DatabaseError (with SQLite's
    // message) when the path cannot be opened or is not a database.
    explicit Database(const std::string& path = {}, bool create = false);
    ~Database();
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;

    // Runs a script of SQL statements (a seed file). Throws DatabaseError.
    void runScript(const std::string& sql);

    // The current row of a result.
    class Row {
    public:
        Row(sqlite3_stmt* statement, const std::vector<ColumnKind>& kinds)
            : statement_(statement), kinds_(kinds) {}
        int columns() const { return static_cast<int>(kinds_.size()); }
        // Field `c` (0 <= c < columns()).
        Value value(int c) const {
            return columnValue(statement_, c, kinds_[static_cast<std::size_t>(c)]);
        }
        // Field `c` without its text: the units textForm() gives are appended to `texts`
        // instead, for the caller to give back to the value (Value::setTextForm).
        Value value(int c, std::u16string& texts) const {
            return columnValue(statement_, c, kinds_[static_cast<std::size_t>(c)], texts);
        }

    private:
        sqlite3_stmt* statement_;
        const std::vector<ColumnKind>& kinds_;
    };
    // Receives a result as it is read, one row at a time.
    class RowSink {
    public:
        virtual void row(const Row& row) = 0;

    protected:
        ~RowSink() = default;
    };
    // What a statement may do: anything (a plug-in's SQL), or only read (the calculation
    // function, which FileMaker limits to SELECT).
    enum class Access { Any, ReadOnly };
    // Runs one statement with `params` bound to its markers in order; every result row goes to
    // `sink` as it is read. Returns 0, or kSqlErrorCode: SQLite's message is then kept in
    // lastMessage and, when `message` is given, stored there as well (lastMessage may already
    // be another thread's by the time the caller reads it).
    short query(std::u16string_view sql, const std::vector<Value>& params, RowSink& sink,
                Access access = Access::Any, std::string* message = nullptr);
    // Runs one statement as query() does, joining the text forms of its fields into `joined`:
    // fields by `fieldSeparator`, rows by `rowSeparator`, nothing after the last of either.
    short queryText(std::u16string_view sql, const std::vector<Value>& params,
                    std::u16string_view fieldSeparator, std::u16string_view rowSeparator,
                    std::u16string& joined, Access access = Access::Any,
                    std::string* message = nullptr);
    std::string lastMessage() const;

private:
    short queryLocked(std::u16string_view sql, const std::vector<Value>& params, RowSink& sink,
                      Access access);

    struct Closer {
        void operator()(sqlite3* db) const noexcept;
    };
    std::unique_ptr<sqlite3, Closer> db_;
    mutable std::mutex mutex_;  // held for every use of the connection, one statement at a time
    std::string lastMessage_;
};

}  // namespace sim
