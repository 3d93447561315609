#include "host/installation.h"

#include <array>
#include <optional>

#include "common/paths.h"
#include "common/text.h"
#include "common/utf8.h"
#include "common/version.h"
#include "config/settings_paths.h"

namespace qelm {
namespace {

using messages::Messenger;

// No language is known yet when these are shown.
constexpr char kNoFolderText[] =
    "The plugin was unable to create the following directory in which to store your settings:\n\n%s\n\n The "
    "plugin is unable to initialize. Please check that the application data folder (the environment variable "
    "APPDATA) is there, that you may write to it, and that no file bears the name of the directory or of one "
    "above it. Then start FrameMaker again.";
constexpr char kNoLocalSettingsText[] =
    "A critical error occurred while creating and/or retrieving a copy of your local settings at:\n\n%s\n\n"
    "QELM will work with its default settings. Please check that the folder can be written to, that the disk "
    "is not full and that no folder bears the name of the file; or copy QELM_Local_Settings.txt from the "
    "plug-in's folder to that place yourself.";
constexpr char kNoReportTemplateText[] =
    "A critical error occurred creating and/or retrieving a copy of your local report template at:\n\n%s\n\n"
    "Reports cannot be made without it. Please check that the folder can be written to, that the disk is not "
    "full and that no folder bears the name of the file; or copy QELM_Plugin_Report_Template.fm from the "
    "plug-in's folder to that place yourself.";
constexpr char kNoMainSettingsText[] =
    "A critical error occurred creating and/or retrieving a copy of your local main settings file "
    "at:\n\n%s\n\n"
    "There are no schemes without one. Please check that the folder can be written to, that the disk is not "
    "full and that no folder bears the name of the file; or copy QELM_MainSettings_LocalCopy.fm from the "
    "plug-in's folder to that place yourself.";
constexpr char kWelcomeText[] =
    "Welcome to QELM, %s!\n\nYour own settings are about to be prepared in this folder:\n\n%s\n\nDo you want "
    "to "
    "go on?";
constexpr char kVersionFileWarning[] = "WARNING! DO NOT MODIFY THIS FILE!";

// A file of the user's folder.
struct InstalledFile {
  const char* name;
  bool document;  // made by the host, and copied only where that fails
  const char* failure;
};
constexpr std::array kFiles = {
    InstalledFile{config::kLocalSettingsFile, false, kNoLocalSettingsText},
    InstalledFile{config::kReportTemplateFile, true, kNoReportTemplateText},
    InstalledFile{config::kLocalCopyFile, true, kNoMainSettingsText},
};

class Installation {
 public:
  Installation(host::Host& host, Messenger& messenger, const config::SettingsPaths& paths)
      : host_(host),
        messenger_(messenger),
        plugin_folder_(paths.plugin_folder),
        folder_(config::PerUserFolder(host.session, host.platform)) {}

  const std::string& folder() const { return folder_; }

  // Whether the user, asked by name, wants the folder to be prepared.
  bool Welcome() {
    if (host_.platform.FileExists(At(kVersionFile))) return true;
    return messenger_.Ask(
        Messenger::FormatText(kWelcomeText, host_.platform.Environment("USERNAME"), folder_));
  }

  bool MakeFolder() {
    if (!folder_.empty() && !host_.platform.FolderExists(folder_)) {
      host_.platform.MakeFolder(std::string(common::FolderOf(folder_)));
      host_.platform.MakeFolder(folder_);
    }
    if (!folder_.empty() && host_.platform.FolderExists(folder_)) return true;
    const std::string named = folder_.empty() ? config::PerUserSubfolder(host_.session) : folder_;
    messenger_.Alert(Messenger::FormatText(kNoFolderText, named));
    return false;
  }

  void WriteVersion() {
    if (host_.platform.MayExist(At(kVersionFile))) return;
    host_.platform.ReplaceFile(At(kVersionFile), common::VersionText() + "\n\n" + kVersionFileWarning + "\n");
  }

  void Remove() {
    host_.platform.RemoveFile(At(kVersionFile));
    for (const InstalledFile& file : kFiles) host_.platform.RemoveFile(At(file.name));
  }

  void Make(const InstalledFile& file) {
    const std::string target = At(file.name);
    if (host_.platform.MayExist(target)) return;
    const std::string source = common::JoinPath(plugin_folder_, file.name);
    if (!file.document || !SaveThere(source, target)) host_.platform.CopyFile(source, target);
    if (!host_.platform.FileExists(target)) messenger_.Alert(Messenger::FormatText(file.failure, target));
  }

 private:
  std::string At(std::string_view name) const { return common::JoinPath(folder_, name); }

  bool SaveThere(const std::string& source, const std::string& target) {
    host::OpenOptions options;
    options.visible = false;
    options.suppress_alerts = true;
    host::OpenStatus status = host::OpenStatus::kUnreadable;
    const host::Id document = host_.documents.Open(source, options, &status);
    // One that the user has open is not given another name.
    if (document == host::kNone || status == host::OpenStatus::kAlreadyOpen) return false;
    host::SaveOptions save;
    save.path = target;
    const bool saved = host_.documents.Save(document, save);
    host_.documents.Close(document, true);
    return saved;
  }

  host::Host& host_;
  Messenger& messenger_;
  std::string plugin_folder_;
  std::string folder_;
};

}  // namespace

std::string InstalledVersion(host::Platform& platform, const std::string& folder) {
  const std::optional<std::string> content = platform.ReadFile(common::JoinPath(folder, kVersionFile));
  const std::string text = common::DecodeTextFile(content.value_or(""));
  const std::vector<std::string_view> lines = common::SplitLines(text);
  return lines.empty() ? std::string() : std::string(common::Trim(lines.front()));
}

bool InstallPerUser(host::Host& host, messages::Messenger& messenger, config::SettingsPaths* paths,
                    const InstallationSwitches& switches) {
  Installation installation(host, messenger, *paths);
  if (switches.welcome && !installation.Welcome()) return false;
  const bool other_version = InstalledVersion(host.platform, installation.folder()) != common::VersionText();
  if (!installation.MakeFolder()) return false;
  if (switches.refresh && other_version) installation.Remove();
  installation.WriteVersion();
  for (const InstalledFile& file : kFiles) installation.Make(file);
  config::UseFolder(installation.folder(), paths);
  return true;
}

}  // namespace qelm
