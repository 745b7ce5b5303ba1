// FM_Color_* and FM_CharacterStyle_*: colours and character styles. A style carries each trait
// with its own enabled flag; face bits are enabled one by one, and the functions here keep the
// set face bits equal to the enabled ones.
#include "sim/abi/guard.h"

using namespace sim;
using namespace sim::abi;

namespace {

constexpr Rgb kWhite{255, 255, 255, 255};
constexpr Rgb kBlack{0, 0, 0, 255};

fmx::uint16 upsampled(uint8_t c) { return static_cast<fmx::uint16>((c << 8) | c); }

template <class Get>
auto colorGetter(const char* function, const void* self, fmx::_fmxcpt& x, Get get) {
    return guard(function, x, [&] { return get(abi::self<Rgb>(self)); });
}

template <class Change>
void styleChange(const char* function, void* self, fmx::_fmxcpt& x, Change change) {
    guard(function, x, [&] { change(abi::self<CharStyle>(self)); });
}

template <class Get>
auto styleGetter(const char* function, const void* self, fmx::_fmxcpt& x, Get get) {
    return guard(function, x, [&] { return get(abi::self<CharStyle>(self)); });
}

void setFace(CharStyle& s, fmx::uint16 face) {
    s.face = face;
    s.faceMask = face;
}

}  // namespace

extern "C" {

// --- Color -----------------------------------------------------------------------------------

fmx::Color* FM_Color_Constructor1(_fmxcpt& x) noexcept {
    return guard(__func__, x, [] { return handleOf(new Rgb(kBlack)); });
}

fmx::Color* FM_Color_Constructor2(fmx::uchar red, fmx::uchar green, fmx::uchar blue,
                                  fmx::uchar alpha, _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] { return handleOf(new Rgb{red, green, blue, alpha}); });
}

fmx::Color* FM_Color_Constructor3(const fmx::Color& color, _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] { return handleOf(new Rgb(arg(color))); });
}

void FM_Color_Delete(void* self, _fmxcpt& x) noexcept {
    guardRelease(__func__, x, [&] {
        // The shared constants are not the caller's to free.
        if (self == &kWhite || self == &kBlack) return;
        delete static_cast<Rgb*>(self);
    });
}

void FM_Color_SetRed(void* self, fmx::uchar r, _fmxcpt& x) noexcept {
    guard(__func__, x, [&] { abi::self<Rgb>(self).red = r; });
}

void FM_Color_SetGreen(void* self, fmx::uchar g, _fmxcpt& x) noexcept {
    guard(__func__, x, [&] { abi::self<Rgb>(self).green = g; });
}

void FM_Color_SetBlue(void* self, fmx::uchar b, _fmxcpt& x) noexcept {
    guard(__func__, x, [&] { abi::self<Rgb>(self).blue = b; });
}

void FM_Color_SetAlpha(void* self, fmx::uchar a, _fmxcpt& x) noexcept {
    guard(__func__, x, [&] { abi::self<Rgb>(self).alpha = a; });
}

fmx::uchar FM_Color_GetRed(const void* self, _fmxcpt& x) noexcept {
    return colorGetter(__func__, self, x, [](const Rgb& c) { return c.red; });
}

fmx::uchar FM_Color_GetGreen(const void* self, _fmxcpt& x) noexcept {
    return colorGetter(__func__, self, x, [](const Rgb& c) { return c.green; });
}

fmx::uchar FM_Color_GetBlue(const void* self, _fmxcpt& x) noexcept {
    return colorGetter(__func__, self, x, [](const Rgb& c) { return c.blue; });
}

fmx::uchar FM_Color_GetAlpha(const void* self, _fmxcpt& x) noexcept {
    return colorGetter(__func__, self, x, [](const Rgb& c) { return c.alpha; });
}

fmx::uint16 FM_Color_GetRedUpsample(const void* self, _fmxcpt& x) noexcept {
    return colorGetter(__func__, self, x, [](const Rgb& c) { return upsampled(c.red); });
}

fmx::uint16 FM_Color_GetGreenUpsample(const void* self, _fmxcpt& x) noexcept {
    return colorGetter(__func__, self, x, [](const Rgb& c) { return upsampled(c.green); });
}

fmx::uint16 FM_Color_GetBlueUpsample(const void* self, _fmxcpt& x) noexcept {
    return colorGetter(__func__, self, x, [](const Rgb& c) { return upsampled(c.blue); });
}

