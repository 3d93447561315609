// Text in the text frames of graphics: it runs from one to the next as on pages.
#pragma once

#include "embedded/render/page.h"

namespace qelm::embedded::render {

// What stands in a text frame of a flow, by its place among the flow's frames. Text that is longer than its
// frames stands out of the last one, as far as the graphic around it reaches, and that is noted.
std::vector<Mark> FrameMarks(Setting& setting, model::Id flow, std::uint32_t place);

}  // namespace qelm::embedded::render
