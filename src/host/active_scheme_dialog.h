// Setting the active scheme: a category from a drop-down list, then one of its schemes of the kind.
#pragma once

#include <cstdint>

#include "host/plugin.h"

namespace qelm {

// Kinds as the commands pass them on.
inline constexpr std::int32_t kSetColoringScheme = 18;
inline constexpr std::int32_t kSetValidationScheme = 24;
inline constexpr std::int32_t kSetFilterScheme = 25;

// Lets the user choose the active scheme of that kind and loads it at once; "<none>", in either list, sets
// that no scheme is active. The names are kept in the settings of the session. Cancelled, or without a main
// settings document or a category for the kind (which is said), nothing changes; nor does it for any other
// kind.
void ChooseActiveScheme(Plugin& plugin, std::int32_t kind);

}  // namespace qelm
