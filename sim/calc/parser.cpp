#include "sim/calc/parser.h"

#include <algorithm>
#include <optional>

#include "sim/calc/builtins.h"
#include "sim/calc/errors.h"
#include "sim/calc/get_selectors.h"
#include "sim/calc/lexer.h"
#include "sim/core/text.h"

namespace sim::calc {

namespace {

// Binding strength of the binary operators; "not" sits between "and" and the comparisons.
constexpr int kOrLevel = 1;
constexpr int kAndLevel = 2;
constexpr int kComparisonLevel = 4;
constexpr int kConcatLevel = 5;
constexpr int kSumLevel = 6;
constexpr int kProductLevel = 7;
constexpr int kPowerLevel = 8;

int levelOf(Op op) {
    switch (op) {
        case Op::Or:
        case Op::Xor:
            return kOrLevel;
        case Op::And:
            return kAndLevel;
        case Op::Concat:
            return kConcatLevel;
        case Op::Add:
        case Op::Sub:
            return kSumLevel;
        case Op::Mul:
        case Op::Div:
            return kProductLevel;
        case Op::Pow:
            return kPowerLevel;
        default:
            return kComparisonLevel;
    }
}

std::optional<GetSelector> selectorOf(std::u16string_view lower) {
    if (lower == u"filename") return GetSelector::FileName;
    if (lower == u"scriptparameter") return GetSelector::ScriptParameter;
    if (lower == u"currentdate" || lower == u"currenthostdate") return GetSelector::CurrentDate;
    if (lower == u"currenttime" || lower == u"currenthosttime") return GetSelector::CurrentTime;
    if (lower == u"currenttimestamp" || lower == u"currenthosttimestamp") {
        return GetSelector::CurrentTimestamp;
    }
    if (lower == u"applicationversion") return GetSelector::ApplicationVersion;
    if (lower == u"hostapplicationversion") return GetSelector::HostApplicationVersion;
    if (lower == u"systemplatform") return GetSelector::SystemPlatform;
    if (lower == u"systemlanguage") return GetSelector::SystemLanguage;
    if (lower == u"currenttimeutcmilliseconds") return GetSelector::CurrentTimeUtcMilliseconds;
    if (lower == u"lasterror") return GetSelector::LastError;
    if (lower == u"scriptname") return GetSelector::ScriptName;
    if (lower == u"foundcount") return GetSelector::FoundCount;
    if (lower == u"lastexternalerrordetail") return GetSelector::LastExternalErrorDetail;
    if (lower == u"recordnumber") return GetSelector::RecordNumber;
    if (lower == u"recordid") return GetSelector::RecordId;
    if (lower == u"totalrecordcount") return GetSelector::TotalRecordCount;
    return std::nullopt;
}

NodePtr makeNode(NodeKind kind) { return std::make_unique<Node>(kind); }

NodePtr literal(Value v) {
    NodePtr n = makeNode(NodeKind::Literal);
    n->literal = std::move(v);
    return n;
}

class DepthGuard {
public:
    explicit DepthGuard(int& depth) : depth_(depth) {
        if (++depth_ > kMaxDepth) raise(kGenericError);
    }
    ~DepthGuard() { --depth_; }
    DepthGuard(const DepthGuard&) = delete;
    DepthGuard& operator=(const DepthGuard&) = delete;

private:
    int& depth_;
};

class Parser {
public:
    Parser(std::u16string_view source, Context& context, std::vector<std::u16string> letNames,
           int depth)
        : tokens_(tokenize(source)),
          context_(context),
          scope_(std::move(letNames)),
          depth_(depth) {}

    // A syntax error carries where it was found: at the token being looked at, unless the
    // error names an earlier one.
    NodePtr parseAll() {
        try {
            if (peek().kind == Tok::End) return literal(Value::text(std::u16string()));
            NodePtr root = parseExpression(kOrLevel);
            if (peek().kind == Tok::RParen) fail(kUnbalancedParenthesis);
            if (peek().kind != Tok::End) fail(kOperatorMissing);
            return root;
        } catch (CalcError& e) {
            if (e.offset < 0) e.offset = static_cast<int>(peek().offset);
            throw;
        }
    }

private:
    const Token& peek() const { return tokens_[pos_]; }

    Token take() {
        Token t = tokens_[pos_];
        if (t.kind != Tok::End && t.kind != Tok::Error) ++pos_;
        return t;
    }

    // An error about token `t`, already taken.
    [[noreturn]] static void failAt(const Token& t, short code, std::u16string hint = {}) {
        throw CalcError{code, static_cast<int>(t.offset), std::move(hint)};
    }

    bool atKeyword(std::u16string_view keyword) const {
        return peek().kind == Tok::Name && lowerName(peek().text) == keyword;
    }

