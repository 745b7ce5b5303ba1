// Ravelin_RegExp_PatternCount ( text ; searchPattern ): how many non-overlapping matches, with
// ICU's regular expressions and their rules for empty matches (after an empty match the search
// goes on one code point further), answered as text.
//
// Limits: both arguments are cut at 1023 bytes, which keeps ICU's backtracking stack (8 MB by
// default, kept) far from its limit. A catastrophic pattern is stopped when the whole count has
// taken kCountDeadline of wall-clock time; a hit limit answers a text saying which limit it was,
// instead of a count.
#include <unicode/uregex.h>

#include <chrono>
#include <cstddef>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "fmlib/convert.h"
#include "frame/answers.h"
#include "regex/functions.h"

namespace {

// Each argument is read into this many bytes, the terminator included.
constexpr std::size_t kArgumentBuffer = 1024;
using Clock = std::chrono::steady_clock;
constexpr auto kCountDeadline = std::chrono::seconds(1);

// ICU calls this every few thousand steps of its matcher; false stops the match
// (U_REGEX_STOPPED_BY_CALLER). A clock, not ICU's own time limit: that one counts steps whose
// length depends on the machine, and it restarts at every match.
UBool beforeDeadline(const void* context, int32_t) {
    return Clock::now() < *static_cast<const Clock::time_point*>(context);
}

std::u16string utf16Of(const std::string& utf8) {
    return fmlib::Utf16FromUtf8(utf8, fmlib::BrokenUtf8::kIcu);
}

struct RegexCloser {
    void operator()(URegularExpression* re) const { uregex_close(re); }
};

std::string patternCount(const std::string& text, const std::string& pattern) {
    const std::u16string patternUnits = utf16Of(pattern);
    const std::u16string textUnits = utf16Of(text);
    UErrorCode status = U_ZERO_ERROR;
    UParseError where;
    // An empty pattern is refused like any invalid one (ICU's length check).
    const std::unique_ptr<URegularExpression, RegexCloser> re(uregex_open(
        patternUnits.data(), static_cast<int32_t>(patternUnits.size()), 0, &where, &status));
    if (U_FAILURE(status)) return "The value \u201C" + pattern + "\u201D is invalid.";
    uregex_setText(re.get(), textUnits.data(), static_cast<int32_t>(textUnits.size()), &status);
    const Clock::time_point deadline = Clock::now() + kCountDeadline;
    uregex_setMatchCallback(re.get(), beforeDeadline, &deadline, &status);
    long count = 0;
    while (U_SUCCESS(status) && uregex_findNext(re.get(), &status)) ++count;
    if (status == U_REGEX_STOPPED_BY_CALLER)
        return "The pattern takes too long to match on this text.";
    if (status == U_REGEX_STACK_OVERFLOW) return "The pattern needs too much memory on this text.";
    if (U_FAILURE(status)) throw std::bad_alloc();
    return std::to_string(count);
}

}  // namespace

fmx::errcode body::Ravelin_RegExp_PatternCount(const fmx::ExprEnv& env, const rvl::Arguments& args,
                                               fmx::Data& result) {
    if (args.count() < 2) {
        rvl::AnswerBadParameters("At least two parameters needed", env, result);
        return 0;
    }
    const std::string answer = patternCount(fmlib::NativeBytesCut(args.text(0), kArgumentBuffer),
                                            fmlib::NativeBytesCut(args.text(1), kArgumentBuffer));
    fmlib::SetResultText(result, answer, fmx::kEncoding_Native);
    return 0;
}
