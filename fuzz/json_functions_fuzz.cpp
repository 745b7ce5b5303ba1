// Any text as JSON, any first line as a path: the host's JSON functions read, change and format
// it. Broken JSON and paths are "? ..." answers; nothing may crash or hang.
#include <string>

#include "fuzz/fuzz_host.h"

namespace {

// A calculation text constant holding `bytes` as they are.
std::string quoted(std::string_view bytes) {
    std::string out = "\"";
    for (char c : bytes) {
        if (c == '"' || c == '\\') out += '\\';
        out += c;
    }
    return out + "\"";
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    const std::string_view input = fuzz::bytesOf(data, size);
    const std::size_t newline = input.find('\n');
    const std::string path =
        quoted(input.substr(0, newline == std::string_view::npos ? 0 : newline));
    const std::string json =
        quoted(newline == std::string_view::npos ? input : input.substr(newline + 1));
    for (const char* function :
         {"JSONGetElement", "JSONListKeys", "JSONListValues", "JSONDeleteElement"}) {
        static_cast<void>(
            fuzz::session().eval(std::string(function) + " ( " + json + " ; " + path + " )"));
    }
    static_cast<void>(fuzz::session().eval("JSONSetElement ( " + json + " ; " + path + " ; " +
                                           json + " ; JSONRaw )"));
    static_cast<void>(fuzz::session().eval("JSONFormatElements ( " + json + " )"));
    return 0;
}
