// Ravelin_GetAsHTML on random styled texts and parameter strings. The input is cut at 0x01 bytes
// into: the text (UTF-8, invalid sequences included), a style program, then up to three
// parameters (tags, classes, styles); the number of pieces decides the number of arguments.
// The style program styles the text run by run, eight bytes a run: length, face (two bytes),
// switches, red, green, blue, size. A program starting with an odd byte puts the text into the
// variable $fz and converts "$fz", its values with their alignments. Nothing may crash.
#include <memory>
#include <string_view>
#include <vector>

#include "fuzz/fuzz_host.h"
#include "host/fmx.h"
#include "sim/core/encoding.h"
#include "sim/core/fonts.h"
#include "sim/core/handles.h"
#include "sim/core/text.h"
#include "sim/session/env.h"

namespace {

sim::Text styledText(std::string_view utf8, std::string_view program) {
    static const uint16_t fonts[] = {sim::fonts::idOf(u"Courier New"), sim::fonts::idOf(u"Ärial"),
                                     sim::fonts::idOf(u"a\"b<c")};
    static constexpr sim::Alignment alignments[] = {sim::Alignment::None, sim::Alignment::Left,
                                                    sim::Alignment::Center, sim::Alignment::Right,
                                                    sim::Alignment::Full};
    sim::Text text(sim::fromUtf8(utf8));
    uint32_t pos = 0;
    for (size_t i = 0; i + 8 <= program.size() && pos < text.size(); i += 8) {
        auto byte = [&](size_t k) { return static_cast<uint8_t>(program[i + k]); };
        const uint32_t length = byte(0) % 32 + 1;
        const uint8_t switches = byte(3);
        sim::CharStyle s;
        s.face = static_cast<uint16_t>(byte(1) | byte(2) << 8);
        s.faceMask = switches & 0x80 ? 0 : 0x7FFF;
        s.colorOn = switches & 1;
        s.color = sim::Rgb{byte(4), byte(5), byte(6), 255};
        s.sizeOn = switches & 2;
        s.size = byte(7);
        s.fontOn = switches & 4;
        s.font = fonts[(switches >> 3) % 3];
        text.setStyle(s, pos, length);
        text.setAlignment(alignments[(switches >> 5) % 5], pos, length);
        pos += length;
    }
    return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    static const fmx::ExtPluginType getAsHTML =
        fuzz::session().host().findFunction(u"Ravelin_GetAsHTML")->function;
    const std::vector<std::string_view> parts = fuzz::piecesOf(fuzz::bytesOf(data, size), 5);
    const std::string_view program = parts.size() > 1 ? parts[1] : std::string_view();
    sim::Text text = styledText(parts[0], program);

    sim::Env env;
    env.locals = std::make_shared<sim::Variables>();
    std::vector<sim::Value> args;
    if (!program.empty() && (static_cast<uint8_t>(program[0]) & 1)) {
        env.locals->set(u"$fz", 1, sim::Value::text(std::move(text)));
        args.push_back(sim::Value::text(std::u16string(u"$fz")));
    } else {
        args.push_back(sim::Value::text(std::move(text)));
    }
    for (size_t i = 2; i < parts.size(); ++i) {
        args.push_back(sim::Value::text(sim::fromUtf8(parts[i])));
    }
    const sim::DataVectHandle vect = sim::makeDataVect(args);
    sim::DataHandle result = sim::makeData();
    getAsHTML(25, env.handleRef(), *vect, *result);
    return 0;
}
