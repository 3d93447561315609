// The questions of the debug mode that stops at each step. A "no" ends them for the run.
#pragma once

#include <string_view>

#include "messages/messenger.h"

namespace qelm::messages {

class DebugPrompts {
 public:
  explicit DebugPrompts(Messenger& messenger) : messenger_(messenger), on_(messenger.DebugPrompts()) {}

  bool On() const { return on_; }

  // Asks `format`, filled with the arguments, while the prompts are on.
  template <typename... Arguments>
  void Ask(const char* format, const Arguments&... arguments) {
    if (on_) on_ = messenger_.Ask(Messenger::FormatText(format, arguments...));
  }

 private:
  Messenger& messenger_;
  bool on_;
};

}  // namespace qelm::messages
