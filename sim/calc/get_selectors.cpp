#include "sim/calc/get_selectors.h"

#include <openssl/rand.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "sim/core/number.h"

namespace sim::calc {

namespace {

template <std::size_t N>
std::array<unsigned char, N> randomBytes() {
    std::array<unsigned char, N> bytes{};
    if (RAND_bytes(bytes.data(), static_cast<int>(N)) != 1) {
        std::random_device device;
        for (unsigned char& b : bytes) b = static_cast<unsigned char>(device());
    }
    return bytes;
}

Value text(std::u16string s) { return Value::text(std::move(s)); }

Value lines(const std::vector<std::u16string>& values) {
    std::u16string out;
    for (const std::u16string& v : values) {
        if (!out.empty()) out += u'\r';
        out += v;
    }
    return text(std::move(out));
}

// 41 random decimal digits, the first not 0.
Value uuidNumber(Context&) {
    const auto bytes = randomBytes<41>();
    std::u16string digits;
    digits += static_cast<char16_t>(u'1' + bytes[0] % 9);
    for (std::size_t i = 1; i < bytes.size(); ++i) {
        digits += static_cast<char16_t>(u'0' + bytes[i] % 10);
    }
    return Value::number(parseNumber(digits));
}

// Microseconds since 1/1/0001 UTC (the Unix epoch is 62,135,596,800 seconds after it).
Value utcMicroseconds(Context&) {
    const auto since = std::chrono::system_clock::now().time_since_epoch();
    const auto us = std::chrono::duration_cast<std::chrono::microseconds>(since).count();
    return Value::number(Number::fromInt(static_cast<int64_t>(us) + 62135596800000000LL));
}

constexpr const char16_t* kArchitecture =
#if defined(__aarch64__)
    u"arm64";
#else
    u"x86_64";
#endif

// By name; the answers a host without accounts, windows or dialogs gives as FileMaker Server's
// scripting engine would with the default account.
constexpr GetAnswer kAnswers[] = {
    {u"uuid", [](Context&) { return text(randomUuid()); }},
    {u"uuidnumber", uuidNumber},
    {u"persistentid", [](Context& c) { return text(c.systemFacts().persistentId); }},
    {u"currenttimeutcmicroseconds", utcMicroseconds},
    {u"scriptresult", [](Context& c) { return c.scriptResult(); }},
    {u"accountname", [](Context&) { return text(u"Admin"); }},
    {u"accountgroupname", [](Context&) { return text(u""); }},
    {u"accounttype", [](Context&) { return text(u"FileMaker"); }},
    {u"accountprivilegesetname", [](Context&) { return text(u"[Full Access]"); }},
    {u"currentprivilegesetname", [](Context&) { return text(u"[Full Access]"); }},
    {u"accountextendedprivileges", [](Context&) { return text(u""); }},
    {u"currentextendedprivileges", [](Context&) { return text(u""); }},
    {u"username", [](Context& c) { return text(c.systemFacts().userName); }},
    {u"hostname", [](Context& c) { return text(c.systemFacts().hostName); }},
    {u"systemversion", [](Context& c) { return text(c.systemFacts().systemVersion); }},
    {u"temporarypath", [](Context& c) { return text(c.systemFacts().temporaryPath); }},
    {u"documentspath", [](Context& c) { return text(c.systemFacts().documentsPath); }},
    {u"desktoppath", [](Context& c) { return text(c.systemFacts().desktopPath); }},
    {u"preferencespath", [](Context& c) { return text(c.systemFacts().preferencesPath); }},
    {u"systemipaddress", [](Context& c) { return lines(c.systemFacts().ipAddresses); }},
    {u"systemnicaddress", [](Context& c) { return lines(c.systemFacts().nicAddresses); }},
    {u"hostipaddress",
     [](Context& c) {
         const auto& ips = c.systemFacts().ipAddresses;
         return text(ips.empty() ? std::u16string() : ips.front());
     }},
    {u"applicationlanguage", [](Context&) { return text(u"English"); }},
    {u"applicationarchitecture", [](Context&) { return text(kArchitecture); }},
    {u"networkprotocol", [](Context&) { return text(u"TCP/IP"); }},
    {u"calculationrepetitionnumber", [](Context&) { return Value::number(1.0); }},
    {u"errorcapturestate", [](Context&) { return Value::number(0.0); }},
    {u"allowabortstate", [](Context&) { return Value::number(1.0); }},
    {u"usesystemformatsstate", [](Context&) { return Value::number(0.0); }},
    {u"encryptionstate", [](Context&) { return Value::number(0.0); }},
    {u"usercount", [](Context&) { return Value::number(1.0); }},
    {u"lasterrordetail", [](Context&) { return text(u""); }},
    {u"lasterrorlocation", [](Context&) { return text(u""); }},
    {u"lastodbcerror", [](Context&) { return text(u""); }},
    {u"cachefilename", [](Context&) { return text(u""); }},
    {u"cachefilepath", [](Context&) { return text(u""); }},
    {u"triggerexternalevent", [](Context&) { return text(u""); }},
    {u"regionmonitorevents", [](Context&) { return text(u""); }},
};

}  // namespace

std::u16string randomUuid() {
    auto bytes = randomBytes<16>();
    bytes[6] = static_cast<unsigned char>((bytes[6] & 0x0F) | 0x40);  // version 4
    bytes[8] = static_cast<unsigned char>((bytes[8] & 0x3F) | 0x80);  // RFC 4122 variant
    static constexpr char kDigits[] = "0123456789ABCDEF";
    std::u16string out;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10) out += u'-';
        out += static_cast<char16_t>(kDigits[bytes[i] >> 4]);
        out += static_cast<char16_t>(kDigits[bytes[i] & 15]);
    }
    return out;
}

const GetAnswer* findGetAnswer(std::u16string_view lowerName) {
    for (const GetAnswer& a : kAnswers) {
        if (a.name == lowerName) return &a;
    }
    return nullptr;
}

}  // namespace sim::calc
