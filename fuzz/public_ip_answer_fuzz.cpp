// The reading of a service's raw answer: the first byte picks the method (numbers outside 2..9
// included), the rest is the answer. Nothing may be read or written outside the buffers, the
// status is one of the two the reading has, and the copy for the caller is terminated. What an
// accepted address looks like is not checked: the reading takes any characters between the dots
// (a zero byte included), as the method's rules say.
#include <cstdint>
#include <cstdlib>

#include "fuzz/fuzz_host.h"
#include "net/public_ip.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const std::int32_t method = static_cast<std::int8_t>(data[0]) % 12;
    slib::AddressText out;
    out.fill('#');
    const std::int32_t status = slib::ReadAddress(method, fuzz::bytesOf(data + 1, size - 1), out);
    if (out[16] != '\0' || (status != slib::kFound && status != slib::kNoAddress)) std::abort();
    return 0;
}
