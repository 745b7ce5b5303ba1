#include "sim/session/database.h"

#include <sqlite3.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstring>
#include <limits>

#include "sim/session/sql_values.h"

namespace sim {

namespace {

struct StatementFinalizer {
    void operator()(sqlite3_stmt* st) const noexcept { sqlite3_finalize(st); }
};
using Statement = std::unique_ptr<sqlite3_stmt, StatementFinalizer>;

bool onlyBlanksAndSemicolons(const char16_t* p, const char16_t* end) {
    for (; p < end && *p != 0; ++p) {
        if (*p != u' ' && *p != u'\t' && *p != u'\r' && *p != u'\n' && *p != u';') return false;
    }
    return true;
}

bool isWordUnit(char16_t c) {
    return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || (c >= u'0' && c <= u'9') ||
           c == u'_' || c == u'$' || c > 0x7F;
}

bool isBlankUnit(char16_t c) {
    return c == u' ' || c == u'\t' || c == u'\r' || c == u'\n' || c == u'\f' || c == u'\v';
}

bool sameIgnoringCase(std::u16string_view word, std::string_view keyword) {
    if (word.size() != keyword.size()) return false;
    for (std::size_t i = 0; i < word.size(); ++i) {
        const char16_t c = word[i] >= u'a' && word[i] <= u'z' ? word[i] - 32 : word[i];
        if (c != static_cast<char16_t>(keyword[i])) return false;
    }
    return true;
}

// FileMaker's SQL writes date and time constants as DATE '2024-01-31', TIME '13:05:00' and
// TIMESTAMP '2024-01-31 13:05:00'. SQLite has no such literals; the columns hold the same ISO
// text, so the keyword is dropped and the quoted text compares as it is. Quoted texts, quoted
// names and comments are copied untouched.
std::u16string withPlainTemporalLiterals(std::u16string_view sql) {
    std::u16string out;
    out.reserve(sql.size());
    std::size_t i = 0;
    const std::size_t n = sql.size();
    auto copyQuoted = [&](char16_t close) {
        const std::size_t start = i++;
        while (i < n) {
            if (sql[i++] != close) continue;
            if (i < n && sql[i] == close && close != u']') {
                ++i;  // a doubled quote stays inside
                continue;
            }
            break;
        }
        out.append(sql.substr(start, i - start));
    };
    while (i < n) {
        const char16_t c = sql[i];
        if (c == u'\'' || c == u'"' || c == u'`') {
            copyQuoted(c);
        } else if (c == u'[') {
            copyQuoted(u']');
        } else if (c == u'-' && i + 1 < n && sql[i + 1] == u'-') {
            const std::size_t end = std::min(sql.find(u'\n', i), n);
            out.append(sql.substr(i, end - i));
            i = end;
        } else if (c == u'/' && i + 1 < n && sql[i + 1] == u'*') {
            const std::size_t close = sql.find(u"*/", i + 2);
            const std::size_t end = close == std::u16string_view::npos ? n : close + 2;
            out.append(sql.substr(i, end - i));
            i = end;
        } else if (isWordUnit(c)) {
            const std::size_t start = i;
            while (i < n && isWordUnit(sql[i])) ++i;
            const std::u16string_view word = sql.substr(start, i - start);
            std::size_t next = i;
            while (next < n && isBlankUnit(sql[next])) ++next;
            const bool keyword = sameIgnoringCase(word, "DATE") || sameIgnoringCase(word, "TIME") ||
                                 sameIgnoringCase(word, "TIMESTAMP");
            const bool afterDot = start > 0 && sql[start - 1] == u'.';
            if (keyword && !afterDot && next < n && sql[next] == u'\'') {
                i = next;
            } else {
                out.append(word);
            }
        } else {
            out += c;
            ++i;
        }
    }
    return out;
}

}  // namespace

void Database::Closer::operator()(sqlite3* db) const noexcept { sqlite3_close_v2(db); }

Database::Database(const std::string& path, bool create) {
    const std::string target = path.empty() ? std::string(":memory:") : path;
    // Every use of the connection holds mutex_, so SQLite need not lock it again per call.
    int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX;
    if (create || path.empty()) flags |= SQLITE_OPEN_CREATE;
    sqlite3* raw = nullptr;
    const int rc = sqlite3_open_v2(target.c_str(), &raw, flags, nullptr);
    db_.reset(raw);
    if (rc != SQLITE_OK) {
        throw DatabaseError("cannot open database " + path + ": " +
                            (raw ? sqlite3_errmsg(raw) : sqlite3_errstr(rc)));
    }
    // Opening is lazy: reading the schema is what tells a database from any other file.
    char* message = nullptr;
    if (sqlite3_exec(raw, "PRAGMA schema_version", nullptr, nullptr, &message) != SQLITE_OK) {
        std::string why = message ? message : "unknown error";
        sqlite3_free(message);
        throw DatabaseError("cannot open database " + path + ": " + why);
    }
}

Database::~Database() = default;

namespace {

// "line N" of a place in a script, counting line feeds before it.
std::string lineOf(const std::string& sql, const char* at) {
    const auto before = static_cast<std::size_t>(at - sql.data());
    const auto feeds =
        std::count(sql.begin(), sql.begin() + static_cast<std::ptrdiff_t>(before), '\n');
    return "line " + std::to_string(feeds + 1);
}

const char* skipSpace(const char* at, const char* end) {
    while (at < end && std::isspace(static_cast<unsigned char>(*at))) ++at;
    return at;
}

}  // namespace

// Statement by statement, so that a failure can name the line it is on: where SQLite found the
// error, or where the failing statement starts.
void Database::runScript(const std::string& sql) {
    std::lock_guard lock(mutex_);
    const char* at = sql.data();
    const char* const end = sql.data() + sql.size();
    for (;;) {
        at = skipSpace(at, end);
        if (at >= end) return;
        sqlite3_stmt* raw = nullptr;
        const char* tail = nullptr;
        const int rc = sqlite3_prepare_v2(db_.get(), at, static_cast<int>(end - at), &raw, &tail);
        Statement st(raw);
        if (rc != SQLITE_OK) {
            const int offset = sqlite3_error_offset(db_.get());
            const char* where = offset >= 0 && offset < end - at ? at + offset : at;
            throw DatabaseError(lineOf(sql, where) + ": " + sqlite3_errmsg(db_.get()));
        }
        if (!st) return;  // only comments were left
        int step = SQLITE_ROW;
        while (step == SQLITE_ROW) step = sqlite3_step(st.get());
        if (step != SQLITE_DONE) {
            throw DatabaseError(lineOf(sql, at) + ": " + sqlite3_errmsg(db_.get()));
        }
        at = tail;
    }
}

short Database::query(std::u16string_view sql, const std::vector<Value>& params, RowSink& sink,
                      Access access, std::string* message) {
    std::lock_guard lock(mutex_);
    const short error = queryLocked(sql, params, sink, access);
    if (error != 0 && message != nullptr) *message = lastMessage_;
    return error;
}

short Database::queryLocked(std::u16string_view sql, const std::vector<Value>& params,
                            RowSink& sink, Access access) {
    lastMessage_.clear();
    auto fail = [&] {
        lastMessage_ = sqlite3_errmsg(db_.get());
        return kSqlErrorCode;
    };
    if (sql.size() > static_cast<std::size_t>(std::numeric_limits<int>::max() / 2)) {
        lastMessage_ = "query too long";
        return kSqlErrorCode;
    }
    const std::u16string plain = withPlainTemporalLiterals(sql);
    sql = plain;
    sqlite3_stmt* raw = nullptr;
    const void* tail = nullptr;
    const int bytes = static_cast<int>(sql.size() * sizeof(char16_t));
    if (sqlite3_prepare16_v2(db_.get(), sql.data(), bytes, &raw, &tail) != SQLITE_OK) return fail();
    Statement st(raw);
    if (!st) {
        lastMessage_ = "empty query";
        return kSqlErrorCode;
    }
    if (!onlyBlanksAndSemicolons(static_cast<const char16_t*>(tail), sql.data() + sql.size())) {
        lastMessage_ = "more than one statement";
        return kSqlErrorCode;
    }
    if (access == Access::ReadOnly && !sqlite3_stmt_readonly(st.get())) {
        lastMessage_ = "only SELECT may run here";
        return kSqlErrorCode;
    }
    const int markers = sqlite3_bind_parameter_count(st.get());
    for (int i = 0; i < markers && static_cast<std::size_t>(i) < params.size(); ++i) {
        if (bindValue(st.get(), i + 1, params[static_cast<std::size_t>(i)]) != SQLITE_OK) {
            return fail();
        }
    }
    const int columns = sqlite3_column_count(st.get());
    std::vector<ColumnKind> kinds;
    kinds.reserve(static_cast<std::size_t>(columns));
    for (int c = 0; c < columns; ++c)
        kinds.push_back(columnKind(sqlite3_column_decltype(st.get(), c)));
    const Row row(st.get(), kinds);
    for (;;) {
        const int rc = sqlite3_step(st.get());
        if (rc == SQLITE_DONE) return 0;
        if (rc != SQLITE_ROW) return fail();
        sink.row(row);
    }
}

namespace {

class JoinedText final : public Database::RowSink {
public:
    JoinedText(std::u16string_view fieldSeparator, std::u16string_view rowSeparator,
               std::u16string& joined)
        : fieldSeparator_(fieldSeparator), rowSeparator_(rowSeparator), joined_(joined) {}
    void row(const Database::Row& row) override {
        if (rows_++ > 0) joined_ += rowSeparator_;
        for (int c = 0; c < row.columns(); ++c) {
            if (c > 0) joined_ += fieldSeparator_;
            joined_ += row.value(c).textForm().units();
        }
    }

private:
    std::u16string_view fieldSeparator_, rowSeparator_;
    std::u16string& joined_;
    std::size_t rows_ = 0;
};

}  // namespace

short Database::queryText(std::u16string_view sql, const std::vector<Value>& params,
                          std::u16string_view fieldSeparator, std::u16string_view rowSeparator,
                          std::u16string& joined, Access access, std::string* message) {
    joined.clear();
    JoinedText sink(fieldSeparator, rowSeparator, joined);
    const short error = query(sql, params, sink, access, message);
    if (error) joined.clear();
    return error;
}

std::string Database::lastMessage() const {
    std::lock_guard lock(mutex_);
    return lastMessage_;
}

}  // namespace sim
