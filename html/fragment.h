// Character formatting read from styled host text, and the fragments it is cut into: runs of
// characters whose CSS text is equal, carried with their tags, classes and inline style through
// the HTML conversion.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <unordered_map>
#include <vector>

#include "host/fmx.h"

namespace rvl::html {

// Formatting key ("bold", "color", ...) to value; ordered byte-wise.
using Formattings = std::map<std::string, std::string>;
// CSS property to value, ordered by property.
using CSSMap = std::map<std::string, std::string>;
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

class cFragment {
public:
    cFragment() = default;
    cFragment(const cFragment&) = default;
    cFragment(cFragment&&) noexcept = default;
    cFragment& operator=(const cFragment&) = default;
    cFragment& operator=(cFragment&&) noexcept = default;

    void addChar(uint16_t unit) { chars_.push_back(unit); }
    // Appends the trace form of characters added with addChar.
    void addTraceText(const std::string& s) { text8_ += s; }
    // Sets `text` to the characters, without styles.
    void getText(fmx::Text& text) const;
    const std::u16string& chars() const { return chars_; }
    const std::string& traceText() const { return text8_; }

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

    // Joins `next` onto this fragment: its characters and trace text follow this one's.
    void append(const cFragment& next);

    std::u16string chars_;
    std::string text8_;
    int64_t start_ = 0;
    int64_t end_ = 0;
    Formattings formattings_;
    std::vector<std::string> tags_;
    std::vector<std::string> classes_;
    CSSMap inlineCSS_;
};

CSSMap CSSFromFormattings(const Formattings& formattings);
std::string serialize_CSS(const CSSMap& css, const std::string& separator);

// The formatting set of the character at `position`.
Formattings formattingsFromFMCharacter(const fmx::Text& text, fmx::uint32 position,
                                       const fmx::ExprEnv& env);

// Cuts the units [from, to) of `text` into runs of equal CSS text.
std::vector<cFragment> extractFragments(const fmx::Text& text, fmx::uint32 from, fmx::uint32 to,
                                        const fmx::ExprEnv& env);

bool fragmentsHaveEqualAppearance(const cFragment& a, const cFragment& b);
// Joins neighbours of equal appearance, one trace line on standard output per join.
void mergeFragments(std::vector<cFragment>& fragments);

// "name" -> a class holding exactly `css`: an existing one, else prefix, prefix1, prefix2, ...
std::string get_or_create_class(const std::string& css, const std::string& prefix,
                                ClassMap& classMap);

}  // namespace rvl::html
