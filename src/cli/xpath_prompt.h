// The prompt of `qelm xpath FILE`: expressions are typed and answered in turn.
//
//   xpath> //Section[@Audience='expert']
//   /Manual[1]/Section[2]   ...
//   2 matches
//
// A line that begins with ":" is a command: :help, :names, :explain EXPRESSION, :quit.
#pragma once

#include <functional>
#include <string>

#include "cli/session.h"

namespace qelm::cli {

// What the prompt does with an expression. Both print and throw Failure; evaluating returns how many matches
// there were.
struct PromptActions {
  std::function<std::size_t(const std::string& expression)> evaluate;
  std::function<void(const std::string& expression)> explain;
};

// Reads lines until they end or ":quit" comes. A refused expression is told and the prompt goes on. Returns
// false when one was refused and nobody sits at the terminal.
bool RunPrompt(Session& session, host::Id document, const PromptActions& actions);

}  // namespace qelm::cli
