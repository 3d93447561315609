// Preparing a user's own settings folder: it is made when it is missing, and what is missing in it is taken
// from the plug-in's folder. A file that is there is never touched, so that this may run at every start.
//
//   QELM_Version.ini                 the version that prepared the folder first
//   QELM_Local_Settings.txt          a copy
//   QELM_Plugin_Report_Template.fm   opened and saved there, as that makes it a document of this host
//   QELM_MainSettings_LocalCopy.fm   the same
#pragma once

#include <string>

#include "config/local_settings.h"
#include "host/interface/host.h"
#include "messages/messenger.h"

namespace qelm {

inline constexpr char kVersionFile[] = "QELM_Version.ini";

// What an installation can do and does not do: greet the user and ask before a folder is prepared, and make
// all files anew when another version prepared it. Both are off; files are made only when they are missing.
struct InstallationSwitches {
  bool welcome = false;
  bool refresh = false;
};

// Prepares the user's folder and points `paths` at it. A file that cannot be made is told by an alert, and
// the rest goes on. False, after an alert, when there is no folder: then nothing was done.
bool InstallPerUser(host::Host& host, messages::Messenger& messenger, config::SettingsPaths* paths,
                    const InstallationSwitches& switches = {});

// The version that prepared the folder; empty when that is not known.
std::string InstalledVersion(host::Platform& platform, const std::string& folder);

}  // namespace qelm
