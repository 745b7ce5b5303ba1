// GetAsCSS: styled text as HTML spans with inline CSS.
#pragma once

#include <string>

#include "sim/core/text.h"

namespace sim::calc {

// One span per stretch of equal character style within a paragraph:
//   <span style = "font-family: 'Helvetica';font-size: 12px;color: #FF0000;font-weight: bold;
//   text-align: left;">Frank</span>
// Declarations appear only for enabled traits, in the order font-family, font-size, color,
// font-weight, font-style, text-decoration, font-variant, vertical-align, text-transform,
// background-color (HighlightYellow), font-stretch, and always last text-align (left, center,
// right or full; a paragraph without alignment is left). Returns are written as <br>; & < > "
// as entities. The empty text gives an empty result.
std::u16string toCss(const Text& text);

}  // namespace sim::calc
