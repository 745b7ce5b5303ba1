// Ravelin_GetAsHTML ( source { ; tags ; classes ; styles } ).
#include "html/get_as_html.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstdlib>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "fmlib/convert.h"
#include "fmlib/text_utils.h"
#include "frame/answers.h"
#include "frame/nesting.h"
#include "html/functions.h"

namespace rvl::html {

namespace {

constexpr const char* kBlockTags[] = {"h1", "h2",  "h3",  "h4",       "h5",         "h6",
                                      "p",  "pre", "div", "noscript", "blockquote", "address"};

constexpr std::pair<const char*, const char*> kDefaultTags[] = {
    {"bold", "b"},         {"italic", "i"},        {"underline", "u"},   {"strikethrough", "s"},
    {"highlight", "mark"}, {"superscript", "sup"}, {"subscript", "sub"},
};

bool isBlockTag(const std::string& tag) {
    return std::any_of(std::begin(kBlockTags), std::end(kBlockTags),
                       [&](const char* t) { return tag == t; });
}

// Tags, class names and CSS are UTF-8; the HTML is built in UTF-16 units like the text.
void appendUtf8(std::u16string& out, const std::string& s) {
    // Markup is mostly ASCII, which is widened unit by unit.
    if (std::all_of(s.begin(), s.end(),
                    [](char c) { return static_cast<unsigned char>(c) < 0x80; })) {
        out.append(s.begin(), s.end());
        return;
    }
    fmlib::AppendUtf16FromUtf8(out, s, fmlib::BrokenUtf8::kPerSequence);
}

void addDefaultFormattingsForTag(ParamVector& tags) {
    for (const auto& [key, tag] : kDefaultTags) {
        if (!paramVectorHasKey(tags, key)) tags.emplace_back(key, tag);
    }
}

// The steps of per-fragment processing: tags, classes, then the inline style.
void processFormattings(cFragment& f, ClassMap& classMap, const ParamVector& tags,
                        const ParamVector& classes, const ParamVector& styles) {
    for (const auto& [key, value] : tags) f.extractFormattingCombinationToCreateTag(key, value);
    for (const auto& [key, value] : classes) {
        f.extractFormattingCombinationToCreateClass(key, value, classMap);
        if (key == "all") break;
    }
    if (!paramVectorHasKey(styles, "all")) f.filterFormattings(styles);
    f.inlineCSS_ = CSSFromFormattings(f.formattings_);
}

// The opening and closing markup of a fragment around its text.
FragmentMarkup markupOf(const cFragment& f) {
    FragmentMarkup m;
    if (f.tags_.empty()) {
        if (!f.classes_.empty() || !f.inlineCSS_.empty()) {
            appendUtf8(m.open, createTag("span", f));
            m.close = u"</span>";
        }
        return m;
    }
    appendUtf8(m.open, createTag(f.tags_.front(), f));
    for (size_t i = 1; i < f.tags_.size(); ++i) appendUtf8(m.open, "<" + f.tags_[i] + ">");
    for (auto it = f.tags_.rbegin(); it != f.tags_.rend(); ++it) {
        appendUtf8(m.close, "</" + *it + ">");
    }
    return m;
}

void escalateSharedBlockElement(Paragraph& p, std::vector<cFragment>& fragments) {
    if (p.element.tags_.front() != "p") return;
    for (const std::string& tag : fragments.front().tags_) {
        if (!isBlockTag(tag)) continue;
        const bool shared = std::all_of(fragments.begin() + 1, fragments.end(),
                                        [&](const cFragment& f) { return f.containsTag(tag); });
        if (!shared) continue;
        p.element.tags_.front() = tag;
        const std::string lifted = tag;  // `tag` lives in the first fragment's list
        for (cFragment& f : fragments) {
            f.removeTag(lifted);
            f.markup_ = nullptr;
        }
        return;
    }
}

void escalateSharedCssClasses(Paragraph& p, std::vector<cFragment>& fragments) {
    const std::vector<std::string> candidates = fragments.front().classes_;
    for (const std::string& name : candidates) {
        const bool shared =
            std::all_of(fragments.begin() + 1, fragments.end(),
                        [&](const cFragment& f) { return f.containsCssClassName(name); });
        if (!shared) continue;
        p.element.classes_.push_back(name);
        for (cFragment& f : fragments) {
            f.removeCssClassName(name);
            f.markup_ = nullptr;
        }
    }
}

void escalateSharedCssStyles(Paragraph& p, std::vector<cFragment>& fragments) {
    const CSSMap candidates = fragments.front().inlineCSS_;
    for (const auto& candidate : candidates) {
        // Named here, not bound: lambdas cannot capture structured bindings in every compiler.
        const auto& property = candidate.first;
        const auto& value = candidate.second;
        const bool shared = std::all_of(fragments.begin() + 1, fragments.end(), [&](const auto& f) {
            auto it = f.inlineCSS_.find(property);
            return it != f.inlineCSS_.end() && it->second == value;
        });
        if (!shared) continue;
        p.element.inlineCSS_[property] = value;
        for (cFragment& f : fragments) {
            f.inlineCSS_.erase(property);
            f.markup_ = nullptr;
        }
    }
}

// The text of `prefix` + `source` + `suffix` evaluated in the caller's file; `error` gets the
// host's error code of the evaluation.
fmx::DataUniquePtr evaluateOnFM(const CalculationNesting& level, const std::string& prefix,
                                const fmx::Text& source, const std::string& suffix,
                                const fmx::ExprEnv& env, fmx::errcode* error = nullptr) {
    fmx::TextUniquePtr expression(prefix, fmx::kEncoding_UTF8);
    expression->AppendText(source);
    expression->AppendText(*fmx::TextUniquePtr(suffix, fmx::kEncoding_UTF8));
    fmx::DataUniquePtr value;
    const fmx::errcode err = level.Evaluate(env, *expression, *value);
    if (error != nullptr) *error = err;
    return value;
}

std::string evaluatedAsString(const CalculationNesting& level, const std::string& prefix,
                              const fmx::Text& source, const std::string& suffix,
                              const fmx::ExprEnv& env) {
    return fmlib::StringFromFmText(evaluateOnFM(level, prefix, source, suffix, env)->GetAsText());
}

bool isReturn(fmx::uint16 unit) {
    return unit == u'\r' || unit == u'\n' || unit == u'\u2028' || unit == u'\u2029';
}

// A value's paragraph: "left" is written as no alignment at all.
std::string paragraphAlignment(const std::string& alignment) {
    return alignment == "left" ? "none" : alignment;
}

// Tags, class names and inline style, each length-prefixed: equal keys, equal appearance.
std::string appearanceKey(const cFragment& f) {
    std::string key;
    auto add = [&](const std::string& s) {
        key += std::to_string(s.size());
        key += ':';
        key += s;
    };
    for (const std::string& tag : f.tags_) add(tag);
    key += '|';
    for (const std::string& name : f.classes_) add(name);
    key += '|';
    for (const auto& [property, value] : f.inlineCSS_) {
        add(property);
        add(value);
    }
    return key;
}

// A paragraph without element has no escalation, so its fragments need not be made at all: each
// run of cuts whose styles have equal appearance is one merged fragment, written as it ends. The
// result, trace included, is that of transformRichtextToHTML with alignment "none". `units` are
// the paragraph's units, from `from` on in `source`.
void convertBareParagraph(const fmx::Text& source, fmx::uint32 from, std::u16string_view units,
                          const ParamVector& tags, const ParamVector& classes,
                          const ParamVector& styles, Conversion& conversion, std::u16string& body) {
    const std::vector<FragmentCuts::Start> starts =
        cutStarts(source, from, units, conversion.styleCache);
    const ProcessedStyle* merged = nullptr;  // the style of the fragment being merged
    size_t mergedFrom = 0;
    auto write = [&](size_t end) {
        body += merged->markup.open;
        addEntitiesAndFixEndlines(units.substr(mergedFrom, end - mergedFrom), body);
        body += merged->markup.close;
    };
    for (size_t k = 0; k < starts.size(); ++k) {
        const size_t at = starts[k].at;
        const ProcessedStyle& p =
            processedStyle(starts[k].styleIndex, conversion, tags, classes, styles);
        if (merged != nullptr && p.appearance == merged->appearance) {
            const size_t end = k + 1 < starts.size() ? starts[k + 1].at : units.size();
            conversion.trace.join(units.substr(mergedFrom, at - mergedFrom),
                                  units.substr(at, end - at));
            continue;
        }
        if (merged != nullptr) write(at);
        merged = &p;
        mergedFrom = at;
    }
    if (merged != nullptr) write(units.size());
}

// The first carriage return at or after `from`, or the size; eight units a step with SSE2.
size_t nextReturn(std::u16string_view units, size_t from) {
    size_t i = from;
#if defined(__SSE2__)
    const __m128i cr = _mm_set1_epi16(u'\r');
    for (; i + 8 <= units.size(); i += 8) {
        const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(units.data() + i));
        if (const auto mask = static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi16(v, cr)))) {
            return i + static_cast<size_t>(std::countr_zero(mask)) / 2;
        }
    }
