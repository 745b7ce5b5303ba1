// Functions about the host around the calculation: open files, their scripts and their SQL. (Get is
// syntax of its own, handled by the parser and evaluator.)
#include <optional>
#include <string>
#include <vector>

#include "sim/calc/builtins.h"
#include "sim/core/paths.h"

namespace sim::calc {

namespace {

Value joinedLines(const std::vector<std::u16string>& lines) {
    std::u16string out;
    for (size_t i = 0; i < lines.size(); ++i) {
        if (i > 0) out.push_back(u'\r');
        out += lines[i];
    }
    return textValue(std::move(out));
}

Value fnDatabaseNames(Args& a) { return joinedLines(a.context().databaseNames()); }

// ScriptNames ( fileName ): an empty name means the calling file; a file that is not open gives
// an empty result without error.
Value fnScriptNames(Args& a) {
    const std::optional<std::vector<std::u16string>> names = a.context().scriptNames(a.units(0));
    return names ? joinedLines(*names) : emptyText();
}

// ExecuteSQL ( sqlQuery ; fieldSeparator ; rowSeparator { ; arguments... } ): an empty separator
// means a comma between fields and a carriage return between rows; the arguments go to the
// query's "?" markers in order. A query that fails gives "?", as FileMaker's does.
Value fnExecuteSql(Args& a) {
    const std::u16string query(a.units(0));
    const std::u16string_view fieldSeparator = a.units(1).empty() ? u"," : a.units(1);
    const std::u16string_view rowSeparator = a.units(2).empty() ? u"\r" : a.units(2);
    std::vector<Value> arguments;
    for (size_t i = 3; i < a.size(); ++i) arguments.push_back(a[i]);
    std::optional<std::u16string> joined =
        a.context().executeSql(query, arguments, fieldSeparator, rowSeparator);
    return joined ? textValue(std::move(*joined)) : questionMark();
}

// ExecuteSQLe: ExecuteSQL that tells why a query failed, "? ERROR: " and the database's
// complaint (FileMaker's own FQL codes and positions are not known to this host).
Value fnExecuteSqle(Args& a) {
    const std::u16string query(a.units(0));
    const std::u16string_view fieldSeparator = a.units(1).empty() ? u"," : a.units(1);
    const std::u16string_view rowSeparator = a.units(2).empty() ? u"\r" : a.units(2);
    std::vector<Value> arguments;
    for (size_t i = 3; i < a.size(); ++i) arguments.push_back(a[i]);
    std::u16string failure;
    std::optional<std::u16string> joined =
        a.context().executeSqlExplained(query, arguments, fieldSeparator, rowSeparator, failure);
    if (joined) return textValue(std::move(*joined));
    return textValue(u"? ERROR: " + (failure.empty() ? u"The query failed." : failure));
}

// ConvertToFileMakerPath ( path ; format ) and ConvertFromFileMakerPath ( fileMakerPath ;
// format ): format 1 (PosixPath) a POSIX path, 2 (WinPath) a Windows path, 3 (URLPath) a file
// URL; a path of another form gives "?".
Value fnConvertToFileMakerPath(Args& a) {
    std::optional<std::u16string> p =
        toFileMakerPath(a.units(0), static_cast<int32_t>(clampCount(a.number(1))));
    return p ? textValue(std::move(*p)) : questionMark();
}

Value fnConvertFromFileMakerPath(Args& a) {
    std::optional<std::u16string> p =
        fromFileMakerPath(a.units(0), static_cast<int32_t>(clampCount(a.number(1))));
    return p ? textValue(std::move(*p)) : questionMark();
}

constexpr Builtin kFunctions[] = {
    {u"converttofilemakerpath", 2, 2, fnConvertToFileMakerPath},
    {u"convertfromfilemakerpath", 2, 2, fnConvertFromFileMakerPath},
    {u"executesqle", 3, -1, fnExecuteSqle},
    {u"executesql", 3, -1, fnExecuteSql},
    {u"databasenames", 0, 0, fnDatabaseNames},
    {u"scriptnames", 1, 1, fnScriptNames},
};

}  // namespace

std::span<const Builtin> hostFunctions() { return kFunctions; }

}  // namespace sim::calc
