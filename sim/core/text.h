// Styled UTF-16 text as the substitute host keeps it: code units, character style runs and
// per-paragraph alignment. Positions and sizes count UTF-16 units.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "sim/core/shared_units.h"

namespace sim {

struct Rgb {
    uint8_t red = 0, green = 0, blue = 0, alpha = 255;
    friend bool operator==(const Rgb&, const Rgb&) = default;
};

// One character style: each trait carries its own enabled flag. Face bits are enabled
// individually (faceMask says which bits of `face` are set explicitly).
struct CharStyle {
    uint16_t font = 0;
    uint16_t face = 0;
    uint16_t faceMask = 0;
    uint16_t size = 0;
    Rgb color{};
    bool fontOn = false;
    bool sizeOn = false;
    bool colorOn = false;

    bool allDisabled() const { return !fontOn && !sizeOn && !colorOn && faceMask == 0; }
    // Byte-wise over the fields, which lie without a gap up to colorOn: plug-ins compare styles
    // once per character, and this is a couple of word compares.
    friend bool operator==(const CharStyle& a, const CharStyle& b) {
        return std::memcmp(&a, &b, kComparedBytes) == 0;
    }
    static constexpr size_t kComparedBytes = 15;  // up to colorOn, checked below
};

static_assert(std::is_standard_layout_v<CharStyle> && offsetof(CharStyle, color) == 8 &&
                  sizeof(Rgb) == 4 && offsetof(CharStyle, fontOn) == 12 &&
                  offsetof(CharStyle, sizeOn) == 13 &&
                  offsetof(CharStyle, colorOn) + 1 == CharStyle::kComparedBytes,
              "CharStyle's compared fields lie without a gap");

enum class Alignment : uint8_t { None, Left, Center, Right, Full };

class Text {
public:
    Text() = default;
    explicit Text(std::u16string_view units);
    explicit Text(std::u16string&& units) : units_(std::move(units)) {}
    explicit Text(const char16_t* units) : Text(std::u16string_view(units)) {}
    Text(const Text& other);
    Text& operator=(const Text& other);
    Text(Text&&) noexcept = default;
    Text& operator=(Text&&) = default;
    ~Text() = default;

    std::u16string_view units() const { return units_.view(); }
    std::u16string unitsCopy() const { return std::u16string(units()); }
    uint32_t size() const { return static_cast<uint32_t>(units().size()); }
    bool empty() const { return units().empty(); }

    // Replaces the whole text with plain, unstyled units.
    void assign(std::u16string_view units);
    void assign(std::u16string&& units);
    void assign(const char16_t* units) { assign(std::u16string_view(units)); }
    // Replaces the whole text with plain units shared with other texts.
    void assign(SharedUnits units) {
        units_ = std::move(units);
        styles_.reset();
    }
    // Replaces the whole text with a slice of `other`, styles included.
    void setSlice(const Text& other, uint32_t pos, uint32_t len);
    void append(const Text& other, uint32_t pos = 0, uint32_t len = UINT32_MAX);
    void append(std::u16string_view plain);  // appended with no style
    void insert(const Text& other, uint32_t pos);
    void erase(uint32_t pos, uint32_t len);
    // Replaces the units with as many others, keeping styles and alignment (case mapping); units
    // of another length replace the text as assign() does.
    void replaceUnits(std::u16string_view units);

    // Character styles. styleAt of a position at or past the end gives the last style (or the
    // all-disabled style for an empty text); runEnd is the first position with another style.
    CharStyle styleAt(uint32_t pos) const {
        // Inline for a position in the run found last, as most are when read in order.
        if (styles_ != nullptr) {
            const auto& r = styles_->runs;
            const size_t i = styles_->lastRun.get();
            if (i + 1 < r.size() && r[i].start <= pos && pos < r[i + 1].start) return r[i].value;
        }
        return styleAtFound(pos);
    }
    uint32_t runEnd(uint32_t pos) const;
    void setStyle(const CharStyle& style, uint32_t pos, uint32_t len);
    // Applies only the enabled traits of `style` over the range, keeping the others.
    void mergeStyle(const CharStyle& style, uint32_t pos, uint32_t len);
    // Disables, everywhere, the traits that are enabled in `style`.
    void removeStyle(const CharStyle& style);
    void resetStyles();
    bool hasStyles() const;

    // Paragraph alignment of the paragraph holding `pos` (paragraphs end at CR).
    Alignment alignmentAt(uint32_t pos) const;
    void setAlignment(Alignment a, uint32_t pos, uint32_t len);

    // Unit-wise comparison of the units only (styles are ignored).
    friend bool operator==(const Text& a, const Text& b) { return a.units() == b.units(); }

    // A value holding from `start` up to the next span's start (or the end of the text).
    template <class T>
    struct Span {
        uint32_t start;
        T value;
    };

private:
    // Span lists are sorted by start, the first at 0, neighbours differ. An empty run list means
    // all traits disabled; an empty alignment list means None everywhere (a paragraph takes the
    // value of its first character).
    // The run found last, tried first (with the one after it): plug-ins read styles position by
    // position. Threads reading one text may share it, hence atomic; a stale hint costs the search.
    class RunHint {
    public:
        RunHint() = default;
        RunHint(const RunHint&) noexcept {}
        RunHint& operator=(const RunHint&) noexcept { return *this; }
        size_t get() const { return index_.load(std::memory_order_relaxed); }
        void set(size_t index) const { index_.store(index, std::memory_order_relaxed); }

    private:
        mutable std::atomic<size_t> index_{0};
    };
    struct Styles {
        std::vector<Span<CharStyle>> runs;
        std::vector<Span<Alignment>> paras;
        RunHint lastRun;
    };
    // Index of the run holding `pos` (runs not empty, pos before the last run's start).
    size_t runIndex(uint32_t pos) const;
    size_t searchRun(uint32_t pos) const;
    CharStyle styleAtFound(uint32_t pos) const;
    const std::vector<Span<CharStyle>>& runs() const;
    const std::vector<Span<Alignment>>& paras() const;
    Styles& styles();  // made on the first change that may style the text

    SharedUnits units_;
    // Most texts are plain: their styles take one null pointer.
    std::unique_ptr<Styles> styles_;
};

// The style with the values of its disabled traits cleared, so that equal styles compare equal.
CharStyle normalized(CharStyle s);

// Case mapping and search, Unicode-aware (simple case mapping per code point).
std::u16string toLower(std::u16string_view s);
std::u16string toUpper(std::u16string_view s);
// Returns UINT32_MAX when not found.
uint32_t find(std::u16string_view hay, std::u16string_view needle, uint32_t from);
uint32_t findIgnoringCase(std::u16string_view hay, std::u16string_view needle, uint32_t from);
// Backward search: the last match starting at or before `from`.
uint32_t findPrev(std::u16string_view hay, std::u16string_view needle, uint32_t from);
uint32_t findPrevIgnoringCase(std::u16string_view hay, std::u16string_view needle, uint32_t from);

}  // namespace sim
