// Character formatting read from styled host text, and the fragments it is cut into: runs of
// characters whose CSS text is equal, carried with their tags, classes and inline style through
// the HTML conversion.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "host/fmx.h"

namespace rvl::html {

// Formatting key ("bold", "color", ...) to value; ordered byte-wise.
using Formattings = std::map<std::string, std::string, std::less<>>;
// CSS property to value, ordered by property.
using CSSMap = std::map<std::string, std::string, std::less<>>;
// Generated class name to the class's CSS text, with the lookups class naming needs kept fast.
struct ClassMap {
    std::map<std::string, std::string> classes;
    std::unordered_map<std::string, std::string> nameOfCSS;
    // Per prefix, the last number found taken: names are never freed, so the search goes on
    // from there.
    std::unordered_map<std::string, unsigned> lastTaken;
    bool empty() const { return classes.empty(); }
};
// Parameter entries (key, value) in the order written.
using ParamVector = std::vector<std::pair<std::string, std::string>>;

// A fragment's opening and closing markup, made once per formatting set and shared by the
// fragments that have it.
struct FragmentMarkup {
    std::u16string open;
    std::u16string close;
};

class cFragment {
public:
    cFragment() = default;
    cFragment(const cFragment&) = default;
    cFragment(cFragment&&) noexcept = default;
    cFragment& operator=(const cFragment&) = default;
    cFragment& operator=(cFragment&&) noexcept = default;

    void addChar(uint16_t unit) { chars_.push_back(unit); }
    // Sets `text` to the characters, without styles.
    void getText(fmx::Text& text) const;
    // The characters as 8-bit text for the merge trace, each converted on its own as the host
    // converts a text. Made when a trace needs it: most fragments are never traced. Past
    // `maxUnits` units the text is cut, and "... (N characters)" names its full length.
    std::string traceText(size_t maxUnits) const;

    std::string getInlineCSS() const;
    std::string getInlineCSSClasses() const;

    // Keeps only the keys listed in `styleVector`.
    void filterFormattings(const ParamVector& styleVector);
    void extractFormattingCombinationToCreateTag(const std::string& combination,
                                                 const std::string& tag);
    void extractFormattingCombinationToCreateClass(const std::string& combination,
                                                   const std::string& prefix, ClassMap& classMap);
    bool containsTag(const std::string& name) const;
    void removeTag(const std::string& name);
    bool containsCssClassName(const std::string& name) const;
    void removeCssClassName(const std::string& name);

    // Joins `next` onto this fragment: its characters follow this one's.
    void append(const cFragment& next);

    std::u16string chars_;
    int64_t start_ = 0;
    int64_t end_ = 0;
    Formattings formattings_;
    std::vector<std::string> tags_;
    std::vector<std::string> classes_;
    CSSMap inlineCSS_;
    // The entry of the first character's style in the conversion's StyleCache.
    size_t styleIndex_ = 0;
    // The markup for the tags, classes and inline style above, when it is made already.
    const FragmentMarkup* markup_ = nullptr;
};

// The formatting sets and CSS text of the character styles met in one conversion. Reading a
// style's traits takes a dozen host calls and its CSS a few maps; runs with a style met before
// take none of that.
class StyleCache {
public:
    struct Entry {
        Formattings formattings;
        std::string css;
        size_t cssId = 0;  // equal for entries of equal CSS text
    };

    explicit StyleCache(const fmx::ExprEnv& env) : env_(env) {}
    // The index of the entry for `style` on a character that is (or is not) a space; `face`
    // gets the style's face bits (0 when all is disabled).
    size_t lookup(const fmx::CharacterStyle& style, bool isSpaceChar, fmx::uint16& face);
    const Entry& entry(size_t index) const { return entries_[index]; }
    size_t size() const { return entries_.size(); }
    // The font's name for a style ("" when the host knows none).
    const std::string& getFontName(const fmx::CharacterStyle& style);

private:
    struct Key {
        uint64_t traits;
        uint32_t fontAndSize;
        bool operator==(const Key&) const = default;
    };
    struct KeyHash {
        size_t operator()(const Key& k) const {
            return std::hash<uint64_t>()(k.traits * 31 + k.fontAndSize);
        }
    };

