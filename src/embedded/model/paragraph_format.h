// A paragraph's format as statements that rely on nothing before them.
#pragma once

#include <string>
#include <vector>

#include "embedded/model/document.h"

namespace qelm::embedded::model {

// The statements PgfTag and Pgf that set the paragraph state whatever the state before: the catalog format
// that it goes back to, and every change made on top of that, the last one of each property.
std::vector<std::string> FormatStatements(const Document& document, std::uint32_t paragraph_state);

}  // namespace qelm::embedded::model
