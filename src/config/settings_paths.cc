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
constexpr std::string_view kProduct = "QELM";

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

std::string PerUserFolder(host::Session& session, host::Platform& platform) {
  std::string folder = ApplicationDataFolder(platform);
  if (folder.empty()) return folder;
  const std::string version = std::to_string(session.MajorVersion());
  for (const std::string_view part :
       std::initializer_list<std::string_view>{"Adobe", "FrameMaker", version, kMaker, kProduct}) {
    folder = common::JoinPath(folder, part);
  }
  return folder;
}

SettingsPaths FindSettingsPaths(host::Session& session, host::Platform& platform) {
  SettingsPaths paths;
  paths.plugin_folder = session.PluginFolder();
  paths.settings_folder = paths.plugin_folder;
  paths.per_user = !InstallFolderMode(platform, paths.plugin_folder);
  if (paths.per_user) {
    // Without a home there is nowhere else to go.
    const std::string folder = PerUserFolder(session, platform);
    if (!folder.empty()) paths.settings_folder = folder;
  }
  const auto find = [&](const char* name) {
    std::string path = common::JoinPath(paths.settings_folder, name);
    if (platform.FileExists(path)) return path;
    std::string shipped = common::JoinPath(paths.plugin_folder, name);
    return platform.FileExists(shipped) ? shipped : path;
  };
  paths.local_settings = find(kLocalSettingsFile);
  paths.local_copy = find(kLocalCopyFile);
  paths.report_template = find(kReportTemplateFile);
  paths.report = common::JoinPath(paths.settings_folder, kReportFile);
  return paths;
}

}  // namespace qelm::config
