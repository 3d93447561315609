// Where the settings files lie: beside the plug-in, or in the user's own folder.
#pragma once

#include <string>

#include "config/local_settings.h"
#include "host/interface/platform.h"
#include "host/interface/session.h"

namespace qelm::config {

inline constexpr std::string_view kProduct = "QELM";
inline constexpr char kLocationFile[] = "QELM.ini";
inline constexpr char kLocalSettingsFile[] = "QELM_Local_Settings.txt";
inline constexpr char kLocalCopyFile[] = "QELM_MainSettings_LocalCopy.fm";
inline constexpr char kReportTemplateFile[] = "QELM_Plugin_Report_Template.fm";
inline constexpr char kReportFile[] = "QELM_Plugin_Report.fm";

// The paths with every file in the plug-in's folder, and what QELM.ini there decides: whether users have
// their own.
SettingsPaths PluginPaths(host::Session& session, host::Platform& platform);

// Points the paths of the settings files at a folder.
void UseFolder(const std::string& folder, SettingsPaths* paths);

// The paths of a session that prepares nothing for its user: the user's files as far as they are there, and
// those of the plug-in's folder in place of the others; the report is always written in the user's.
SettingsPaths FindSettingsPaths(host::Session& session, host::Platform& platform);

// Whether QELM.ini in the plug-in's folder asks for the settings to be kept there.
bool InstallFolderMode(host::Platform& platform, const std::string& plugin_folder);

// The folder of the user's application data: APPDATA, else XDG_CONFIG_HOME, else ".config" in the home
// folder; empty when none of them is known.
std::string ApplicationDataFolder(host::Platform& platform);

// Where the user's folder for this product and host lies below the application data folder.
std::string PerUserSubfolder(host::Session& session);

// The user's folder for this product and host; empty when the application data folder is not known.
std::string PerUserFolder(host::Session& session, host::Platform& platform);

}  // namespace qelm::config
