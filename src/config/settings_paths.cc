#include "config/settings_paths.h"

#include <initializer_list>
#include <optional>

#include "common/paths.h"
#include "common/text.h"
#include "common/utf8.h"

namespace qelm::config {
namespace {

constexpr std::string_view kLocationKey = "SETTINGS_LOCATION";
constexpr std::string_view kInstallFolder = "IN";
constexpr std::string_view kMaker = "Brenwick";

// A folder that an environment variable names; a relative one is not meant for us.
std::string FolderFrom(host::Platform& platform, std::string_view variable) {
  const std::string folder = common::PlatformPath(platform.Environment(variable));
  return common::IsAbsolutePath(folder) ? folder : std::string();
}

}  // namespace

bool InstallFolderMode(host::Platform& platform, const std::string& plugin_folder) {
  const std::optional<std::string> content =
      platform.ReadFile(common::JoinPath(plugin_folder, kLocationFile));
  if (!content) return false;
  const std::string text = common::DecodeTextFile(*content);
  for (const std::string_view line : common::SplitLines(text)) {
    if (!line.starts_with(kLocationKey)) continue;
    const std::size_t at = line.find('=');
    return at != line.npos && common::Trim(line.substr(at + 1)).starts_with(kInstallFolder);
  }
  return false;
}

std::string ApplicationDataFolder(host::Platform& platform) {
  if (std::string folder = common::PlatformPath(platform.Environment("APPDATA")); !folder.empty()) {
    return folder;
  }
  if (std::string folder = FolderFrom(platform, "XDG_CONFIG_HOME"); !folder.empty()) return folder;
  const std::string home = FolderFrom(platform, "HOME");
  return home.empty() ? home : common::JoinPath(home, ".config");
}

std::string PerUserSubfolder(host::Session& session) {
  std::string folder;
  const std::string version = std::to_string(session.MajorVersion());
  for (const std::string_view part :
       std::initializer_list<std::string_view>{"Adobe", "FrameMaker", version, kMaker, kProduct}) {
    folder = common::JoinPath(folder, part);
  }
  return folder;
}

std::string PerUserFolder(host::Session& session, host::Platform& platform) {
  const std::string folder = ApplicationDataFolder(platform);
  return folder.empty() ? folder : common::JoinPath(folder, PerUserSubfolder(session));
}

void UseFolder(const std::string& folder, SettingsPaths* paths) {
  paths->settings_folder = folder;
  paths->local_settings = common::JoinPath(folder, kLocalSettingsFile);
  paths->local_copy = common::JoinPath(folder, kLocalCopyFile);
  paths->report_template = common::JoinPath(folder, kReportTemplateFile);
  paths->report = common::JoinPath(folder, kReportFile);
}

SettingsPaths PluginPaths(host::Session& session, host::Platform& platform) {
  SettingsPaths paths;
  paths.plugin_folder = session.PluginFolder();
  paths.per_user = !InstallFolderMode(platform, paths.plugin_folder);
  UseFolder(paths.plugin_folder, &paths);
  return paths;
}

SettingsPaths FindSettingsPaths(host::Session& session, host::Platform& platform) {
  SettingsPaths paths = PluginPaths(session, platform);
  // Without a home there is nowhere else to go.
  const std::string folder = paths.per_user ? PerUserFolder(session, platform) : std::string();
  if (folder.empty()) return paths;
  const SettingsPaths shipped = paths;
  UseFolder(folder, &paths);
  for (const auto path :
       {&SettingsPaths::local_settings, &SettingsPaths::local_copy, &SettingsPaths::report_template}) {
    if (!platform.FileExists(paths.*path) && platform.FileExists(shipped.*path)) paths.*path = shipped.*path;
  }
  return paths;
}

}  // namespace qelm::config
