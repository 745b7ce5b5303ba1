// slib::NameForIP and slib::IPForName, the routines under Ravelin_GetNameForIP and
// Ravelin_GetIPforName, on any text: the first byte picks the routine, the rest is the text
// (invalid UTF-8 included). Lookups that the hosts file cannot answer go to a loopback name
// server that knows no names, so fuzzing never reaches beyond this machine (the functions
// themselves, argument checks included, are fuzzed through the host by all_functions_fuzz).
#include <cstdint>
#include <string>

#include "fuzz/fuzz_host.h"
#include "net/resolve.h"
#include "tests/plugin/net_test_support.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    static const net_test::LoopbackResolver resolver(3);
    if (size == 0) return 0;
    const std::string text(fuzz::bytesOf(data + 1, size - 1));
    // The host hands the routines zero-terminated bytes.
    const std::string bytes = text.substr(0, text.find('\0'));
    if (data[0] % 2 == 0) {
        static_cast<void>(slib::NameForIP(bytes, resolver.servers()));
    } else {
        static_cast<void>(slib::IPForName(bytes, resolver.servers()));
    }
    return 0;
}
