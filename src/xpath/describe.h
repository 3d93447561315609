// Writing components as an expression again, in the long form: every axis by its name, what the parser added
// included. For people who want to see what their expression came to.
#pragma once

#include <string>

#include "xpath/components.h"

namespace qelm::xpath {

// A step with its predicates, `child::Section[@Audience='expert']`; the root step is "/".
std::string DescribeStep(const ComponentTable& table, Index step);

// What stands between the brackets: `attribute::Audience='expert'`.
std::string DescribePredicate(const ComponentTable& table, Index predicate);

}  // namespace qelm::xpath
