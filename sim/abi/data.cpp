// FM_Data_*: typed values. Getters hand out the object's own converted forms (see DataObj).
#include "sim/abi/guard.h"
#include "sim/core/fonts.h"

using namespace sim;
using namespace sim::abi;

namespace {

constexpr fmx::uint16 kNoFont = 0xFFFF;

// The type a setter stores: the requested native type, or the setter's own type when the
// request names no value type (invalid, container, out of range).
Type storedType(fmx::int32 nativeType, Type natural) {
    switch (nativeType) {
        case fmx::kDTText:
        case fmx::kDTNumber:
        case fmx::kDTDate:
        case fmx::kDTTime:
        case fmx::kDTTimeStamp:
        case fmx::kDTBoolean:
            return static_cast<Type>(nativeType);
        default:
            return natural;
    }
}

// Stores `v` converted to the requested type; the data keeps its locale. A value that already
// has the type is stored as it is: converting it would make the same value again.
void store(DataObj& d, Value v, fmx::int32 nativeType) {
    const Type type = storedType(nativeType, v.type());
    if (type != v.type()) v = v.as(type);
    v.setLocale(d.value().locale());
    d.set(std::move(v));
}

DateTime timeOfDay(const DateTime& dt) {
    constexpr int64_t kUsecPerDay = 86'400'000'000;
    return DateTime{((dt.usec % kUsecPerDay) + kUsecPerDay) % kUsecPerDay};
}

Value dateValue(const DateTimeObj& d) {
    return d.valid ? Value::date(d.dt) : Value::emptyOf(Type::Date);
}

Value timeValue(const DateTimeObj& t) {
    return t.valid ? Value::time(timeOfDay(t.dt)) : Value::emptyOf(Type::Time);
}

Value timestampValue(const DateTimeObj& ts) {
    return ts.valid ? Value::timestamp(ts.dt) : Value::emptyOf(Type::Timestamp);
}

fmx::uint16 fontIdOf(const Text& name) {
    return name.empty() ? kNoFont : fonts::idOf(name.units());
}

bool fontNameOf(fmx::uint16 font, Text& name) {
    const auto found = fonts::nameOf(font);
    if (!found) return false;
    name.assign(*found);
    return true;
}

}  // namespace

extern "C" {

fmx::Data* FM_Data_Constructor1(_fmxcpt& x) noexcept {
    return guard(__func__, x, [] { return handleOf(new DataObj); });
}

void FM_Data_Delete(void* self, _fmxcpt& x) noexcept {
    guardRelease(__func__, x, [&] { delete static_cast<DataObj*>(self); });
}

bool FM_Data_IsEmpty(const void* self, _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] { return abi::self<DataObj>(self).value().isEmpty(); });
}

bool FM_Data_IsValid(const void* self, _fmxcpt& x) noexcept {
    return guard(__func__, x,
                 [&] { return abi::self<DataObj>(self).value().type() != Type::Invalid; });
}

bool FM_Data_IsFindRequest(const void* self, _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] {
        abi::self<DataObj>(self);
        return false;
    });
}

void FM_Data_Clear(void* self, fmx::int32 newNativeType, _fmxcpt& x) noexcept {
    guard(__func__, x, [&] {
        DataObj& d = abi::self<DataObj>(self);
        const Type t = newNativeType >= 0 && newNativeType <= 7 ? static_cast<Type>(newNativeType)
                                                                : Type::Invalid;
        Value empty = Value::emptyOf(t);
        empty.setLocale(d.value().locale());
        d.set(std::move(empty));
    });
}

const fmx::Text* FM_Data_GetAsText(const void* self, _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] { return handleOf(&abi::self<DataObj>(self).text()); });
}

const fmx::FixPt* FM_Data_GetAsNumber(const void* self, _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] { return handleOf(&abi::self<DataObj>(self).number()); });
}

const fmx::DateTime* FM_Data_GetAsDate(const void* self, _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] { return handleOf(&abi::self<DataObj>(self).date()); });
}

const fmx::DateTime* FM_Data_GetAsTime(const void* self, _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] { return handleOf(&abi::self<DataObj>(self).time()); });
}

const fmx::DateTime* FM_Data_GetAsTimeStamp(const void* self, _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] { return handleOf(&abi::self<DataObj>(self).timestamp()); });
}

bool FM_Data_GetAsBoolean(const void* self, _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] { return abi::self<DataObj>(self).value().asBoolean(); });
}

const fmx::BinaryData* FM_Data_GetBinaryData(const void* self, _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] { return handleOf(&abi::self<DataObj>(self).binary()); });
}

const fmx::Locale* FM_Data_GetLocale(const void* self, _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] { return handleOf(&abi::self<DataObj>(self).locale()); });
}

fmx::int32 FM_Data_GetNativeType(const void* self, _fmxcpt& x) noexcept {
    return guard(__func__, x,
                 [&] { return static_cast<fmx::int32>(abi::self<DataObj>(self).value().type()); });
}

