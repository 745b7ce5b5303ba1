#include "merge/results_map.h"

#include "fmlib/convert.h"

int ResultsMap::find(const fmx::Text& expression, fmx::Text& out) {
    last_ = results_.find(fmlib::StringFromFmText(expression));
    if (last_ == results_.end()) return kNotCached;
    fmlib::copyToFMText(last_->second, out);
    return 0;
}

int ResultsMap::add(const fmx::Text& expression, const fmx::Text& value) {
    results_.try_emplace(fmlib::StringFromFmText(expression), fmlib::StringFromFmText(value));
    return 0;
}
