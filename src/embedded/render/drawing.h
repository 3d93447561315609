// Puts pages that are laid out on paper: on a Cairo context, text and all.
#pragma once

#include "embedded/render/page.h"

namespace qelm::embedded::render {

// Draws a page with its background. `tagged`: with links, places and the structure of the text, for PDF.
void DrawPage(Setting& setting, cairo_t* cr, const LaidPage& page, bool tagged);

// Draws an anchored frame with its upper left corner at x, y; text inside it is set as it is met.
void DrawAnchoredFrame(Setting& setting, cairo_t* cr, std::uint32_t frame, double x, double y);

}  // namespace qelm::embedded::render