    const fmx::ExprEnv& env_;
    std::optional<fmx::DataUniquePtr> data_;
    std::map<fmx::CharacterStyle::FontID, std::string> fontNames_;
    std::unordered_map<Key, size_t, KeyHash> index_;
    std::unordered_map<std::string, size_t> cssIds_;
    std::vector<Entry> entries_;
};

CSSMap CSSFromFormattings(const Formattings& formattings);
// serialize_CSS ( CSSFromFormattings ( formattings ), "" ), made without the map.
std::string cssTextOf(const Formattings& formattings);
// A font name as a font-family value that cannot end the declaration, the rule, the style
// element or the attribute it is written into. A name of ASCII letters, digits, blanks, "-", "_"
// and "." (characters beyond ASCII too) stays as it is; any other becomes a CSS string in single
// quotes, with quotes, "\", "<", ">", "&" and control characters as hexadecimal escapes.
std::string cssFontFamily(const std::string& name);
std::string serialize_CSS(const CSSMap& css, const std::string& separator);

// The formatting set of the character at `position`.
Formattings formattingsFromFMCharacter(const fmx::Text& text, fmx::uint32 position,
                                       const fmx::ExprEnv& env);

// Cuts the units [from, to) of `text` into runs of equal CSS text, each with its formatting set
// and CSS declarations.
std::vector<cFragment> extractFragments(const fmx::Text& text, fmx::uint32 from, fmx::uint32 to,
                                        const fmx::ExprEnv& env);
// Where the fragments of [from, to) start, without making them: the units and, per fragment,
// its first unit and the style entry of that unit.
struct FragmentCuts {
    struct Start {
        size_t at;
        size_t styleIndex;
    };
    fmx::uint32 from = 0;
    std::vector<fmx::uint16> units;
    std::vector<Start> starts;
};
FragmentCuts cutFragments(const fmx::Text& text, fmx::uint32 from, fmx::uint32 to,
                          StyleCache& cache);
// The fragment starts alone, for `units`, the units of `text` from `from` on, read already.
std::vector<FragmentCuts::Start> cutStarts(const fmx::Text& text, fmx::uint32 from,
                                           std::u16string_view units, StyleCache& cache);
// Fragments first to last (exclusive) of the cuts, each with its styleIndex_ only.
std::vector<cFragment> fragmentsOf(const FragmentCuts& cuts, size_t first, size_t last);

// The same with the styles kept in `cache`: each fragment has its styleIndex_ only.
std::vector<cFragment> extractFragments(const fmx::Text& text, fmx::uint32 from, fmx::uint32 to,
                                        StyleCache& cache);

// Characters as the merge trace shows them (see cFragment::traceText).
std::string traceText(std::u16string_view units, size_t maxUnits);

bool fragmentsHaveEqualAppearance(const cFragment& a, const cFragment& b);

// The merge trace of one conversion on standard output, one line per join, kept small whatever
// the text: a fragment's text is cut after kFragmentUnits units (its full length named), and
// after kMaxLines lines further joins are only counted, in one closing line written by finish.
class MergeTrace {
public:
    static constexpr size_t kFragmentUnits = 64;
    static constexpr size_t kMaxLines = 1000;

    void join(const cFragment& first, const cFragment& second);
    // The same for fragments given by their characters.
    void join(std::u16string_view first, std::u16string_view second);
    void finish();

private:
    size_t lines_ = 0;
    size_t untraced_ = 0;
};

// Joins neighbours of equal appearance, each join traced.
void mergeFragments(std::vector<cFragment>& fragments, MergeTrace& trace);

// "name" -> a class holding exactly `css`: an existing one, else prefix, prefix1, prefix2, ...
std::string get_or_create_class(const std::string& css, const std::string& prefix,
                                ClassMap& classMap);

}  // namespace rvl::html
