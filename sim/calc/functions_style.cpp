// Text style functions: faces, colour, font and size over a whole text, and GetAsCSS.
#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

#include "sim/calc/builtins.h"
#include "sim/calc/css.h"
#include "sim/calc/errors.h"
#include "sim/core/fonts.h"

namespace sim::calc {

namespace {

constexpr uint16_t kAllFaces = 0x7FFF;

// The style constants map one to one onto face bits (HighlightYellow onto bit 4096).
uint16_t facesOf(double styles) {
    if (!(styles > 0)) return 0;
    return static_cast<uint16_t>(static_cast<uint32_t>(std::min(styles, 65535.0)) & kAllFaces);
}

Rgb colorOf(double rgb) {
    const auto n = static_cast<uint32_t>(std::clamp(std::trunc(rgb), 0.0, 16777215.0));
    return Rgb{static_cast<uint8_t>(n >> 16), static_cast<uint8_t>(n >> 8),
               static_cast<uint8_t>(n)};
}

Value styled(Args& a, const CharStyle& add) {
    Text t = a.text(0);
    t.mergeStyle(add, 0, t.size());
    return Value::text(std::move(t));
}

// Disables the traits of `trait` in the runs for which `matches` holds.
template <class Matches>
Value removeWhere(Args& a, const CharStyle& trait, Matches matches) {
    Text t = a.text(0);
    for (uint32_t pos = 0; pos < t.size();) {
        const uint32_t end = std::max(t.runEnd(pos), pos + 1);
        const CharStyle s = t.styleAt(pos);
        if (matches(s)) {
            CharStyle kept = s;
            if (trait.fontOn) kept.fontOn = false;
            if (trait.sizeOn) kept.sizeOn = false;
            if (trait.colorOn) kept.colorOn = false;
            t.setStyle(kept, pos, end - pos);
        }
        pos = end;
    }
    return Value::text(std::move(t));
}

// TextStyleAdd ( text ; styles ): Plain alone makes the text plain.
Value fnTextStyleAdd(Args& a) {
    const uint16_t faces = facesOf(a.number(1));
    CharStyle add;
    add.face = faces;
    add.faceMask = faces == 0 ? kAllFaces : faces;
    return styled(a, add);
}

Value fnTextStyleRemove(Args& a) {
    CharStyle remove;
    remove.faceMask = facesOf(a.number(1));
    Text t = a.text(0);
    if (remove.faceMask != 0) t.removeStyle(remove);
    return Value::text(std::move(t));
}

Value fnTextColor(Args& a) {
    CharStyle add;
    add.colorOn = true;
    add.color = colorOf(a.number(1));
    return styled(a, add);
}

// TextColorRemove ( text { ; rgb } ): every colour, or only the given one.
Value fnTextColorRemove(Args& a) {
    CharStyle trait;
    trait.colorOn = true;
    if (!a.has(1)) return removeWhere(a, trait, [](const CharStyle&) { return true; });
    const Rgb color = colorOf(a.number(1));
    return removeWhere(a, trait, [color](const CharStyle& s) {
        return s.colorOn && s.color.red == color.red && s.color.green == color.green &&
               s.color.blue == color.blue;
    });
}

// TextFont ( text ; font { ; script } ): an empty font name changes nothing.
Value fnTextFont(Args& a) {
    const std::u16string_view name = a.units(1);
    if (name.empty()) return Value::text(a.text(0));
    CharStyle add;
    add.fontOn = true;
    add.font = fonts::idOf(name);
    return styled(a, add);
}

Value fnTextFontRemove(Args& a) {
    CharStyle trait;
    trait.fontOn = true;
    if (!a.has(1)) return removeWhere(a, trait, [](const CharStyle&) { return true; });
    const uint16_t font = fonts::idOf(a.units(1));
    return removeWhere(a, trait, [font](const CharStyle& s) { return s.fontOn && s.font == font; });
}

// TextSize ( text ; size ): sizes below 1 change nothing.
Value fnTextSize(Args& a) {
    const double size = std::trunc(a.number(1));
    if (!(size >= 1)) return Value::text(a.text(0));
    CharStyle add;
    add.sizeOn = true;
    add.size = static_cast<uint16_t>(std::min(size, 65535.0));
    return styled(a, add);
}

Value fnTextSizeRemove(Args& a) {
    CharStyle trait;
    trait.sizeOn = true;
    if (!a.has(1)) return removeWhere(a, trait, [](const CharStyle&) { return true; });
    const double size = std::trunc(a.number(1));
    return removeWhere(a, trait, [size](const CharStyle& s) { return s.sizeOn && s.size == size; });
}

// RGB ( red ; green ; blue ): each part clamped to 0..255.
Value fnRgb(Args& a) {
    double total = 0;
    for (size_t i = 0; i < 3; ++i)
        total = total * 256 + std::clamp(std::trunc(a.number(i)), 0.0, 255.0);
    return Value::number(total);
}

Value fnGetAsCss(Args& a) { return textValue(toCss(a.text(0))); }

// FMSim_TextAlign ( text ; alignment ): this host's own function, not FileMaker's. FileMaker
// aligns paragraphs through layout formatting, which no calculation reaches; here every paragraph
// of the text takes the alignment "left", "center", "right" or "full" ("none" clears it). Another
// word fails with error 1200.
Value fnTextAlign(Args& a) {
    static constexpr std::pair<std::u16string_view, Alignment> kNames[] = {
        {u"none", Alignment::None},   {u"left", Alignment::Left}, {u"center", Alignment::Center},
        {u"right", Alignment::Right}, {u"full", Alignment::Full},
    };
    const std::u16string name = toLower(a.units(1));
    const auto* it = std::find_if(std::begin(kNames), std::end(kNames),
                                  [&](const auto& n) { return n.first == name; });
    if (it == std::end(kNames)) raise(kGenericError);
    Text t = a.text(0);
    t.setAlignment(it->second, 0, t.size());
    return Value::text(std::move(t));
}

// TextFormatRemove ( text ): the characters alone, without styles or alignment.
Value fnTextFormatRemove(Args& a) { return Value::text(std::u16string(a.units(0))); }

constexpr Builtin kFunctions[] = {
    {u"textformatremove", 1, 1, fnTextFormatRemove},
    {u"textstyleadd", 2, 2, fnTextStyleAdd},
    {u"textstyleremove", 2, 2, fnTextStyleRemove},
    {u"textcolor", 2, 2, fnTextColor},
    {u"textcolorremove", 1, 2, fnTextColorRemove},
    {u"textfont", 2, 3, fnTextFont},
    {u"textfontremove", 1, 3, fnTextFontRemove},
    {u"textsize", 2, 2, fnTextSize},
    {u"textsizeremove", 1, 2, fnTextSizeRemove},
    {u"rgb", 3, 3, fnRgb},
    {u"getascss", 1, 1, fnGetAsCss},
    {u"fmsim_textalign", 2, 2, fnTextAlign},
};

}  // namespace

std::span<const Builtin> styleFunctions() { return kFunctions; }

}  // namespace sim::calc
