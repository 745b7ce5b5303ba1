#include "sim/calc/builtins.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <unordered_map>

#include "sim/calc/errors.h"
#include "sim/calc/evaluator.h"
#include "sim/core/encoding.h"

namespace sim::calc {

Args::Args(Evaluator& evaluator, std::vector<Value>& values)
    : evaluator_(evaluator), values_(values), texts_(values.size()) {}

const Text& Args::text(size_t i) {
    if (values_[i].type() == Type::Text) return values_[i].textValue();
    if (!texts_[i]) texts_[i] = values_[i].asText();
    return *texts_[i];
}

double Args::number(size_t i) const {
    const double d = values_[i].asNumber().toDouble();
    return std::isfinite(d) ? d : 0;
}

int Args::precision() const { return evaluator_.precision(); }

bool Args::emptyNumber(size_t i) const { return values_[i].asNumber().empty; }

Context& Args::context() { return evaluator_.context(); }

namespace {

using Table = std::unordered_map<std::u16string_view, const Builtin*>;

Table buildTable() {
    Table table;
    for (auto family : {logicalFunctions(), textFunctions(), wordFunctions(), valueListFunctions(),
                        numberFunctions(), dateFunctions(), styleFunctions(), hostFunctions(),
                        jsonFunctions(), encodingFunctions(), fieldFunctions(), cryptoFunctions(),
                        textCodecFunctions()}) {
        for (const Builtin& b : family) table.emplace(b.name, &b);
    }
    for (auto family : {aggregateFunctions(), financialFunctions()}) {
        for (const Builtin& b : family) table.emplace(b.name, &b);
    }
    return table;
}

// The calculation constants of the text style functions and of JSONSetElement. HighlightYellow
// (4096) shares its value with the Shadow face bit, so a highlighted character carries face bit
// 4096.
const std::unordered_map<std::u16string_view, double>& constants() {
    static const std::unordered_map<std::u16string_view, double> table{
        {u"plain", 0},
        {u"strikethrough", 1},
        {u"smallcaps", 2},
        {u"superscript", 4},
        {u"subscript", 8},
        {u"uppercase", 16},
        {u"lowercase", 32},
        {u"titlecase", 48},
        {u"wordunderline", 64},
        {u"doubleunderline", 128},
        {u"bold", 256},
        {u"italic", 512},
        {u"underline", 1024},
        {u"highlightyellow", 4096},
        {u"condense", 8192},
        {u"extend", 16384},
        {u"allstyles", 32767},
        // JSONSetElement's types.
        {u"jsonraw", 0},
        {u"jsonstring", 1},
        {u"jsonnumber", 2},
        {u"jsonobject", 3},
        {u"jsonarray", 4},
        {u"jsonboolean", 5},
        {u"jsonnull", 6},
        // The path formats of ConvertToFileMakerPath and ConvertFromFileMakerPath.
        {u"posixpath", 1},
        {u"winpath", 2},
        {u"urlpath", 3},
    };
    return table;
}

}  // namespace

const Builtin* findBuiltin(std::u16string_view lowerName) {
    static const Table table = buildTable();
    const auto it = table.find(lowerName);
    return it == table.end() ? nullptr : it->second;
}

std::optional<double> findConstant(std::u16string_view lowerName) {
    const auto it = constants().find(lowerName);
    if (it == constants().end()) return std::nullopt;
    return it->second;
}

std::string bytesOfArgument(Args& a, size_t i) {
    const Value& v = a[i];
    if (v.type() == Type::Binary) {
        const Binary& b = v.asBinary();
        for (const Binary::Stream& s : b.streams) {
            if (s.type == std::array<char, 4>{'F', 'I', 'L', 'E'}) return s.bytes;
        }
        return b.streams.empty() ? std::string() : b.streams.front().bytes;
    }
    return toUtf8(a.units(i));
}

Value textValue(Text t) {
    if (t.size() > kMaxTextUnits) raise(kGenericError);
    return Value::text(std::move(t));
}

Value textValue(std::u16string s) {
    if (s.size() > kMaxTextUnits) raise(kGenericError);
    return Value::text(std::move(s));
}

Value emptyText() { return Value::text(std::u16string()); }

Value numberValue(double d) {
    if (!std::isfinite(d)) return questionMark();
    return Value::number(d);
}

Value numberValue(const std::optional<Number>& n) { return n ? Value::number(*n) : questionMark(); }

Value booleanValue(bool b) { return Value::number(Number::fromInt(b ? 1 : 0)); }

Value questionMark() { return Value::text(std::u16string(u"?")); }

bool isTrue(const Value& v) {
    const Number n = v.asNumber();
    return !n.empty && !n.isZero();
}

double clampCount(double d) {
    if (std::isnan(d)) return 0;
    return std::trunc(std::clamp(d, -4294967296.0, 4294967296.0));
}

}  // namespace sim::calc
