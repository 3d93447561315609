// Telling the user why an expression was rejected: the expression in lines of 60 characters, each with a line
// under it that marks the place with a caret, and the message of the error.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "xpath/engine_state.h"

namespace qelm::xpath {

// A line of the expression and the line that marks it: "." up to the place, "^" at it, nothing behind it.
struct MarkedLine {
  std::string text;
  std::string marker;
};

// `position` is a character index.
std::vector<MarkedLine> MarkPosition(std::string_view expression, std::int32_t position);

// Reports a rejected expression.
void bw_ReportXPathError(Engine::State& state, std::string_view expression, const ParseError& error);

}  // namespace qelm::xpath
