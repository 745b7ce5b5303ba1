// Functions about the host around the calculation: open files and their scripts. (Get is
// syntax of its own, handled by the parser and evaluator.)
#include <optional>

#include "sim/calc/builtins.h"

namespace sim::calc {

namespace {

Value joinedLines(const std::vector<std::u16string>& lines) {
    std::u16string out;
    for (size_t i = 0; i < lines.size(); ++i) {
        if (i > 0) out.push_back(u'\r');
        out += lines[i];
    }
    return textValue(std::move(out));
}

Value fnDatabaseNames(Args& a) { return joinedLines(a.context().databaseNames()); }

// ScriptNames ( fileName ): an empty name means the calling file; a file that is not open gives
// an empty result without error.
Value fnScriptNames(Args& a) {
    const std::optional<std::vector<std::u16string>> names = a.context().scriptNames(a.units(0));
    return names ? joinedLines(*names) : emptyText();
}

constexpr Builtin kFunctions[] = {
    {u"databasenames", 0, 0, fnDatabaseNames},
    {u"scriptnames", 1, 1, fnScriptNames},
};

}  // namespace

std::span<const Builtin> hostFunctions() { return kFunctions; }

}  // namespace sim::calc
