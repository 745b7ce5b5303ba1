// Any calculation, as a user types it into fmsim: parsed and evaluated by the substitute host,
// with the plug-in's functions (SQL, merge, globals, encodings) within reach. Errors are answers;
// nothing may crash or hang.
#include "fuzz/fuzz_host.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    static_cast<void>(fuzz::session().eval(fuzz::bytesOf(data, size)));
    return 0;
}
