#include "sim/calc/lexer.h"

#include <charconv>
#include <cmath>

#include "sim/calc/errors.h"

namespace sim::calc {

namespace {

constexpr char16_t kPilcrow = u'\u00B6';

bool isBlank(char16_t c) {
    switch (c) {
        case u' ':
        case u'\t':
        case u'\r':
        case u'\n':
        case u'\v':
        case u'\f':
        case u'\u00A0':
        case u'\u2028':
        case u'\u2029':
        case u'\u3000':
        case u'\uFEFF':
            return true;
        default:
            return false;
    }
}

bool isDigit(char16_t c) { return c >= u'0' && c <= u'9'; }

bool isOperatorSymbol(char16_t c) { return c == u'\u2260' || c == u'\u2264' || c == u'\u2265'; }

// FileMaker's names may hold any character but its operators and separators; of ASCII's
// punctuation this engine takes "_" and "~" anywhere ("~x", a common name for Let variables) and
// "." after the first character ("$$APP.NAME").
bool isNameStart(char16_t c) {
    if (c < 0x80) {
        return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || c == u'_' || c == u'~';
    }
    return !isBlank(c) && c != kPilcrow && !isOperatorSymbol(c);
}

bool isNameChar(char16_t c) { return isNameStart(c) || isDigit(c) || c == u'.'; }

bool isLineEnd(char16_t c) { return c == u'\r' || c == u'\n' || c == u'\u2028' || c == u'\u2029'; }

class Lexer {
public:
    explicit Lexer(std::u16string_view s) : s_(s) {}

    std::vector<Token> run() {
        std::vector<Token> tokens;
        for (;;) {
            Token t = next();
            t.offset = static_cast<uint32_t>(start_);
            const Tok kind = t.kind;
            tokens.push_back(std::move(t));
            if (kind == Tok::End || kind == Tok::Error) return tokens;
        }
    }

private:
    static Token error(short code) {
        Token t;
        t.kind = Tok::Error;
        t.error = code;
        return t;
    }

    static Token simple(Tok kind) {
        Token t;
        t.kind = kind;
        return t;
    }

    char16_t at(size_t i) const { return i < s_.size() ? s_[i] : u'\0'; }

    // Skips blanks and comments; false at an unterminated block comment.
    bool skipBlanks() {
        while (i_ < s_.size()) {
            const char16_t c = s_[i_];
            if (isBlank(c)) {
                ++i_;
            } else if (c == u'/' && at(i_ + 1) == u'*') {
                const size_t close = s_.find(u"*/", i_ + 2);
                if (close == std::u16string_view::npos) return false;
                i_ = close + 2;
            } else if (c == u'/' && at(i_ + 1) == u'/') {
                i_ += 2;
                while (i_ < s_.size() && !isLineEnd(s_[i_])) ++i_;
            } else {
                return true;
            }
        }
        return true;
    }

    Token next() {
        start_ = i_;
        if (!skipBlanks()) return error(kUnterminatedComment);
        start_ = i_;
        if (i_ >= s_.size()) return simple(Tok::End);
        const char16_t c = s_[i_];
        if (c == u'"') return text();
        if (isDigit(c) || (c == u'.' && isDigit(at(i_ + 1)))) return number();
        if (c == u'$' || isNameStart(c)) return name();
        if (c == kPilcrow) {
            ++i_;
            Token t = simple(Tok::Text);
            t.text = u"\r";
            return t;
        }
        return symbol(c);
    }