#endif
    while (i < units.size() && units[i] != u'\r') ++i;
    return i;
}

void convertParagraphs(const fmx::Text& source, const ParamVector& tags, const ParamVector& classes,
                       const ParamVector& styles, Conversion& conversion, std::u16string& body) {
    const fmx::uint32 size = source.GetSize();
    std::u16string text(size, u'\0');
    if (size > 0) source.GetUnicode(reinterpret_cast<fmx::uint16*>(text.data()), 0, size);
    const std::u16string_view units(text);
    size_t start = 0;
    while (true) {
        const size_t end = nextReturn(units, start);
        convertBareParagraph(source, static_cast<fmx::uint32>(start),
                             units.substr(start, end - start), tags, classes, styles, conversion,
                             body);
        if (end == units.size()) break;
        start = end + 1;
    }
}

// Value by value through the host, as the functions' definitions have it; each value costs an
// evaluation of the whole list, so this is for lists whose GetAsCSS is not of the expected form.
void convertValuesOneByOne(const CalculationNesting& level, const fmx::Text& source, long values,
                           const ParamVector& tags, const ParamVector& classes,
                           const ParamVector& styles, const fmx::ExprEnv& env,
                           Conversion& conversion, std::u16string& body) {
    for (long n = 1; n <= values; ++n) {
        const std::string index = ";" + std::to_string(n) + ")";
        const std::string alignment = paragraphAlignment(parseAlignmentFromGetAsCSS(
            evaluatedAsString(level, "GetAsCSS(GetValue(", source, index + ")", env)));
        const fmx::DataUniquePtr value = evaluateOnFM(level, "GetValue(", source, index, env);
        const fmx::Text& text = value->GetAsText();
        std::vector<cFragment> fragments =
            extractFragments(text, 0, text.GetSize(), conversion.styleCache);
        transformRichtextToHTML(alignment, tags, classes, styles, fragments, conversion, body);
    }
}

