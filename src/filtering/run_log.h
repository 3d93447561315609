// Where a filter run tells its steps: a sink that a log can be attached to. Without one nothing happens and
// nothing is paid.
#pragma once

#include <functional>
#include <string_view>

#include "host/interface/types.h"

namespace qelm::filtering {

struct RunLog {
  // Takes one event: the document and the object that it is about (0: none), and its text.
  std::function<void(host::Id document, host::Id object, std::string_view event)> sink;

  void operator()(host::Id document, host::Id object, std::string_view event) const {
    if (sink) sink(document, object, event);
  }
};

}  // namespace qelm::filtering
