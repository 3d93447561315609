// The start of the plug-in, stage by stage. Each stage shows its name in the status dialog:
//
//   Initializing variables      the paths of the settings; in a user's session the user's folder is prepared
//   Retrieving local settings   and with them the limits of the engine, the debug log and the language
//   Retrieving main settings    the document with the schemes, which stays open without being shown, and the
//                               default schemes
//   Creating menu paths         notifications, menus and commands
//
// Then the files are opened that the user wants open. Only a user's folder that cannot be made ends the
// start; whatever else is missing or damaged is told, and the rest goes on.
#pragma once

#include "host/plugin.h"

namespace qelm {

inline constexpr char kCannotInitialize[] = "QELM cannot initialize.";

// Starts a plug-in that was made and not used yet. The status dialog is left as the last stage shows it when
// something ends the start. Returns as Plugin::Initialize does.
bool StartUp(Plugin& plugin, const StartOptions& options);

// Reads the local settings again: what the session has chosen stays, limits and debug log follow the file,
// and so does the main settings document. With `report` it tells what is wrong with the file, and that it is
// done. False when the file cannot be read.
bool ReadLocalSettingsAgain(Plugin& plugin, bool report);

}  // namespace qelm