// The list, its GetAsCSS and its value count are evaluated once each and the values are cut
// here, so that the time grows with the list's length, not with its square.
void convertVariableValues(const CalculationNesting& level, const fmx::Text& source,
                           const ParamVector& tags, const ParamVector& classes,
                           const ParamVector& styles, const fmx::ExprEnv& env,
                           Conversion& conversion, std::u16string& body) {
    const long values =
        std::strtol(evaluatedAsString(level, "ValueCount(", source, ")", env).c_str(), nullptr, 10);
    fmx::errcode error = 0;
    const fmx::DataUniquePtr list = evaluateOnFM(level, "", source, "", env, &error);
    const fmx::Text& text = list->GetAsText();
    std::vector<fmx::uint16> units(text.GetSize());
    if (!units.empty()) text.GetUnicode(units.data(), 0, text.GetSize());
    const std::vector<ValueSpan> spans = splitValues(units);
    std::optional<std::vector<std::string>> alignments;
    if (error == 0 && spans.size() == static_cast<size_t>(std::max(values, 0L))) {
        // A value after a line feed, U+2028 or U+2029 starts no paragraph, yet GetValue gives it
        // the alignment found where it starts: as a paragraph of its own it has that in GetAsCSS.
        const bool onlyCR = std::all_of(units.begin(), units.end(),
                                        [](fmx::uint16 u) { return !isReturn(u) || u == u'\r'; });
        const std::string css =
            onlyCR ? evaluatedAsString(level, "GetAsCSS(", source, ")", env)
                   : evaluatedAsString(level, "GetAsCSS(Substitute(", source,
                                       ";[Char(10);Char(13)];[Char(8232);Char(13)];"
                                       "[Char(8233);Char(13)]))",
                                       env);
        alignments = alignmentsFromGetAsCSS(
            css, static_cast<size_t>(std::count_if(units.begin(), units.end(), isReturn)),
            spans.size());
    }
    if (!alignments) {
        convertValuesOneByOne(level, source, values, tags, classes, styles, env, conversion, body);
        return;
    }
    for (size_t n = 0; n < spans.size(); ++n) {
        const std::string alignment = paragraphAlignment((*alignments)[n]);
        std::vector<cFragment> fragments =
            extractFragments(text, spans[n].start, spans[n].end, conversion.styleCache);
        transformRichtextToHTML(alignment, tags, classes, styles, fragments, conversion, body);
    }
}

}  // namespace

