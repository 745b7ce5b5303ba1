#include "html/fragment.h"

#include <algorithm>
#include <array>
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

Formattings formattingsFromStyle(const fmx::CharacterStyle& style, bool isSpaceChar,
                                 StyleCache& cache) {
    Formattings f;
    if (style.IsAllDisabled()) return f;
    addFaceKeys(style.GetFace(), isSpaceChar, f);
    if (style.IsColorEnabled()) f["color"] = getFontColor(style);
    if (const std::string& font = cache.getFontName(style); !font.empty()) f["font"] = font;
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

bool isLowSurrogate(char16_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }

using fmlib::eachPiece;

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

std::string cFragment::traceText(size_t maxUnits) const {
    return html::traceText(chars_, maxUnits);
}

std::string traceText(std::u16string_view units, size_t maxUnits) {
    size_t shown = std::min(units.size(), maxUnits);
    // A cut never separates the two halves of a surrogate pair.
    if (shown < units.size() && shown > 0 && isLowSurrogate(units[shown])) --shown;
    std::string out;
    for (size_t i = 0; i < shown; ++i) appendTraceChar(units[i], out);
    // Counted as the host's Length counts: a character outside the BMP counts 2.
    if (shown < units.size()) out += "... (" + std::to_string(units.size()) + " characters)";
    return out;
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
    const bool all = eachPiece(combination, '+',
                               [&](std::string_view key) { return formattings_.contains(key); });
    if (!all) return;
    eachPiece(combination, '+', [&](std::string_view key) {
        if (auto it = formattings_.find(key); it != formattings_.end()) formattings_.erase(it);
        return true;
    });
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
        const bool all = eachPiece(combination, '+', [&](std::string_view key) {
            auto it = formattings_.find(key);
            if (it == formattings_.end()) return false;
            taken.insert(*it);
            return true;
        });
        if (!all) return;
    }
    const std::string css = cssTextOf(taken);
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
    end_ = next.end_;
}

namespace {

// The CSS properties a formatting set can give, in byte-wise order of their names, which is the
// order they are written in.
enum Property : uint8_t {
    kWebkitDecorationStyle,
    kBackgroundColor,
    kColor,
    kFontFamily,
    kFontSize,
    kFontStyle,
    kFontVariant,
    kFontWeight,
    kLetterSpacing,
    kTextDecoration,
    kTextDecorationStyle,
    kTextTransform,
    kVerticalAlign,
    kPropertyCount
};
constexpr std::string_view kPropertyNames[kPropertyCount] = {
    "-webkit-text-decoration-style",
    "background-color",
    "color",
    "font-family",
    "font-size",
    "font-style",
    "font-variant",
    "font-weight",
    "letter-spacing",
    "text-decoration",
    "text-decoration-style",
    "text-transform",
    "vertical-align",
};

// The formatting keys, in byte-wise order.
enum Key : uint8_t {
    kBoldKey,
    kColorKey,
    kCondenseKey,
    kDoubleUnderlineKey,
    kExtendKey,
    kFontKey,
    kHighlightKey,
    kItalicKey,
    kLowercaseKey,
    kSizeKey,
    kSmallCapsKey,
    kStrikethroughKey,
    kSubscriptKey,
    kSuperscriptKey,
    kTitlecaseKey,
    kUnderlineKey,
    kUppercaseKey,
    kKeyCount
};
constexpr std::string_view kKeyNames[kKeyCount] = {
    "bold",      "color",         "condense",  "doubleunderline", "extend",
    "font",      "highlight",     "italic",    "lowercase",       "size",
    "smallcaps", "strikethrough", "subscript", "superscript",     "titlecase",
    "underline", "uppercase",
};

// Each property's value, when set, for one formatting set.
struct Declarations {
    std::array<std::string_view, kPropertyCount> values{};
    std::array<bool, kPropertyCount> set{};
    std::string fontFamily;  // the font-family value, which is made, not a constant

