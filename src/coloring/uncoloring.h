// Taking the marks of colorings away from a document.
#pragma once

#include "coloring/coloring.h"

namespace qelm::coloring {

// Uncolors one document by the method that the run asks for: the text gets the formatting again that its
// formats and element definitions give it, or color, underlining and background are reset one by one. False,
// after an alert where the run reports and with its ending set, when that could not be done. Change bars
// stay.
bool Uncolor(ColoringContext& context, host::Id document);

// Takes the change bars off all text in the flows that have elements.
void RemoveChangeBars(host::Host& host, host::Id document);

// The command: uncolors, and removes change bars where the run asks for that. Returns kDone, or 0 when the
// document could not be uncolored.
std::int32_t UncolorDocument(ColoringContext& context, host::Id document);

}  // namespace qelm::coloring