    // A syntax error at the current token; a lexical error there takes precedence.
    [[noreturn]] void fail(short code) const {
        raise(peek().kind == Tok::Error ? peek().error : code);
    }

    // Consumes a closing token that must follow, as after "(" or "[".
    void expectClose(Tok kind) {
        if (peek().kind == kind) {
            take();
            return;
        }
        fail(peek().kind == Tok::End ? kUnbalancedParenthesis : kOperatorMissing);
    }

    std::optional<Op> binaryOp() const {
        switch (peek().kind) {
            case Tok::Plus:
                return Op::Add;
            case Tok::Minus:
                return Op::Sub;
            case Tok::Star:
                return Op::Mul;
            case Tok::Slash:
                return Op::Div;
            case Tok::Caret:
                return Op::Pow;
            case Tok::Amp:
                return Op::Concat;
            case Tok::Eq:
                return Op::Eq;
            case Tok::Ne:
                return Op::Ne;
            case Tok::Lt:
                return Op::Lt;
            case Tok::Le:
                return Op::Le;
            case Tok::Gt:
                return Op::Gt;
            case Tok::Ge:
                return Op::Ge;
            case Tok::Name:
                if (atKeyword(u"and")) return Op::And;
                if (atKeyword(u"or")) return Op::Or;
                if (atKeyword(u"xor")) return Op::Xor;
                return std::nullopt;
            default:
                return std::nullopt;
        }
    }

    // Operators of one level are collected into one chain node, so that long sums or
    // concatenations stay flat (evaluated by a loop, not by deep recursion).
    NodePtr parseExpression(int minLevel) {
        DepthGuard guard(depth_);
        NodePtr left = parsePrefix();
        for (std::optional<Op> op = binaryOp(); op && levelOf(*op) >= minLevel; op = binaryOp()) {
            const int level = levelOf(*op);
            NodePtr chain = makeNode(NodeKind::Chain);
            chain->children.push_back(std::move(left));
            while (op && levelOf(*op) == level) {
                take();
                chain->ops.push_back(*op);
                chain->children.push_back(parseExpression(level + 1));
                op = binaryOp();
            }
            left = std::move(chain);
        }
        return left;
    }

    NodePtr parsePrefix() {
        DepthGuard guard(depth_);
        const Tok kind = peek().kind;
        if (kind == Tok::Minus || kind == Tok::Plus) {
            take();
            NodePtr n = makeNode(NodeKind::Unary);
            n->op = kind == Tok::Minus ? Op::Negate : Op::Plus;
            n->children.push_back(parsePrefix());
            return n;
        }
        if (atKeyword(u"not")) {
            take();
            NodePtr n = makeNode(NodeKind::Unary);
            n->op = Op::Not;
            n->children.push_back(parseExpression(kComparisonLevel));
            return n;
        }
        return parsePrimary();
    }

    // Kept out of parsePrefix, whose recursion (one frame per sign) must stay small: the values
    // made here take a lot of stack in sanitizer builds.
    [[gnu::noinline]] NodePtr parsePrimary() {
        switch (peek().kind) {
            case Tok::Number:
                return literal(Value::number(take().number));
            case Tok::Text:
                return literal(Value::text(take().text));
            case Tok::LParen: {
                take();
                NodePtr inner = parseExpression(kOrLevel);
                expectClose(Tok::RParen);
                return inner;
            }
            case Tok::Name:
                return parseName();
            case Tok::End:
                fail(kUnexpectedEnd);
            default:
                fail(kOperandExpected);
        }
    }

    NodePtr parseName() {
        if (atKeyword(u"and") || atKeyword(u"or") || atKeyword(u"xor")) fail(kOperandExpected);
        const Token t = take();
        const std::u16string lower = lowerName(t.text);
        if (t.text.front() == u'$') return parseVariable(t.text);
        if (const auto separator = t.text.find(u"::"); separator != std::u16string::npos) {
            return parseField(t.text.substr(0, separator), t.text.substr(separator + 2));
        }
        if (peek().kind == Tok::LParen) return parseCall(t, lower);
        if (inScope(lower)) {
            NodePtr n = makeNode(NodeKind::LetName);
            n->name = lower;
            return n;
        }
        // A constant before a function of the same name: Extend without "(" is the style.
        if (std::optional<double> c = findConstant(lower)) return literal(Value::number(*c));
        if (const Builtin* b = findBuiltin(lower)) {
            if (b->minArgs > 0) raise(kTooFewParameters);
            NodePtr n = makeNode(NodeKind::Builtin);
            n->builtin = b;
            return n;
        }
        if (const ExternalFunction* f = context_.findFunctionLowered(lower)) {
            if (f->minArgs > 0) raise(kTooFewParameters);
            NodePtr n = makeNode(NodeKind::External);
            n->name = lower;
            return n;
        }
        if (context_.isCurrentTableField(t.text)) return parseField({}, t.text);
        failAt(t, kOperatorMissing, u"no variable, constant or function named " + t.text);
    }

