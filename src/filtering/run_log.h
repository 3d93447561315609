// Where a filter run tells its steps: a sink that a log can be attached to. Without one nothing happens and
// nothing is paid.
#pragma once

#include <functional>
#include <string_view>

#include "host/interface/types.h"
#include "messages/debug_log.h"

namespace qelm::filtering {

struct RunLog {
  // Takes one event: the document and the object that it is about (0: none), and its text.
  std::function<void(host::Id document, host::Id object, std::string_view event)> sink;

  void operator()(host::Id document, host::Id object, std::string_view event) const {
    if (sink) sink(document, object, event);
  }
};

// The log of a run that goes into the debug log, which outlives it; while that one is not written to, without
// a sink.
inline RunLog LogOf(messages::DebugLog& debug_log) {
  if (!debug_log.Writes()) return {};
  return {[&debug_log](host::Id document, host::Id object, std::string_view event) {
    debug_log.Event(document, object, event);
  }};
}

}  // namespace qelm::filtering
