// The command that chooses another main settings document, for this session and, in the local settings file,
// for those to come.
#pragma once

#include "host/plugin.h"

namespace qelm {

// Asks, lets the user choose a file, checks it, offers it the plug-in's colors, saves it when it has changes,
// and rewrites the local settings file (config/rewrite_settings.h). Every ending but a "no" and a file
// browser that was left without a choice is told. A file that cannot be used, or not be saved, changes
// nothing.
void SetMainSettingsLocation(Plugin& plugin);

}  // namespace qelm
