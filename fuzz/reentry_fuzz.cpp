// Ravelin_MergeText and Ravelin_GetAsHTML evaluating calculations that call them again, through
// the host's calculation path as a solution calls them. The input is cut at 0x01 bytes into: the
// texts of $fa and $fb, a list text and its style program for $fz, and a last piece whose first
// byte picks the calculation that starts it all. In the texts of $fa and $fb an ASCII byte stands
// for itself and any other byte for one of the pieces of calculation below (markers, calls of
// both functions on $fa, $fb and "$fz", returns, styling), so that templates and sources call
// each other in every combination. The list text is styled run by run, four bytes a run: length,
// colour, alignment, returns.
//
// What must hold: nothing crashes or hangs; the call answers text, or the number 2400 or -50 as
// the functions answer errors; and a call afterwards on the same thread works as before.
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/fuzz_host.h"
#include "sim/core/encoding.h"
#include "sim/core/text.h"
#include "sim/session/env.h"

namespace {

constexpr const char* kPieces[] = {
    "<<",
    ">>",
    "Ravelin_MergeText ( $fa )",
    "Ravelin_MergeText ( $fb )",
    "Ravelin_GetAsHTML ( $fa )",
    "Ravelin_GetAsHTML ( $fb )",
    "Ravelin_GetAsHTML ( \"$fz\" )",
    "Ravelin_GetAsHTML ( \"$fa\" ; \"\" ; \"\" ; \"all\" )",
    "$fz",
    "$fa",
    "$fb",
    " & ",
    "\"",
    "\\\"",
    "¶",
    "Char ( 10 )",
    "GetValue ( $fz ; 2 )",
    "Let ( $fa = ",
    "Let ( $fb = ",
    " ; ",
    " )",
    "Evaluate ( $fb )",
    "TextColor ( \"r\" ; RGB ( 255 ; 0 ; 0 ) )",
    "TextFont ( \"f\" ; \"A;}<\" )",
    "FMSim_TextAlign ( $fb ; \"center\" )",
    "List ( $fz ; $fa )",
    "If ( Length ( $fa ) > 3 ; ",
    "$$fuzzDepth",
    "Let ( $$fuzzDepth = $$fuzzDepth + 1 ; ",
    "Ravelin_MergeText ( \"<<\" & $fa & \">>\" )",
    "\"$fz & \"",
    "<<Ravelin_GetAsHTML ( $fb )>>",
};

constexpr const char* kStarts[] = {
    "Ravelin_MergeText ( $fa )",
    "Ravelin_GetAsHTML ( $fa )",
    "Ravelin_GetAsHTML ( $fb ; \"all\" ; \"all=c\" ; \"\" )",
    "Ravelin_GetAsHTML ( \"$fz\" )",
    "Ravelin_GetAsHTML ( \"$fz\" ; \"\" ; \"\" ; \"all\" )",
    "Ravelin_GetAsHTML ( \"$fz & \" & $fa )",
};

std::u16string calculationText(std::string_view bytes) {
    std::string out;
    for (const char c : bytes) {
        const auto b = static_cast<unsigned char>(c);
        if (b < 0x80) {
            out += c;
        } else {
            out += kPieces[b % std::size(kPieces)];
        }
    }
    return sim::fromUtf8(out);
}

sim::Text styledList(std::string_view letters, std::string_view program) {
    static constexpr char16_t kReturns[] = {u'\r', u'\n', u'\u2028', u'\u2029'};
    static constexpr sim::Alignment kAlignments[] = {sim::Alignment::None, sim::Alignment::Left,
                                                     sim::Alignment::Center, sim::Alignment::Right,
                                                     sim::Alignment::Full};
    std::u16string units = sim::fromUtf8(letters);
    // Returns go in where the program says, so that values and paragraphs vary.
    for (size_t i = 0; i + 4 <= program.size() && !units.empty(); i += 4) {
        const auto at = static_cast<unsigned char>(program[i + 3]) % (units.size() + 1);
        units.insert(units.begin() + static_cast<std::ptrdiff_t>(at),
                     kReturns[static_cast<unsigned char>(program[i + 3]) >> 6]);
    }
    sim::Text text(units);
    uint32_t pos = 0;
    for (size_t i = 0; i + 4 <= program.size() && pos < text.size(); i += 4) {
        const uint32_t length = static_cast<unsigned char>(program[i]) % 16 + 1;
        sim::CharStyle s;
        s.colorOn = true;
        s.color = sim::Rgb{static_cast<uint8_t>(program[i + 1]), 0, 0, 255};
        text.setStyle(s, pos, length);
        text.setAlignment(kAlignments[static_cast<unsigned char>(program[i + 2]) % 5], pos, length);
        pos += length;
    }
    return text;
}

bool answeredAsPromised(const sim::EvalResult& r) {
    if (r.error != 0) return false;
    if (r.type == "Text") return true;
    return r.type == "Number" && (r.text == "2400" || r.text == "-50");
}

void fail(const char* what, const sim::EvalResult& r) {
    std::fprintf(stderr, "%s: error %d, %s \"%s\"\n", what, r.error, r.type.c_str(),
                 r.text.substr(0, 200).c_str());
    std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    std::vector<std::string_view> parts = fuzz::piecesOf(fuzz::bytesOf(data, size), 5);
    parts.resize(5);
    sim::Env env;
    env.file = fuzz::session().host().currentFile();
    env.locals = std::make_shared<sim::Variables>();
    env.locals->set(u"$fa", 1, sim::Value::text(calculationText(parts[0])));
    env.locals->set(u"$fb", 1, sim::Value::text(calculationText(parts[1])));
    env.locals->set(u"$fz", 1, sim::Value::text(styledList(parts[2], parts[3])));
    const unsigned start = parts[4].empty() ? 0 : static_cast<unsigned char>(parts[4][0]);

    const sim::EvalResult r = fuzz::session().eval(kStarts[start % std::size(kStarts)], env);
    if (!answeredAsPromised(r)) fail("unexpected answer", r);
    const sim::EvalResult after = fuzz::session().eval("Ravelin_MergeText ( \"<<1 + 1>>\" )", env);
    if (after.error != 0 || after.text != "2") fail("the next call", after);
    return 0;
}
