// FM_Text_*: styled UTF-16 text.
#include <algorithm>
#include <cstring>
#include <cwchar>

#include "sim/abi/guard.h"
#include "sim/core/encoding.h"

using namespace sim;
using namespace sim::abi;

namespace {

constexpr fmx::uint32 kNotFound = 0xFFFFFFFFu;

std::u16string_view unitsFrom(const fmx::uint16* s, size_t length) {
    return std::u16string_view(reinterpret_cast<const char16_t*>(s), length);
}

size_t unicodeLength(const fmx::uint16* s) {
    size_t n = 0;
    while (s[n] != 0) ++n;
    return n;
}

// wchar_t holds UTF-32 here. Values up to 0xFFFF stay single units (so surrogate halves that
// were widened one by one come back as the same pair); beyond the last code point: U+FFFD.
std::u16string unitsFromWide(const wchar_t* s, size_t length) {
    std::u16string out;
    out.reserve(length);
    for (size_t i = 0; i < length; ++i) {
        const auto c = static_cast<char32_t>(s[i]);
        if (c < 0x10000) {
            out.push_back(static_cast<char16_t>(c));
        } else if (c <= 0x10FFFF) {
            out.push_back(static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10)));
            out.push_back(static_cast<char16_t>(0xDC00 + ((c - 0x10000) & 0x3FF)));
        } else {
            out.push_back(u'\uFFFD');
        }
    }
    return out;
}

std::u16string_view sliceOf(const Text& t, fmx::uint32 position, fmx::uint32 size) {
    return std::u16string_view(t.units()).substr(std::min(position, t.size()), size);
}

}  // namespace

extern "C" {

fmx::Text* FM_Text_Constructor1(_fmxcpt& x) noexcept {
    return guard(__func__, x, [] { return handleOf(new Text); });
}

void FM_Text_Delete(void* self, _fmxcpt& x) noexcept {
    guardRelease(__func__, x, [&] { delete static_cast<Text*>(self); });
}

fmx::uint32 FM_Text_GetSize(const void* self, _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] { return abi::self<Text>(self).size(); });
}

void FM_Text_Assign(void* self, const char* s, fmx::int32 encoding, _fmxcpt& x) noexcept {
    guard(__func__, x, [&] {
        Text& t = abi::self<Text>(self);
        t.assign(s ? decode(s, encoding) : std::u16string());
    });
}

void FM_Text_AssignWithLength(void* self, const char* s, fmx::uint32 strlength, fmx::int32 encoding,
                              _fmxcpt& x) noexcept {
    guard(__func__, x, [&] {
        Text& t = abi::self<Text>(self);
        require(s != nullptr || strlength == 0);
        t.assign(strlength ? decode(std::string_view(s, strlength), encoding) : std::u16string());
    });
}

void FM_Text_AssignWide(void* self, const wchar_t* s, _fmxcpt& x) noexcept {
    guard(__func__, x, [&] {
        Text& t = abi::self<Text>(self);
        t.assign(s ? unitsFromWide(s, std::wcslen(s)) : std::u16string());
    });
}

void FM_Text_AssignWideWithLength(void* self, const wchar_t* s, fmx::uint32 strlength,
                                  _fmxcpt& x) noexcept {
    guard(__func__, x, [&] {
        Text& t = abi::self<Text>(self);
        require(s != nullptr || strlength == 0);
        t.assign(strlength ? unitsFromWide(s, strlength) : std::u16string());
    });
}

void FM_Text_AssignUnicode(void* self, const fmx::uint16* s, _fmxcpt& x) noexcept {
    guard(__func__, x, [&] {
        Text& t = abi::self<Text>(self);
        t.assign(s ? unitsFrom(s, unicodeLength(s)) : std::u16string_view());
    });
}

