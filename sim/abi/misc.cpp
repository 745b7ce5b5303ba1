// FM_QuadChar_*, FM_Locale_* and FM_BinaryData_*.
#include <algorithm>
#include <cstring>

#include "sim/abi/guard.h"
#include "sim/core/encoding.h"

using namespace sim;
using namespace sim::abi;

namespace {

using StreamType = std::array<char, 4>;

constexpr StreamType kFileName{'F', 'N', 'A', 'M'};
constexpr StreamType kFileData{'F', 'I', 'L', 'E'};
constexpr StreamType kImageSize{'S', 'I', 'Z', 'E'};
// What the errcode-returning BinaryData calls answer for an index, offset or size out of range.
constexpr fmx::errcode kBadRequest = 5;

uint8_t byteAt(const QuadCharObj& q, int i) {
    require(i >= 0 && i < 4);
    return static_cast<uint8_t>(q.chars[static_cast<size_t>(i)]);
}

fmx::uint32 macTypeOf(const QuadCharObj& q) {
    fmx::uint32 v = 0;
    for (int i = 0; i < 4; ++i) v = (v << 8) | byteAt(q, i);
    return v;
}

const Binary::Stream& streamAt(const Binary& b, fmx::int32 index) {
    require(index >= 0 && static_cast<size_t>(index) < b.streams.size());
    return b.streams[static_cast<size_t>(index)];
}

std::string bytesFrom(const void* buffer, fmx::uint32 amount) {
    require(buffer != nullptr || amount == 0);
    return amount ? std::string(static_cast<const char*>(buffer), amount) : std::string();
}

// Replaces the stream of that type, or adds it at the end.
void putStream(Binary& b, const StreamType& type, std::string bytes) {
    auto it = std::find_if(b.streams.begin(), b.streams.end(),
                           [&](const Binary::Stream& s) { return s.type == type; });
    if (it != b.streams.end()) {
        it->bytes = std::move(bytes);
    } else {
        b.streams.push_back({type, std::move(bytes)});
    }
}

const Binary::Stream* findStream(const Binary& b, const StreamType& type) {
    auto it = std::find_if(b.streams.begin(), b.streams.end(),
                           [&](const Binary::Stream& s) { return s.type == type; });
    return it == b.streams.end() ? nullptr : &*it;
}

// A stream being added piece by piece is named by its place plus one, so 0 is never valid.
fmx::uint32 contextOf(const Binary& b, const StreamType& type) {
    const Binary::Stream* s = findStream(b, type);
    return static_cast<fmx::uint32>(s - b.streams.data()) + 1;
}

Binary::Stream* streamOfContext(Binary& b, fmx::uint32 context) {
    if (context == 0 || context > b.streams.size()) return nullptr;
    return &b.streams[context - 1];
}

}  // namespace

extern "C" {

// --- QuadChar --------------------------------------------------------------------------------

fmx::QuadChar* FM_QuadChar_Constructor1(_fmxcpt& x) noexcept {
    return guard(__func__, x, [] { return handleOf(new QuadCharObj); });
}

fmx::QuadChar* FM_QuadChar_Constructor2(char c0, char c1, char c2, char c3, _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] { return handleOf(new QuadCharObj{{c0, c1, c2, c3}}); });
}

fmx::QuadChar* FM_QuadChar_Constructor3(const fmx::QuadChar& value, _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] { return handleOf(new QuadCharObj(arg(value))); });
}

void FM_QuadChar_Delete(void* self, _fmxcpt& x) noexcept {
    guardRelease(__func__, x, [&] { delete static_cast<QuadCharObj*>(self); });
}

const fmx::QuadChar* FM_QuadChar_operatorAS(void* self, const fmx::QuadChar& value,
                                            _fmxcpt& x) noexcept {
    return guard(__func__, x, [&]() -> const fmx::QuadChar* {
        QuadCharObj& q = abi::self<QuadCharObj>(self);
        q = arg(value);
        return handleOf(&q);
    });
}

fmx::uchar FM_QuadChar_operatorAR(void* self, int i, _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] { return byteAt(abi::self<QuadCharObj>(self), i); });
}

fmx::uchar FM_QuadChar_operatorCAR(const void* self, int i, _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] { return byteAt(abi::self<QuadCharObj>(self), i); });
}

