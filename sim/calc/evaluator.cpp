#include "sim/calc/evaluator.h"

#include <cmath>

#include "sim/calc/builtins.h"
#include "sim/calc/errors.h"
#include "sim/calc/get_selectors.h"
#include "sim/calc/operators.h"
#include "sim/calc/parser.h"
#include "sim/calc/temporal.h"

namespace sim::calc {

namespace {

class DepthGuard {
public:
    explicit DepthGuard(int& depth) : depth_(depth) {
        if (++depth_ > kMaxDepth) {
            --depth_;
            raise(kGenericError);
        }
    }
    ~DepthGuard() { --depth_; }
    DepthGuard(const DepthGuard&) = delete;
    DepthGuard& operator=(const DepthGuard&) = delete;

private:
    int& depth_;
};

// Initial-exec: the host's library is loaded with the program, so the slot is in the static
// thread-local block and reached without a call, on each plug-in call twice.
[[gnu::tls_model("initial-exec")]] thread_local int tCallerNesting = 0;

// Publishes the nesting of a plug-in call for the evaluations the plug-in makes meanwhile.
// The thread's slot is found once, for setting and restoring alike.
class CallerNesting {
public:
    explicit CallerNesting(int depth) : slot_(tCallerNesting), saved_(slot_) { slot_ = depth; }
    ~CallerNesting() { slot_ = saved_; }
    CallerNesting(const CallerNesting&) = delete;
    CallerNesting& operator=(const CallerNesting&) = delete;

private:
    int& slot_;
    int saved_;
};

// Removes the variables of a Let from the scope however the Let ends.
template <class Scope>
class ScopeMark {
public:
    explicit ScopeMark(Scope& scope) : scope_(scope), size_(scope.size()) {}
    ~ScopeMark() {
        scope_.erase(scope_.begin() + static_cast<std::ptrdiff_t>(size_), scope_.end());
    }
    ScopeMark(const ScopeMark&) = delete;
    ScopeMark& operator=(const ScopeMark&) = delete;

private:
    Scope& scope_;
    size_t size_;
};

}  // namespace

int callerNesting() { return tCallerNesting; }

Value Evaluator::eval(const Node& node) {
    DepthGuard guard(depth_);
    // Asking the host costs a little, so only every so many steps.
    if ((++steps_ & kInterruptCheckMask) == 0 && context_.interrupted()) raise(kUserCanceled);
    Value v = evalNode(node);
    if (v.type() == Type::Text && v.textValue().size() > kMaxTextUnits) raise(kGenericError);
    return v;
}

Value Evaluator::evaluateText(std::u16string_view source) {
    NodePtr tree = parse(source, context_, letNames(), depth_);
    return eval(*tree);
}

Value Evaluator::evalNode(const Node& node) {
    switch (node.kind) {
        case NodeKind::Literal:
            return node.literal;
        case NodeKind::LetName:
            return evalLetName(node);
        case NodeKind::Variable:
            return evalVariable(node);
        case NodeKind::Unary:
            return evalUnary(node);
        case NodeKind::Chain:
            return evalChain(node);
        case NodeKind::Builtin:
            return evalBuiltin(node);
        case NodeKind::External:
            return evalExternal(node);
        case NodeKind::Let:
            return evalLet(node);
        case NodeKind::Get:
            return evalGet(node);
        case NodeKind::While:
            return evalWhile(node);
        case NodeKind::Field:
            return evalField(node);
        case NodeKind::List:
            break;  // only functions that take lists look into one
    }
    raise(kListNotAllowed);
}

Value Evaluator::evalChain(const Node& node) {
    const std::vector<NodePtr>& operands = node.children;
    const Op first = node.ops.front();
    if (first == Op::Or || first == Op::Xor) {
        bool result = isTrue(eval(*operands[0]));
        for (size_t i = 1; i < operands.size(); ++i) {
            if (node.ops[i - 1] == Op::Xor) {
                result = result != isTrue(eval(*operands[i]));
            } else if (!result) {
                result = isTrue(eval(*operands[i]));
            }
        }
        return booleanValue(result);
    }
    if (first == Op::And) {
        bool result = isTrue(eval(*operands[0]));
        for (size_t i = 1; i < operands.size() && result; ++i) result = isTrue(eval(*operands[i]));
        return booleanValue(result);
    }
    if (first == Op::Concat) {
        Text out;
        for (const NodePtr& operand : operands) appendTextOf(out, eval(*operand));
        return Value::text(std::move(out));
    }
    Value result = eval(*operands[0]);
    for (size_t i = 1; i < operands.size(); ++i) {
        result = applyBinary(node.ops[i - 1], result, eval(*operands[i]), precision_);
    }
    return result;
}

Value Evaluator::evalUnary(const Node& node) {
    const Value operand = eval(*node.children[0]);
    switch (node.op) {
        case Op::Not:
            return booleanValue(!isTrue(operand));
        case Op::Negate: {
            const Number n = operand.asNumber();
            return n.empty ? Value::number(n) : Value::number(negated(n));
        }
        default:
            return Value::number(operand.asNumber());
    }
}

Value Evaluator::evalLet(const Node& node) {
    ScopeMark mark(scope_);
    for (const LetBinding& b : node.bindings) {
        Value v = eval(*b.value);
        if (b.plain) {
            scope_.push_back({b.name, std::move(v)});
            continue;
        }
        const int repetition = repetitionOf(b.repetition.get());
        // An empty value does not make a variable: setting one clears it.
        context_.setVariable(b.name, repetition, v.isEmpty() ? Value() : std::move(v));
    }
    return eval(*node.children[0]);
}

// A plain variable from `scopeStart` on is assigned again; a new one joins the scope.
void Evaluator::assign(const LetBinding& b, size_t scopeStart) {
    Value v = eval(*b.value);
    if (b.plain) {
        for (size_t i = scope_.size(); i-- > scopeStart;) {
            if (scope_[i].name == b.name) {
                scope_[i].value = std::move(v);
                return;
            }
        }
        scope_.push_back({b.name, std::move(v)});
        return;
    }
    const int repetition = repetitionOf(b.repetition.get());
    context_.setVariable(b.name, repetition, v.isEmpty() ? Value() : std::move(v));
}

Value Evaluator::evalWhile(const Node& node) {
    ScopeMark mark(scope_);
    const size_t start = scope_.size();
    for (const LetBinding& b : node.bindings) assign(b, start);
    for (int iterations = 0; isTrue(eval(*node.children[0])); ++iterations) {
        if (iterations == whileLimit_) return questionMark();
        if (context_.interrupted()) raise(kUserCanceled);
        for (const LetBinding& b : node.steps) assign(b, start);
    }
    return eval(*node.children[1]);
}

Value Evaluator::evalLetName(const Node& node) const {
    for (auto it = scope_.rbegin(); it != scope_.rend(); ++it) {
        if (it->name == node.name) return it->value;
    }
    raise(kOperatorMissing);
}

Value Evaluator::evalField(const Node& node) {
    const int repetition = repetitionOf(node.repetition.get());
    std::optional<Value> v = context_.field(node.name, node.field, repetition);
    if (!v) {
        const std::u16string shown =
            node.name.empty() ? node.field : node.name + u"::" + node.field;
        raise(kFieldMissing, u"no field " + shown);
    }
    return std::move(*v);
}

Value Evaluator::evalVariable(const Node& node) {
    return context_.variable(node.name, repetitionOf(node.repetition.get()));
}

// Repetitions count from 1; anything that is not a whole number in 1..2^31-1 after truncation
// is an error.
int Evaluator::repetitionOf(const Node* repetition) {
    if (repetition == nullptr) return 1;
    const Number n = eval(*repetition).asNumber();
    const double r = std::trunc(n.toDouble());
    if (n.empty || !(r >= 1 && r <= 2147483647.0)) raise(kGenericError);
    return static_cast<int>(r);
}

std::vector<Value> Evaluator::evalArguments(const Node& node) {
    std::vector<Value> values;
    values.reserve(node.children.size());
    for (const NodePtr& arg : node.children) values.push_back(eval(*arg));
    return values;
}

Value Evaluator::evalBuiltin(const Node& node) {
    const Builtin& b = *node.builtin;
    if (b.lazy != nullptr) return b.lazy(*this, node.children);
    std::vector<Value> values = evalArguments(node);
    Args args(*this, values);
    return b.eager(args);
}

// The function is looked up again at call time: the arguments may have re-registered it.
Value Evaluator::evalExternal(const Node& node) {
    const OpenCall call(context_);
    for (const NodePtr& arg : node.children) context_.addArgument(eval(*arg));
    const ExternalFunction* found = context_.findFunctionLowered(node.name);
    if (found == nullptr) raise(kOperatorMissing);
    const ExternalFunction& f = *found;
    const auto count = static_cast<long>(context_.openArgumentCount());
    if (count < f.minArgs) raise(kTooFewParameters);
    if (f.maxArgs >= 0 && count > f.maxArgs) raise(kTooManyParameters);
    Value result;
    const CallerNesting nesting(depth_);
    const short error = context_.callOpened(f, result);
    if (error != 0) raise(error);
    return result;
}

Value Evaluator::evalGet(const Node& node) {
    switch (node.selector) {
        case GetSelector::FileName:
            return Value::text(context_.fileName());
        case GetSelector::ScriptParameter:
            return context_.scriptParameter();
        case GetSelector::CurrentDate:
            return dateValue(static_cast<double>(context_.now().days()));
        case GetSelector::CurrentTime:
            return timeValue(std::floor(context_.now().secondsOfDay()));
        case GetSelector::CurrentTimestamp:
            return timestampValue(std::floor(context_.now().seconds()));
        case GetSelector::ApplicationVersion:
        case GetSelector::HostApplicationVersion:
            return Value::text(context_.applicationVersion());
        // FileMaker Server on Linux, in English.
        case GetSelector::SystemPlatform:
            return Value::number(5.0);
        case GetSelector::SystemLanguage:
            return Value::text(std::u16string(u"English"));
        case GetSelector::CurrentTimeUtcMilliseconds:
            return Value::number(std::floor(context_.utcMilliseconds()));
        // No script steps run here, so none has failed.
        case GetSelector::LastError:
            return Value::number(0.0);
        // The found set is every record of the current table (the last one given a record).
        case GetSelector::FoundCount:
        case GetSelector::TotalRecordCount:
            return Value::number(context_.recordPlace().found);
        case GetSelector::RecordNumber:
            return Value::number(context_.recordPlace().number);
        case GetSelector::RecordId:
            return Value::number(context_.recordPlace().id);
        case GetSelector::ScriptName:
            return Value::text(context_.scriptName());
        case GetSelector::LastExternalErrorDetail:
            return Value::text(context_.lastExternalErrorDetail());
        case GetSelector::Answered:
            return node.answer->answer(context_);
    }
    raise(kInvalidGetParameter);
}

std::vector<std::u16string> Evaluator::letNames() const {
    std::vector<std::u16string> names;
    names.reserve(scope_.size());
    for (const LetVariable& v : scope_) names.push_back(v.name);
    return names;
}

}  // namespace sim::calc