fmx::uint16 FM_Color_GetAlphaUpsample(const void* self, _fmxcpt& x) noexcept {
    return colorGetter(__func__, self, x, [](const Rgb& c) { return upsampled(c.alpha); });
}

fmx::Color* FM_Color_operatorAS(void* self, const fmx::Color& rhs, _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] {
        Rgb& c = abi::self<Rgb>(self);
        c = arg(rhs);
        return handleOf(&c);
    });
}

bool FM_Color_operatorEQ(const void* self, const fmx::Color& rhs, _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] { return abi::self<Rgb>(self) == arg(rhs); });
}

bool FM_Color_operatorNE(const void* self, const fmx::Color& rhs, _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] { return !(abi::self<Rgb>(self) == arg(rhs)); });
}

const fmx::Color* FM_Color_White() noexcept { return handleOf(&kWhite); }

const fmx::Color* FM_Color_Black() noexcept { return handleOf(&kBlack); }

// --- CharacterStyle --------------------------------------------------------------------------

fmx::CharacterStyle* FM_CharacterStyle_Constructor1(_fmxcpt& x) noexcept {
    return guard(__func__, x, [] { return handleOf(new CharStyle); });
}

fmx::CharacterStyle* FM_CharacterStyle_Constructor2(fmx::uint16 font, fmx::uint16 face,
                                                    fmx::uint16 size, const fmx::Color& color,
                                                    _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] {
        CharStyle s;
        s.font = font;
        s.fontOn = true;
        setFace(s, face);
        s.size = size;
        s.sizeOn = true;
        s.color = arg(color);
        s.colorOn = true;
        return handleOf(new CharStyle(s));
    });
}

fmx::CharacterStyle* FM_CharacterStyle_Constructor3(const fmx::CharacterStyle& style,
                                                    _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] { return handleOf(new CharStyle(arg(style))); });
}

void FM_CharacterStyle_Delete(void* self, _fmxcpt& x) noexcept {
    guardRelease(__func__, x, [&] { delete static_cast<CharStyle*>(self); });
}

void FM_CharacterStyle_EnableFont(void* self, _fmxcpt& x) noexcept {
    styleChange(__func__, self, x, [](CharStyle& s) { s.fontOn = true; });
}

void FM_CharacterStyle_EnableFace(void* self, fmx::uint16 face, _fmxcpt& x) noexcept {
    styleChange(__func__, self, x, [&](CharStyle& s) {
        s.face |= face;
        s.faceMask |= face;
    });
}

void FM_CharacterStyle_EnableSize(void* self, _fmxcpt& x) noexcept {
    styleChange(__func__, self, x, [](CharStyle& s) { s.sizeOn = true; });
}

void FM_CharacterStyle_EnableColor(void* self, _fmxcpt& x) noexcept {
    styleChange(__func__, self, x, [](CharStyle& s) { s.colorOn = true; });
}

void FM_CharacterStyle_DisableFont(void* self, _fmxcpt& x) noexcept {
    styleChange(__func__, self, x, [](CharStyle& s) { s.fontOn = false; });
}

void FM_CharacterStyle_DisableFace(void* self, fmx::uint16 face, _fmxcpt& x) noexcept {
    styleChange(__func__, self, x, [&](CharStyle& s) {
        s.face &= static_cast<uint16_t>(~face);
        s.faceMask &= static_cast<uint16_t>(~face);
    });
}

void FM_CharacterStyle_DisableAllFaces(void* self, _fmxcpt& x) noexcept {
    styleChange(__func__, self, x, [](CharStyle& s) { setFace(s, 0); });
}

void FM_CharacterStyle_DisableSize(void* self, _fmxcpt& x) noexcept {
    styleChange(__func__, self, x, [](CharStyle& s) { s.sizeOn = false; });
}

void FM_CharacterStyle_DisableColor(void* self, _fmxcpt& x) noexcept {
    styleChange(__func__, self, x, [](CharStyle& s) { s.colorOn = false; });
}

void FM_CharacterStyle_DisableAll(void* self, _fmxcpt& x) noexcept {
    styleChange(__func__, self, x, [](CharStyle& s) {
        s.fontOn = s.sizeOn = s.colorOn = false;
        setFace(s, 0);
    });
}

bool FM_CharacterStyle_IsAllDisabled(const void* self, _fmxcpt& x) noexcept {
    return styleGetter(__func__, self, x, [](const CharStyle& s) { return s.allDisabled(); });
}

