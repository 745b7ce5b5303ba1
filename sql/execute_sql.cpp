// Ravelin_ExecuteSQL ( SQLCommand { ; fieldSeparator { ; recordSeparator } } ): a query on the
// calling file, its rows joined into one text by single-unit separators.
//
// There is deliberately no exception frame here: a failing host call leaves the function and
// reaches the host, and the owning pointers release what was made on the way out.
#include <limits>
#include <stdexcept>
#include <string>

#include "fmlib/convert.h"
#include "frame/answers.h"
#include "frame/last_error.h"
#include "sql/functions.h"

namespace {

constexpr char16_t kDefaultFieldSeparator = u'\t';
constexpr char16_t kDefaultRecordSeparator = u'\r';

// Only the first UTF-16 unit of a separator argument counts; an empty one keeps `separator`.
void readSeparator(const fmx::Text& argument, char16_t& separator) {
    if (argument.GetSize() == 0) return;
    fmx::uint16 unit = 0;
    argument.GetUnicode(&unit, 0, 1);
    separator = unit;
}

void appendUnits(const fmx::Text& text, std::u16string& joined) {
    const fmx::uint32 count = text.GetSize();
    if (count == 0) return;
    const std::size_t at = joined.size();
    joined.resize(at + count);
    text.GetUnicode(reinterpret_cast<fmx::uint16*>(joined.data() + at), 0, count);
}

// Fields and records joined without quoting: a separator inside a value stays as it is.
std::u16string joinRows(const fmx::RowVect& rows, char16_t fieldSeparator,
                        char16_t recordSeparator) {
    std::u16string joined;
    const fmx::uint32 rowCount = rows.Size();
    for (fmx::uint32 r = 0; r < rowCount; ++r) {
        if (r > 0) joined += recordSeparator;
        const fmx::DataVect& row = rows.At(r);
        const fmx::uint32 fieldCount = row.Size();
        for (fmx::uint32 f = 0; f < fieldCount; ++f) {
            if (f > 0) joined += fieldSeparator;
            appendUnits(row.At(f).GetAsText(), joined);
        }
    }
    // A host text counts its units in 32 bits.
    if (joined.size() > std::numeric_limits<fmx::uint32>::max()) {
        throw std::length_error("the query's result is too long for a text");
    }
    return joined;
}

}  // namespace

fmx::errcode body::Ravelin_ExecuteSQL(const fmx::ExprEnv& env, const rvl::Arguments& args,
                                      fmx::Data& result) {
    const fmx::uint32 count = args.count();
    if (count == 0) return 0;

    char16_t fieldSeparator = kDefaultFieldSeparator;
    char16_t recordSeparator = kDefaultRecordSeparator;
    if (count >= 3) readSeparator(args.text(2), recordSeparator);
    if (count >= 2) readSeparator(args.text(1), fieldSeparator);

    // An empty file name means the calling file; the query has no bound parameters.
    const fmx::TextUniquePtr fileName;
    const fmx::DataVectUniquePtr parameters;
    fmx::RowVectUniquePtr rows;
    const fmx::errcode error = env.ExecuteFileSQL(args.text(0), *fileName, *parameters, *rows);
    if (error != 0) {
        rvl::AnswerError(error, "SQL Error", env, result);
        return 0;
    }

    const std::u16string joined = joinRows(*rows, fieldSeparator, recordSeparator);
    fmx::TextUniquePtr output;
    output->AssignUnicodeWithLength(reinterpret_cast<const fmx::uint16*>(joined.c_str()),
                                    static_cast<fmx::uint32>(joined.size()));
    fmlib::SetResultText(result, *output);
    rvl::SetLastError(rvl::kNoError, "No Error Message", env);
    return 0;
}
