// The calculation functions built into the host, looked up by name ignoring case.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "sim/calc/ast.h"
#include "sim/calc/context.h"

namespace sim::calc {

class Evaluator;

// The evaluated arguments of a function, with their usual conversions.
class Args {
public:
    Args(Evaluator& evaluator, std::vector<Value>& values);

    size_t size() const { return values_.size(); }
    bool has(size_t i) const { return i < values_.size(); }
    const Value& operator[](size_t i) const { return values_[i]; }

    // The text form, styles kept; converted once per argument.
    const Text& text(size_t i);
    std::u16string_view units(size_t i) { return text(i).units(); }
    // The number, an empty number reading as 0 and anything out of range as 0.
    double number(size_t i) const;
    // The exact number; an empty one stays marked empty.
    Number decimal(size_t i) const { return values_[i].asNumber(); }
    bool emptyNumber(size_t i) const;
    // The places inexact operations round to (SetPrecision).
    int precision() const;

    Evaluator& evaluator() { return evaluator_; }
    Context& context();

private:
    Evaluator& evaluator_;
    std::vector<Value>& values_;
    std::vector<std::optional<Text>> texts_;
};

// Eager functions get their arguments evaluated left to right; lazy ones evaluate what they need.
using EagerFunction = Value (*)(Args& args);
using LazyFunction = Value (*)(Evaluator& evaluator, const std::vector<NodePtr>& args);

struct Builtin {
    std::u16string_view name;  // lower case
    short minArgs;
    short maxArgs;  // -1: no limit
    EagerFunction eager = nullptr;
    LazyFunction lazy = nullptr;
    bool acceptsLists = false;  // "[ a ; b ]" arguments
};

const Builtin* findBuiltin(std::u16string_view lowerName);
// Named constants (the text style names), by lower-case name.
std::optional<double> findConstant(std::u16string_view lowerName);

// The families, each in its own source file.
std::span<const Builtin> logicalFunctions();
std::span<const Builtin> textFunctions();
std::span<const Builtin> wordFunctions();
std::span<const Builtin> valueListFunctions();
std::span<const Builtin> numberFunctions();
std::span<const Builtin> aggregateFunctions();
std::span<const Builtin> financialFunctions();
std::span<const Builtin> dateFunctions();
std::span<const Builtin> styleFunctions();
std::span<const Builtin> hostFunctions();
std::span<const Builtin> jsonFunctions();
std::span<const Builtin> encodingFunctions();
std::span<const Builtin> fieldFunctions();
std::span<const Builtin> cryptoFunctions();
std::span<const Builtin> textCodecFunctions();

// Shared by the families.
Value textValue(Text t);
Value textValue(std::u16string s);
Value emptyText();
Value numberValue(double d);                        // "?" when not finite
Value numberValue(const std::optional<Number>& n);  // "?" for nullopt
Value booleanValue(bool b);                         // 1 or 0, as numbers
Value questionMark();                               // the host's "?" for results it cannot compute
bool isTrue(const Value& v);                        // a non-zero number
// Clamps a function's numeric argument to a unit position or count.
double clampCount(double d);
// The bytes of argument i: a container's file, or a text's UTF-8.
std::string bytesOfArgument(Args& a, size_t i);

}  // namespace sim::calc
