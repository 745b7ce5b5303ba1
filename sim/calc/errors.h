// The host's calculation error codes, and how an error travels inside the engine.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace sim::calc {

enum ErrorCode : short {
    kUserCanceled = 1,  // the user interrupted the calculation
    kFieldMissing = 102,
    kGenericError = 1200,
    kTooFewParameters = 1201,
    kTooManyParameters = 1202,
    kUnexpectedEnd = 1203,
    kOperandExpected = 1204,  // number, text constant, field name or "(" expected
    kUnterminatedComment = 1205,
    kUnterminatedText = 1206,
    kUnbalancedParenthesis = 1207,
    kOperatorMissing = 1208,  // also: function or name not found, "(" not expected
    kNameMissing = 1209,
    kListNotAllowed = 1211,
    kDuplicateLetVariable = 1213,
    kFieldRequired = 1214,  // an expression where a field is required
    kInvalidGetParameter = 1215,
    kBadNumber = 1218,
    kNotSupportedHere = 1225,  // "Function referred to is not supported in this context"
};

// FileMaker's text for an error code the host answers with (calculation, file, script and SQL
// errors), in English; empty for a code without one.
std::string_view errorText(short code);

// Thrown from anywhere inside the engine; evaluate() turns it into its Result, and the functions
// that look at errors (IsEmpty, IsValid, EvaluationError) catch it.
struct CalcError {
    short code = 0;
    // Where a syntax error was found: a UTF-16 offset into the calculation, from 0; -1 when the
    // error is not a syntax error.
    int offset = -1;
    // What the host can add for the user beyond the code, such as the name it did not know.
    std::u16string hint{};
};

[[noreturn]] inline void raise(short code) { throw CalcError{code}; }
[[noreturn]] inline void raise(short code, std::u16string hint) {
    throw CalcError{code, -1, std::move(hint)};
}

// Nesting limit for parsing and evaluating together (parentheses, calls, Evaluate inside
// Evaluate): deeper calculations fail with kGenericError instead of exhausting the stack.
constexpr int kMaxDepth = 1000;

// Longest text a calculation may build; longer results fail with kGenericError.
constexpr uint32_t kMaxTextUnits = 1u << 26;

}  // namespace sim::calc