bool FM_QuadChar_operatorEQ(const void* self, const fmx::QuadChar& value, _fmxcpt& x) noexcept {
    return guard(__func__, x,
                 [&] { return abi::self<QuadCharObj>(self).chars == arg(value).chars; });
}

bool FM_QuadChar_operatorNE(const void* self, const fmx::QuadChar& value, _fmxcpt& x) noexcept {
    return guard(__func__, x,
                 [&] { return abi::self<QuadCharObj>(self).chars != arg(value).chars; });
}

// Ordered as their bytes, unsigned, which is the order of their Mac types.
FMX_API bool FM_QuadChar_operatorLT(const void* self, const fmx::QuadChar& value,
                                    _fmxcpt& x) noexcept {
    return guard(__func__, x,
                 [&] { return macTypeOf(abi::self<QuadCharObj>(self)) < macTypeOf(arg(value)); });
}

FMX_API bool FM_QuadChar_operatorLE(const void* self, const fmx::QuadChar& value,
                                    _fmxcpt& x) noexcept {
    return guard(__func__, x,
                 [&] { return macTypeOf(abi::self<QuadCharObj>(self)) <= macTypeOf(arg(value)); });
}

FMX_API bool FM_QuadChar_operatorGT(const void* self, const fmx::QuadChar& value,
                                    _fmxcpt& x) noexcept {
    return guard(__func__, x,
                 [&] { return macTypeOf(abi::self<QuadCharObj>(self)) > macTypeOf(arg(value)); });
}

FMX_API bool FM_QuadChar_operatorGE(const void* self, const fmx::QuadChar& value,
                                    _fmxcpt& x) noexcept {
    return guard(__func__, x,
                 [&] { return macTypeOf(abi::self<QuadCharObj>(self)) >= macTypeOf(arg(value)); });
}

fmx::uint32 FM_QuadChar_GetMacType(const void* self, _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] { return macTypeOf(abi::self<QuadCharObj>(self)); });
}

void FM_QuadChar_SetMacType(void* self, fmx::uint32 value, _fmxcpt& x) noexcept {
    guard(__func__, x, [&] {
        QuadCharObj& q = abi::self<QuadCharObj>(self);
        for (int i = 0; i < 4; ++i)
            q.chars[static_cast<size_t>(i)] = static_cast<char>(value >> (24 - 8 * i));
    });
}

// --- Locale ----------------------------------------------------------------------------------

fmx::Locale* FM_Locale_Constructor1(fmx::int32 inputType, _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] { return handleOf(new LocaleObj{inputType}); });
}

fmx::Locale* FM_Locale_Constructor2(const fmx::Locale& copyConstruct, _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] { return handleOf(new LocaleObj(arg(copyConstruct))); });
}

fmx::Locale* FM_Locale_operatorAS(void* self, const fmx::Locale& rhs, _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] {
        LocaleObj& l = abi::self<LocaleObj>(self);
        l = arg(rhs);
        return handleOf(&l);
    });
}

void FM_Locale_Delete(void* self, _fmxcpt& x) noexcept {
    guardRelease(__func__, x, [&] { delete static_cast<LocaleObj*>(self); });
}

// --- BinaryData ------------------------------------------------------------------------------

fmx::BinaryData* FM_BinaryData_Constructor1(_fmxcpt& x) noexcept {
    return guard(__func__, x, [] { return handleOf(new Binary); });
}

fmx::BinaryData* FM_BinaryData_Constructor2(const fmx::BinaryData& sourceData,
                                            _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] { return handleOf(new Binary(arg(sourceData))); });
}

// A file: its name (FNAM, UTF-8) and its bytes (FILE). This host shows no images, so no SIZE.
fmx::BinaryData* FM_BinaryData_Constructor3(const fmx::Text& name, fmx::uint32 amount, void* buffer,
                                            _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] {
        auto b = std::make_unique<Binary>();
        b->streams.push_back({kFileName, toUtf8(arg(name).units())});
        b->streams.push_back({kFileData, bytesFrom(buffer, amount)});
        return handleOf(b.release());
    });
}

