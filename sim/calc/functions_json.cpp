// FileMaker's JSON functions on nlohmann::json. Objects keep their keys in sorted order and come
// out compact, as FileMaker writes them; a text that is not JSON, or a path that cannot be
// followed, gives a text starting with "? " that says why, not a calculation error.
#include <cmath>
#include <nlohmann/json.hpp>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "sim/calc/builtins.h"
#include "sim/calc/errors.h"
#include "sim/calc/evaluator.h"
#include "sim/core/encoding.h"
#include "sim/core/text.h"

namespace sim::calc {

namespace {

using Json = nlohmann::json;
using Nodes = std::vector<NodePtr>;

// The JSONSetElement type constants.
enum JsonType {
    kRaw = 0,
    kString = 1,
    kNumber = 2,
    kObject = 3,
    kArray = 4,
    kBoolean = 5,
    kNull = 6
};

// A JSON function's answer that is not a result: the "? ..." text FileMaker gives instead.
struct JsonFailure {
    std::string text;
};

// Numbers cross between the calculation and JSON here only, through their text forms, so that
// JSON gets the digits the host shows.
Json jsonNumber(const Value& v) {
    const Number n = v.asNumber();
    if (n.empty) return Json(0);
    try {
        return Json::parse(toUtf8(formatNumber(n)));
    } catch (const nlohmann::json::parse_error&) {
        return Json(0);  // not a finite number
    }
}

Value numberOf(const Json& j) {
    if (j.is_number_integer()) return Value::number(parseNumber(fromUtf8(j.dump())));
    return numberValue(j.get<double>());
}

// A JSONSetElement type argument; anything unknown reads as JSONRaw.
int typeOf(const Value& v) {
    const std::u16string text = formatNumber(v.asNumber());
    return text.size() == 1 && text[0] >= u'0' && text[0] <= u'6' ? text[0] - u'0' : 0;
}

// What a parse failure looks like, in the words of FileMaker's JSON reader.
std::string parseFailureText(const std::string& input, const nlohmann::json::parse_error& e) {
    const std::string what = e.what();
    std::string why = "Syntax error: value, object or array expected.";
    if (what.find("; expected end of input") != std::string::npos) {
        why = "Extra non-whitespace after JSON value.";
    } else if (what.find("object key") != std::string::npos) {
        why = "Missing '}' or object member name";
    } else if (what.find("object separator") != std::string::npos) {
        why = "Missing ':' after object member name";
    } else if (what.find("parsing object") != std::string::npos) {
        why = "Missing ',' or '}' in object declaration";
    } else if (what.find("parsing array") != std::string::npos) {
        why = "Missing ',' or ']' in array declaration";
    } else if (what.find("string") != std::string::npos) {
        why = "Bad string";
    }
    // The reader stops after the character at fault.
    const std::size_t at = std::min<std::size_t>(e.byte > 0 ? e.byte - 1 : 0, input.size());
    int line = 1;
    int column = 1;
    for (std::size_t i = 0; i < at; ++i) {
        if (input[i] == '\n') {
            ++line;
            column = 1;
        } else if ((static_cast<unsigned char>(input[i]) & 0xC0) != 0x80) {
            ++column;
        }
    }
    return "? * Line " + std::to_string(line) + ", Column " + std::to_string(column) + "\r  " +
           why + "\r";
}

// Deeper JSON would make writing it recurse too deep; FileMaker's reader stops at such a depth
// as well.
constexpr int kMaxJsonDepth = 1000;

bool tooDeep(const std::string& input) {
    int depth = 0;
    bool inString = false;
    for (std::size_t i = 0; i < input.size(); ++i) {
        const char c = input[i];
        if (inString) {
            if (c == '\\') ++i;
            if (c == '"') inString = false;
        } else if (c == '"') {
            inString = true;
        } else if (c == '[' || c == '{') {
            if (++depth > kMaxJsonDepth) return true;
        } else if (c == ']' || c == '}') {
            --depth;
        }
    }
    return false;
}

Json parseJson(const std::string& input) {
    if (tooDeep(input)) throw JsonFailure{"? Nesting deeper than 1000 levels"};
    try {
        return Json::parse(input);
    } catch (const nlohmann::json::parse_error& e) {
        throw JsonFailure{parseFailureText(input, e)};
    }
}

// One step of a path: a key, an index, "[+]" (after the last element) or "[:]" (the last one).
struct Step {
    enum Kind { Key, Index, Append, Last } kind = Key;
    std::string key;
    std::size_t index = 0;
};

std::optional<std::size_t> indexOf(std::string_view digits) {
    if (digits.empty() || digits.size() > 9) return std::nullopt;
    std::size_t n = 0;
    for (char c : digits) {
        if (c < '0' || c > '9') return std::nullopt;
        n = n * 10 + static_cast<std::size_t>(c - '0');
    }
    return n;
}

// "a.b[2].c", "[0]", "['a.b']" (a key with dots), or a bare key or index.
std::vector<Step> parsePath(const std::string& path) {
    std::vector<Step> steps;
    std::size_t i = 0;
    auto bad = [&] { throw JsonFailure{"? Invalid path: " + path}; };
    while (i < path.size()) {
        if (path[i] == '.') {
            ++i;
            continue;
        }
        if (path[i] == '[') {
            const std::size_t close = path.find(']', i);
            if (close == std::string::npos) bad();
            const std::string_view inside(path.data() + i + 1, close - i - 1);
            Step s;
            if (inside == "+") {
                s.kind = Step::Append;
            } else if (inside == ":") {
                s.kind = Step::Last;
            } else if (inside.size() >= 2 && (inside.front() == '\'' || inside.front() == '"') &&
                       inside.back() == inside.front()) {
                s.key = std::string(inside.substr(1, inside.size() - 2));
            } else if (auto n = indexOf(inside)) {
                s.kind = Step::Index;
                s.index = *n;
            } else {
                bad();
            }
            steps.push_back(std::move(s));
            i = close + 1;
            continue;
        }
        std::size_t end = i;
        while (end < path.size() && path[end] != '.' && path[end] != '[') ++end;
        steps.push_back({Step::Key, path.substr(i, end - i), 0});
        i = end;
    }
    if (steps.size() > static_cast<std::size_t>(kMaxJsonDepth)) bad();
    return steps;
}

// The element a path names, or nullptr when there is none.
const Json* find(const Json& root, const std::vector<Step>& steps) {
    const Json* at = &root;
    for (const Step& s : steps) {
        if (at->is_object() && s.kind == Step::Key) {
            auto it = at->find(s.key);
            if (it == at->end()) return nullptr;
            at = &*it;
        } else if (at->is_array()) {
            std::optional<std::size_t> index;
            if (s.kind == Step::Index) index = s.index;
            if (s.kind == Step::Key) index = indexOf(s.key);  // a bare index
            if (s.kind == Step::Last && !at->empty()) index = at->size() - 1;
            if (!index || *index >= at->size()) return nullptr;
            at = &(*at)[*index];
        } else {
            return nullptr;
        }
    }
    return at;
}

// The element a path names, made (with objects or arrays on the way, and arrays padded with
// nulls) when missing.
Json& make(Json& root, const std::vector<Step>& steps, const std::string& path) {
    Json* at = &root;
    for (const Step& s : steps) {
        if (at->is_null()) *at = s.kind == Step::Key ? Json::object() : Json::array();
        if (at->is_object() && s.kind == Step::Key) {
            at = &(*at)[s.key];
        } else if (at->is_array()) {
            std::size_t index = at->size();
            if (s.kind == Step::Index) index = s.index;
            if (s.kind == Step::Last) index = at->empty() ? 0 : at->size() - 1;
            if (s.kind == Step::Key) {
                std::optional<std::size_t> n = indexOf(s.key);
                if (!n) throw JsonFailure{"? Path error: \"" + path + "\" names a key in an array"};
                index = *n;
            }
            if (index > 1000000 + at->size()) throw JsonFailure{"? Invalid path: " + path};
            while (at->size() <= index) at->push_back(nullptr);
            at = &(*at)[index];
        } else {
            throw JsonFailure{"? Path error: \"" + path +
                              "\" goes through a value that is neither "
                              "an object nor an array"};
        }
    }
    return *at;
}

// Compact, as FileMaker writes JSON.
std::string compact(const Json& j) {
    return j.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

// An element as a calculation value: text for strings, objects and arrays (as JSON), numbers as
// numbers, true and false as 1 and 0, null as empty text.
Value valueOf(const Json& j) {
    switch (j.type()) {
        case Json::value_t::string:
            return textValue(fromUtf8(j.get_ref<const std::string&>()));
        case Json::value_t::number_integer:
        case Json::value_t::number_unsigned:
        case Json::value_t::number_float:
            return numberOf(j);
        case Json::value_t::boolean:
            return booleanValue(j.get<bool>());
        case Json::value_t::null:
            return emptyText();
        default:
            return textValue(fromUtf8(compact(j)));
    }
}

template <typename Body>
Value guarded(Body&& body) {
    try {
        return body();
    } catch (const JsonFailure& f) {
        return textValue(fromUtf8(f.text));
    } catch (const nlohmann::json::exception& e) {
        return textValue(fromUtf8(std::string("? ") + e.what()));
    }
}

std::string utf8(Args& a, size_t i) { return toUtf8(a.units(i)); }

Value fnGetElement(Args& a) {
    return guarded([&] {
        const Json root = parseJson(utf8(a, 0));
        const Json* found = find(root, parsePath(utf8(a, 1)));
        return found ? valueOf(*found) : emptyText();
    });
}

// The keys of an object (sorted) or the indexes of an array, one per line.
Value fnListKeys(Args& a) {
    return guarded([&] {
        const Json root = parseJson(utf8(a, 0));
        const Json* found = find(root, parsePath(utf8(a, 1)));
        std::u16string out;
        if (found == nullptr) return emptyText();
        if (found->is_object()) {
            for (const auto& item : found->items()) {
                if (!out.empty()) out += u'\r';
                out += fromUtf8(item.key());
            }
        } else if (found->is_array()) {
            for (std::size_t i = 0; i < found->size(); ++i) {
                if (i > 0) out += u'\r';
                out += fromUtf8(std::to_string(i));
            }
        }
        return textValue(std::move(out));
    });
}

Value fnListValues(Args& a) {
    return guarded([&] {
        const Json root = parseJson(utf8(a, 0));
        const Json* found = find(root, parsePath(utf8(a, 1)));
        if (found == nullptr || !found->is_structured()) return emptyText();
        Text out;
        bool first = true;
        for (const Json& element : *found) {
            if (!first) out.append(u"\r");
            first = false;
            out.append(valueOf(element).asText());
        }
        return textValue(std::move(out));
    });
}

Value fnDeleteElement(Args& a) {
    return guarded([&] {
        Json root = parseJson(utf8(a, 0));
        std::vector<Step> steps = parsePath(utf8(a, 1));
        if (steps.empty()) return textValue(fromUtf8(compact(root)));
        const Step last = steps.back();
        steps.pop_back();
        Json* parent = const_cast<Json*>(find(root, steps));
        if (parent != nullptr && parent->is_object() && last.kind == Step::Key) {
            parent->erase(last.key);
        } else if (parent != nullptr && parent->is_array()) {
            std::optional<std::size_t> index;
            if (last.kind == Step::Index) index = last.index;
            if (last.kind == Step::Key) index = indexOf(last.key);
            if (last.kind == Step::Last && !parent->empty()) index = parent->size() - 1;
            if (index && *index < parent->size()) parent->erase(*index);
        }
        return textValue(fromUtf8(compact(root)));
    });
}

// The JSON element `text` starts with, ignoring whatever follows it ("4,2" is 4), as FileMaker
// reads JSONRaw values; nullopt when it does not start with one.
std::optional<Json> firstElement(const std::string& text) {
    if (tooDeep(text)) return std::nullopt;
    std::istringstream in(text);
    Json j;
    try {
        in >> j;  // reads one element and leaves the rest
    } catch (const nlohmann::json::parse_error&) {
        return std::nullopt;
    }
    return j;
}

// The element JSONSetElement puts in for `value` of `type`.
Json elementOf(const Value& value, int type) {
    switch (type) {
        case kString:
            return Json(toUtf8(value.asText().units()));
        case kNumber:
            return jsonNumber(value);
        case kBoolean: {
            const std::u16string lower = toLower(value.asText().units());
            return Json(lower == u"true" || isTrue(value));
        }
        case kNull:
            return Json(nullptr);
        case kObject:
        case kArray: {
            const std::string text = toUtf8(value.asText().units());
            if (text.find_first_not_of(" \t\r\n") == std::string::npos) {
                return type == kObject ? Json::object() : Json::array();
            }
            Json j = parseJson(text);
            if (type == kObject && !j.is_object()) throw JsonFailure{"? Value is not an object"};
            if (type == kArray && !j.is_array()) throw JsonFailure{"? Value is not an array"};
            return j;
        }
        default: {  // JSONRaw: its first JSON element when it starts with one, else a string
            const std::string text = toUtf8(value.asText().units());
            std::optional<Json> first = firstElement(text);
            return first ? std::move(*first) : Json(text);
        }
    }
}

// What JSONSetElement starts from for an empty json: an array when the path begins with an
// index ("[0]", "[+]"), else an object.
Json emptyRootFor(const std::string& path) {
    const std::size_t first = path.find_first_not_of(' ');
    return first != std::string::npos && path[first] == '[' &&
                   (path.size() < first + 2 || (path[first + 1] != '\'' && path[first + 1] != '"'))
               ? Json::array()
               : Json::object();
}

// JSONSetElement ( json ; keyOrIndexOrPath ; value ; type ), or with lists
// [ keyOrIndexOrPath ; value ; type ] after json, applied in order. An empty json is an empty
// object.
Value fnSetElement(Evaluator& ev, const Nodes& args) {
    const Value json = ev.eval(*args[0]);
    std::vector<std::vector<Value>> changes;
    if (args[1]->kind != NodeKind::List) {
        if (args.size() != 4) raise(args.size() < 4 ? kTooFewParameters : kTooManyParameters);
        changes.push_back({ev.eval(*args[1]), ev.eval(*args[2]), ev.eval(*args[3])});
    } else {
        for (size_t i = 1; i < args.size(); ++i) {
            if (args[i]->kind != NodeKind::List || args[i]->children.size() != 3) {
                raise(args[i]->kind == NodeKind::List ? kGenericError : kListNotAllowed);
            }
            std::vector<Value> change;
            for (const NodePtr& part : args[i]->children) change.push_back(ev.eval(*part));
            changes.push_back(std::move(change));
        }
    }
    return guarded([&] {
        const std::string text = toUtf8(json.asText().units());
        Json root = text.find_first_not_of(" \t\r\n") == std::string::npos
                        ? emptyRootFor(toUtf8(changes.front()[0].asText().units()))
                        : parseJson(text);
        for (const std::vector<Value>& change : changes) {
            const std::string path = toUtf8(change[0].asText().units());
            Json element = elementOf(change[1], typeOf(change[2]));
            const std::vector<Step> steps = parsePath(path);
            if (steps.empty()) {
                root = std::move(element);
            } else {
                make(root, steps, path) = std::move(element);
            }
        }
        return textValue(fromUtf8(compact(root)));
    });
}

// FileMaker's readable form: a tab per level, " : " after keys, objects and arrays that hold
// objects or arrays spread over lines, short arrays of plain values on one line.
class Formatter {
public:
    std::string run(const Json& j) {
        write(j);
        return out_;
    }

private:
    void newline() {
        out_ += '\r';
        out_.append(static_cast<std::size_t>(depth_), '\t');
    }

    static bool multiline(const Json& array) {
        std::size_t width = 0;
        for (const Json& e : array) {
            if (e.is_structured() && !e.empty()) return true;
            width += compact(e).size() + 2;
        }
        return width > 74;
    }

    void open(char bracket) {
        if (!out_.empty() && out_.back() != '\t' && out_.back() != '\r') newline();
        out_ += bracket;
        ++depth_;
    }

    void close(char bracket) {
        --depth_;
        newline();
        out_ += bracket;
    }

    void write(const Json& j) {
        if (j.is_object() && !j.empty()) {
            open('{');
            bool first = true;
            for (const auto& item : j.items()) {
                if (!first) out_ += ',';
                first = false;
                newline();
                out_ += compact(Json(item.key())) + " : ";
                write(item.value());
            }
            close('}');
        } else if (j.is_array() && !j.empty() && multiline(j)) {
            open('[');
            bool first = true;
            for (const Json& e : j) {
                if (!first) out_ += ',';
                first = false;
                newline();
                write(e);
            }
            close(']');
        } else if (j.is_array() && !j.empty()) {
            out_ += "[ ";
            bool first = true;
            for (const Json& e : j) {
                if (!first) out_ += ", ";
                first = false;
                out_ += compact(e);
            }
            out_ += " ]";
        } else {
            out_ += compact(j);
        }
    }

    std::string out_;
    int depth_ = 0;
};

Value fnFormatElements(Args& a) {
    return guarded([&] {
        const Json root = parseJson(utf8(a, 0));
        return textValue(fromUtf8(Formatter().run(root)));
    });
}

// The type constant of an element: 1 string, 2 number, 3 object, 4 array, 5 boolean, 6 null.
int typeCode(const Json& j) {
    switch (j.type()) {
        case Json::value_t::string:
            return kString;
        case Json::value_t::object:
            return kObject;
        case Json::value_t::array:
            return kArray;
        case Json::value_t::boolean:
            return kBoolean;
        case Json::value_t::null:
            return kNull;
        default:
            return kNumber;
    }
}

// JSONGetElementType ( json ; keyOrIndexOrPath ): the type constant of the element; an element
// that is not there is a path error.
Value fnGetElementType(Args& a) {
    return guarded([&] {
        const Json root = parseJson(utf8(a, 0));
        const Json* found = find(root, parsePath(utf8(a, 1)));
        if (found == nullptr) throw JsonFailure{"? Incorrect key, index, or path"};
        return Value::number(static_cast<double>(typeCode(*found)));
    });
}

bool isLineSeparator(char16_t c) {
    return c == u'\r' || c == u'\n' || c == u'\u2028' || c == u'\u2029';
}

// JSONMakeArray ( listOfValues ; separator ; type ): the pieces between separators as elements
// of `type`; an empty separator splits at every kind of return, and a return at the very end
// does not start another piece.
Value fnMakeArray(Args& a) {
    return guarded([&] {
        const std::u16string_view list = a.units(0);
        const std::u16string separator(a.units(1));
        const int type = typeOf(a[2]);
        Json array = Json::array();
        auto add = [&](std::u16string_view piece) {
            array.push_back(elementOf(Value::text(std::u16string(piece)), type));
        };
        if (list.empty()) return textValue(fromUtf8(compact(array)));
        std::size_t start = 0;
        if (separator.empty()) {
            for (std::size_t i = 0; i < list.size(); ++i) {
                if (!isLineSeparator(list[i])) continue;
                add(list.substr(start, i - start));
                start = i + 1;
            }
            if (start < list.size()) add(list.substr(start));
        } else {
            for (std::size_t hit = list.find(separator); hit != std::u16string_view::npos;
                 hit = list.find(separator, start)) {
                add(list.substr(start, hit - start));
                start = hit + separator.size();
            }
            add(list.substr(start));
        }
        return textValue(fromUtf8(compact(array)));
    });
}

// JSONParse ( json ): the text itself when it is JSON, else the reader's complaint.
Value fnParse(Args& a) {
    return guarded([&] {
        parseJson(utf8(a, 0));
        return Value::text(a.text(0));
    });
}

// JSONParsedState ( json ): this host keeps no parsed form beside a text, so it judges the text
// itself: 0 for an empty one, -1 for one that is not JSON, else the type constant.
Value fnParsedState(Args& a) {
    const std::string text = utf8(a, 0);
    if (text.empty()) return Value::number(0.0);
    try {
        return Value::number(static_cast<double>(typeCode(parseJson(text))));
    } catch (const JsonFailure&) {
        return Value::number(-1.0);
    }
}

constexpr Builtin kFunctions[] = {
    {u"jsongetelementtype", 2, 2, fnGetElementType},
    {u"jsonmakearray", 3, 3, fnMakeArray},
    {u"jsonparse", 1, 1, fnParse},
    {u"jsonparsedstate", 1, 1, fnParsedState},
    {u"jsongetelement", 2, 2, fnGetElement},
    {u"jsonsetelement", 2, -1, nullptr, fnSetElement, true},
    {u"jsondeleteelement", 2, 2, fnDeleteElement},
    {u"jsonlistkeys", 2, 2, fnListKeys},
    {u"jsonlistvalues", 2, 2, fnListValues},
    {u"jsonformatelements", 1, 1, fnFormatElements},
};

}  // namespace

std::span<const Builtin> jsonFunctions() { return kFunctions; }

}  // namespace sim::calc