ParamVector parseTagOrClassOrStyleParam(const fmx::Text& text, bool withValues) {
    ParamVector entries;
    if (isEmpty(text)) return entries;
    for (std::string piece : explode(fmlib::StringFromFmText(text), '\r')) {
        if (!withValues) {
            entries.emplace_back(toLower(piece), "");
            continue;
        }
        if (toLower(piece) == "all") piece = "all=rvl";
        const std::vector<std::string> parts = explode(piece, '=');
        if (parts.size() >= 2) entries.emplace_back(toLower(parts[0]), parts[1]);
    }
    return entries;
}

bool paramVectorHasKey(const ParamVector& v, const std::string& key) {
    return std::any_of(v.begin(), v.end(), [&](const auto& e) { return e.first == key; });
}

std::string paramVectorGetValue(const ParamVector& v, const std::string& key) {
    auto it = std::find_if(v.begin(), v.end(), [&](const auto& e) { return e.first == key; });
    return it == v.end() ? std::string() : it->second;
}

void paramVectorEraseKey(ParamVector& v, const std::string& key) {
    auto it = std::find_if(v.begin(), v.end(), [&](const auto& e) { return e.first == key; });
    if (it != v.end()) v.erase(it);
}

Paragraph createParagraphFragment(const std::string& alignment, const ParamVector& tags,
                                  const ParamVector& classes, const ParamVector& styles,
                                  ClassMap& classMap) {
    Paragraph p;
    if (alignment == "none") return p;
    p.hasElement = true;
    const std::string cssAlignment = alignment == "right"    ? "right"
                                     : alignment == "center" ? "center"
                                     : alignment == "full"   ? "justify"
                                                             : "";
    if (paramVectorHasKey(tags, alignment)) {
        p.element.tags_.push_back(paramVectorGetValue(tags, alignment));
        return p;
    }
    p.element.tags_.push_back("p");
    if (cssAlignment.empty()) return p;
    std::string prefix;
    if (paramVectorHasKey(classes, alignment)) {
        prefix = paramVectorGetValue(classes, alignment);
    } else if (paramVectorHasKey(classes, "all")) {
        prefix = paramVectorGetValue(classes, "all");
    } else if (paramVectorHasKey(styles, alignment) || paramVectorHasKey(styles, "all")) {
        p.element.inlineCSS_["text-align"] = cssAlignment;
    }
    if (!prefix.empty()) {
        p.element.classes_.push_back(
            get_or_create_class("text-align:" + cssAlignment + ";", prefix, classMap));
    }
    return p;
}