// The same file, its bytes to follow through AddAppend and AddFinish with the context given.
FMX_API fmx::BinaryData* FM_BinaryData_Constructor4(const fmx::Text& name, fmx::uint32* context,
                                                    _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] {
        require(context != nullptr);
        auto b = std::make_unique<Binary>();
        b->streams.push_back({kFileName, toUtf8(arg(name).units())});
        b->streams.push_back({kFileData, std::string()});
        *context = contextOf(*b, kFileData);
        return handleOf(b.release());
    });
}

void FM_BinaryData_Delete(void* self, _fmxcpt& x) noexcept {
    guardRelease(__func__, x, [&] { delete static_cast<Binary*>(self); });
}

fmx::BinaryData* FM_BinaryData_operatorAS(void* self, const fmx::BinaryData& source,
                                          _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] {
        Binary& b = abi::self<Binary>(self);
        if (&b != &arg(source)) b = arg(source);
        return handleOf(&b);
    });
}

bool FM_BinaryData_operatorEQ(const void* self, const fmx::BinaryData& compareData,
                              _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] { return abi::self<Binary>(self) == arg(compareData); });
}

bool FM_BinaryData_operatorNE(const void* self, const fmx::BinaryData& compareData,
                              _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] { return !(abi::self<Binary>(self) == arg(compareData)); });
}

fmx::int32 FM_BinaryData_GetCount(const void* self, _fmxcpt& x) noexcept {
    return guard(__func__, x,
                 [&] { return static_cast<fmx::int32>(abi::self<Binary>(self).streams.size()); });
}

// -1 when there is no stream of that type.
fmx::int32 FM_BinaryData_GetIndex(const void* self, const fmx::QuadChar& dataType,
                                  _fmxcpt& x) noexcept {
    return guard(__func__, x, [&]() -> fmx::int32 {
        const auto& streams = abi::self<Binary>(self).streams;
        const StreamType& type = arg(dataType).chars;
        for (size_t i = 0; i < streams.size(); ++i) {
            if (streams[i].type == type) return static_cast<fmx::int32>(i);
        }
        return -1;
    });
}

fmx::uint32 FM_BinaryData_GetTotalSize(const void* self, _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] {
        size_t total = 0;
        for (const auto& s : abi::self<Binary>(self).streams) total += s.bytes.size();
        return static_cast<fmx::uint32>(total);
    });
}

void FM_BinaryData_GetType(const void* self, fmx::int32 index, fmx::QuadChar& dataType,
                           _fmxcpt& x) noexcept {
    guard(__func__, x,
          [&] { arg(dataType).chars = streamAt(abi::self<Binary>(self), index).type; });
}

fmx::uint32 FM_BinaryData_GetSize(const void* self, fmx::int32 index, _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] {
        return static_cast<fmx::uint32>(streamAt(abi::self<Binary>(self), index).bytes.size());
    });
}

fmx::errcode FM_BinaryData_GetData(const void* self, fmx::int32 index, fmx::uint32 offset,
                                   fmx::uint32 amount, void* buffer, _fmxcpt& x) noexcept {
    return guard(__func__, x, [&]() -> fmx::errcode {
        const Binary& b = abi::self<Binary>(self);
        if (index < 0 || static_cast<size_t>(index) >= b.streams.size()) return kBadRequest;
        const std::string& bytes = b.streams[static_cast<size_t>(index)].bytes;
        if (offset > bytes.size() || amount > bytes.size() - offset) return kBadRequest;
        if (amount == 0) return 0;
        if (buffer == nullptr) return kBadRequest;
        std::memcpy(buffer, bytes.data() + offset, amount);
        return 0;
    });
}

fmx::errcode FM_BinaryData_Add(void* self, const fmx::QuadChar& dataType, fmx::uint32 amount,
                               void* buffer, _fmxcpt& x) noexcept {
    return guard(__func__, x, [&]() -> fmx::errcode {
        Binary& b = abi::self<Binary>(self);
        const StreamType type = arg(dataType).chars;
        if (buffer == nullptr && amount != 0) return kBadRequest;
        putStream(b, type, bytesFrom(buffer, amount));
        return 0;
    });
}

