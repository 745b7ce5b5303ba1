#include "html/fragment.h"

#include <algorithm>
#include <cstdio>
#include <iostream>
#include <optional>

#include "fmlib/convert.h"
#include "fmlib/text_utils.h"

namespace rvl::html {

namespace {

// Face bits of the host's character style.
constexpr fmx::uint16 kStrikethrough = 0x0001;
constexpr fmx::uint16 kSmallCaps = 0x0002;
constexpr fmx::uint16 kSuperscript = 0x0004;
constexpr fmx::uint16 kSubscript = 0x0008;
constexpr fmx::uint16 kUppercase = 0x0010;
constexpr fmx::uint16 kLowercase = 0x0020;
constexpr fmx::uint16 kWordUnderline = 0x0040;
constexpr fmx::uint16 kDoubleUnderline = 0x0080;
constexpr fmx::uint16 kBold = 0x0100;
constexpr fmx::uint16 kItalic = 0x0200;
constexpr fmx::uint16 kUnderline = 0x0400;
constexpr fmx::uint16 kHighlight = 0x1000;
constexpr fmx::uint16 kCondense = 0x2000;
constexpr fmx::uint16 kExtend = 0x4000;

bool has(fmx::uint16 face, fmx::uint16 bit) { return (face & bit) != 0; }

void addFaceKeys(fmx::uint16 face, bool isSpaceChar, Formattings& f) {
    if (has(face, kItalic)) f["italic"];
    if (has(face, kBold)) f["bold"];
    if (has(face, kHighlight)) f["highlight"];
    if (has(face, kUnderline)) f["underline"];
    if (has(face, kDoubleUnderline) && !has(face, kUnderline)) f["doubleunderline"];
    // Word underline marks the spaces between words, not the words.
    if (has(face, kWordUnderline) && !has(face, kUnderline) && !has(face, kDoubleUnderline) &&
        isSpaceChar) {
        f["underline"];
    }
    if (has(face, kStrikethrough)) f["strikethrough"];
    if (has(face, kCondense)) f["condense"];
    if (has(face, kExtend) && !has(face, kCondense)) f["extend"];
    if (has(face, kSuperscript)) f["superscript"];
    if (has(face, kSubscript) && !has(face, kSuperscript)) f["subscript"];
    if (has(face, kSmallCaps)) f["smallcaps"];
    if (has(face, kUppercase) && has(face, kLowercase)) {
        f["titlecase"];
    } else if (has(face, kUppercase)) {
        f["uppercase"];
    } else if (has(face, kLowercase)) {
        f["lowercase"];
    }
}

std::string getFontColor(const fmx::CharacterStyle& style) {
    const fmx::Color& c = style.GetColor();
    char buffer[8];
    std::snprintf(buffer, sizeof buffer, "#%02x%02x%02x", c.GetRed(), c.GetGreen(), c.GetBlue());
    return buffer;
}

// Font names by id, read from the host once per extraction.
class FontNames {
public:
    explicit FontNames(const fmx::ExprEnv& env) : env_(env) {}
    const std::string& getFontName(const fmx::CharacterStyle& style) {
        const fmx::CharacterStyle::FontID id = style.GetFont();
        auto it = names_.find(id);
        if (it == names_.end()) {
            fmx::TextUniquePtr name;
            if (!data_) data_.emplace();
            (*data_)->GetFontInfo(id, *name, env_);
            it = names_.emplace(id, fmlib::StringFromFmText(*name)).first;
        }
        return it->second;
    }

private:
    const fmx::ExprEnv& env_;
    std::optional<fmx::DataUniquePtr> data_;
    std::map<fmx::CharacterStyle::FontID, std::string> names_;
};

Formattings formattingsFromStyle(const fmx::CharacterStyle& style, bool isSpaceChar,
                                 FontNames& fonts) {
    Formattings f;
    if (style.IsAllDisabled()) return f;
    addFaceKeys(style.GetFace(), isSpaceChar, f);
    if (style.IsColorEnabled()) f["color"] = getFontColor(style);
    if (const std::string& font = fonts.getFontName(style); !font.empty()) f["font"] = font;
    if (style.IsSizeEnabled()) f["size"] = std::to_string(style.GetSize()) + "px";
    return f;
}

// One character's 8-bit form for the merge trace, converted as the host converts a text.
void appendTraceChar(fmx::uint16 unit, std::string& out) {
    if (unit < 0x80) {
        out.push_back(static_cast<char>(unit));
        return;
    }
    fmx::TextUniquePtr one;
    one->AssignUnicodeWithLength(&unit, 1);
    out += fmlib::StringFromFmText(*one);
}

template <class T>
bool contains(const std::vector<T>& v, const T& x) {
    return std::find(v.begin(), v.end(), x) != v.end();
}

template <class T>
void removeAll(std::vector<T>& v, const T& x) {
    v.erase(std::remove(v.begin(), v.end(), x), v.end());
}

}  // namespace

void cFragment::getText(fmx::Text& text) const {
    text.AssignUnicodeWithLength(reinterpret_cast<const fmx::uint16*>(chars_.data()),
                                 static_cast<fmx::uint32>(chars_.size()));
}

std::string cFragment::getInlineCSS() const { return serialize_CSS(inlineCSS_, ""); }

std::string cFragment::getInlineCSSClasses() const {
    std::string out;
    for (const std::string& name : classes_) {
        if (!out.empty()) out += ' ';
        out += name;
    }
    return out;
}

void cFragment::filterFormattings(const ParamVector& styleVector) {
    for (auto it = formattings_.begin(); it != formattings_.end();) {
        const bool listed =
            std::any_of(styleVector.begin(), styleVector.end(),
                        [&](const auto& entry) { return entry.first == it->first; });
        it = listed ? std::next(it) : formattings_.erase(it);
    }
}

void cFragment::extractFormattingCombinationToCreateTag(const std::string& combination,
                                                        const std::string& tag) {
    if (combination.empty() || tag.empty()) return;
    const std::vector<std::string> keys = explode(combination, '+');
    for (const std::string& key : keys) {
        if (!formattings_.contains(key)) return;
    }
    for (const std::string& key : keys) formattings_.erase(key);
    tags_.push_back(tag);
}

void cFragment::extractFormattingCombinationToCreateClass(const std::string& combination,
                                                          const std::string& prefix,
                                                          ClassMap& classMap) {
    if (combination.empty()) return;
    Formattings taken;
    if (combination == "all") {
        taken = formattings_;
    } else {
        for (const std::string& key : explode(combination, '+')) {
            auto it = formattings_.find(key);
            if (it == formattings_.end()) return;
            taken.insert(*it);
        }
    }
    const std::string css = serialize_CSS(CSSFromFormattings(taken), "");
    if (css.empty()) return;
    classes_.push_back(get_or_create_class(css, prefix.empty() ? "rvl" : prefix, classMap));
    for (const auto& entry : taken) formattings_.erase(entry.first);
}

bool cFragment::containsTag(const std::string& name) const { return contains(tags_, name); }
void cFragment::removeTag(const std::string& name) { removeAll(tags_, name); }
bool cFragment::containsCssClassName(const std::string& name) const {
    return contains(classes_, name);
}
void cFragment::removeCssClassName(const std::string& name) { removeAll(classes_, name); }

void cFragment::append(const cFragment& next) {
    chars_ += next.chars_;
    text8_ += next.text8_;
    end_ = next.end_;
}

CSSMap CSSFromFormattings(const Formattings& f) {
    CSSMap css;
    auto set = [&](const char* key, const char* property, const std::string& value) {
        if (f.contains(key)) css[property] = value;
    };
    set("bold", "font-weight", "bold");
    set("italic", "font-style", "italic");
    set("highlight", "background-color", "#FFFF00");
    set("underline", "text-decoration", "underline");
    if (f.contains("doubleunderline")) {
        css["text-decoration"] = "underline";
        css["text-decoration-style"] = "double";
        css["-webkit-text-decoration-style"] = "double";
    }
    if (f.contains("strikethrough")) {
        auto it = css.find("text-decoration");
        if (it == css.end()) {
            css["text-decoration"] = "line-through";
        } else {
            it->second += " line-through";
        }
    }
    set("condense", "letter-spacing", "-2px");
    set("extend", "letter-spacing", "2px");
    set("superscript", "vertical-align", "super");
    set("subscript", "vertical-align", "sub");
    set("smallcaps", "font-variant", "small-caps");
    set("uppercase", "text-transform", "uppercase");
    set("lowercase", "text-transform", "lowercase");
    set("titlecase", "text-transform", "capitalize");
    for (const char* key : {"color", "font", "size"}) {
        auto it = f.find(key);
        if (it == f.end()) continue;
        const char* property = key[0] == 'c'   ? "color"
                               : key[0] == 'f' ? "font-family"
                                               : "font-size";
        css[property] = it->second;
    }
    return css;
}

std::string serialize_CSS(const CSSMap& css, const std::string& separator) {
    std::string out;
    for (const auto& [property, value] : css) {
        out += property;
        out += ':';
        out += value;
        out += ';';
        out += separator;
    }
    return out;
}

Formattings formattingsFromFMCharacter(const fmx::Text& text, fmx::uint32 position,
                                       const fmx::ExprEnv& env) {
    fmx::CharacterStyleUniquePtr style;
    text.GetStyle(*style, position);
    fmx::TextUniquePtr one;
    one->SetText(text, position, 1);
    FontNames fonts(env);
    return formattingsFromStyle(*style, isSpace(*one), fonts);
}

std::vector<cFragment> extractFragments(const fmx::Text& text, fmx::uint32 from, fmx::uint32 to,
                                        const fmx::ExprEnv& env) {
    std::vector<cFragment> fragments;
    if (from >= to) return fragments;
    std::vector<fmx::uint16> units(to - from);
    text.GetUnicode(units.data(), from, to - from);

    FontNames fonts(env);
    fmx::CharacterStyleUniquePtr style;
    fmx::CharacterStyleUniquePtr previous;
    fmx::uint16 previousFace = 0;
    bool previousSpace = false;
    std::string currentCSS;
    for (fmx::uint32 i = 0; i < units.size(); ++i) {
        const fmx::uint16 unit = units[i];
        const bool space = unit == u' ';
        const auto position = static_cast<int64_t>(from + i);
        text.GetStyle(*style, from + i);
        // A character styled as the one before has its formatting set, and so its CSS; only
        // word underline tells spaces from other characters.
        const bool sameStyle = !fragments.empty() && *style == *previous &&
                               (!has(previousFace, kWordUnderline) || space == previousSpace);
        if (!sameStyle) {
            cFragment candidate;
            candidate.formattings_ = formattingsFromStyle(*style, space, fonts);
            candidate.inlineCSS_ = CSSFromFormattings(candidate.formattings_);
            std::string css = candidate.getInlineCSS();
            if (fragments.empty() || css != currentCSS) {
                candidate.start_ = position;
                fragments.push_back(std::move(candidate));
                currentCSS = std::move(css);
            }
            previous->Assign(*style);
            previousFace = style->IsAllDisabled() ? 0 : style->GetFace();
        }
        previousSpace = space;
        cFragment& current = fragments.back();
        current.addChar(unit);
        appendTraceChar(unit, current.text8_);
        current.end_ = position + 1;
    }
    return fragments;
}

bool fragmentsHaveEqualAppearance(const cFragment& a, const cFragment& b) {
    return a.tags_ == b.tags_ && a.classes_ == b.classes_ && a.inlineCSS_ == b.inlineCSS_;
}

void mergeFragments(std::vector<cFragment>& fragments) {
    if (fragments.empty()) return;
    std::vector<cFragment> merged;
    merged.reserve(fragments.size());
    merged.push_back(std::move(fragments.front()));
    for (size_t i = 1; i < fragments.size(); ++i) {
        cFragment& last = merged.back();
        if (!fragmentsHaveEqualAppearance(last, fragments[i])) {
            merged.push_back(std::move(fragments[i]));
            continue;
        }
        const std::string line =
            "Merging 2 fragments: '" + last.text8_ + "' + '" + fragments[i].text8_ + "' \n";
        std::cout.write(line.data(), static_cast<std::streamsize>(line.size()));
        last.append(fragments[i]);
    }
    fragments = std::move(merged);
}

std::string get_or_create_class(const std::string& css, const std::string& prefix,
                                ClassMap& classMap) {
    if (auto it = classMap.nameOfCSS.find(css); it != classMap.nameOfCSS.end()) return it->second;
    unsigned& n = classMap.lastTaken[prefix];
    std::string candidate = n == 0 ? prefix : prefix + std::to_string(n);
    while (classMap.classes.contains(candidate)) candidate = prefix + std::to_string(++n);
    classMap.classes.emplace(candidate, css);
    classMap.nameOfCSS.emplace(css, candidate);
    return candidate;
}

}  // namespace rvl::html
