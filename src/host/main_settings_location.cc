#include "host/main_settings_location.h"

#include <filesystem>
#include <optional>

#include "common/paths.h"
#include "config/rewrite_settings.h"
#include "config/settings_table.h"
#include "host/session_schemes.h"
#include "schemes/main_settings.h"
#include "schemes/plugin_colors.h"

namespace qelm {
namespace {

constexpr char kBrowserTitle[] = "Main settings file path";

class Location {
 public:
  explicit Location(Plugin& plugin) : plugin_(plugin), host_(plugin.host), paths_(plugin.settings.paths) {}

  void Run() {
    if (!AskWith("QELM_MSG_STGS_EDIT_13", paths_.main_settings)) return;
    path_ = host_.dialogs.ChooseFile(kBrowserTitle, StartOfBrowser());
    if (path_.empty() || !Open()) return;
    if (!IsMainSettings() || !SaveWithColors()) {
      if (opened_here_) host_.documents.Close(document_, /*discard=*/true);
      return;
    }
    const bool written = WriteLocalSettings();
    Use();
    if (written) {
      AlertWith("QELM_MSG_STGS_EDIT_21", path_);
    } else {
      AlertWith("QELM_MSG_STGS_EDIT_20", paths_.local_settings);
    }
    ReloadSchemes(plugin_);
  }

  // What cannot be told is refused: a path that the next session does not know would come as a surprise.
  bool RunSilently(const std::string& path) {
    std::error_code ignored;
    silent_ = true;
    path_ = std::filesystem::absolute(path, ignored).lexically_normal().string();
    if (!Open()) return false;
    if (!IsMainSettings() || !SaveWithColors() || !WriteLocalSettings()) {
      if (opened_here_) host_.documents.Close(document_, /*discard=*/true);
      return false;
    }
    Use();
    ReloadSchemes(plugin_);
    return true;
  }

 private:
  bool AskWith(const char* id, const std::string& argument) {
    return plugin_.messenger.AskFormatted(id, plugin_.messenger.Format(id, argument));
  }
  void AlertWith(const char* id, const std::string& argument) {
    if (!silent_) plugin_.messenger.AlertFormatted(id, plugin_.messenger.Format(id, argument));
  }

  std::string StartOfBrowser() {
    if (host_.platform.FileExists(paths_.main_settings)) return paths_.main_settings;
    if (!plugin_.settings.cfg_file_browse_use_active_file_folder) return {};
    return std::string(common::FolderOf(host_.documents.Path(host_.documents.ActiveDocument())));
  }

  bool Open() {
    host::OpenOptions options;
    options.visible = false;
    options.suppress_alerts = true;
    host::OpenStatus status = host::OpenStatus::kUnreadable;
    document_ = host_.documents.Open(path_, options, &status);
    opened_here_ = status != host::OpenStatus::kAlreadyOpen;
    if (document_ == host::kNone) AlertWith("QELM_MSG_STGS_EDIT_15", path_);
    return document_ != host::kNone;
  }

  bool IsMainSettings() {
    const bool is = !host_.books.IsBook(document_) && schemes::HasXPathCategories(plugin_.engine, document_);
    if (!is) AlertWith("QELM_MSG_STGS_EDIT_14", path_);
    if (is && !silent_ && schemes::IsOldMainSettings(host_, document_)) {
      plugin_.messenger.AlertFormatted("QELM_MSG_CONVERT_10",
                                       plugin_.messenger.Format("QELM_MSG_CONVERT_10", path_, path_));
    }
    return is;
  }

  // False, after an alert, when the document has changes that cannot be saved.
  bool SaveWithColors() {
    if (!silent_ && schemes::LacksColors(host_, document_) &&
        plugin_.messenger.Ask("QELM_MSG_STGS_EDIT_16")) {
      if (schemes::AddPluginColors(host_.catalogs, document_)) {
        plugin_.messenger.Alert("QELM_MSG_STGS_EDIT_18");
      } else {
        AlertWith("QELM_MSG_STGS_EDIT_17", std::string(host_.documents.LastError()));
      }
    }
    // One without changes is on the disk as it is, and may well be write-protected.
    if (!host_.documents.Switch(document_, host::DocumentSwitch::kModified)) return true;
    if (host_.documents.Save(document_, {})) return true;
    AlertWith("QELM_MSG_STGS_EDIT_19", path_);
    return false;
  }

  bool WriteLocalSettings() {
    host::Platform& platform = host_.platform;
    const std::optional<std::string> before = platform.ReadFile(paths_.local_settings);
    if (!before && platform.MayExist(paths_.local_settings)) return false;
    const std::optional<std::string> after =
        config::WithMainSettingsPath(before.value_or(""), paths_.main_settings, path_);
    return after && platform.ReplaceFile(paths_.local_settings, *after);
  }

  void Use() {
    config::LocalSettings& settings = plugin_.settings;
    paths_.main_settings = paths_.configured_main_settings = path_;
    settings.main_settings_path = path_;
    if (!settings.origins.empty()) settings.origins.front() = {config::SettingSource::kSession};
    // What the session was started with does not stand above what was chosen later.
    std::erase_if(settings.overrides, [](const config::SettingOverride& setting) {
      return setting.first == config::kMainSettingsKey;
    });
    UseMainSettings(plugin_, document_);
  }

  Plugin& plugin_;
  host::Host& host_;
  config::SettingsPaths& paths_;
  std::string path_;
  host::Id document_ = host::kNone;
  bool opened_here_ = false;
  bool silent_ = false;
};

}  // namespace

void SetMainSettingsLocation(Plugin& plugin) { Location(plugin).Run(); }

bool SetMainSettingsPath(Plugin& plugin, const std::string& path) {
  return Location(plugin).RunSilently(path);
}

}  // namespace qelm