std::string createTag(const std::string& tag, const cFragment& fragment) {
    std::string out = "<" + tag;
    if (const std::string classes = fragment.getInlineCSSClasses(); !classes.empty()) {
        out += " class=\"" + classes + "\"";
    }
    if (const std::string css = fragment.getInlineCSS(); !css.empty()) {
        out += " style=\"" + css + "\"";
    }
    return out + ">";
}

namespace {

bool needsEscaping(char16_t c) {
    constexpr uint64_t kSpecialBelow64 =
        uint64_t{1} << u'<' | uint64_t{1} << u'>' | uint64_t{1} << u'&' | uint64_t{1} << u'\n';
    return c < 64 ? (kSpecialBelow64 >> c & 1) != 0 : c == u'\u00A0' || c == u'\u2028';
}

#if defined(__SSE2__)
// A bit pair for each of the eight units at `at` that needs escaping.
unsigned escapeLanes(const char16_t* at) {
    const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
    const __m128i angle = _mm_set1_epi16(u'>');
    const __m128i bit1 = _mm_set1_epi16(2);  // '<' is '>' without it
    const __m128i hits = _mm_or_si128(
        _mm_or_si128(_mm_cmpeq_epi16(_mm_or_si128(v, bit1), angle),
                     _mm_cmpeq_epi16(v, _mm_set1_epi16(u'&'))),
        _mm_or_si128(_mm_cmpeq_epi16(v, _mm_set1_epi16(u'\n')),
                     _mm_or_si128(_mm_cmpeq_epi16(v, _mm_set1_epi16(static_cast<short>(0x00A0))),
                                  _mm_cmpeq_epi16(v, _mm_set1_epi16(static_cast<short>(0x2028))))));
    return static_cast<unsigned>(_mm_movemask_epi8(hits));
}
#endif

// The first unit at or after `from` that needs escaping, or the size; eight units a step with
// SSE2, the last step overlapping the one before.
size_t nextToEscape(std::u16string_view text, size_t from) {
    size_t i = from;
#if defined(__SSE2__)
    if (text.size() >= 8) {
        for (; i + 8 <= text.size(); i += 8) {
            if (const unsigned lanes = escapeLanes(text.data() + i)) {
                return i + static_cast<size_t>(std::countr_zero(lanes)) / 2;
            }
        }
        if (i == text.size()) return i;
        const size_t last = text.size() - 8;
        const unsigned unseen = ~0u << (2 * (i - last));
        const unsigned lanes = escapeLanes(text.data() + last) & unseen;
        return lanes != 0 ? last + static_cast<size_t>(std::countr_zero(lanes)) / 2 : text.size();
    }
#endif
    while (i < text.size() && !needsEscaping(text[i])) ++i;
    return i;
}

}  // namespace

// The text between characters that need escaping is copied whole.
void addEntitiesAndFixEndlines(std::u16string_view text, std::u16string& out) {
    size_t from = 0;
    for (size_t i = nextToEscape(text, 0); i < text.size(); i = nextToEscape(text, from)) {
        out.append(text.substr(from, i - from));
        from = i + 1;
        switch (text[i]) {
            case u'<':
                out += u"&lt;";
                break;
            case u'>':
                out += u"&gt;";
                break;
            case u'&':
                out += u"&amp;";
                break;
            case u'\n':
            case u'\u2028':
                out += u"<br/>\r";
                break;
            case u'\u00A0':
                out += u"&nbsp;";
                break;
            default:
                break;
        }
    }
    out.append(text.substr(from));
}

