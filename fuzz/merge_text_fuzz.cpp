// Ravelin_MergeText on any template: the bytes read as UTF-8 (invalid sequences included), merged
// through the function pointer the host calls. Nothing may crash, and the merge must end.
#include "fuzz/fuzz_host.h"
#include "host/fmx.h"
#include "sim/core/encoding.h"
#include "sim/core/handles.h"
#include "sim/session/env.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    static const fmx::ExtPluginType mergeText =
        fuzz::session().host().findFunction(u"Ravelin_MergeText")->function;
    sim::Env env;
    const sim::DataVectHandle args =
        sim::makeDataVect({sim::Value::text(sim::fromUtf8(fuzz::bytesOf(data, size)))});
    sim::DataHandle result = sim::makeData();
    mergeText(7, env.handleRef(), *args, *result);
    return 0;
}
