// The tree a calculation is parsed into and evaluated from.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "sim/core/value.h"

namespace sim::calc {

struct Builtin;
struct GetAnswer;

enum class NodeKind : uint8_t {
    Literal,   // `literal`
    LetName,   // a plain Let variable; `name` lower-cased
    Variable,  // "$name" / "$$name" as written, with an optional `repetition`
    Unary,     // `op` applied to children[0]
    Chain,     // children[0] ops[0] children[1] ops[1] ... of one precedence level, left to right
    Builtin,   // `builtin` with its arguments as children
    External,  // a plug-in function `name` (lower-cased) with its arguments as children
    Let,       // `bindings`, then the body in children[0]
    List,      // "[ a ; b ]" as a function argument
    Get,       // Get ( selector )
    While,     // `bindings` first, then while children[0] holds `steps`; children[1] is the result
    Field,     // `name`::`field` of the current record (`name` empty: the current table)
};

enum class Op : uint8_t {
    Or,
    Xor,
    And,
    Not,
    Eq,
    Ne,
    Lt,
    Le,
    Gt,
    Ge,
    Concat,
    Add,
    Sub,
    Mul,
    Div,
    Pow,
    Negate,
    Plus,
};

enum class GetSelector : uint8_t {
    FileName,
    ScriptParameter,
    CurrentDate,
    CurrentTime,
    CurrentTimestamp,
    ApplicationVersion,
    HostApplicationVersion,
    SystemPlatform,
    SystemLanguage,
    CurrentTimeUtcMilliseconds,
    LastError,
    ScriptName,
    FoundCount,
    LastExternalErrorDetail,
    RecordNumber,
    RecordId,
    TotalRecordCount,
    Answered,  // by the host selector table (get_selectors.h), in `answer`
};

struct Node;
using NodePtr = std::unique_ptr<Node>;

struct LetBinding {
    std::u16string name;  // plain names lower-cased; "$" names as written
    bool plain = true;
    NodePtr repetition;  // "$$v[2] = ..."
    NodePtr value;
};

struct Node {
    explicit Node(NodeKind k) : kind(k) {}

    NodeKind kind;
    Op op = Op::Add;
    GetSelector selector = GetSelector::FileName;
    const Builtin* builtin = nullptr;
    const GetAnswer* answer = nullptr;  // Get selectors of the host selector table
    Value literal;
    std::u16string name;
    std::u16string field;  // of a Field node
    NodePtr repetition;
    std::vector<NodePtr> children;
    std::vector<Op> ops;
    std::vector<LetBinding> bindings;
    std::vector<LetBinding> steps;  // While's logic, assigned on every iteration
};

}  // namespace sim::calc
