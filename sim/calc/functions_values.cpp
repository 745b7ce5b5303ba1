// Value lists: texts whose values are separated by returns (CR, LF, U+2028 or U+2029). A return
// at the very end does not start another value.
#include <algorithm>
#include <cmath>
#include <unordered_set>

#include "sim/calc/builtins.h"
#include "sim/calc/errors.h"
#include "sim/core/text.h"

namespace sim::calc {

namespace {

bool isReturn(char16_t c) { return c == u'\r' || c == u'\n' || c == u'\u2028' || c == u'\u2029'; }

struct ValueSpan {
    uint32_t start;
    uint32_t length;
    uint32_t next;  // after the value's return, or the end of the text
};

std::vector<ValueSpan> splitValues(std::u16string_view s) {
    std::vector<ValueSpan> spans;
    uint32_t start = 0;
    const auto size = static_cast<uint32_t>(s.size());
    for (uint32_t i = 0; i < size; ++i) {
        if (isReturn(s[i])) {
            spans.push_back({start, i - start, i + 1});
            start = i + 1;
        }
    }
    if (start < size) spans.push_back({start, size - start, size});
    return spans;
}

// Values [first, first + count) of t (first from 0, clipped), each ending with a return.
Value valueRange(const Text& t, double first, double count) {
    const std::vector<ValueSpan> spans = splitValues(t.units());
    const double begin = std::max(first, 0.0);
    const double end = std::min(first + count, static_cast<double>(spans.size()));
    if (!(end > begin)) return emptyText();
    const ValueSpan& from = spans[static_cast<size_t>(begin)];
    const ValueSpan& to = spans[static_cast<size_t>(end) - 1];
    Text out;
    out.append(t, from.start, to.next - from.start);
    if (to.next == to.start + to.length) out.append(u"\r");
    return Value::text(std::move(out));
}

Value fnValueCount(Args& a) {
    return Value::number(static_cast<double>(splitValues(a.units(0)).size()));
}

// GetValue ( list ; n ): the nth value without its return.
Value fnGetValue(Args& a) {
    const Text& t = a.text(0);
    const std::vector<ValueSpan> spans = splitValues(t.units());
    const double n = clampCount(a.number(1));
    if (!(n >= 1 && n <= static_cast<double>(spans.size()))) return emptyText();
    const ValueSpan& v = spans[static_cast<size_t>(n) - 1];
    Text out;
    out.setSlice(t, v.start, v.length);
    return Value::text(std::move(out));
}

Value fnLeftValues(Args& a) { return valueRange(a.text(0), 0, clampCount(a.number(1))); }

Value fnRightValues(Args& a) {
    const double count = clampCount(a.number(1));
    const double total = static_cast<double>(splitValues(a.units(0)).size());
    return valueRange(a.text(0), total - count, count);
}

Value fnMiddleValues(Args& a) {
    const double count = clampCount(a.number(2));
    if (count <= 0) return emptyText();
    return valueRange(a.text(0), clampCount(a.number(1)) - 1, count);
}

// FilterValues ( list ; wanted ): the values of list found in wanted (ignoring case), in the
// order of list, each ending with a return.
Value fnFilterValues(Args& a) {
    const std::u16string_view wantedUnits = a.units(1);
    std::unordered_set<std::u16string> wanted;
    for (const ValueSpan& v : splitValues(wantedUnits)) {
        wanted.insert(toLower(wantedUnits.substr(v.start, v.length)));
    }
    const Text& t = a.text(0);
    Text out;
    for (const ValueSpan& v : splitValues(t.units())) {
        if (!wanted.contains(toLower(t.units().substr(v.start, v.length)))) continue;
        out.append(t, v.start, v.length);
        out.append(u"\r");
    }
    return Value::text(std::move(out));
}

// List ( a ; b ; ... ): the non-empty arguments, one per line.
Value fnList(Args& a) {
    Text out;
    for (size_t i = 0; i < a.size(); ++i) {
        const Text& t = a.text(i);
        if (t.empty()) continue;
        if (static_cast<uint64_t>(out.size()) + t.size() + 1 > kMaxTextUnits) raise(kGenericError);
        if (!out.empty()) out.append(u"\r");
        out.append(t);
    }
    return Value::text(std::move(out));
}

constexpr Builtin kFunctions[] = {
    {u"valuecount", 1, 1, fnValueCount},
    {u"getvalue", 2, 2, fnGetValue},
    {u"leftvalues", 2, 2, fnLeftValues},
    {u"rightvalues", 2, 2, fnRightValues},
    {u"middlevalues", 3, 3, fnMiddleValues},
    {u"filtervalues", 2, 2, fnFilterValues},
    {u"list", 1, -1, fnList},
};

}  // namespace

std::span<const Builtin> valueListFunctions() { return kFunctions; }

}  // namespace sim::calc
