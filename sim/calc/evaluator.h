// Evaluates a parsed calculation against its context.
//
// Where the host's documentation is silent, this engine behaves as follows:
// - Text positions and lengths count UTF-16 units (a character outside the BMP counts 2).
// - Text compares with text ignoring case (= and <>, and < > in lower-cased code unit order);
//   anything else compares as numbers, an empty value reading as 0.
// - Division by zero, Mod/Div by zero, square roots of negatives and dates outside years 1 to
//   4000 give the text "?" without an error, as the host shows them.
// - An unknown bare word (such as No Error Message written without quotes) and an unknown
//   function are 1208; the Let variable named twice in one Let is 1213 (plain names only);
//   a repetition outside 1 .. 2^31-1, nesting beyond kMaxDepth and texts beyond kMaxTextUnits
//   are 1200.
// - A bare name that is none of these but a field of the current table reads that field; a
//   field or table that does not exist is 102 when read.
// - A calculation the user interrupts (Context::interrupted) fails with error 1 between steps.
// - An empty calculation is an empty text without error.
// - Let sets "$" variables left to right as their values are computed; a syntax error sets
//   nothing, a later evaluation error leaves the earlier ones set.
// - If without a second result and Case without a default give an empty text.
// - Plug-in functions are found (and their argument counts checked) when the calculation is
//   parsed, and looked up again just before the call.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "sim/calc/ast.h"
#include "sim/calc/context.h"

namespace sim::calc {

// The nesting at which the calculation now calling a plug-in function stands on this thread (0
// outside such a call). A plug-in's own evaluation goes on counting from there, as FileMaker
// counts nested calculations across plug-in calls: a calculation that re-enters itself through
// a plug-in meets kMaxDepth like any other, and the count is per thread as the calls are.
int callerNesting();

class Evaluator {
public:
    // While stops with "?" after this many iterations, as FileMaker's does.
    static constexpr int kWhileLimit = 50000;

    explicit Evaluator(Context& context) : context_(context), depth_(callerNesting()) {}

    // Throws CalcError.
    Value eval(const Node& node);
    // Parses and evaluates `source` here, seeing the Let variables in scope (Evaluate).
    Value evaluateText(std::u16string_view source);

    Context& context() { return context_; }
    // Decimal places of division, roots, logarithms and the like: 16, or SetPrecision's.
    int precision() const { return precision_; }
    void setPrecision(int places) { precision_ = places; }
    // Iterations While may make before it gives "?" (SetRecursion).
    int whileLimit() const { return whileLimit_; }
    void setWhileLimit(int iterations) { whileLimit_ = iterations; }

private:
    Value evalNode(const Node& node);
    Value evalChain(const Node& node);
    Value evalUnary(const Node& node);
    Value evalLet(const Node& node);
    Value evalWhile(const Node& node);
    void assign(const LetBinding& b, size_t scopeStart);
    Value evalLetName(const Node& node) const;
    Value evalVariable(const Node& node);
    Value evalBuiltin(const Node& node);
    Value evalExternal(const Node& node);
    Value evalGet(const Node& node);
    Value evalField(const Node& node);
    int repetitionOf(const Node* repetition);
    std::vector<Value> evalArguments(const Node& node);
    std::vector<std::u16string> letNames() const;

    struct LetVariable {
        std::u16string name;  // lower-cased
        Value value;
    };

    Context& context_;
    int depth_;
    int precision_ = 16;
    static constexpr unsigned kInterruptCheckMask = 1023;
    unsigned steps_ = 0;  // nodes evaluated, for the interrupt check
    int whileLimit_ = kWhileLimit;
    std::vector<LetVariable> scope_;  // innermost last
};

}  // namespace sim::calc
