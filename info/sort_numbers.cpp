#include "info/sort_numbers.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <locale>
#include <sstream>
#include <vector>

#include "fmlib/convert.h"
#include "fmlib/text_utils.h"

namespace rvl {

namespace {

constexpr char kReturn = '\r';

// One number a line, empty lines at either end included; a line that does not start with a
// number repeats the one before (0 at first).
std::vector<double> readNumbers(std::string_view lines) {
    std::vector<double> numbers;
    double previous = 0;
    fmlib::eachPiece(
        lines, kReturn,
        [&](std::string_view piece) {
            const std::string line(piece);
            double number = 0;
            if (std::sscanf(line.c_str(), "%lf", &number) == 1) previous = number;
            numbers.push_back(previous);
            return true;
        },
        fmlib::EmptyLastPiece::kKept);
    return numbers;
}

// Ascending, with NaN ("%lf" reads "nan") after every number, so that the order stays strict.
bool ascending(double a, double b) { return !std::isnan(a) && (std::isnan(b) || a < b); }

}  // namespace

std::string sortNumberLines(std::string_view lines) {
    std::vector<double> numbers = readNumbers(lines);
    std::sort(numbers.begin(), numbers.end(), ascending);
    std::ostringstream out;
    out.imbue(std::locale::classic());
    for (double number : numbers) out << number << kReturn;
    return out.str();
}

void SortNumberInFMText(const fmx::Text& list, fmx::Data& result) {
    // One byte per unit in Mac Roman, plus the terminator.
    std::vector<char> bytes(list.GetSize() + std::size_t{1}, '\0');
    list.GetBytes(bytes.data(), static_cast<fmx::uint32>(bytes.size()), 0, fmx::kSize_End,
                  fmx::kEncoding_ASCII_Mac);
    fmlib::SetResultText(result, sortNumberLines(bytes.data()), fmx::kEncoding_ASCII_Mac);
}

}  // namespace rvl
