#include "sim/core/text.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace sim {

namespace {

template <class T>
using Spans = std::vector<Text::Span<T>>;

// Index of the span holding `pos`: the last span starting at or before it. Spans must not be
// empty and the first starts at 0.
template <class T>
size_t spanIndex(const Spans<T>& spans, uint32_t pos) {
    size_t low = 0;  // spans[low].start <= pos
    size_t count = spans.size();
    while (count > 1) {
        const size_t half = count / 2;
        if (spans[low + half].start <= pos) low += half;
        count -= half;
    }
    return low;
}

template <class T>
T valueAt(const Spans<T>& spans, uint32_t pos) {
    return spans.empty() ? T{} : spans[spanIndex(spans, pos)].value;
}

// Starts a span with `value` at `at` (the current end of the spanned text), keeping neighbours
// distinct and never leaving a span of length zero behind.
template <class T>
void pushSpan(Spans<T>& spans, uint32_t at, const T& value) {
    if (!spans.empty() && spans.back().start == at) {
        spans.back().value = value;
        if (spans.size() >= 2 && spans[spans.size() - 2].value == value) spans.pop_back();
        return;
    }
    if (!spans.empty() && spans.back().value == value) return;
    spans.push_back({at, value});
}

// An implicit (empty) span list over a non-empty text becomes one explicit default span, so that
// something different can follow it.
template <class T>
void makeExplicit(Spans<T>& spans, uint32_t size) {
    if (spans.empty() && size > 0) spans.push_back({0, T{}});
}

// Appends the spans of src over [pos, pos + len) to dst, whose text is dstSize long.
template <class T>
void appendSlice(Spans<T>& dst, uint32_t dstSize, const Spans<T>& src, uint32_t pos, uint32_t len) {
    if (len == 0) return;
    if (src.empty()) {
        if (!dst.empty()) pushSpan(dst, dstSize, T{});
        return;
    }
    makeExplicit(dst, dstSize);
    const uint32_t end = pos + len;
    for (size_t i = spanIndex(src, pos); i < src.size() && src[i].start < end; ++i) {
        const uint32_t from = std::max(src[i].start, pos);
        pushSpan(dst, dstSize + (from - pos), src[i].value);
    }
}

// A span list that is one default span says nothing: drop it.
template <class T>
void compact(Spans<T>& spans) {
    if (spans.size() == 1 && spans[0].value == T{}) spans.clear();
}

template <class T>
Spans<T> slice(const Spans<T>& src, uint32_t pos, uint32_t len) {
    Spans<T> out;
    appendSlice(out, 0, src, pos, len);
    compact(out);
    return out;
}

// Makes a span start exactly at `at` (inside the text), returning its index.
template <class T>
size_t splitAt(Spans<T>& spans, uint32_t at) {
    const size_t i = spanIndex(spans, at);
    if (spans[i].start == at) return i;
    spans.insert(spans.begin() + static_cast<std::ptrdiff_t>(i) + 1, {at, spans[i].value});
    return i + 1;
}

// Drops the spans with indexes in [from, to) whose value equals their predecessor's.
template <class T>
void mergeNeighbours(Spans<T>& spans, size_t from, size_t to) {
    from = std::max<size_t>(from, 1);
    to = std::min(to, spans.size());
    if (from >= to) return;
    auto kept = spans.begin() + static_cast<std::ptrdiff_t>(from);
    const auto stop = spans.begin() + static_cast<std::ptrdiff_t>(to);
    for (auto it = kept; it != stop; ++it) {
        if (it->value == (kept - 1)->value) continue;
        *kept++ = *it;
    }
    spans.erase(kept, stop);
}

// The edits below touch only the spans around the edited range (plus a shift of the later
// starts), so repeated styling of a long text stays cheap.

// Rewrites the values over [pos, pos + len) of a text `size` long with `change(old value)`.
template <class T, class Change>
void changeRange(Spans<T>& spans, uint32_t size, uint32_t pos, uint32_t len, Change change) {
    if (len == 0) return;
    makeExplicit(spans, size);
    const uint32_t end = pos + len;
    const size_t first = splitAt(spans, pos);
    const size_t last = end < size ? splitAt(spans, end) : spans.size();
    for (size_t i = first; i < last; ++i) spans[i].value = change(spans[i].value);
    mergeNeighbours(spans, first, last + 1);
    compact(spans);
}

// Inserts at `at` the spans of `other` over [pos, pos + len).
template <class T>
void insertSpans(Spans<T>& spans, uint32_t size, const Spans<T>& other, uint32_t pos, uint32_t len,
                 uint32_t at) {
    if (len == 0 || (spans.empty() && other.empty())) return;
    Spans<T> piece;
    appendSlice(piece, 0, other, pos, len);
    if (piece.empty()) piece.push_back({0, T{}});
    makeExplicit(spans, size);
    const size_t i = at < size ? splitAt(spans, at) : spans.size();
    for (size_t k = i; k < spans.size(); ++k) spans[k].start += len;
    for (auto& p : piece) p.start += at;
    spans.insert(spans.begin() + static_cast<std::ptrdiff_t>(i), piece.begin(), piece.end());
    mergeNeighbours(spans, i, i + piece.size() + 1);
    compact(spans);
}

template <class T>
void eraseSpans(Spans<T>& spans, uint32_t size, uint32_t pos, uint32_t len) {
    if (spans.empty() || len == 0) return;
    const uint32_t end = pos + len;
    const size_t first = splitAt(spans, pos);
    const size_t last = end < size ? splitAt(spans, end) : spans.size();
    spans.erase(spans.begin() + static_cast<std::ptrdiff_t>(first),
                spans.begin() + static_cast<std::ptrdiff_t>(last));
    for (size_t k = first; k < spans.size(); ++k) spans[k].start -= len;
    mergeNeighbours(spans, first, first + 1);
    compact(spans);
}

// Clamps a (position, length) pair to a text of `size` units.
void clampRange(uint32_t size, uint32_t& pos, uint32_t& len) {
    pos = std::min(pos, size);
    len = std::min(len, size - pos);
}

uint32_t paragraphStart(std::u16string_view units, uint32_t pos) {
    pos = std::min<uint32_t>(pos, static_cast<uint32_t>(units.size()));
    while (pos > 0 && units[pos - 1] != u'\r') --pos;
    return pos;
}

uint32_t paragraphEnd(std::u16string_view units, uint32_t pos) {
    const auto cr = units.find(u'\r', pos);
    return cr == std::u16string::npos ? static_cast<uint32_t>(units.size())
                                      : static_cast<uint32_t>(cr + 1);
}

}  // namespace

