// The command of the plug-in's menus that a user means.
#pragma once

#include <cstdint>
#include <string>

#include "host/plugin.h"

namespace qelm::cli {

// The number that `text` is, whether there is a command of it or not, or that of the command with this name.
// Throws Failure for a name that no command has.
std::int32_t CommandNumber(const std::string& text);

// Whether calling that number does anything in this session.
bool CommandIsDefined(const Plugin& plugin, std::int32_t number);

}  // namespace qelm::cli