bool FM_CharacterStyle_IsFontEnabled(const void* self, _fmxcpt& x) noexcept {
    return styleGetter(__func__, self, x, [](const CharStyle& s) { return s.fontOn; });
}

bool FM_CharacterStyle_IsFaceEnabled(const void* self, fmx::uint16 face, _fmxcpt& x) noexcept {
    return styleGetter(__func__, self, x, [&](const CharStyle& s) {
        return face != 0 && (s.faceMask & face) == face;
    });
}

bool FM_CharacterStyle_IsAnyFaceEnabled(const void* self, _fmxcpt& x) noexcept {
    return styleGetter(__func__, self, x, [](const CharStyle& s) { return s.faceMask != 0; });
}

bool FM_CharacterStyle_IsSizeEnabled(const void* self, _fmxcpt& x) noexcept {
    return styleGetter(__func__, self, x, [](const CharStyle& s) { return s.sizeOn; });
}

bool FM_CharacterStyle_IsColorEnabled(const void* self, _fmxcpt& x) noexcept {
    return styleGetter(__func__, self, x, [](const CharStyle& s) { return s.colorOn; });
}

void FM_CharacterStyle_SetFontInformation(void* self, fmx::uint16 font, fmx::uint16 face,
                                          fmx::uint16 size, _fmxcpt& x) noexcept {
    styleChange(__func__, self, x, [&](CharStyle& s) {
        s.font = font;
        s.fontOn = true;
        setFace(s, face);
        s.size = size;
        s.sizeOn = true;
    });
}

void FM_CharacterStyle_GetFontInformation(void* self, fmx::uint16& font, fmx::uint16& face,
                                          fmx::uint16& size, _fmxcpt& x) noexcept {
    guard(__func__, x, [&] {
        const CharStyle& s = abi::self<CharStyle>(self);
        require(addressOf(font) && addressOf(face) && addressOf(size));
        font = s.font;
        face = s.face;
        size = s.size;
    });
}

void FM_CharacterStyle_SetFont(void* self, fmx::uint16 font, _fmxcpt& x) noexcept {
    styleChange(__func__, self, x, [&](CharStyle& s) {
        s.font = font;
        s.fontOn = true;
    });
}

void FM_CharacterStyle_SetFace(void* self, fmx::uint16 face, _fmxcpt& x) noexcept {
    styleChange(__func__, self, x, [&](CharStyle& s) { setFace(s, face); });
}

void FM_CharacterStyle_SetSize(void* self, fmx::uint16 size, _fmxcpt& x) noexcept {
    styleChange(__func__, self, x, [&](CharStyle& s) {
        s.size = size;
        s.sizeOn = true;
    });
}

fmx::uint16 FM_CharacterStyle_GetFont(const void* self, _fmxcpt& x) noexcept {
    return styleGetter(__func__, self, x, [](const CharStyle& s) { return s.font; });
}

fmx::uint16 FM_CharacterStyle_GetFace(const void* self, _fmxcpt& x) noexcept {
    return styleGetter(__func__, self, x, [](const CharStyle& s) { return s.face; });
}

fmx::uint16 FM_CharacterStyle_GetSize(const void* self, _fmxcpt& x) noexcept {
    return styleGetter(__func__, self, x, [](const CharStyle& s) { return s.size; });
}

void FM_CharacterStyle_SetColor(void* self, const fmx::Color& color, _fmxcpt& x) noexcept {
    styleChange(__func__, self, x, [&](CharStyle& s) {
        s.color = arg(color);
        s.colorOn = true;
    });
}

const fmx::Color* FM_CharacterStyle_GetColor(const void* self, _fmxcpt& x) noexcept {
    return styleGetter(__func__, self, x, [](const CharStyle& s) { return handleOf(&s.color); });
}

fmx::CharacterStyle* FM_CharacterStyle_operatorAS(void* self, const fmx::CharacterStyle& rhs,
                                                  _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] {
        CharStyle& s = abi::self<CharStyle>(self);
        s = arg(rhs);
        return handleOf(&s);
    });
}

bool FM_CharacterStyle_operatorEQ(const void* self, const fmx::CharacterStyle& rhs,
                                  _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] { return abi::self<CharStyle>(self) == arg(rhs); });
}

bool FM_CharacterStyle_operatorNE(const void* self, const fmx::CharacterStyle& rhs,
                                  _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] { return !(abi::self<CharStyle>(self) == arg(rhs)); });
}

}  // extern "C"