void produceHTMLfromFragments(Paragraph& paragraph, std::vector<cFragment>& fragments,
                              std::u16string& body) {
    if (paragraph.hasElement) {
        if (!fragments.empty()) {
            escalateSharedBlockElement(paragraph, fragments);
            escalateSharedCssClasses(paragraph, fragments);
            escalateSharedCssStyles(paragraph, fragments);
        }
        appendUtf8(body, createTag(paragraph.element.tags_.front(), paragraph.element));
    }
    for (const cFragment& f : fragments) {
        if (f.chars_.empty()) continue;
        if (f.markup_) {
            body += f.markup_->open;
            addEntitiesAndFixEndlines(f.chars_, body);
            body += f.markup_->close;
            continue;
        }
        const FragmentMarkup m = markupOf(f);
        body += m.open;
        addEntitiesAndFixEndlines(f.chars_, body);
        body += m.close;
    }
    if (paragraph.hasElement) {
        appendUtf8(body, "</" + paragraph.element.tags_.front() + ">");
        body += u'\r';
    }
}

void appendCssClasses(const ClassMap& classMap, const std::string& lead, std::u16string& result) {
    if (classMap.empty()) return;
    appendUtf8(result, "<style type=\"text/css\">" + lead);
    result += u'\r';
    for (const auto& [name, css] : classMap.classes) {
        appendUtf8(result, "." + name + " { " + css + " }");
        result += u'\r';
    }
    result += u"</style>\r";
}

void fragmentsPostProcessing(std::vector<cFragment>& fragments, Conversion& conversion,
                             const ParamVector& tags, const ParamVector& classes,
                             const ParamVector& styles) {
    for (cFragment& f : fragments) {
        const ProcessedStyle& done =
            processedStyle(f.styleIndex_, conversion, tags, classes, styles);
        f.tags_ = done.tags;
        f.classes_ = done.classes;
        f.inlineCSS_ = done.inlineCSS;
        f.formattings_ = done.remaining;
        f.markup_ = &done.markup;
    }
}

const ProcessedStyle& processedStyle(size_t styleIndex, Conversion& conversion,
                                     const ParamVector& tags, const ParamVector& classes,
                                     const ParamVector& styles) {
    if (conversion.processed.size() <= styleIndex) {
        conversion.processed.resize(conversion.styleCache.size());
    }
    std::unique_ptr<ProcessedStyle>& done = conversion.processed[styleIndex];
    if (!done) {
        cFragment f;
        f.formattings_ = conversion.styleCache.entry(styleIndex).formattings;
        processFormattings(f, conversion.classMap, tags, classes, styles);
        const size_t appearance =
            conversion.appearances.try_emplace(appearanceKey(f), conversion.appearances.size())
                .first->second;
        done = std::make_unique<ProcessedStyle>(ProcessedStyle{
            f.tags_, f.classes_, f.inlineCSS_, f.formattings_, markupOf(f), appearance});
    }
    return *done;
}

void transformRichtextToHTML(const std::string& alignment, const ParamVector& tags,
                             const ParamVector& classes, const ParamVector& styles,
                             std::vector<cFragment>& fragments, Conversion& conversion,
                             std::u16string& body) {
    fragmentsPostProcessing(fragments, conversion, tags, classes, styles);
    mergeFragments(fragments, conversion.trace);
    Paragraph paragraph =
        createParagraphFragment(alignment, tags, classes, styles, conversion.classMap);
    produceHTMLfromFragments(paragraph, fragments, body);
}

std::vector<ValueSpan> splitValues(const std::vector<fmx::uint16>& units) {
    std::vector<ValueSpan> spans;
    fmx::uint32 start = 0;
    const auto size = static_cast<fmx::uint32>(units.size());
    for (fmx::uint32 i = 0; i < size; ++i) {
        if (!isReturn(units[i])) continue;
        spans.push_back({start, i});
        start = i + 1;
    }
    if (start < size) spans.push_back({start, size});
    return spans;
}

