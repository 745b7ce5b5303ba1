// Styled text to HTML: fragments become tags, generated classes or inline styles as the three
// parameters ask, paragraphs become block elements carrying their alignment, and the classes
// are collected in one style block at the head of the result.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "host/fmx.h"
#include "html/fragment.h"

namespace rvl::html {

// The entries of a tags, classes (withValues) or styles parameter, one per line.
ParamVector parseTagOrClassOrStyleParam(const fmx::Text& text, bool withValues);
bool paramVectorHasKey(const ParamVector& v, const std::string& key);
std::string paramVectorGetValue(const ParamVector& v, const std::string& key);
void paramVectorEraseKey(ParamVector& v, const std::string& key);

// What one conversion keeps across its paragraphs: the generated classes, the character styles
// met, and for each style the outcome of per-fragment processing (the same for every fragment
// that starts with that style, since it depends on the formatting set and the parameters only).
struct ProcessedStyle {
    std::vector<std::string> tags;
    std::vector<std::string> classes;
    CSSMap inlineCSS;
    Formattings remaining;
    FragmentMarkup markup;
    // Equal for styles whose fragments have equal appearance (tags, classes, inline style).
    size_t appearance = 0;
};
struct Conversion {
    explicit Conversion(const fmx::ExprEnv& env) : styleCache(env) {}
    ClassMap classMap;
    StyleCache styleCache;
    std::vector<std::unique_ptr<ProcessedStyle>> processed;  // by style index
    std::unordered_map<std::string, size_t> appearances;     // by appearanceKey
    MergeTrace trace;
};

// The outcome of per-fragment processing for a fragment starting with style `styleIndex`,
// made on the style's first use.
const ProcessedStyle& processedStyle(size_t styleIndex, Conversion& conversion,
                                     const ParamVector& tags, const ParamVector& classes,
                                     const ParamVector& styles);

// Tags, classes and inline style of each fragment (cut with the conversion's style cache).
void fragmentsPostProcessing(std::vector<cFragment>& fragments, Conversion& conversion,
                             const ParamVector& tags, const ParamVector& classes,
                             const ParamVector& styles);

// The block element of a paragraph: its tag, classes and inline style; `hasElement` is false
// for the alignment "none", whose fragments are written bare.
struct Paragraph {
    bool hasElement = false;
    cFragment element;
};
Paragraph createParagraphFragment(const std::string& alignment, const ParamVector& tags,
                                  const ParamVector& classes, const ParamVector& styles,
                                  ClassMap& classMap);

// "<tag class=\"...\" style=\"...\">" for a fragment's first tag or a paragraph.
std::string createTag(const std::string& tag, const cFragment& fragment);
void addEntitiesAndFixEndlines(std::u16string_view text, std::u16string& out);
void produceHTMLfromFragments(Paragraph& paragraph, std::vector<cFragment>& fragments,
                              std::u16string& body);
void appendCssClasses(const ClassMap& classMap, const std::string& lead, std::u16string& result);

// One paragraph's fragments, processed, merged and written with its element.
void transformRichtextToHTML(const std::string& alignment, const ParamVector& tags,
                             const ParamVector& classes, const ParamVector& styles,
                             std::vector<cFragment>& fragments, Conversion& conversion,
                             std::u16string& body);

std::string parseAlignmentFromGetAsCSS(const std::string& css);

// The values of a list: [start, end) of each, without its return. Returns are CR, LF, U+2028
// and U+2029, as for the host's value functions; a return at the very end starts no value.
struct ValueSpan {
    fmx::uint32 start;
    fmx::uint32 end;
};
std::vector<ValueSpan> splitValues(const std::vector<fmx::uint16>& units);

// The alignment of each of `values` values, as parseAlignmentFromGetAsCSS reads it from
// GetAsCSS ( GetValue ( list ; n ) ), read in one pass from `css`, the host's GetAsCSS of the
// whole list: there each return is a "<br>", and a value's first character stands in a span
// whose style carries the alignment of its paragraph. An empty value is "left". Nothing when
// `css` does not hold one "<br>" per return (`returns`), that is when it is not of that form.
std::optional<std::vector<std::string>> alignmentsFromGetAsCSS(const std::string& css,
                                                               size_t returns, size_t values);

// The whole conversion of `source` (styled text, or the name of a variable holding styled
// values) into `result`.
void transformRichtextToHTMLWithEvaluate(const fmx::Text& source, const fmx::Text& tags,
                                         const fmx::Text& classes, const fmx::Text& styles,
                                         const fmx::ExprEnv& env, fmx::Data& result);

}  // namespace rvl::html
