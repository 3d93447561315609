// Where the settings files lie: beside the plug-in, or in the user's own folder.
#pragma once

#include <string>

#include "config/local_settings.h"
#include "host/interface/platform.h"
#include "host/interface/session.h"

namespace qelm::config {

inline constexpr char kLocationFile[] = "QELM.ini";
inline constexpr char kLocalSettingsFile[] = "QELM_Local_Settings.txt";
inline constexpr char kLocalCopyFile[] = "QELM_MainSettings_LocalCopy.fm";
inline constexpr char kReportTemplateFile[] = "QELM_Plugin_Report_Template.fm";
inline constexpr char kReportFile[] = "QELM_Plugin_Report.fm";

// The paths of this session: QELM.ini decides between the plug-in's folder and the user's. In the user's, a
// file that is not there (yet) is taken from the plug-in's folder; the report is always written in the
// user's.
SettingsPaths FindSettingsPaths(host::Session& session, host::Platform& platform);

// Whether QELM.ini in the plug-in's folder asks for the settings to be kept there.
bool InstallFolderMode(host::Platform& platform, const std::string& plugin_folder);

// The folder of the user's application data: APPDATA, else XDG_CONFIG_HOME, else ".config" in the home
// folder; empty when none of them is known.
std::string ApplicationDataFolder(host::Platform& platform);

// The user's folder for this product and host; empty when the application data folder is not known.
std::string PerUserFolder(host::Session& session, host::Platform& platform);

}  // namespace qelm::config
