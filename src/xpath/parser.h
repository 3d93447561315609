// The parser: a loop over tokens that builds the components of one expression.
//
// The cursor is the component being built; what a token means is found by climbing from it: to the argument
// of a function, to the predicate, to the step whose brackets are open. The text between two brackets is
// parsed as a text of its own, whose end brings the cursor back to the step that it belongs to. Every token
// is first tested against the one before it, by a table.
#pragma once

#include <string_view>

#include "xpath/components.h"
#include "xpath/errors.h"

namespace qelm::xpath {

struct Parsing {
  Index sequence = 0;   // the root; 0 when the loop guard fired
  Rejection rejection;  // why the text was rejected, at which byte offset
};

// Parses a text that has passed the pre-checks. The components of a rejected text stay in the table.
Parsing Parse(std::string_view text, ComponentTable* table);

}  // namespace qelm::xpath