    void put(Property p, std::string_view value) {
        values[p] = value;
        set[p] = true;
    }
};

// The declarations of a formatting set: one walk over its keys, then the rules in their order
// (later rules overwrite earlier ones, strikethrough adds to an underline).
Declarations declarationsOf(const Formattings& f) {
    std::array<const std::string*, kKeyCount> present{};
    size_t k = 0;
    for (const auto& [key, value] : f) {
        while (k < kKeyCount && kKeyNames[k] < key) ++k;
        if (k == kKeyCount) break;
        if (kKeyNames[k] == key) present[k] = &value;
    }
    Declarations d;
    if (present[kBoldKey]) d.put(kFontWeight, "bold");
    if (present[kItalicKey]) d.put(kFontStyle, "italic");
    if (present[kHighlightKey]) d.put(kBackgroundColor, "#FFFF00");
    if (present[kUnderlineKey]) d.put(kTextDecoration, "underline");
    if (present[kDoubleUnderlineKey]) {
        d.put(kTextDecoration, "underline");
        d.put(kTextDecorationStyle, "double");
        d.put(kWebkitDecorationStyle, "double");
    }
    if (present[kStrikethroughKey]) {
        d.put(kTextDecoration, d.set[kTextDecoration] ? "underline line-through" : "line-through");
    }
    if (present[kCondenseKey]) d.put(kLetterSpacing, "-2px");
    if (present[kExtendKey]) d.put(kLetterSpacing, "2px");
    if (present[kSuperscriptKey]) d.put(kVerticalAlign, "super");
    if (present[kSubscriptKey]) d.put(kVerticalAlign, "sub");
    if (present[kSmallCapsKey]) d.put(kFontVariant, "small-caps");
    if (present[kUppercaseKey]) d.put(kTextTransform, "uppercase");
    if (present[kLowercaseKey]) d.put(kTextTransform, "lowercase");
    if (present[kTitlecaseKey]) d.put(kTextTransform, "capitalize");
    if (present[kColorKey]) d.put(kColor, *present[kColorKey]);
    if (present[kFontKey]) {
        d.fontFamily = cssFontFamily(*present[kFontKey]);
        d.put(kFontFamily, d.fontFamily);
    }
    if (present[kSizeKey]) d.put(kFontSize, *present[kSizeKey]);
    return d;
}

}  // namespace

CSSMap CSSFromFormattings(const Formattings& f) {
    const Declarations d = declarationsOf(f);
    CSSMap css;
    for (size_t p = 0; p < kPropertyCount; ++p) {
        if (d.set[p]) css.emplace_hint(css.end(), kPropertyNames[p], d.values[p]);
    }
    return css;
}

std::string cssTextOf(const Formattings& f) {
    const Declarations d = declarationsOf(f);
    std::string out;
    for (size_t p = 0; p < kPropertyCount; ++p) {
        if (!d.set[p]) continue;
        out += kPropertyNames[p];
        out += ':';
        out += d.values[p];
        out += ';';
    }
    return out;
}