void FM_Text_AssignUnicodeWithLength(void* self, const fmx::uint16* s, fmx::uint32 strlength,
                                     _fmxcpt& x) noexcept {
    guard(__func__, x, [&] {
        Text& t = abi::self<Text>(self);
        require(s != nullptr || strlength == 0);
        t.assign(strlength ? unitsFrom(s, strlength) : std::u16string_view());
    });
}

void FM_Text_GetUnicode(const void* self, fmx::uint16* buffer, fmx::uint32 position,
                        fmx::uint32 size, _fmxcpt& x) noexcept {
    guard(__func__, x, [&] {
        const std::u16string_view units = sliceOf(abi::self<Text>(self), position, size);
        require(buffer != nullptr || units.empty());
        if (!units.empty()) std::memcpy(buffer, units.data(), units.size() * sizeof(char16_t));
    });
}

void FM_Text_GetBytes(const void* self, char* buffer, fmx::uint32 buffersize, fmx::uint32 position,
                      fmx::uint32 size, fmx::int32 encoding, _fmxcpt& x) noexcept {
    guard(__func__, x, [&] {
        const Text& t = abi::self<Text>(self);
        if (buffersize == 0) return;
        require(buffer != nullptr);
        const size_t n = encodeInto(sliceOf(t, position, size), encoding, buffer, buffersize - 1);
        buffer[n] = '\0';
    });
}

// Without a buffer (or with size 0) only tells how many bytes the slice takes.
fmx::uint32 FM_Text_GetBytesEx(const void* self, char* buffer, fmx::uint32 buffersize,
                               fmx::uint32 position, fmx::uint32 size, fmx::int32 encoding,
                               _fmxcpt& x) noexcept {
    return guard(__func__, x, [&]() -> fmx::uint32 {
        const Text& t = abi::self<Text>(self);
        if (buffer == nullptr || buffersize == 0) {
            return static_cast<fmx::uint32>(encodedSize(sliceOf(t, position, size), encoding));
        }
        return static_cast<fmx::uint32>(
            encodeInto(sliceOf(t, position, size), encoding, buffer, buffersize));
    });
}

// Legacy and undeclared, without a buffer size: the caller's buffer must hold the whole slice
// and its terminator, as with the host's own.
FMX_API void FM_Text_Get(const void* self, char* s, fmx::uint32 position, fmx::uint32 size,
                         fmx::uint32 encoding, _fmxcpt& x) noexcept {
    guard(__func__, x, [&] {
        const std::u16string_view units = sliceOf(abi::self<Text>(self), position, size);
        require(s != nullptr);
        const auto code = static_cast<fmx::int32>(encoding);
        s[encodeInto(units, code, s, encodedSize(units, code))] = '\0';
    });
}

void FM_Text_SetText(void* self, const fmx::Text& other, fmx::uint32 position, fmx::uint32 size,
                     _fmxcpt& x) noexcept {
    guard(__func__, x, [&] { abi::self<Text>(self).setSlice(arg(other), position, size); });
}

void FM_Text_AppendText(void* self, const fmx::Text& other, fmx::uint32 position, fmx::uint32 size,
                        _fmxcpt& x) noexcept {
    guard(__func__, x, [&] { abi::self<Text>(self).append(arg(other), position, size); });
}

void FM_Text_InsertText(void* self, const fmx::Text& other, fmx::uint32 position,
                        _fmxcpt& x) noexcept {
    guard(__func__, x, [&] { abi::self<Text>(self).insert(arg(other), position); });
}

void FM_Text_DeleteText(void* self, fmx::uint32 positionToDelete, fmx::uint32 sizeToDelete,
                        _fmxcpt& x) noexcept {
    guard(__func__, x, [&] { abi::self<Text>(self).erase(positionToDelete, sizeToDelete); });
}

fmx::uint32 FM_Text_Find(const void* self, const fmx::Text& other, fmx::uint32 position,
                         _fmxcpt& x) noexcept {
    return guardOr(__func__, x, kNotFound, [&] {
        return sim::find(abi::self<Text>(self).units(), arg(other).units(), position);
    });
}

