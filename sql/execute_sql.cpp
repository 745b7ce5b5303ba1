// Ravelin_ExecuteSQL ( SQLCommand { ; fieldSeparator { ; recordSeparator } } ): a query on the
// calling file, its rows joined into one text by single-unit separators.
//
// There is deliberately no exception frame here: a failing host call leaves the function and
// reaches the host, and the owning pointers release what was made on the way out.
#include <algorithm>
#include <limits>
#include <memory>
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

// The joined units, grown without zero-filling what the host is about to overwrite.
class JoinedUnits {
public:
    // Room for `count` more units at the end, to be filled by the caller.
    char16_t* extend(std::size_t count) {
        if (count > capacity_ - size_) grow(count);
        char16_t* at = units_.get() + size_;
        size_ += count;
        return at;
    }
    void push(char16_t unit) { *extend(1) = unit; }
    // Never null, so that an empty result hands the host a real (empty) buffer.
    const char16_t* data() const { return units_ ? units_.get() : &kNoUnits; }
    std::size_t size() const { return size_; }

private:
    void grow(std::size_t count) {
        const std::size_t wanted = std::max({size_ + count, capacity_ * 2, std::size_t{4096}});
        std::unique_ptr<char16_t[]> larger(new char16_t[wanted]);
        std::copy_n(units_.get(), size_, larger.get());
        units_ = std::move(larger);
        capacity_ = wanted;
    }

    static constexpr char16_t kNoUnits = 0;
    std::unique_ptr<char16_t[]> units_;
    std::size_t size_ = 0;
    std::size_t capacity_ = 0;
};

void appendUnits(const fmx::Text& text, JoinedUnits& joined) {
    const fmx::uint32 count = text.GetSize();
    if (count == 0) return;
    text.GetUnicode(reinterpret_cast<fmx::uint16*>(joined.extend(count)), 0, count);
}

// Fields and records joined without quoting: a separator inside a value stays as it is.
void joinRows(const fmx::RowVect& rows, char16_t fieldSeparator, char16_t recordSeparator,
              JoinedUnits& joined) {
    const fmx::uint32 rowCount = rows.Size();
    for (fmx::uint32 r = 0; r < rowCount; ++r) {
        if (r > 0) joined.push(recordSeparator);
        const fmx::DataVect& row = rows.At(r);
        const fmx::uint32 fieldCount = row.Size();
        for (fmx::uint32 f = 0; f < fieldCount; ++f) {
            if (f > 0) joined.push(fieldSeparator);
            // The item's text form, as At ( f ).GetAsText () gives it, in one host call.
            appendUnits(row.AtAsText(f), joined);
        }
    }
    // A host text counts its units in 32 bits.
    if (joined.size() > std::numeric_limits<fmx::uint32>::max()) {
        throw std::length_error("the query's result is too long for a text");
    }
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

    JoinedUnits joined;
    joinRows(*rows, fieldSeparator, recordSeparator, joined);
    // The host's rows are no longer needed: let them go before the joined text is copied.
    rows.reset();
    fmx::TextUniquePtr output;
    output->AssignUnicodeWithLength(reinterpret_cast<const fmx::uint16*>(joined.data()),
                                    static_cast<fmx::uint32>(joined.size()));
    fmlib::SetResultText(result, *output);
    rvl::SetLastError(rvl::kNoError, "No Error Message", env);
    return 0;
}