CharStyle normalized(CharStyle s) {
    if (!s.fontOn) s.font = 0;
    if (!s.sizeOn) s.size = 0;
    if (!s.colorOn) s.color = Rgb{};
    s.face &= s.faceMask;
    return s;
}

Text::Text(std::u16string_view units) : units_(std::u16string(units)) {}

Text::Text(const Text& other)
    : units_(other.units_),
      styles_(other.styles_ ? std::make_unique<Styles>(*other.styles_) : nullptr) {}

Text& Text::operator=(const Text& other) {
    if (&other != this) {
        units_ = other.units_;
        styles_ = other.styles_ ? std::make_unique<Styles>(*other.styles_) : nullptr;
    }
    return *this;
}

const std::vector<Text::Span<CharStyle>>& Text::runs() const {
    static const std::vector<Span<CharStyle>> none;
    return styles_ ? styles_->runs : none;
}

const std::vector<Text::Span<Alignment>>& Text::paras() const {
    static const std::vector<Span<Alignment>> none;
    return styles_ ? styles_->paras : none;
}

Text::Styles& Text::styles() {
    if (!styles_) styles_ = std::make_unique<Styles>();
    return *styles_;
}

void Text::assign(std::u16string_view units) {
    units_ = SharedUnits(std::u16string(units));
    styles_.reset();
}

void Text::assign(std::u16string&& units) {
    units_ = SharedUnits(std::move(units));
    styles_.reset();
}

void Text::setSlice(const Text& other, uint32_t pos, uint32_t len) {
    clampRange(other.size(), pos, len);
    if (&other == this) {
        Text copy(*this);
        setSlice(copy, pos, len);
        return;
    }
    units_ = SharedUnits(std::u16string(other.units().substr(pos, len)));
    if (!other.styles_) {
        styles_.reset();
        return;
    }
    styles().runs = slice(other.runs(), pos, len);
    styles().paras = slice(other.paras(), pos, len);
}

void Text::append(const Text& other, uint32_t pos, uint32_t len) {
    clampRange(other.size(), pos, len);
    if (len == 0) return;
    if (&other == this) {
        Text piece;
        piece.setSlice(other, pos, len);
        append(piece);
        return;
    }
    const uint32_t before = size();
    units_.edit([&](std::u16string& u) { u.append(other.units().substr(pos, len)); });
    if (!styles_ && !other.styles_) return;
    appendSlice(styles().runs, before, other.runs(), pos, len);
    appendSlice(styles().paras, before, other.paras(), pos, len);
}

void Text::append(std::u16string_view plain) {
    if (plain.empty()) return;
    const uint32_t before = size();
    units_.edit([&](std::u16string& u) { u.append(plain); });
    if (!styles_) return;
    if (!styles_->runs.empty()) pushSpan(styles_->runs, before, CharStyle{});
    if (!styles_->paras.empty()) pushSpan(styles_->paras, before, Alignment::None);
}

