// The current records of a file's tables, and the fields read from them. A table is a table of
// the file's SQLite database and a record one of its rows, known by its rowid; the found set is
// every record of the table in rowid order, as a file shows them when it opens.
#include <string>

#include "sim/core/encoding.h"
#include "sim/core/text.h"
#include "sim/session/host.h"

namespace sim {

namespace {

// Collects every field of a result.
class Collect final : public Database::RowSink {
public:
    void row(const Database::Row& row) override {
        for (int c = 0; c < row.columns(); ++c) values.push_back(row.value(c));
    }
    std::vector<Value> values;
};

// The fields of a query's result; nullopt when it fails.
std::optional<std::vector<Value>> fetch(Database& db, std::u16string_view sql,
                                        const std::vector<Value>& params = {}) {
    Collect rows;
    if (db.query(sql, params, rows, Database::Access::ReadOnly) != 0) return std::nullopt;
    return std::move(rows.values);
}

// An identifier quoted for SQL; callers quote only names read back from the schema, so that
// SQLite never takes an unknown one for a text constant.
std::u16string quoted(std::u16string_view name) {
    std::u16string out = u"\"";
    for (char16_t c : name) {
        if (c == u'"') out += u'"';
        out += c;
    }
    return out + u"\"";
}

// The schema's own spelling of a table or view (names match ignoring case); empty for none.
std::u16string tableNamed(Database& db, std::u16string_view name) {
    auto rows = fetch(db,
                      u"SELECT name FROM sqlite_master WHERE type IN ('table', 'view') AND "
                      u"name = ? COLLATE NOCASE",
                      {Value::text(std::u16string(name))});
    if (!rows || rows->empty()) return {};
    return (*rows)[0].asText().unitsCopy();
}

std::u16string columnNamed(Database& db, std::u16string_view table, std::u16string_view name) {
    auto rows = fetch(db, u"SELECT name FROM pragma_table_info(?) WHERE name = ? COLLATE NOCASE",
                      {Value::text(std::u16string(table)), Value::text(std::u16string(name))});
    if (!rows || rows->empty()) return {};
    return (*rows)[0].asText().unitsCopy();
}

Value rowidValue(int64_t rowid) { return Value::number(static_cast<double>(rowid)); }

// The first record's rowid, 0 when the table is empty.
int64_t firstRowid(Database& db, std::u16string_view table) {
    auto rows = fetch(db, u"SELECT rowid FROM " + quoted(table) + u" ORDER BY rowid LIMIT 1");
    if (!rows || rows->empty()) return 0;
    return static_cast<int64_t>((*rows)[0].asNumber().toDouble());
}

double countOf(Database& db, std::u16string_view sql, const std::vector<Value>& params = {}) {
    auto rows = fetch(db, sql, params);
    if (!rows || rows->empty()) return 0;
    return (*rows)[0].asNumber().toDouble();
}

}  // namespace

std::string Host::setCurrentRecord(std::u16string_view file, std::u16string_view table,
                                   int64_t rowid) {
    const std::shared_ptr<Database> db = database(file);
    if (!db) return "no open file " + toUtf8(file);
    const std::u16string name = tableNamed(*db, table);
    if (name.empty()) return "no table " + toUtf8(table) + " in " + toUtf8(canonicalFileName(file));
    const double found = countOf(*db, u"SELECT count(*) FROM " + quoted(name) + u" WHERE rowid = ?",
                                 {rowidValue(rowid)});
    if (found < 1) return "no record " + std::to_string(rowid) + " in " + toUtf8(name);
    std::lock_guard lock(mutex_);
    const std::shared_ptr<File> f = findFileLocked(file);
    if (!f) return "no open file " + toUtf8(file);
    f->currentTable = name;
    for (RecordChoice& choice : f->records) {
        if (toLower(choice.table) == toLower(name)) {
            choice = {name, rowid};
            return {};
        }
    }
    f->records.push_back({name, rowid});
    return {};
}

std::vector<Host::RecordChoice> Host::currentRecords(std::u16string_view file) const {
    std::lock_guard lock(mutex_);
    const std::shared_ptr<File> f = findFileLocked(file);
    if (!f) return {};
    std::vector<RecordChoice> out = f->records;
    for (RecordChoice& choice : out) choice.current = choice.table == f->currentTable;
    return out;
}

std::optional<Host::RecordTarget> Host::recordTarget(std::u16string_view file,
                                                     std::u16string_view table) const {
    RecordTarget target;
    {
        std::lock_guard lock(mutex_);
        const std::shared_ptr<File> f = findFileLocked(file);
        if (!f) return std::nullopt;
        target.db = f->db;
        target.table = table.empty() ? f->currentTable : std::u16string(table);
        for (const RecordChoice& choice : f->records) {
            if (toLower(choice.table) == toLower(target.table)) target.rowid = choice.rowid;
        }
    }
    if (target.table.empty() || !target.db) return std::nullopt;
    target.table = tableNamed(*target.db, target.table);
    if (target.table.empty()) return std::nullopt;
    if (target.rowid == 0) target.rowid = firstRowid(*target.db, target.table);
    return target;
}

std::optional<Value> Host::fieldValue(std::u16string_view file, std::u16string_view table,
                                      std::u16string_view field, int repetition) const {
    const std::optional<RecordTarget> target = recordTarget(file, table);
    if (!target) return std::nullopt;
    const std::u16string column = columnNamed(*target->db, target->table, field);
    if (column.empty()) return std::nullopt;
    if (repetition != 1 || target->rowid == 0) return Value::text(std::u16string());
    auto rows =
        fetch(*target->db,
              u"SELECT " + quoted(column) + u" FROM " + quoted(target->table) + u" WHERE rowid = ?",
              {rowidValue(target->rowid)});
    if (!rows) return std::nullopt;
    if (rows->empty()) return Value::text(std::u16string());  // deleted meanwhile
    Value v = std::move((*rows)[0]);
    v.setSqlTextForm(false);  // a field shows its value as calculations do, not in SQL's forms
    return v;
}

bool Host::hasCurrentTableField(std::u16string_view file, std::u16string_view field) const {
    const std::optional<RecordTarget> target = recordTarget(file, {});
    return target && !columnNamed(*target->db, target->table, field).empty();
}

calc::Context::RecordPlace Host::recordPlace(std::u16string_view file) const {
    const std::optional<RecordTarget> target = recordTarget(file, {});
    if (!target) return {};
    calc::Context::RecordPlace place;
    const std::u16string from = u" FROM " + quoted(target->table);
    place.found = countOf(*target->db, u"SELECT count(*)" + from);
    const double exists = countOf(*target->db, u"SELECT count(*)" + from + u" WHERE rowid = ?",
                                  {rowidValue(target->rowid)});
    if (exists < 1) return place;
    place.id = static_cast<double>(target->rowid);
    place.number = countOf(*target->db, u"SELECT count(*)" + from + u" WHERE rowid <= ?",
                           {rowidValue(target->rowid)});
    return place;
}

}  // namespace sim
