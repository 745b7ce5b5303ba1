// Ravelin_RegExp_Substitute (and Ravelin_RegExp_PatternCount on the same pattern and text) on
// random patterns, texts, styles and replacement counts, through the function pointers the host
// calls. Input: one byte of settings, then the pattern up to the first line feed, then the text.
// Nothing may crash; the substitution either answers text or reports an error.
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/fuzz_host.h"
#include "host/fmx.h"
#include "sim/core/encoding.h"
#include "sim/core/handles.h"
#include "sim/session/env.h"
#include "sim/core/text.h"

namespace {

sim::CharStyle bold() {
    sim::CharStyle s;
    s.face = 1;
    s.faceMask = 1;
    return s;
}

sim::CharStyle red() {
    sim::CharStyle s;
    s.color = {255, 0, 0, 255};
    s.colorOn = true;
    return s;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    static const fmx::ExtPluginType substitute =
        fuzz::session().host().findFunction(u"Ravelin_RegExp_Substitute")->function;
    static const fmx::ExtPluginType count =
        fuzz::session().host().findFunction(u"Ravelin_RegExp_PatternCount")->function;
    if (size == 0) return 0;
    const uint8_t settings = data[0];
    const std::string_view rest = fuzz::bytesOf(data + 1, size - 1);
    const std::size_t split = rest.find('\n');
    const std::string_view patternBytes = rest.substr(0, split);
    const std::string_view textBytes =
        split == std::string_view::npos ? std::string_view() : rest.substr(split + 1);

    sim::Text pattern(sim::fromUtf8(patternBytes));
    sim::Text text(sim::fromUtf8(textBytes));
    if ((settings & 1) && !pattern.empty()) pattern.setStyle(bold(), 0, 1);
    // Every other run of five characters bold, some red.
    if (settings & 2) {
        for (uint32_t at = 0; at < text.size(); at += 10) text.setStyle(bold(), at, 5);
    }
    if (settings & 4) text.setStyle(red(), text.size() / 2, text.size());

    const char16_t* const replacements[] = {u"R", u"", u"$1", u"😀", u"\r", u"((("};
    std::vector<sim::Value> args{sim::Value::text(text), sim::Value::text(pattern)};
    const int replacementCount = 1 + (settings >> 3) % 6;
    for (int i = 0; i < replacementCount; ++i) {
        sim::Text r(replacements[i]);
        if (settings & 0x80) r.setStyle(red(), 0, r.size());
        args.push_back(sim::Value::text(r));
    }
    sim::Env env;
    sim::DataHandle result = sim::makeData();
    substitute(13, env.handleRef(), *sim::makeDataVect(args), *result);
    args.resize(2);
    count(14, env.handleRef(), *sim::makeDataVect(args), *result);
    return 0;
}
