// Opening the document of a book's component, with the reason in words where that is not possible.
#pragma once

#include <string>

#include "host/interface/host.h"

namespace qelm::messages {

struct OpenedComponent {
  std::string path;
  host::Id document = host::kNone;  // 0: it cannot be opened, or is no document, and
  std::string why;                  // this is why, with the path in it
  bool opened = false;              // it was not open before
};

// Opens the component where it is not open. One that is a book in turn has no document.
OpenedComponent OpenComponent(host::Host& host, host::Id book, host::Id component, bool suppress_alerts);

}  // namespace qelm::messages