    // A field of the current record of `table` (empty: the current table), with an optional
    // repetition "[n]". Whether it exists is known when it is read (error 102).
    NodePtr parseField(std::u16string table, std::u16string field) {
        NodePtr n = makeNode(NodeKind::Field);
        n->name = std::move(table);
        n->field = std::move(field);
        n->repetition = parseRepetition();
        return n;
    }

    NodePtr parseVariable(const std::u16string& name) {
        if (name.find_first_not_of(u'$') == std::u16string::npos) raise(kNameMissing);
        NodePtr n = makeNode(NodeKind::Variable);
        n->name = name;
        n->repetition = parseRepetition();
        return n;
    }

    // "[n]" after a "$" variable or a field.
    NodePtr parseRepetition() {
        if (peek().kind != Tok::LBracket) return nullptr;
        take();
        NodePtr rep = parseExpression(kOrLevel);
        expectClose(Tok::RBracket);
        return rep;
    }

    NodePtr parseCall(const Token& t, const std::u16string& lower) {
        const std::u16string& name = t.text;
        if (lower == u"let") return parseLet();
        if (lower == u"while") return parseWhile();
        if (lower == u"get") return parseGet();
        if (const Builtin* b = findBuiltin(lower)) {
            NodePtr n = makeNode(NodeKind::Builtin);
            n->builtin = b;
            n->children = parseArguments();
            checkArguments(*n, b->minArgs, b->maxArgs, b->acceptsLists);
            return n;
        }
        const ExternalFunction* f = context_.findFunctionLowered(lower);
        if (f == nullptr) failAt(t, kOperatorMissing, u"no function named " + name);
        const short minArgs = f->minArgs;
        const short maxArgs = f->maxArgs;
        NodePtr n = makeNode(NodeKind::External);
        n->name = lower;
        n->children = parseArguments();
        checkArguments(*n, minArgs, maxArgs, false);
        return n;
    }

    static void checkArguments(const Node& call, short minArgs, short maxArgs, bool lists) {
        if (!lists) {
            for (const NodePtr& arg : call.children) {
                if (arg->kind == NodeKind::List) raise(kListNotAllowed);
            }
        }
        const auto count = static_cast<long>(call.children.size());
        if (count < minArgs) raise(kTooFewParameters);
        if (maxArgs >= 0 && count > maxArgs) raise(kTooManyParameters);
    }

    // "( a ; b ; ... )", the opening parenthesis not yet taken.
    std::vector<NodePtr> parseArguments() {
        take();
        std::vector<NodePtr> args;
        if (peek().kind == Tok::RParen) {
            take();
            return args;
        }
        for (;;) {
            args.push_back(peek().kind == Tok::LBracket ? parseList() : parseExpression(kOrLevel));
            if (peek().kind == Tok::Semicolon) {
                take();
                continue;
            }
            expectClose(Tok::RParen);
            return args;
        }
    }

    NodePtr parseList() {
        DepthGuard guard(depth_);
        take();
        NodePtr list = makeNode(NodeKind::List);
        for (;;) {
            list->children.push_back(parseExpression(kOrLevel));
            if (peek().kind == Tok::Semicolon) {
                take();
                continue;
            }
            expectClose(Tok::RBracket);
            return list;
        }
    }

    // Get ( selector ): the selector is a name, not an expression.
    NodePtr parseGet() {
        take();
        if (peek().kind == Tok::RParen) raise(kTooFewParameters);
        if (peek().kind == Tok::End) fail(kUnexpectedEnd);
        if (peek().kind != Tok::Name) fail(kInvalidGetParameter);
        const std::u16string lower = lowerName(take().text);
        const std::optional<GetSelector> selector = selectorOf(lower);
        const GetAnswer* answer = selector ? nullptr : findGetAnswer(lower);
        if (!selector && answer == nullptr) raise(kInvalidGetParameter);
        if (peek().kind == Tok::Semicolon) raise(kTooManyParameters);
        expectClose(Tok::RParen);
        NodePtr n = makeNode(NodeKind::Get);
        n->selector = selector ? *selector : GetSelector::Answered;
        n->answer = answer;
        return n;
    }

