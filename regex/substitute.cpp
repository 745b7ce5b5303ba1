// Ravelin_RegExp_Substitute ( text ; searchPattern ; replaceString1 { ; replaceString2 ... } ).
//
// Rules kept on purpose: source text that a match covers after its last replaced group is
// dropped, and the pattern's text after its last ")" is appended once where the substitution
// ends; a match whose group 1 is missing or empty ends all substitution.
//
// The matching runs apart from the host calls: first all matches are found on a thread of its
// own (libstdc++'s matcher recurses per character, so its stack must fit the text), then the
// output is built here from the positions.
#include "regex/substitute.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
// GCC 12 with the address sanitizer sees std::function members of the regex compiler's states
// as maybe uninitialized; they are not.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif
#include <regex>
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic pop
#endif
#include <stdexcept>

#include "fmlib/convert.h"
#include "fmlib/stop.h"
#include "frame/answers.h"
#include "regex/big_stack.h"
#include "regex/functions.h"
#include "regex/memory_budget.h"
#include "regex/pattern_check.h"
#include "regex/stack_estimate.h"

// Not in an anonymous namespace: with internal linkage the compiler folds the matcher's handlers
// into its recursive function, and each level of recursion then takes over twice the stack.
namespace rvl {

// The matcher backtracks, and some patterns take time exponential in the text: (a*)*b spends
// seconds on 16 characters and ages on 30. Every step it takes over the text goes through
// StepCounter, which charges the steps to one budget and gives up when it is spent. Ordinary
// patterns take a few steps per character, so the budget grows with the text and only runaway
// backtracking reaches it (after about a second).
constexpr std::uint64_t kBaseSteps = std::uint64_t{32} << 20;
constexpr std::uint64_t kStepsPerUnit = 64;

class StepBudget {
public:
    explicit StepBudget(std::size_t units) : left_(kBaseSteps + kStepsPerUnit * units) {}
    void take() {
        if (--left_ == 0) spent();
    }

private:
    // Out of line: the matcher's recursive frames stay as small as without the budget.
    [[noreturn]] __attribute__((noinline, cold)) static void spent();
    std::uint64_t left_;
};

void StepBudget::spent() {
    throw std::runtime_error("The pattern takes too long to match on this text.");
}

class StepCounter {
public:
    using iterator_category = std::bidirectional_iterator_tag;
    using value_type = wchar_t;
    using difference_type = std::ptrdiff_t;
    using pointer = const wchar_t*;
    using reference = const wchar_t&;

    StepCounter() = default;
    StepCounter(std::wstring::const_iterator it, StepBudget& budget) : it_(it), budget_(&budget) {}

    reference operator*() const {
        budget_->take();
        return *it_;
    }
    pointer operator->() const { return &**this; }
    StepCounter& operator++() {
        budget_->take();
        ++it_;
        return *this;
    }
    StepCounter operator++(int) {
        StepCounter before = *this;
        ++*this;
        return before;
    }
    StepCounter& operator--() {
        budget_->take();
        --it_;
        return *this;
    }
    StepCounter operator--(int) {
        StepCounter before = *this;
        --*this;
        return before;
    }
    friend bool operator==(const StepCounter& a, const StepCounter& b) { return a.it_ == b.it_; }
    std::wstring::const_iterator base() const { return it_; }

private:
    std::wstring::const_iterator it_{};
    StepBudget* budget_ = nullptr;
};

SubstituteMatches FindSubstituteMatches(const std::wstring& pattern, const std::wstring& source,
                                        unsigned replacements) {
    CheckPatternNumbers(pattern);
    const std::size_t needed = RegexStackBytes(pattern, source.size());
    const bool fits = needed <= kRegexCallLimit;
    // Without the text, the stack only has to hold the compiler (and a refusal is due anyway).
    const std::size_t stack = fits ? needed : RegexStackBytes(pattern, 0);
    if (stack > kRegexCallLimit) throw std::length_error(kPatternTooLarge);
    const RegexMemoryReservation reservation(stack);
    SubstituteMatches found;
    RunOnBigStack(stack, [&] {
        const std::wregex expression(pattern);
        const unsigned marks = expression.mark_count();
        if (marks == 0) return;
        if (!fits) throw std::length_error(kTextTooLong);
        found.groups = std::min(replacements, marks);
        StepBudget budget(source.size());
        const auto begin = source.begin();
        auto at = [&](StepCounter it) { return static_cast<uint32_t>(it.base() - begin); };
        StepCounter from(begin, budget);
        const StepCounter end(source.end(), budget);
        auto flags = std::regex_constants::match_default;
        std::match_results<StepCounter> m;
        while (std::regex_search(from, end, m, expression, flags)) {
            if (!m[1].matched || m[1].first == m[1].second) break;
            // Only a lookahead can capture without the match taking a character; the same match
            // would come back for ever.
            if (m[0].first == m[0].second) break;
            found.spans.push_back(at(m[0].first));
            found.spans.push_back(at(m[0].second));
            for (unsigned k = 1; k <= found.groups; ++k) {
                found.spans.push_back(at(m[k].first));
                found.spans.push_back(at(m[k].second));
            }
            from = m[0].second;
            flags = std::regex_constants::match_prev_avail;
        }
    });
    return found;
}

}  // namespace rvl

