// The checks that an expression must pass before it is tokenized: its length, its brackets, the names of its
// functions and axes. Quoted literals are overwritten first, so that nothing inside one is ever seen here.
#pragma once

#include <cstdint>
#include <string_view>

#include "common/strings.h"
#include "xpath/errors.h"

namespace qelm::xpath {

// The first check that the text fails, with its position as a character index. `guard` is told when the text
// is so long that a scan gave up.
Rejection Precheck(std::string_view text, std::int32_t maximum_length, const common::GuardSink& guard);

}  // namespace qelm::xpath
