// Splits calculation text into tokens.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "sim/core/number.h"

namespace sim::calc {

enum class Tok : uint8_t {
    End,
    Number,
    Text,  // a quoted text constant, or a bare pilcrow (a carriage return)
    Name,  // function, Let variable, keyword, constant or field; "$name", "$$name" and
           // "Table::Field" included
    LParen,
    RParen,
    LBracket,
    RBracket,
    Semicolon,
    Plus,
    Minus,
    Star,
    Slash,
    Caret,
    Amp,
    Eq,
    Ne,
    Lt,
    Le,
    Gt,
    Ge,
    Invalid,  // a character the language does not use
    Error,    // a lexical error; `error` holds its code
};

struct Token {
    Tok kind = Tok::End;
    std::u16string text;  // names and text constants (escapes resolved)
    Number number;
    short error = 0;
    uint32_t offset = 0;  // where the token starts, in UTF-16 units
};

// The tokens of `source`, ending with one End token, or with an Error token at the first lexical
// error (unterminated text or comment, a number too large), so that syntax errors before it are
// still reported first.
std::vector<Token> tokenize(std::u16string_view source);

}  // namespace sim::calc
