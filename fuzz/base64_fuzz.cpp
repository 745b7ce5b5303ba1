// Ravelin_Encode and Ravelin_Decode on any bytes, through the function pointers the host calls:
// the bytes read as UTF-8 text are encoded and decoded back to the same text (up to a NUL
// character, where encoding stops), also when a slice of the text's reading ends inside it, and the
// bytes read as Base64 decode without failing.
#include <cstdlib>
#include <string>

#include "fuzz/fuzz_host.h"
#include "host/fmx.h"
#include "sim/core/encoding.h"
#include "sim/core/handles.h"
#include "sim/session/env.h"

namespace {

std::u16string call(fmx::ExtPluginType function, const char16_t* keyword, std::u16string text) {
    sim::Env env;
    const sim::DataVectHandle args = sim::makeDataVect(
        {sim::Value::text(sim::Text(keyword)), sim::Value::text(std::move(text))});
    sim::DataHandle result = sim::makeData();
    function(5, env.handleRef(), *args, *result);
    return sim::valueOf(*result).asText().unitsCopy();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    static const fmx::ExtPluginType encode =
        fuzz::session().host().findFunction(u"Ravelin_Encode")->function;
    static const fmx::ExtPluginType decode =
        fuzz::session().host().findFunction(u"Ravelin_Decode")->function;
    std::u16string text = sim::fromUtf8(fuzz::bytesOf(data, size));
    call(decode, u"Base64 to UTF-8", text);

    text = text.substr(0, text.find(u'\0'));
    // The plug-in reads 32,768 units at a time: the same text again, past a prefix that puts
    // that edge a few units into it.
    const std::size_t intoText = size == 0 ? 0 : data[0] % 4;
    for (std::u16string whole : {text, std::u16string(32768 - intoText, u'a') + text}) {
        const std::u16string encoded = call(encode, u"UTF-8 to Base64", whole);
        const std::u16string decoded = call(decode, u"Base64 to UTF-8", encoded);
        if (decoded != whole) std::abort();
    }
    return 0;
}
