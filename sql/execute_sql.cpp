// Ravelin_ExecuteSQL ( SQLCommand { ; fieldSeparator { ; recordSeparator } } ): a query on the
// calling file, its rows joined into one text by single-unit separators.
//
// There is deliberately no exception frame here: a failing host call leaves the function and
// reaches the host, and the owning pointers release what was made on the way out.
#include <algorithm>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <stdexcept>

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

// The joined units, gathered in one pass: each field is read while the host's objects for it are
// still in the cache, and copied once more only when the buffer grows (at most doubling, so the
// cost stays linear in the result's size).
class JoinedUnits {
public:
    void append(fmx::uint16 unit) {
        reserve(1);
        units_[size_++] = unit;
    }
    void append(const fmx::Text& text) {
        const fmx::uint32 count = text.GetSize();
        if (count == 0) return;
        reserve(count);
        text.GetUnicode(units_.get() + size_, 0, count);
        size_ += count;
    }
    // Room for `total` units in all, so that a good guess spares the copies of growing. Only a
    // guess: when that much memory cannot be had, the buffer grows as the units come.
    void expect(std::size_t total) {
        if (total <= capacity_) return;
        try {
            grow(total);
        } catch (const std::bad_alloc&) {
        }
    }
    std::size_t size() const { return size_; }
    const fmx::uint16* data() const {
        static constexpr fmx::uint16 kNone = 0;
        return units_ ? units_.get() : &kNone;  // never a null pointer to the host
    }

private:
    void reserve(std::size_t more) {
        if (more > capacity_ - size_) grow(size_ + more);
    }
    void grow(std::size_t needed) {
        // A host text counts its units in 32 bits.
        constexpr std::size_t kMaxUnits = std::numeric_limits<fmx::uint32>::max();
        if (needed > kMaxUnits) {
            throw std::length_error("the query's result is too long for a text");
        }
        const std::size_t capacity =
            std::min(std::max({needed, 2 * capacity_, kFirstCapacity}), kMaxUnits);
        auto units = std::make_unique_for_overwrite<fmx::uint16[]>(capacity);
        if (size_ > 0) std::memcpy(units.get(), units_.get(), size_ * sizeof(fmx::uint16));
        units_ = std::move(units);
        capacity_ = capacity;
    }

    static constexpr std::size_t kFirstCapacity = 256;
    std::unique_ptr<fmx::uint16[]> units_;
    std::size_t size_ = 0;
    std::size_t capacity_ = 0;
};

// Rows of a result tend to be alike, so the rows read so far size the buffer for all: after the
// 1st, 16th, 256th, 4096th and 65536th row, each time while growing still copies little.
bool isSizingRow(fmx::uint32 r) { return r == 0 || r == 15 || r == 255 || r == 4095 || r == 65535; }

// The units that `rowCount` rows take when they are like the first `rowsRead` (which took
// `unitsRead`), with a quarter more for rows that grow (as ids and counters do).
std::size_t projectedSize(std::size_t unitsRead, std::size_t rowsRead, std::size_t rowCount) {
    const double perRow = static_cast<double>(unitsRead + 1) / static_cast<double>(rowsRead);
    return static_cast<std::size_t>(std::min(perRow * 1.25 * static_cast<double>(rowCount), 4e9));
}

// Fields and records joined without quoting: a separator inside a value stays as it is. The
// units go to a buffer handed to the host in one call, so the cost stays linear in the result's
// size whatever the host's own appending costs.
JoinedUnits joinRows(const fmx::RowVect& rows, fmx::uint16 fieldSeparator,
                     fmx::uint16 recordSeparator) {
    JoinedUnits joined;
    const fmx::uint32 rowCount = rows.Size();
    for (fmx::uint32 r = 0; r < rowCount; ++r) {
        if (r > 0) joined.append(recordSeparator);
        const fmx::DataVect& row = rows.At(r);
        const fmx::uint32 fieldCount = row.Size();
        for (fmx::uint32 f = 0; f < fieldCount; ++f) {
            if (f > 0) joined.append(fieldSeparator);
            joined.append(row.At(f).GetAsText());
        }
        if (isSizingRow(r)) joined.expect(projectedSize(joined.size(), r + 1, rowCount));
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
    output->AssignUnicodeWithLength(joined.data(), static_cast<fmx::uint32>(joined.size()));
    result.SetAsText(*output, result.GetLocale(), fmx::kDTText);
    rvl::SetLastError(rvl::kNoError, "No Error Message", env);
    return 0;
}
