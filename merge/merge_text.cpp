// Ravelin_MergeText ( text ).
//
// Scanning rules, all deliberate: the closing ">>" is searched from the scan position, not from
// the opening "<<", so a ">>" standing before the next "<<" turns that "<<" into literal text,
// and in a well-formed rest of the template every later span then meets the same fate. Spans do
// not nest, and a "<<" without a later ">>" ends the merging. Each search starts where the last
// span ended, so a template costs time linear in its size.
#include "merge/merge_text.h"

#include "fmlib/convert.h"
#include "fmlib/stop.h"
#include "frame/answers.h"
#include "frame/nesting.h"
#include "merge/functions.h"
#include "merge/results_map.h"

namespace {

constexpr fmx::uint32 kNotFound = 0xFFFFFFFF;
constexpr fmx::uint32 kMarkerSize = 2;

// Appends the value of one expression: from the cache, else evaluated (and then cached). A
// failing expression stands for itself and is not cached, so it is tried again where it recurs.
void appendEvaluated(const rvl::CalculationNesting& level, const fmx::ExprEnv& env,
                     const fmx::Text& expression, ResultsMap& cache, fmx::Text& output) {
    fmx::TextUniquePtr cached;
    if (cache.find(expression, *cached) == 0) {
        output.AppendText(*cached);
        return;
    }
    fmx::DataUniquePtr value;
    if (level.Evaluate(env, expression, *value) != 0) {
        output.AppendText(expression);
        return;
    }
    const fmx::Text& text = value->GetAsText();
    output.AppendText(text);
    cache.add(expression, text);
}

}  // namespace

void PerformMergeText(const fmx::ExprEnv& env, const fmx::DataVect& dataVect, fmx::Data& result) {
    // Ravelin_MergeText answers a call without arguments itself: only a bug gets here without.
    fmlib::StopUnless(dataVect.Size() > 0, "dataVect.Size() > 0", __func__);
    // The expressions may call this function again.
    const rvl::CalculationNesting level;
    fmx::TextUniquePtr source;
    source->AppendText(dataVect.AtAsText(0));
    fmx::TextUniquePtr output;
    fmx::TextUniquePtr expression;
    ResultsMap cache;
    const fmx::TextUniquePtr open("<<");
    const fmx::TextUniquePtr close(">>");

    fmx::uint32 p = 0;
    for (;;) {
        const fmx::uint32 o = source->Find(*open, p);
        if (o == kNotFound) break;
        const fmx::uint32 c = source->Find(*close, p);
        if (c == kNotFound) break;
        if (c <= o) {
            output->AppendText(*source, p, o + kMarkerSize - p);
            p = o + kMarkerSize;
            continue;
        }
        const fmx::uint32 start = o + kMarkerSize;
        expression->DeleteText(0);
        expression->AppendText(*source, start, c - start);
        output->AppendText(*source, p, o - p);
        appendEvaluated(level, env, *expression, cache, *output);
        p = c + kMarkerSize;
    }
    output->AppendText(*source, p, fmx::kSize_End);
    fmlib::SetResultText(result, *output);
}

void body::Ravelin_MergeText(const fmx::ExprEnv& env, const rvl::Arguments& args,
                             fmx::Data& result) {
    if (args.count() < 1) return rvl::AnswerBadParameters("Not enough parameters", env, result);
    PerformMergeText(env, args.vect(), result);
}
