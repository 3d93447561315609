// The components of a parsed expression in words, for people who look into why an expression selects what it
// does.
#pragma once

#include <string>

#include "xpath/components.h"

namespace qelm::xpath {

// One line a component and one for each thing that is set in it, under a heading with the expression.
// `sequence` must be that of an expression.
std::string DumpComponents(const ComponentTable& table, Index sequence);

}  // namespace qelm::xpath