fmx::uint32 FM_Text_FindPrev(const void* self, const fmx::Text& other, fmx::uint32 position,
                             _fmxcpt& x) noexcept {
    return guardOr(__func__, x, kNotFound, [&] {
        return sim::findPrev(abi::self<Text>(self).units(), arg(other).units(), position);
    });
}

fmx::uint32 FM_Text_FindIgnoringCase(const void* self, const fmx::Text& other, fmx::uint32 position,
                                     _fmxcpt& x) noexcept {
    return guardOr(__func__, x, kNotFound, [&] {
        return findIgnoringCase(abi::self<Text>(self).units(), arg(other).units(), position);
    });
}

fmx::uint32 FM_Text_FindPrevIgnoringCase(const void* self, const fmx::Text& other,
                                         fmx::uint32 position, _fmxcpt& x) noexcept {
    return guardOr(__func__, x, kNotFound, [&] {
        return findPrevIgnoringCase(abi::self<Text>(self).units(), arg(other).units(), position);
    });
}

// Declared const by the interface, yet they change the text in place.
void FM_Text_Uppercase(const void* self, _fmxcpt& x) noexcept {
    guard(__func__, x, [&] {
        Text& t = abi::self<Text>(const_cast<void*>(self));
        t.replaceUnits(toUpper(t.units()));
    });
}

void FM_Text_Lowercase(const void* self, _fmxcpt& x) noexcept {
    guard(__func__, x, [&] {
        Text& t = abi::self<Text>(const_cast<void*>(self));
        t.replaceUnits(toLower(t.units()));
    });
}

void FM_Text_GetStyle(const void* self, fmx::CharacterStyle& style, fmx::uint32 position,
                      _fmxcpt& x) noexcept {
    guard(__func__, x, [&] {
        const Text& t = abi::self<Text>(self);
        arg(style) = t.styleAt(position);
    });
}

void FM_Text_GetDefaultStyle(const void* self, fmx::CharacterStyle& style, _fmxcpt& x) noexcept {
    guard(__func__, x, [&] {
        abi::self<Text>(self);
        arg(style) = CharStyle{};
    });
}

void FM_Text_SetStyle(void* self, const fmx::CharacterStyle& style, fmx::uint32 position,
                      fmx::uint32 size, _fmxcpt& x) noexcept {
    guard(__func__, x, [&] { abi::self<Text>(self).setStyle(arg(style), position, size); });
}

void FM_Text_RemoveStyle(void* self, const fmx::CharacterStyle& style, _fmxcpt& x) noexcept {
    guard(__func__, x, [&] { abi::self<Text>(self).removeStyle(arg(style)); });
}

void FM_Text_ResetAllStyleBuffers(void* self, _fmxcpt& x) noexcept {
    guard(__func__, x, [&] { abi::self<Text>(self).resetStyles(); });
}

bool FM_Text_operatorEQ(const void* self, const fmx::Text& that, _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] { return abi::self<Text>(self).units() == arg(that).units(); });
}

bool FM_Text_operatorNE(const void* self, const fmx::Text& that, _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] { return abi::self<Text>(self).units() != arg(that).units(); });
}

bool FM_Text_operatorLT(const void* self, const fmx::Text& that, _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] { return abi::self<Text>(self).units() < arg(that).units(); });
}

bool FM_Text_operatorLE(const void* self, const fmx::Text& that, _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] { return abi::self<Text>(self).units() <= arg(that).units(); });
}

bool FM_Text_operatorGT(const void* self, const fmx::Text& that, _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] { return abi::self<Text>(self).units() > arg(that).units(); });
}

bool FM_Text_operatorGE(const void* self, const fmx::Text& that, _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] { return abi::self<Text>(self).units() >= arg(that).units(); });
}

}  // extern "C"
