// Every Ravelin_ function as a calculation calls it: the substitute host parses and evaluates a
// generated call, so the host's argument checks and the functions' own run as they would in
// FileMaker. The first byte picks the function; the rest, split at 0x1F, are up to six
// arguments, each made by its first byte into a text, a number, a keyword the functions know,
// styled text or a nested calculation. The design promises only that every call ends with an
// answer (any value, or an error code or message): that, with no crash or hang, is all that is
// checked.
//
// The network functions would reach the Internet. The fuzzer first moves itself into a network
// namespace of its own, which has no interface but a loopback that is down: every connection and
// name server then fails at once, while the hosts file still answers. Where that is not allowed
// (no privileges), the three network functions are left out.
#include <sched.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/fuzz_host.h"

namespace {

constexpr std::array<const char*, 24> kFunctions = {
    "Ravelin_Version",
    "Ravelin_Get",
    "Ravelin_Set",
    "Ravelin_ExecuteSQL",
    "Ravelin_Encode",
    "Ravelin_Decode",
    "Ravelin_MergeText",
    "Ravelin_DoFileMakerScript",
    "Ravelin_DoSystemScript",
    "Ravelin_GetDefaultPrinter",
    "Ravelin_SetDefaultPrinter",
    "Ravelin_GetPrinterNames",
    "Ravelin_RegExp_Substitute",
    "Ravelin_RegExp_PatternCount",
    "Ravelin_GetSpecialWindows",
    "Ravelin_SetScriptShortcut",
    "Ravelin_ValueType",
    "Ravelin_GetTimestamp",
    "Ravelin_SetGlobal",
    "Ravelin_GetGlobal",
    "Ravelin_GetAsHTML",
    "Ravelin_GetClientPublicIPAddress",
    "Ravelin_GetNameForIP",
    "Ravelin_GetIPforName",
};
constexpr std::size_t kNetworkFunctions = 3;  // the last three

// Words and texts the functions give a meaning to.
constexpr std::array<const char*, 24> kKeywords = {
    "lastError",
    "lastErrorMessage",
    "timestamp",
    "sort",
    "stderr",
    "inlineDocumentation",
    "globalDieInterval",
    "off",
    "base64",
    "UTF-8",
    "SELECT * FROM t",
    "SELECT i, s FROM t",
    "([0-9]+)",
    "(a)(b)?",
    "<<1+1>>",
    "<<$v>>",
    "localhost",
    "127.0.0.1",
    "short",
    "long",
    "file",
    "$v",
    "$$s",
    "Script",
};

constexpr char kSeparator = '\x1f';
constexpr std::size_t kMaxArguments = 6;

bool isolateNetwork() {
    return unshare(CLONE_NEWNET) == 0 || unshare(CLONE_NEWUSER | CLONE_NEWNET) == 0;
}

// A calculation text constant holding `bytes` as they are.
std::string quoted(std::string_view bytes) {
    std::string out = "\"";
    for (char c : bytes) {
        if (c == '"' || c == '\\') out += '\\';
        out += c;
    }
    return out + "\"";
}

std::string argument(std::string_view bytes) {
    if (bytes.empty()) return "\"\"";
    const unsigned kind = static_cast<unsigned char>(bytes[0]);
    const std::string_view rest = bytes.substr(1);
    switch (kind % 6) {
        case 0:
            return quoted(rest);
        case 1: {  // a number made of the bytes' digits
            std::string number = kind & 0x80 ? "-" : "";
            for (char c : rest)
                number += static_cast<char>('0' + static_cast<unsigned char>(c) % 10);
            if (rest.empty()) number += '0';
            if (kind & 0x40) number += ".5";
            return number;
        }
        case 2:
            return quoted(kKeywords[(kind / 6) % kKeywords.size()]);
        case 3:
            return "TextStyleAdd ( " + quoted(rest) + " ; Bold )";
        case 4:
            return "TextColor ( TextFont ( " + quoted(rest) + " ; " + quoted(rest) +
                   " ) ; RGB ( 255 ; 0 ; 0 ) )";
        default:  // the text as a calculation of its own
            return rest.empty() ? "\"\"" : std::string(rest);
    }
}

std::string callOf(std::string_view input, bool networkAllowed) {
    const std::size_t count =
        networkAllowed ? kFunctions.size() : kFunctions.size() - kNetworkFunctions;
    std::string call = std::string(kFunctions[static_cast<unsigned char>(input[0]) % count]);
    std::vector<std::string> arguments;
    std::string_view rest = input.substr(1);
    while (!rest.empty() && arguments.size() < kMaxArguments) {
        const std::size_t end = rest.find(kSeparator);
        arguments.push_back(argument(rest.substr(0, end)));
        rest = end == std::string_view::npos ? std::string_view() : rest.substr(end + 1);
    }
    if (arguments.empty()) return call;
    call += " ( ";
    for (std::size_t i = 0; i < arguments.size(); ++i) call += (i ? " ; " : "") + arguments[i];
    return call + " )";
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    static const bool networkAllowed = isolateNetwork();
    if (size == 0) return 0;
    // Variables for the $ forms of MergeText and GetAsHTML to find.
    const std::string call = "Let ( [ $v = \"a¶b\" ; $$s = \"x\" ] ; " +
                             callOf(fuzz::bytesOf(data, size), networkAllowed) + " )";
    const sim::EvalResult r = fuzz::session().eval(call);
    // An answer of a known kind, or the host's or the function's error.
    static const std::array<std::string_view, 8> kinds = {
        "Text", "Number", "Date", "Time", "Timestamp", "Container", "Boolean", ""};
    bool known = false;
    for (std::string_view k : kinds) known = known || r.type == k;
    if (!known) std::abort();
    return 0;
}