namespace fmlib {

void RegExpPerformSubstitute(fmx::Text& output, const fmx::DataVect& dataVect) {
    RegExpPerformSubstitute_Impl(output, dataVect);
}

void RegExpPerformSubstitute_Impl(fmx::Text& output, const fmx::DataVect& dataVect) {
    StopUnless(dataVect.Size() > 2, "dataVect.Size() > 2", "RegExpPerformSubstitute_Impl");
    const fmx::Text& source = dataVect.AtAsText(0);
    const fmx::Text& pattern = dataVect.AtAsText(1);
    const unsigned replacements = dataVect.Size() - 2;
    fmx::CharacterStyleUniquePtr patternStyle;
    pattern.GetStyle(*patternStyle, 0);
    const bool styled = !patternStyle->IsAllDisabled();
    const std::wstring patternUnits = WStringFromFMText(pattern);
    const std::size_t lastClose = patternUnits.rfind(L')');
    // Each wide character is one UTF-16 unit of the pattern.
    const std::u16string trailing =
        lastClose == std::wstring::npos
            ? std::u16string()
            : std::u16string(patternUnits.begin() + lastClose + 1, patternUnits.end());

    const rvl::SubstituteMatches found =
        rvl::FindSubstituteMatches(patternUnits, WStringFromFMText(source), replacements);

    fmx::CharacterStyleUniquePtr matchStyle;
    uint32_t p = 0;
    const std::size_t stride = 2 + 2 * std::size_t{found.groups};
    for (std::size_t m = 0; m + stride <= found.spans.size(); m += stride) {
        const uint32_t* span = &found.spans[m];
        bool replace = true;
        if (styled) {
            source.GetStyle(*matchStyle, span[0]);
            replace = *matchStyle == *patternStyle;
        }
        for (unsigned k = 1; k <= found.groups; ++k) {
            const uint32_t start = span[2 * k], end = span[2 * k + 1];
            // A group that starts before the copy position (a nested one) wraps round to a
            // length that copies the rest of the text, as the host clamps it.
            output.AppendText(source, p, start - p);
            if (replace) {
                output.AppendText(dataVect.AtAsText(k + 1));
            } else {
                output.AppendText(source, start, end - start);
            }
            p = end;
        }
        p = span[1];
    }
    if (!trailing.empty()) {
        fmx::TextUniquePtr literal;
        literal->AssignUnicodeWithLength(reinterpret_cast<const fmx::uint16*>(trailing.c_str()),
                                         static_cast<fmx::uint32>(trailing.size()));
        output.AppendText(*literal);
    }
    output.AppendText(source, p, fmx::kSize_End);
}

}  // namespace fmlib

void body::Ravelin_RegExp_Substitute(const fmx::ExprEnv& env, const rvl::Arguments& args,
                                       fmx::Data& result) {
    if (args.count() < 3) {
            return rvl::AnswerBadParameters("At least three parameters needed", env, result);
        }
        fmx::TextUniquePtr output;
    fmlib::RegExpPerformSubstitute(*output, args.vect());
        fmlib::SetResultText(result, *output);
}
