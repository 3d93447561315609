// The text of an equation in one line.
//
// MIF has an equation as a full form, names with arguments: `equal[char[y],over[num[1,"1"],char[x]]]` becomes
// "y = 1/x". Equations are not set as FrameMaker sets them; this is what stands in the box in their place.
#pragma once

#include <string>
#include <string_view>

namespace qelm::embedded::render {

// Names that are not known stand with their arguments in parentheses. Empty for what is no full form or is
// longer than anybody reads in a box.
std::string EquationText(std::string_view full_form);

}  // namespace qelm::embedded::render
