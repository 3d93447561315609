// The parameters of a scheme as a text for the console: its names, its switches, and its rules.
#pragma once

#include <string>

#include "config/local_settings.h"
#include "host/interface/user_interface.h"
#include "schemes/scheme.h"

namespace qelm::schemes {

// The listing of a loaded scheme of any kind. Line ends are part of it; it begins with two of them.
std::string SchemeParameters(const Scheme& scheme);

// Prints the listing on the host's console.
void PrintSchemeParameters(host::UserInterface& user, const Scheme& scheme);

// Prints it when the settings ask for that after every load: in a debug mode, or by
// PRINT_SCHEME_PARMS_AFTER_ANY_DATA_READ.
void PrintAfterLoading(host::UserInterface& user, const config::LocalSettings& settings,
                       const Scheme& scheme);

}  // namespace qelm::schemes
