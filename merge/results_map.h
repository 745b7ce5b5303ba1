// The expressions one merge has evaluated so far, with their results, so that a template that
// repeats an expression evaluates it once per call. Both sides are kept as UTF-8 and compared byte
// for byte: expressions that differ in a blank or in case are different entries.
#pragma once

#include <map>
#include <string>

#include "host/fmx.h"

class ResultsMap {
public:
    // The answer of find for an expression that is not cached.
    static constexpr int kNotCached = -2348;

    // 0 with `out` replaced by the cached result (which comes back without styles), or
    // kNotCached with `out` untouched.
    int find(const fmx::Text& expression, fmx::Text& out);
    // Caches `value` for `expression` unless it is cached already; an entry is never replaced.
    int add(const fmx::Text& expression, const fmx::Text& value);

private:
    using Results = std::map<std::string, std::string>;
    Results results_;
    Results::iterator last_ = results_.end();  // where the last lookup ended
};