    // Let ( name = value ; body ) or Let ( [ name = value ; ... ] ; body ). Plain names are
    // visible in the later values and in the body, and shadow outer ones.
    NodePtr parseLet() {
        take();
        NodePtr let = makeNode(NodeKind::Let);
        const size_t outer = scope_.size();
        const bool bracketed = peek().kind == Tok::LBracket;
        if (bracketed) take();
        for (;;) {
            let->bindings.push_back(parseBinding(outer));
            if (!bracketed) break;
            if (peek().kind == Tok::Semicolon) {
                take();
                continue;
            }
            expectClose(Tok::RBracket);
            break;
        }
        if (peek().kind == Tok::RParen) raise(kTooFewParameters);
        if (peek().kind != Tok::Semicolon) {
            fail(peek().kind == Tok::End ? kUnbalancedParenthesis : kOperatorMissing);
        }
        take();
        let->children.push_back(parseExpression(kOrLevel));
        if (peek().kind == Tok::Semicolon) raise(kTooManyParameters);
        expectClose(Tok::RParen);
        scope_.resize(outer);
        return let;
    }

    // While ( [ initialVariables ] ; condition ; [ logic ] ; result ): the variables of both
    // lists are visible in the condition, the logic and the result; the logic assigns them again.
    NodePtr parseWhile() {
        take();
        NodePtr loop = makeNode(NodeKind::While);
        const size_t outer = scope_.size();
        loop->bindings = parseBindingList(outer);
        expectSemicolon();
        loop->children.push_back(parseExpression(kOrLevel));
        expectSemicolon();
        loop->steps = parseBindingList(scope_.size());
        expectSemicolon();
        loop->children.push_back(parseExpression(kOrLevel));
        if (peek().kind == Tok::Semicolon) raise(kTooManyParameters);
        expectClose(Tok::RParen);
        scope_.resize(outer);
        return loop;
    }

    // "name = value" or "[ name = value ; ... ]"; "[ ]" is an empty list.
    std::vector<LetBinding> parseBindingList(size_t outer) {
        std::vector<LetBinding> list;
        const bool bracketed = peek().kind == Tok::LBracket;
        if (bracketed) {
            take();
            if (peek().kind == Tok::RBracket) {
                take();
                return list;
            }
        }
        for (;;) {
            list.push_back(parseBinding(outer));
            if (!bracketed) return list;
            if (peek().kind == Tok::Semicolon) {
                take();
                continue;
            }
            expectClose(Tok::RBracket);
            return list;
        }
    }

    void expectSemicolon() {
        if (peek().kind == Tok::Semicolon) {
            take();
            return;
        }
        if (peek().kind == Tok::RParen) raise(kTooFewParameters);
        fail(peek().kind == Tok::End ? kUnbalancedParenthesis : kOperatorMissing);
    }

    LetBinding parseBinding(size_t outer) {
        if (peek().kind != Tok::Name || atKeyword(u"and") || atKeyword(u"or") ||
            atKeyword(u"xor") || atKeyword(u"not")) {
            fail(peek().kind == Tok::End ? kUnexpectedEnd : kNameMissing);
        }
        const Token t = take();
        LetBinding b;
        b.plain = t.text.front() != u'$';
        if (b.plain) {
            b.name = lowerName(t.text);
            const auto mine = scope_.begin() + static_cast<std::ptrdiff_t>(outer);
            if (std::find(mine, scope_.end(), b.name) != scope_.end()) {
                failAt(t, kDuplicateLetVariable);
            }
        } else {
            if (t.text.find_first_not_of(u'$') == std::u16string::npos) raise(kNameMissing);
            b.name = t.text;
            b.repetition = parseRepetition();
        }
        if (peek().kind != Tok::Eq)
            fail(peek().kind == Tok::End ? kUnexpectedEnd : kOperatorMissing);
        take();
        b.value = parseExpression(kOrLevel);
        if (b.plain) scope_.push_back(b.name);
        return b;
    }

    bool inScope(const std::u16string& lower) const {
        return std::find(scope_.rbegin(), scope_.rend(), lower) != scope_.rend();
    }

    std::vector<Token> tokens_;
    size_t pos_ = 0;
    Context& context_;
    std::vector<std::u16string> scope_;
    int depth_;
};

}  // namespace

std::u16string lowerName(std::u16string_view name) {
    const bool ascii = std::all_of(name.begin(), name.end(), [](char16_t c) { return c < 0x80; });
    if (!ascii) return toLower(name);
    std::u16string out(name);
    for (char16_t& c : out) {
        if (c >= u'A' && c <= u'Z') c = static_cast<char16_t>(c - u'A' + u'a');
    }
    return out;
}

NodePtr parse(std::u16string_view source, Context& context, std::vector<std::u16string> letNames,
              int depth) {
    return Parser(source, context, std::move(letNames), depth).parseAll();
}

}  // namespace sim::calc