std::string cssFontFamily(const std::string& name) {
    auto plain = [](unsigned char c) {
        return c >= 0x80 || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
               (c >= '0' && c <= '9') || c == ' ' || c == '-' || c == '_' || c == '.';
    };
    if (std::all_of(name.begin(), name.end(), plain)) return name;
    // What could end the CSS string, the style element or the attribute: the quotes, the
    // escape character, "<" ">" "&" and control characters.
    auto inert = [](unsigned char c) {
        return c >= 0x20 && c != 0x7F && c != '\'' && c != '"' && c != '\\' && c != '<' &&
               c != '>' && c != '&';
    };
    static constexpr char kHex[] = "0123456789abcdef";
    std::string out = "'";
    for (const char ch : name) {
        const auto c = static_cast<unsigned char>(ch);
        if (inert(c)) {
            out += ch;
            continue;
        }
        // "\" and the code in hex; the blank after it ends the escape and is not part of the name.
        out += '\\';
        if (c >= 16) out += kHex[c >> 4];
        out += kHex[c & 15];
        out += ' ';
    }
    return out + "'";
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

const std::string& StyleCache::getFontName(const fmx::CharacterStyle& style) {
    const fmx::CharacterStyle::FontID id = style.GetFont();
    auto it = fontNames_.find(id);
    if (it == fontNames_.end()) {
        fmx::TextUniquePtr name;
        if (!data_) data_.emplace();
        (*data_)->GetFontInfo(id, *name, env_);
        it = fontNames_.emplace(id, fmlib::StringFromFmText(*name)).first;
    }
    return it->second;
}

size_t StyleCache::lookup(const fmx::CharacterStyle& style, bool isSpaceChar, fmx::uint16& face) {
    Key key{~uint64_t{0}, 0};
    face = 0;
    if (!style.IsAllDisabled()) {
        fmx::CharacterStyle::FontID font = 0;
        fmx::CharacterStyle::FontSize fontSize = 0;
        style.GetFontInformation(font, face, fontSize);
        // Only word underline tells a space from another character.
        const bool spaceCounts = has(face, kWordUnderline) && isSpaceChar;
        const bool colorOn = style.IsColorEnabled();
        uint64_t rgb = 0;
        if (colorOn) {
            const fmx::Color& c = style.GetColor();
            rgb = uint64_t{c.GetRed()} << 16 | uint64_t{c.GetGreen()} << 8 | c.GetBlue();
        }
        const bool sizeOn = style.IsSizeEnabled();
        const uint32_t size = sizeOn ? fontSize : 0;
        key.traits = uint64_t{face} | uint64_t{spaceCounts} << 16 | uint64_t{colorOn} << 17 |
                     rgb << 18 | uint64_t{sizeOn} << 42;
        key.fontAndSize = uint32_t{font} | size << 16;
    }
    auto [it, added] = index_.try_emplace(key, entries_.size());
    if (added) {
        Entry e;
        e.formattings = formattingsFromStyle(style, isSpaceChar, *this);
        e.css = cssTextOf(e.formattings);
        e.cssId = cssIds_.try_emplace(e.css, cssIds_.size()).first->second;
        entries_.push_back(std::move(e));
    }
    return it->second;
}

Formattings formattingsFromFMCharacter(const fmx::Text& text, fmx::uint32 position,
                                       const fmx::ExprEnv& env) {
    fmx::CharacterStyleUniquePtr style;
    text.GetStyle(*style, position);
    fmx::TextUniquePtr one;
    one->SetText(text, position, 1);
    StyleCache cache(env);
    return formattingsFromStyle(*style, isSpace(*one), cache);
}

std::vector<FragmentCuts::Start> cutStarts(const fmx::Text& text, fmx::uint32 from,
                                           std::u16string_view units, StyleCache& cache) {
    std::vector<FragmentCuts::Start> starts;
    if (units.empty()) return starts;
    // The style read last and the one its run started with: swapped, never copied.
    fmx::CharacterStyleUniquePtr style;
    fmx::CharacterStyleUniquePtr previous;
    fmx::uint16 face = 0;
    size_t currentCss = 0;  // the CSS of the fragment being cut
    text.GetStyle(*style, from);
    for (size_t i = 0;;) {
        // Unit i starts a run of its style.
        const bool space = units[i] == u' ';
        const size_t index = cache.lookup(*style, space, face);
        style.swap(previous);
        // Equal CSS text continues the fragment, which keeps its first character's formatting.
        const size_t css = cache.entry(index).cssId;
        if (i == 0 || css != currentCss) {
            currentCss = css;
            starts.push_back({i, index});
        }
        // Characters styled as the run's first have its formatting, and so its CSS; only word
        // underline tells spaces from other characters.
        const bool spacesCount = has(face, kWordUnderline);
        for (++i; i < units.size(); ++i) {
            text.GetStyle(*style, static_cast<fmx::uint32>(from + i));
            if (!(*style == *previous) || (spacesCount && (units[i] == u' ') != space)) break;
        }
        if (i == units.size()) return starts;
    }
}

FragmentCuts cutFragments(const fmx::Text& text, fmx::uint32 from, fmx::uint32 to,
                          StyleCache& cache) {
    FragmentCuts cuts;
    cuts.from = from;
    if (from >= to) return cuts;
    std::u16string units(to - from, u'\0');
    text.GetUnicode(reinterpret_cast<fmx::uint16*>(units.data()), from, to - from);
    cuts.units.assign(units.begin(), units.end());
    cuts.starts = cutStarts(text, from, units, cache);
    return cuts;
}

std::vector<cFragment> fragmentsOf(const FragmentCuts& cuts, size_t first, size_t last) {
    std::vector<cFragment> fragments(last - first);
    for (size_t k = first; k < last; ++k) {
        const size_t begin = cuts.starts[k].at;
        const size_t end = k + 1 < cuts.starts.size() ? cuts.starts[k + 1].at : cuts.units.size();
        cFragment& f = fragments[k - first];
        f.chars_.assign(cuts.units.begin() + static_cast<ptrdiff_t>(begin),
                        cuts.units.begin() + static_cast<ptrdiff_t>(end));
        f.start_ = static_cast<int64_t>(cuts.from + begin);
        f.end_ = static_cast<int64_t>(cuts.from + end);
        f.styleIndex_ = cuts.starts[k].styleIndex;
    }
    return fragments;
}

std::vector<cFragment> extractFragments(const fmx::Text& text, fmx::uint32 from, fmx::uint32 to,
                                        StyleCache& cache) {
    const FragmentCuts cuts = cutFragments(text, from, to, cache);
    return fragmentsOf(cuts, 0, cuts.starts.size());
}

std::vector<cFragment> extractFragments(const fmx::Text& text, fmx::uint32 from, fmx::uint32 to,
                                        const fmx::ExprEnv& env) {
    StyleCache cache(env);
    std::vector<cFragment> fragments = extractFragments(text, from, to, cache);
    for (cFragment& f : fragments) {
        f.formattings_ = cache.entry(f.styleIndex_).formattings;
        f.inlineCSS_ = CSSFromFormattings(f.formattings_);
    }
    return fragments;
}

bool fragmentsHaveEqualAppearance(const cFragment& a, const cFragment& b) {
    return a.tags_ == b.tags_ && a.classes_ == b.classes_ && a.inlineCSS_ == b.inlineCSS_;
}

void MergeTrace::join(const cFragment& first, const cFragment& second) {
    join(first.chars_, second.chars_);
}

void MergeTrace::join(std::u16string_view first, std::u16string_view second) {
    if (lines_ == kMaxLines) {
        ++untraced_;
        return;
    }
    ++lines_;
    const std::string line = "Merging 2 fragments: '" + traceText(first, kFragmentUnits) + "' + '" +
                             traceText(second, kFragmentUnits) + "' \n";
    std::cout.write(line.data(), static_cast<std::streamsize>(line.size()));
}

void MergeTrace::finish() {
    if (untraced_ == 0) return;
    const std::string line =
        "Merging fragments: " + std::to_string(untraced_) + " further joins not traced \n";
    std::cout.write(line.data(), static_cast<std::streamsize>(line.size()));
    untraced_ = 0;
}

void mergeFragments(std::vector<cFragment>& fragments, MergeTrace& trace) {
    if (fragments.empty()) return;
    size_t last = 0;
    for (size_t i = 1; i < fragments.size(); ++i) {
        if (!fragmentsHaveEqualAppearance(fragments[last], fragments[i])) {
            if (++last != i) fragments[last] = std::move(fragments[i]);
            continue;
        }
        trace.join(fragments[last], fragments[i]);
        fragments[last].append(fragments[i]);
    }
    fragments.resize(last + 1);
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
