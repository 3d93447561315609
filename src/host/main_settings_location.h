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

// The same with a path that is chosen already, without a question or a message and without adding colors.
// False, with nothing changed but a document of that path that had changes and is saved, when the file cannot
// be used or the local settings file not be rewritten.
bool SetMainSettingsPath(Plugin& plugin, const std::string& path);

}  // namespace qelm
