// Ravelin_MergeText ( text ).
//
// Scanning rules, all deliberate: the closing ">>" is searched from the scan position, not from
// the opening "<<", so a ">>" standing before the next "<<" turns that "<<" into literal text,
// and in a well-formed rest of the template every later span then meets the same fate. Spans do
// not nest, and a "<<" without a later ">>" ends the merging. Each search starts where the last
// span ended, so a template costs time linear in its size.
#include "merge/merge_text.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "fmlib/convert.h"
#include "fmlib/stop.h"
#include "frame/answers.h"
#include "frame/nesting.h"
#include "merge/functions.h"
#include "merge/results_map.h"
#include "merge/unit_words.h"

namespace {

constexpr fmx::uint32 kMarkerSize = 2;

std::u16string unitsOf(const fmx::Text& text) {
    std::u16string units(text.GetSize(), u'\0');
    if (!units.empty()) {
        text.GetUnicode(reinterpret_cast<fmx::unichar16*>(units.data()), 0,
                        static_cast<fmx::uint32>(units.size()));
    }
    return units;
}

// Where the next span's markers stand, searched as fmx::Text::Find would: the first "<<" at or
// after `from`, and the first ">>" at or after `from` as well (not after the "<<"). One pass
// finds both unless the ">>" comes first.
struct Markers {
    std::size_t open;
    std::size_t close;
};
Markers nextMarkers(std::u16string_view units, std::size_t from) {
    constexpr std::size_t npos = std::u16string_view::npos;
    Markers m{npos, npos};
    for (std::size_t i = merge_units::nextAngle(units, from); i + 1 < units.size();) {
        const char16_t u = units[i];
        if (units[i + 1] != u) {
            i = merge_units::nextAngle(units, i + 1);
            continue;
        }
        if (u == u'>') {
            m.close = i;
            break;
        }
        if (m.open == npos) m.open = i;
        // The unit after is '<' as well: no ">>" starts there.
        i = merge_units::nextAngle(units, i + 2);
    }
    if (m.close != npos && m.open == npos) m.open = units.find(u"<<", m.close);
    return m;
}

// One merge: the template as host text and as units, the output and the cache.
class Merge {
public:
    Merge(const fmx::ExprEnv& env, const fmx::Text& source)
        : env_(env), source_(source), units_(unitsOf(source)) {}

    void run() {
        std::size_t p = 0;
        for (;;) {
            const Markers m = nextMarkers(units_, p);
            if (m.open == std::u16string::npos || m.close == std::u16string::npos) break;
            // A ">>" before the next "<<" turns that "<<" into literal text.
            if (m.close <= m.open) {
                p = m.open + kMarkerSize;
                continue;
            }
            appendLiteral(m.open);
            appendEvaluated(m.open + kMarkerSize, m.close);
            p = m.close + kMarkerSize;
            literalFrom_ = p;
        }
        appendLiteral(units_.size());
    }

    const fmx::Text& output() const { return *output_; }

private:
    // The source from the end of the last span up to `end`, styles kept, as one piece.
    void appendLiteral(std::size_t end) {
        if (end > literalFrom_) {
            output_->AppendText(source_, static_cast<fmx::uint32>(literalFrom_),
                                static_cast<fmx::uint32>(end - literalFrom_));
        }
    }

    // The value of the expression from `start` to `end`: from the cache, else evaluated (and then
    // cached). A failing expression stands for itself (styles kept) and is not cached, so it is
    // tried again where it recurs.
    void appendEvaluated(std::size_t start, std::size_t end) {
        const std::u16string_view units(units_.data() + start, end - start);
        // Only units that make a key are cached by units, so a hit needs no test of them.
        if (const fmx::Text* cached = cache_.find(units)) return output_->AppendText(*cached);
        const bool byUnits = ResultsMap::keyedByUnits(units);
        expression_->DeleteText(0);
        expression_->AppendText(source_, static_cast<fmx::uint32>(start),
                                static_cast<fmx::uint32>(end - start));
        std::optional<ResultsMap::Key> key;
        if (!byUnits) {
            key = ResultsMap::keyOf(*expression_);
            if (const fmx::Text* cached = cache_.find(*key)) return output_->AppendText(*cached);
        }
        fmx::DataUniquePtr value;
        if (level_.Evaluate(env_, *expression_, *value) != 0) {
            return output_->AppendText(*expression_);
        }
        const fmx::Text& text = value->GetAsText();
        output_->AppendText(text);
        if (key) {
            cache_.add(*key, text);
        } else {
            cache_.add(units, text);
        }
    }

    // The expressions may call this function again.
    const rvl::CalculationNesting level_;
    const fmx::ExprEnv& env_;
    const fmx::Text& source_;
    const std::u16string units_;
    fmx::TextUniquePtr output_;
    fmx::TextUniquePtr expression_;
    ResultsMap cache_;
    std::size_t literalFrom_ = 0;  // where the literal text not yet appended starts
};

}  // namespace

void PerformMergeText(const fmx::ExprEnv& env, const fmx::DataVect& dataVect, fmx::Data& result) {
    // Ravelin_MergeText answers a call without arguments itself: only a bug gets here without.
    fmlib::StopUnless(dataVect.Size() > 0, "dataVect.Size() > 0", __func__);
    fmx::TextUniquePtr source;
    source->AppendText(dataVect.AtAsText(0));
    Merge merge(env, *source);
    merge.run();
    fmlib::SetResultText(result, merge.output());
}

void body::Ravelin_MergeText(const fmx::ExprEnv& env, const rvl::Arguments& args,
                             fmx::Data& result) {
    if (args.count() < 1) return rvl::AnswerBadParameters("Not enough parameters", env, result);
    PerformMergeText(env, args.vect(), result);
}
