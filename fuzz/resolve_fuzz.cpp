// Ravelin_GetNameForIP and Ravelin_GetIPforName on any text, through the function pointers the
// host calls: the first byte picks the function, the rest is read as UTF-8 (invalid sequences
// included). Lookups that the hosts file cannot answer go to a loopback name server that knows
// no names, so fuzzing never reaches beyond this machine.
#include "fuzz/fuzz_host.h"
#include "host/fmx.h"
#include "sim/core/encoding.h"
#include "sim/core/handles.h"
#include "sim/session/env.h"
#include "tests/plugin/net_test_support.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    static const net_test::LoopbackResolver resolver(3);
    static const fmx::ExtPluginType functions[] = {
        fuzz::session().host().findFunction(u"Ravelin_GetNameForIP")->function,
        fuzz::session().host().findFunction(u"Ravelin_GetIPforName")->function,
    };
    if (size == 0) return 0;
    sim::Env env;
    const sim::DataVectHandle args =
        sim::makeDataVect({sim::Value::text(sim::fromUtf8(fuzz::bytesOf(data + 1, size - 1)))});
    sim::DataHandle result = sim::makeData();
    functions[data[0] % 2](17, env.handleRef(), *args, *result);
    return 0;
}
