// Evaluates a parsed calculation against its context.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "sim/calc/ast.h"
#include "sim/calc/context.h"

namespace sim::calc {

class Evaluator {
public:
    explicit Evaluator(Context& context) : context_(context) {}

    // Throws CalcError.
    Value eval(const Node& node);
    // Parses and evaluates `source` here, seeing the Let variables in scope (Evaluate).
    Value evaluateText(std::u16string_view source);

    Context& context() { return context_; }

private:
    Value evalNode(const Node& node);
    Value evalChain(const Node& node);
    Value evalUnary(const Node& node);
    Value evalLet(const Node& node);
    Value evalLetName(const Node& node) const;
    Value evalVariable(const Node& node);
    Value evalBuiltin(const Node& node);
    Value evalExternal(const Node& node);
    Value evalGet(const Node& node);
    int repetitionOf(const Node* repetition);
    std::vector<Value> evalArguments(const Node& node);
    std::vector<std::u16string> letNames() const;

    struct LetVariable {
        std::u16string name;  // lower-cased
        Value value;
    };

    Context& context_;
    int depth_ = 0;
    std::vector<LetVariable> scope_;  // innermost last
};

}  // namespace sim::calc
