// Ravelin_ExecuteSQL ( SQLCommand { ; fieldSeparator { ; recordSeparator } } ): a query on the
// calling file, its rows joined into one text by single-unit separators.
//
// There is deliberately no exception frame here: a failing host call leaves the function and
// reaches the host, and the owning pointers release what was made on the way out.
#include <string>

#include "fmlib/convert.h"
#include "frame/functions.h"
#include "frame/last_error.h"
#include "host/fmx.h"

namespace {

constexpr fmx::uint16 kDefaultFieldSeparator = 0x0009;   // tab
constexpr fmx::uint16 kDefaultRecordSeparator = 0x000D;  // carriage return

// Only the first UTF-16 unit of a separator argument counts; an empty one keeps `separator`.
void readSeparator(const fmx::Text& argument, fmx::uint16& separator) {
    if (argument.GetSize() > 0) argument.GetUnicode(&separator, 0, 1);
}

// Copies the text's units to the end of `out` (only unstyled values come out of SQL).
void appendUnits(const fmx::Text& text, std::u16string& out) {
    const fmx::uint32 size = text.GetSize();
    if (size == 0) return;
    const std::size_t at = out.size();
    out.resize(at + size);
    text.GetUnicode(reinterpret_cast<fmx::uint16*>(out.data() + at), 0, size);
}

// Fields and records joined without quoting: a separator inside a value stays as it is. The
// units are gathered here and handed to the host once, so the cost stays linear in the result's
// size whatever the host's own appending costs.
std::u16string joinRows(const fmx::RowVect& rows, char16_t fieldSeparator,
                        char16_t recordSeparator) {
    std::u16string joined;
    const fmx::uint32 rowCount = rows.Size();
    for (fmx::uint32 r = 0; r < rowCount; ++r) {
        if (r > 0) joined.push_back(recordSeparator);
        const fmx::DataVect& row = rows.At(r);
        const fmx::uint32 fieldCount = row.Size();
        for (fmx::uint32 f = 0; f < fieldCount; ++f) {
            if (f > 0) joined.push_back(fieldSeparator);
            appendUnits(row.At(f).GetAsText(), joined);
        }
    }
    return joined;
}

}  // namespace

fmx::errcode Ravelin_ExecuteSQL(short, const fmx::ExprEnv& env, const fmx::DataVect& args,
                                fmx::Data& result) {
    const fmx::uint32 count = args.Size();
    if (count == 0) return 0;

    fmx::uint16 fieldSeparator = kDefaultFieldSeparator;
    fmx::uint16 recordSeparator = kDefaultRecordSeparator;
    if (count >= 3) readSeparator(args.AtAsText(2), recordSeparator);
    if (count >= 2) readSeparator(args.AtAsText(1), fieldSeparator);

    // An empty file name means the calling file; the query has no bound parameters.
    const fmx::TextUniquePtr fileName;
    const fmx::DataVectUniquePtr parameters;
    fmx::RowVectUniquePtr rows;
    const fmx::errcode error = env.ExecuteFileSQL(args.AtAsText(0), *fileName, *parameters, *rows);
    if (error != 0) {
        rvl::SetLastError(error, "SQL Error", env);
        fmlib::FMErrCode2FMData(error, result);
        return 0;
    }

    const std::u16string joined = joinRows(*rows, fieldSeparator, recordSeparator);
    fmx::TextUniquePtr output;
    output->AssignUnicodeWithLength(reinterpret_cast<const fmx::uint16*>(joined.data()),
                                    static_cast<fmx::uint32>(joined.size()));
    result.SetAsText(*output, result.GetLocale(), fmx::kDTText);
    rvl::SetLastError(rvl::kNoError, "No Error Message", env);
    return 0;
}