bool FM_BinaryData_Remove(void* self, const fmx::QuadChar& dataType, _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] {
        auto& streams = abi::self<Binary>(self).streams;
        const StreamType type = arg(dataType).chars;
        const auto before = streams.size();
        std::erase_if(streams, [&](const Binary::Stream& s) { return s.type == type; });
        return streams.size() != before;
    });
}

void FM_BinaryData_RemoveAll(void* self, _fmxcpt& x) noexcept {
    guard(__func__, x, [&] { abi::self<Binary>(self).streams.clear(); });
}

// FNAM holds the file name (or path list) as UTF-8 text.
FMX_API fmx::errcode FM_BinaryData_GetFNAMData(const void* self, fmx::Text& filepathlist,
                                               _fmxcpt& x) noexcept {
    return guard(__func__, x, [&]() -> fmx::errcode {
        const Binary::Stream* s = findStream(abi::self<Binary>(self), kFileName);
        if (s == nullptr) return kBadRequest;
        arg(filepathlist).assign(decode(s->bytes, fmx::kEncoding_UTF8));
        return 0;
    });
}

FMX_API fmx::errcode FM_BinaryData_AddFNAMData(void* self, const fmx::Text& filepathlist,
                                               _fmxcpt& x) noexcept {
    return guard(__func__, x, [&]() -> fmx::errcode {
        putStream(abi::self<Binary>(self), kFileName, toUtf8(arg(filepathlist).units()));
        return 0;
    });
}

// SIZE holds the height, then the width, each as two bytes, high byte first.
FMX_API fmx::errcode FM_BinaryData_GetSIZEData(const void* self, short& width, short& height,
                                               _fmxcpt& x) noexcept {
    return guard(__func__, x, [&]() -> fmx::errcode {
        const Binary::Stream* s = findStream(abi::self<Binary>(self), kImageSize);
        if (s == nullptr || s->bytes.size() != 4) return kBadRequest;
        require(addressOf(width) != nullptr && addressOf(height) != nullptr);
        auto at = [&](size_t i) {
            return static_cast<short>((static_cast<uint8_t>(s->bytes[i]) << 8) |
                                      static_cast<uint8_t>(s->bytes[i + 1]));
        };
        height = at(0);
        width = at(2);
        return 0;
    });
}

FMX_API fmx::errcode FM_BinaryData_AddSIZEData(void* self, short width, short height,
                                               _fmxcpt& x) noexcept {
    return guard(__func__, x, [&]() -> fmx::errcode {
        const auto h = static_cast<uint16_t>(height);
        const auto w = static_cast<uint16_t>(width);
        std::string bytes{static_cast<char>(h >> 8), static_cast<char>(h & 0xFF),
                          static_cast<char>(w >> 8), static_cast<char>(w & 0xFF)};
        putStream(abi::self<Binary>(self), kImageSize, std::move(bytes));
        return 0;
    });
}

// Starts the stream of that type afresh (replacing one there was); its bytes follow through
// AddAppend with the context given, and AddFinish ends it.
FMX_API fmx::errcode FM_BinaryData_AddBegin(void* self, const fmx::QuadChar& dataType,
                                            fmx::uint32* context, _fmxcpt& x) noexcept {
    return guard(__func__, x, [&]() -> fmx::errcode {
        Binary& b = abi::self<Binary>(self);
        const StreamType type = arg(dataType).chars;
        if (context == nullptr) return kBadRequest;
        putStream(b, type, std::string());
        *context = contextOf(b, type);
        return 0;
    });
}

FMX_API fmx::errcode FM_BinaryData_AddAppend(void* self, fmx::uint32 context, fmx::uint32 amount,
                                             void* buffer, _fmxcpt& x) noexcept {
    return guard(__func__, x, [&]() -> fmx::errcode {
        Binary::Stream* s = streamOfContext(abi::self<Binary>(self), context);
        if (s == nullptr || (buffer == nullptr && amount != 0)) return kBadRequest;
        s->bytes.append(bytesFrom(buffer, amount));
        return 0;
    });
}

FMX_API fmx::errcode FM_BinaryData_AddFinish(void* self, fmx::uint32 context, _fmxcpt& x) noexcept {
    return guard(__func__, x, [&]() -> fmx::errcode {
        return streamOfContext(abi::self<Binary>(self), context) ? 0 : kBadRequest;
    });
}

}  // extern "C"
