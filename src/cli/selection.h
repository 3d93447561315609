// The element that --selection names.
#pragma once

#include <string>

#include "host/interface/types.h"

namespace qelm::cli {

class Session;

// Makes the first match of the expression the document's selection. Throws Failure when the expression is
// refused, or when that match is no element of the document: a text node or an attribute has nothing in it
// that could be worked on. `owner` says where the expression is from.
void SelectOrFail(Session& session, host::Id document, const std::string& expression,
                  const std::string& owner = "--selection");

}  // namespace qelm::cli