void Text::insert(const Text& other, uint32_t pos) {
    if (&other == this) {
        Text copy(*this);
        insert(copy, pos);
        return;
    }
    pos = std::min(pos, size());
    if (other.empty()) return;
    const uint32_t before = size();
    units_.edit([&](std::u16string& u) { u.insert(pos, other.units()); });
    if (!styles_ && !other.styles_) return;
    insertSpans(styles().runs, before, other.runs(), 0, other.size(), pos);
    insertSpans(styles().paras, before, other.paras(), 0, other.size(), pos);
}

void Text::erase(uint32_t pos, uint32_t len) {
    clampRange(size(), pos, len);
    if (len == 0) return;
    const uint32_t before = size();
    units_.edit([&](std::u16string& u) { u.erase(pos, len); });
    if (!styles_) return;
    eraseSpans(styles_->runs, before, pos, len);
    eraseSpans(styles_->paras, before, pos, len);
}

void Text::replaceUnits(std::u16string_view units) {
    if (units.size() != size()) {
        assign(units);
        return;
    }
    units_ = SharedUnits(std::u16string(units));
}

// Plug-ins read styles position by position: the run found last, or the one after it, mostly
// holds the position. pos lies before the last run's start, so a run holding it has a successor.
inline size_t Text::runIndex(uint32_t pos) const {
    const auto& r = styles_->runs;
    const size_t i = styles_->lastRun.get();
    if (i < r.size() && r[i].start <= pos) {
        if (pos < r[i + 1].start) return i;
        if (pos < r[i + 2].start) {
            styles_->lastRun.set(i + 1);
            return i + 1;
        }
    }
    return searchRun(pos);
}

size_t Text::searchRun(uint32_t pos) const {
    const size_t found = spanIndex(styles_->runs, pos);
    styles_->lastRun.set(found);
    return found;
}

CharStyle Text::styleAtFound(uint32_t pos) const {
    if (!styles_ || styles_->runs.empty()) return CharStyle{};
    const auto& r = styles_->runs;
    // Past the last run's start the answer is that run, when the text is not empty.
    if (pos >= r.back().start) return empty() ? CharStyle{} : r.back().value;
    return r[runIndex(pos)].value;
}

uint32_t Text::runEnd(uint32_t pos) const {
    if (pos >= size() || runs().empty()) return size();
    if (pos >= runs().back().start) return size();
    return runs()[runIndex(pos) + 1].start;
}

void Text::setStyle(const CharStyle& style, uint32_t pos, uint32_t len) {
    clampRange(size(), pos, len);
    const CharStyle value = normalized(style);
    changeRange(styles().runs, size(), pos, len, [&](const CharStyle&) { return value; });
}

void Text::mergeStyle(const CharStyle& style, uint32_t pos, uint32_t len) {
    clampRange(size(), pos, len);
    const CharStyle add = normalized(style);
    changeRange(styles().runs, size(), pos, len, [&](CharStyle s) {
        if (add.fontOn) s.font = add.font, s.fontOn = true;
        if (add.sizeOn) s.size = add.size, s.sizeOn = true;
        if (add.colorOn) s.color = add.color, s.colorOn = true;
        s.face = static_cast<uint16_t>((s.face & ~add.faceMask) | add.face);
        s.faceMask |= add.faceMask;
        return s;
    });
}

void Text::removeStyle(const CharStyle& style) {
    if (!styles_) return;
    changeRange(styles_->runs, size(), 0, size(), [&](CharStyle s) {
        if (style.fontOn) s.fontOn = false;
        if (style.sizeOn) s.sizeOn = false;
        if (style.colorOn) s.colorOn = false;
        s.faceMask &= static_cast<uint16_t>(~style.faceMask);
        return normalized(s);
    });
}

void Text::resetStyles() { styles_.reset(); }

bool Text::hasStyles() const {
    return std::any_of(runs().begin(), runs().end(),
                       [](const Span<CharStyle>& r) { return !r.value.allDisabled(); });
}

Alignment Text::alignmentAt(uint32_t pos) const {
    if (empty()) return Alignment::None;
    return valueAt(paras(), std::min(paragraphStart(units(), pos), size() - 1));
}

void Text::setAlignment(Alignment a, uint32_t pos, uint32_t len) {
    clampRange(size(), pos, len);
    const uint32_t from = paragraphStart(units(), pos);
    const uint32_t to = paragraphEnd(units(), len == 0 ? pos : pos + len - 1);
    changeRange(styles().paras, size(), from, to - from, [a](Alignment) { return a; });
}

}  // namespace sim
