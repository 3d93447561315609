// The parameters that other clients read and set by calls. What is set holds for the session; only the main
// settings path is also written into the local settings file.
#pragma once

#include "calls/calls.h"

namespace qelm::calls {

// Whether an argument says yes, by its first letter.
bool IsTrue(std::string_view argument);

// The words "GetParm" (name) and "SetParm" (name, value).
Answer GetParm(CallContext& context, Arguments arguments);
Answer SetParm(CallContext& context, Arguments arguments);

}  // namespace qelm::calls
