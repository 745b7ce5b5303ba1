// Ravelin_ExecuteSQL ( SQLCommand { ; fieldSeparator { ; recordSeparator } } ): a query on the
// calling file, its rows joined into one text by single-unit separators.
//
// There is deliberately no exception frame here: a failing host call leaves the function and
// reaches the host, and the owning pointers release what was made on the way out.
#include <memory>
#include <vector>

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

// One field's text as the host hands it out, with its size. The reference stays valid while the
// rows do, so each field is read once and its units copied after the whole size is known.
struct FieldText {
    const fmx::Text* text;  // null for the stand-in of a row without fields
    fmx::uint32 size;
    bool startsRow;
};

std::vector<FieldText> readFields(const fmx::RowVect& rows) {
    std::vector<FieldText> fields;
    const fmx::uint32 rowCount = rows.Size();
    if (rowCount > 0) fields.reserve(std::size_t{rowCount} * rows.At(0).Size());
    for (fmx::uint32 r = 0; r < rowCount; ++r) {
        const fmx::DataVect& row = rows.At(r);
        const fmx::uint32 fieldCount = row.Size();
        for (fmx::uint32 f = 0; f < fieldCount; ++f) {
            const fmx::Text& text = row.At(f).GetAsText();
            fields.push_back({&text, text.GetSize(), f == 0});
        }
        // A row without fields still takes its record separator.
        if (fieldCount == 0) fields.push_back({nullptr, 0, true});
    }
    return fields;
}

// The joined units, written in place: no unit is set twice.
struct JoinedUnits {
    std::unique_ptr<fmx::uint16[]> units;
    fmx::uint32 size = 0;
};

// Fields and records joined without quoting: a separator inside a value stays as it is. The
// units are gathered here, into a buffer sized once, and handed to the host in one call, so the
// cost stays linear in the result's size whatever the host's own appending costs.
JoinedUnits joinRows(const fmx::RowVect& rows, fmx::uint16 fieldSeparator,
                     fmx::uint16 recordSeparator) {
    const std::vector<FieldText> fields = readFields(rows);
    if (fields.empty()) return {};
    std::size_t total = fields.size() - 1;  // a separator between any two fields
    for (const FieldText& field : fields) total += field.size;
    JoinedUnits joined{std::make_unique_for_overwrite<fmx::uint16[]>(total),
                       static_cast<fmx::uint32>(total)};

    fmx::uint16* out = joined.units.get();
    for (std::size_t i = 0; i < fields.size(); ++i) {
        const FieldText& field = fields[i];
        if (i > 0) *out++ = field.startsRow ? recordSeparator : fieldSeparator;
        if (field.size == 0) continue;
        field.text->GetUnicode(out, 0, field.size);
        out += field.size;
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

    const JoinedUnits joined = joinRows(*rows, fieldSeparator, recordSeparator);
    fmx::TextUniquePtr output;
    output->AssignUnicodeWithLength(joined.units.get(), joined.size);
    result.SetAsText(*output, result.GetLocale(), fmx::kDTText);
    rvl::SetLastError(rvl::kNoError, "No Error Message", env);
    return 0;
}