void FM_Data_ConvertData(void* self, fmx::int32 nativeType, _fmxcpt& x) noexcept {
    guard(__func__, x, [&] {
        DataObj& d = abi::self<DataObj>(self);
        if (nativeType < 0 || nativeType > 7) throw BadArgument();
        d.set(d.value().as(static_cast<Type>(nativeType)));
    });
}

// Text goes in as styled text; another value type parses it (text without digits gives an
// empty number, text that is no date an empty date).
fmx::errcode FM_Data_SetAsText(void* self, const fmx::Text& textData,
                               const fmx::Locale& sourceLocale, fmx::int32 nativeType,
                               _fmxcpt& x) noexcept {
    return guard(__func__, x, [&]() -> fmx::errcode {
        DataObj& d = abi::self<DataObj>(self);
        Value v = Value::text(arg(textData));
        v.setLocale(arg(sourceLocale).type);
        const Type t = storedType(nativeType, Type::Text);
        d.set(t == Type::Text ? std::move(v) : v.as(t));
        return 0;
    });
}

void FM_Data_SetAsNumber(void* self, const fmx::FixPt& numericData, fmx::int32 nativeType,
                         _fmxcpt& x) noexcept {
    guard(__func__, x, [&] {
        DataObj& d = abi::self<DataObj>(self);
        const Number& n = arg(numericData);
        if (storedType(nativeType, Type::Number) == Type::Number) return d.setNumber(n);
        store(d, Value::number(n), nativeType);
    });
}

void FM_Data_SetAsDate(void* self, const fmx::DateTime& dateData, fmx::int32 nativeType,
                       _fmxcpt& x) noexcept {
    guard(__func__, x,
          [&] { store(abi::self<DataObj>(self), dateValue(arg(dateData)), nativeType); });
}

void FM_Data_SetAsTime(void* self, const fmx::DateTime& timeData, fmx::int32 nativeType,
                       _fmxcpt& x) noexcept {
    guard(__func__, x,
          [&] { store(abi::self<DataObj>(self), timeValue(arg(timeData)), nativeType); });
}

void FM_Data_SetAsTimeStamp(void* self, const fmx::DateTime& timeStampData, fmx::int32 nativeType,
                            _fmxcpt& x) noexcept {
    guard(__func__, x,
          [&] { store(abi::self<DataObj>(self), timestampValue(arg(timeStampData)), nativeType); });
}

void FM_Data_SetDateTime(void* self, const fmx::DateTime& dateTimeData, fmx::int32 dateTimeType,
                         fmx::int32 nativeType, _fmxcpt& x) noexcept {
    guard(__func__, x, [&] {
        const DateTimeObj& dt = arg(dateTimeData);
        const Value v = dateTimeType == fmx::kDTDate   ? dateValue(dt)
                        : dateTimeType == fmx::kDTTime ? timeValue(dt)
                                                       : timestampValue(dt);
        store(abi::self<DataObj>(self), v, nativeType);
    });
}

void FM_Data_SetBinaryData(void* self, const fmx::BinaryData& binaryData,
                           bool /*forceBinaryNativeType*/, _fmxcpt& x) noexcept {
    guard(__func__, x, [&] {
        DataObj& d = abi::self<DataObj>(self);
        Value v = Value::binary(arg(binaryData));
        v.setLocale(d.value().locale());
        d.set(std::move(v));
    });
}

fmx::uint16 FM_Data_GetPostscriptFontID(const void* self, const fmx::Text& fontPostscriptName,
                                        const fmx::ExprEnv& /*env*/, _fmxcpt& x) noexcept {
    return guardOr(__func__, x, kNoFont, [&] {
        abi::self<DataObj>(self);
        return fontIdOf(arg(fontPostscriptName));
    });
}

bool FM_Data_GetPostscriptFontInfo(const void* self, fmx::uint16 font,
                                   fmx::Text& fontPostscriptName, const fmx::ExprEnv& /*env*/,
                                   _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] {
        abi::self<DataObj>(self);
        return fontNameOf(font, arg(fontPostscriptName));
    });
}

fmx::uint16 FM_Data_GetFontID(const void* self, const fmx::Text& fontDisplayName,
                              fmx::uint16 /*fontScript*/, const fmx::ExprEnv& /*env*/,
                              _fmxcpt& x) noexcept {
    return guardOr(__func__, x, kNoFont, [&] {
        abi::self<DataObj>(self);
        return fontIdOf(arg(fontDisplayName));
    });
}

bool FM_Data_GetFontInfo(const void* self, fmx::uint16 font, fmx::Text& fontDisplayName,
                         fmx::uint16& fontScript, const fmx::ExprEnv& /*env*/,
                         _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] {
        abi::self<DataObj>(self);
        require(addressOf(fontScript) != nullptr);
        fontScript = 0;  // Roman: every font of this host
        return fontNameOf(font, arg(fontDisplayName));
    });
}

}  // extern "C"