std::optional<std::vector<std::string>> alignmentsFromGetAsCSS(const std::string& css,
                                                               size_t returns, size_t values) {
    std::vector<std::optional<std::string>> found(values);
    std::string_view openSpan;  // the opening tag of the span being read
    size_t breaks = 0;
    for (size_t i = 0; i < css.size();) {
        if (css[i] == '<') {
            // A span's tag ends after its style attribute, which may hold a ">" in a font name.
            const bool span = css.compare(i, 5, "<span") == 0;
            const size_t end = span ? css.find("\">", i) : css.find('>', i);
            if (end == std::string::npos) return std::nullopt;
            const size_t after = end + (span ? 2 : 1);
            const std::string_view tag = std::string_view(css).substr(i, after - i);
            if (tag == "<br>") ++breaks;
            if (span) openSpan = tag;
            i = after;
            continue;
        }
        if (breaks < values && !found[breaks]) {
            found[breaks] = parseAlignmentFromGetAsCSS(std::string(openSpan));
        }
        // The rest of the character or entity; only a value's first character counts.
        const size_t next = css[i] == '&' ? css.find(';', i) : i;
        i = next == std::string::npos ? css.size() : next + 1;
    }
    if (breaks != returns) return std::nullopt;
    std::vector<std::string> alignments;
    alignments.reserve(values);
    for (std::optional<std::string>& a : found) alignments.push_back(a ? std::move(*a) : "left");
    return alignments;
}

std::string parseAlignmentFromGetAsCSS(const std::string& css) {
    const size_t at = css.find("text-align");
    if (at == std::string::npos) return "left";
    size_t i = at + std::string_view("text-align").size();
    while (i < css.size() && (css[i] == ' ' || css[i] == ':')) ++i;
    size_t end = i;
    while (end < css.size() && css[end] >= 'a' && css[end] <= 'z') ++end;
    return end == i ? "left" : css.substr(i, end - i);
}

void transformRichtextToHTMLWithEvaluate(const fmx::Text& source, const fmx::Text& tagsText,
                                         const fmx::Text& classesText, const fmx::Text& stylesText,
                                         const fmx::ExprEnv& env, fmx::Data& result) {
    ParamVector tags = parseTagOrClassOrStyleParam(tagsText, true);
    const ParamVector classes = parseTagOrClassOrStyleParam(classesText, true);
    const ParamVector styles = parseTagOrClassOrStyleParam(stylesText, false);
    if (paramVectorHasKey(tags, "all")) {
        paramVectorEraseKey(tags, "all");
        addDefaultFormattingsForTag(tags);
    }

    Conversion conversion(env);
    // Markup mostly adds to the text: room for twice its length spares the copies of growing.
    std::u16string body;
    body.reserve(std::min<size_t>(2 * size_t{source.GetSize()} + 64, size_t{1} << 26));
    fmx::uint16 first = 0;
    if (source.GetSize() > 0) source.GetUnicode(&first, 0, 1);
    // Only the "$" form evaluates calculations, which may call this function again.
    std::optional<CalculationNesting> level;
    if (first == u'$') level.emplace();
    if (level && evaluatedAsString(*level, "isEmpty(", source, ")", env) == "0") {
        convertVariableValues(*level, source, tags, classes, styles, env, conversion, body);
    } else {
        convertParagraphs(source, tags, classes, styles, conversion, body);
    }
    conversion.trace.finish();

    std::u16string styleBlock;
    appendCssClasses(conversion.classMap, "", styleBlock);
    body.insert(0, styleBlock);
    fmx::TextUniquePtr out;
    out->AssignUnicodeWithLength(reinterpret_cast<const fmx::uint16*>(body.data()),
                                 static_cast<fmx::uint32>(body.size()));
    result.SetAsText(*out, result.GetLocale());
}

}  // namespace rvl::html

void body::Ravelin_GetAsHTML(const fmx::ExprEnv& env, const rvl::Arguments& args,
                             fmx::Data& result) {
    const fmx::uint32 count = args.count();
    if (count < 1) {
        return rvl::AnswerBadParameters("Input parameter is missing", env, result);
    }
    fmx::TextUniquePtr tags("all");
    fmx::TextUniquePtr classes("all=rvl");
    fmx::TextUniquePtr styles("all");
    if (count > 1) tags->SetText(args.text(1));
    if (count > 2) classes->SetText(args.text(2));
    if (count > 3) styles->SetText(args.text(3));
    rvl::html::transformRichtextToHTMLWithEvaluate(args.text(0), *tags, *classes, *styles, env,
                                                   result);
}