    Token symbol(char16_t c) {
        ++i_;
        switch (c) {
            case u'(':
                return simple(Tok::LParen);
            case u')':
                return simple(Tok::RParen);
            case u'[':
                return simple(Tok::LBracket);
            case u']':
                return simple(Tok::RBracket);
            case u';':
                return simple(Tok::Semicolon);
            case u'+':
                return simple(Tok::Plus);
            case u'-':
                return simple(Tok::Minus);
            case u'*':
                return simple(Tok::Star);
            case u'/':
                return simple(Tok::Slash);
            case u'^':
                return simple(Tok::Caret);
            case u'&':
                return simple(Tok::Amp);
            case u'=':
                return simple(Tok::Eq);
            case u'\u2260':
                return simple(Tok::Ne);
            case u'\u2264':
                return simple(Tok::Le);
            case u'\u2265':
                return simple(Tok::Ge);
            case u'<':
                if (at(i_) == u'>') return ++i_, simple(Tok::Ne);
                if (at(i_) == u'=') return ++i_, simple(Tok::Le);
                return simple(Tok::Lt);
            case u'>':
                if (at(i_) == u'=') return ++i_, simple(Tok::Ge);
                return simple(Tok::Gt);
            default: {
                Token t = simple(Tok::Invalid);
                t.text.assign(1, c);
                return t;
            }
        }
    }

    // A text constant: \" \\ and \¶ stand for the character itself, ¶ for a carriage return;
    // any other backslash is kept as it is.
    Token text() {
        Token t = simple(Tok::Text);
        size_t i = i_ + 1;
        while (i < s_.size()) {
            const char16_t c = s_[i];
            if (c == u'"') {
                i_ = i + 1;
                return t;
            }
            const char16_t following = at(i + 1);
            if (c == u'\\' && i + 1 < s_.size() &&
                (following == u'"' || following == u'\\' || following == kPilcrow)) {
                t.text.push_back(following);
                i += 2;
                continue;
            }
            t.text.push_back(c == kPilcrow ? u'\r' : c);
            ++i;
        }
        i_ = s_.size();
        return error(kUnterminatedText);
    }

    // Digits with an optional fraction and an optional exponent ("1e3", "2.5E-2").
    Token number() {
        std::string ascii;
        auto takeDigits = [&] {
            while (i_ < s_.size() && isDigit(s_[i_])) ascii.push_back(static_cast<char>(s_[i_++]));
        };
        takeDigits();
        if (at(i_) == u'.') {
            ascii.push_back('.');
            ++i_;
            takeDigits();
        }
        const char16_t e = at(i_);
        if (e == u'e' || e == u'E') {
            const char16_t sign = at(i_ + 1);
            const bool signedExponent = (sign == u'+' || sign == u'-') && isDigit(at(i_ + 2));
            if (isDigit(sign) || signedExponent) {
                ascii.push_back('e');
                ++i_;
                if (signedExponent) ascii.push_back(static_cast<char>(s_[i_++]));
                takeDigits();
            }
        }
        Token t = simple(Tok::Number);
        std::optional<Number> n = parseDecimal(ascii);
        if (!n || n->value.point > decimal::kMaxPoint) return error(kBadNumber);
        if (n->value.point <= -decimal::kMaxPoint) n = Number{};  // too small to hold: zero
        t.number = std::move(*n);
        return t;
    }

    // A name; "$" and "$$" prefixes belong to it, and so does "::Field" after a table's name.
    Token name() {
        Token t = simple(Tok::Name);
        const size_t start = i_;
        const bool variable = s_[i_] == u'$';
        if (variable) {
            ++i_;
            if (at(i_) == u'$') ++i_;
        }
        // A name does not start with a dot, not even after "$".
        if (at(i_) != u'.') {
            while (i_ < s_.size() && isNameChar(s_[i_])) ++i_;
        }
        if (!variable && i_ > start && at(i_) == u':' && at(i_ + 1) == u':' &&
            isNameStart(at(i_ + 2))) {
            i_ += 2;
            while (i_ < s_.size() && isNameChar(s_[i_])) ++i_;
        }
        t.text.assign(s_.substr(start, i_ - start));
        return t;
    }

    std::u16string_view s_;
    size_t i_ = 0;
    size_t start_ = 0;  // where the token being read starts
};

}  // namespace

std::vector<Token> tokenize(std::u16string_view source) { return Lexer(source).run(); }

}  // namespace sim::calc
