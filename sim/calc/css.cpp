#include "sim/calc/css.h"

#include <algorithm>
#include <optional>

#include "sim/calc/errors.h"
#include "sim/core/encoding.h"
#include "sim/core/fonts.h"

namespace sim::calc {

namespace {

bool hasFace(const CharStyle& s, uint16_t bits) { return (s.face & s.faceMask & bits) == bits; }

void appendHex(std::u16string& out, uint8_t byte) {
    static constexpr char16_t kDigits[] = u"0123456789ABCDEF";
    out.push_back(kDigits[byte >> 4]);
    out.push_back(kDigits[byte & 15]);
}

std::u16string_view alignmentName(Alignment a) {
    switch (a) {
        case Alignment::Center:
            return u"center";
        case Alignment::Right:
            return u"right";
        case Alignment::Full:
            return u"full";
        default:
            return u"left";
    }
}

void appendDecorations(std::u16string& out, const CharStyle& s) {
    const bool underline = hasFace(s, 1024) || hasFace(s, 64) || hasFace(s, 128);
    const bool strike = hasFace(s, 1);
    if (underline && strike) {
        out += u"text-decoration: underline line-through;";
    } else if (underline) {
        out += u"text-decoration: underline;";
    } else if (strike) {
        out += u"text-decoration: line-through;";
    }
}

void appendDeclarations(std::u16string& out, const CharStyle& s, Alignment a) {
    if (s.fontOn) {
        if (std::optional<std::u16string> name = fonts::nameOf(s.font)) {
            out += u"font-family: '" + *name + u"';";
        }
    }
    if (s.sizeOn) out += u"font-size: " + fromUtf8(std::to_string(s.size)) + u"px;";
    if (s.colorOn) {
        out += u"color: #";
        appendHex(out, s.color.red);
        appendHex(out, s.color.green);
        appendHex(out, s.color.blue);
        out += u";";
    }
    if (hasFace(s, 256)) out += u"font-weight: bold;";
    if (hasFace(s, 512)) out += u"font-style: italic;";
    appendDecorations(out, s);
    if (hasFace(s, 2)) out += u"font-variant: small-caps;";
    if (hasFace(s, 4)) out += u"vertical-align: super;";
    if (hasFace(s, 8)) out += u"vertical-align: sub;";
    if (hasFace(s, 48)) {
        out += u"text-transform: capitalize;";
    } else if (hasFace(s, 16)) {
        out += u"text-transform: uppercase;";
    } else if (hasFace(s, 32)) {
        out += u"text-transform: lowercase;";
    }
    if (hasFace(s, 4096)) out += u"background-color: #FFFF00;";
    if (hasFace(s, 8192)) out += u"font-stretch: condensed;";
    if (hasFace(s, 16384)) out += u"font-stretch: expanded;";
    out += u"text-align: ";
    out += alignmentName(a);
    out += u";";
}

void appendEscaped(std::u16string& out, std::u16string_view units) {
    for (char16_t c : units) {
        switch (c) {
            case u'&':
                out += u"&amp;";
                break;
            case u'<':
                out += u"&lt;";
                break;
            case u'>':
                out += u"&gt;";
                break;
            case u'"':
                out += u"&quot;";
                break;
            case u'\r':
            case u'\n':
            case u'\u2028':
            case u'\u2029':
                out += u"<br>";
                break;
            default:
                out.push_back(c);
        }
    }
}

}  // namespace

std::u16string toCss(const Text& text) {
    const std::u16string_view units = text.units();
    std::u16string out;
    size_t nextReturn = units.find(u'\r');
    Alignment alignment = Alignment::None;
    for (uint32_t pos = 0; pos < text.size();) {
        // Spans never cross a return, so each paragraph starts a span.
        if (pos == 0 || units[pos - 1] == u'\r') alignment = text.alignmentAt(pos);
        if (nextReturn != std::u16string_view::npos && nextReturn < pos) {
            nextReturn = units.find(u'\r', pos);
        }
        uint32_t end = std::max(text.runEnd(pos), pos + 1);
        if (nextReturn != std::u16string_view::npos && nextReturn + 1 < end) {
            end = static_cast<uint32_t>(nextReturn + 1);
        }
        out += u"<span style = \"";
        appendDeclarations(out, text.styleAt(pos), alignment);
        out += u"\">";
        appendEscaped(out, units.substr(pos, end - pos));
        out += u"</span>";
        if (out.size() > kMaxTextUnits) raise(kGenericError);
        pos = end;
    }
    return out;
}

}  // namespace sim::calc
