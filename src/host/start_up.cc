#include "host/start_up.h"

#include "config/read_settings.h"
#include "config/settings_paths.h"
#include "config/startup_language.h"
#include "host/installation.h"
#include "host/menus.h"
#include "host/notifications.h"
#include "host/session_schemes.h"
#include "schemes/main_settings.h"
#include "schemes/plugin_colors.h"

namespace qelm {
namespace {

// Limits until the local settings are known: the longest expression, and the engine's default elsewhere.
constexpr std::int32_t kProvisionalExpressionLength = 1000;
constexpr std::int32_t kDefault = 0;

constexpr std::string_view kEncoding = "UTF-8";
constexpr char kFilesKey[] = "FILES_TO_OPEN_ON_STARTUP";

// Both double blanks have always been in this text.
constexpr char kBadValidationSchemeText[] =
    "You have auto-validation turned on, but QELM was unable to read settings for the default  validation "
    "scheme:\n\nCategory: %s\nScheme: %s\n\nAuto-validation will not be functional  until you manually set a "
    "valid scheme.\n\nYou can eliminate this warning by specifying a valid default scheme  in your local "
    "settings file or by disabling the warning altogether (also in the local settings file).";

// The name of a main settings document as the local settings take it: some words there stand for the local
// copy, and a file that happens to begin with one of them must still be found.
std::string AsSettingsPath(const std::string& path) {
  return path.find('/') == std::string::npos ? "./" + path : path;
}

bool ReadSettings(Plugin& plugin, bool report) {
  const auto check = schemes::CheckMainSettingsFile(plugin.host, plugin.engine, plugin.messenger, report);
  const bool read = config::ReadLocalSettings(plugin.messenger, plugin.host.platform, plugin.debug_log,
                                              report, check, &plugin.settings);
  xpath::bw_XPathEngineInit(plugin.engine, kDefault, plugin.settings.xpath_expression_max_length,
                            plugin.settings.xpath_max_matches);
  return read;
}

class Start {
 public:
  Start(Plugin& plugin, const StartOptions& options)
      : plugin_(plugin), host_(plugin.host), options_(options) {}

  bool Run() {
    host_.session.SetTextEncoding(kEncoding);
    ShowStage("Initializing variables");
    if (!FindFiles()) return false;
    xpath::bw_XPathEngineInit(plugin_.engine, kDefault, kProvisionalExpressionLength, kDefault);

    ShowStage("Retrieving local settings");
    ReadSettings(plugin_, true);
    config::LoadStartupLanguage(host_.session, plugin_.messenger, plugin_.settings);

    ShowStage("Retrieving main settings");
    if (!OpenSettings()) return false;
    if (!options_.install) return true;
    PrepareSchemes();

    ShowStage("Creating menu paths");
    RegisterNotifications(plugin_);
    DefineMenus(plugin_);
    host_.user.HideStatus();
    OpenFiles();
    return true;
  }

 private:
  // No language is known yet, so that these are shown as they are here.
  void ShowStage(const char* stage) {
    host_.user.ShowStatus({"Initializing the QELM plugin...", stage, "Please wait...", ""});
  }

  bool FindFiles() {
    config::LocalSettings& settings = plugin_.settings;
    if (options_.install) {
      settings.paths = config::PluginPaths(host_.session, host_.platform);
      if (settings.paths.per_user && !InstallPerUser(host_, plugin_.messenger, &settings.paths)) {
        plugin_.messenger.Alert(kCannotInitialize);
        return false;
      }
    } else {
      settings.paths = config::FindSettingsPaths(host_.session, host_.platform);
    }
    if (!options_.local_settings_path.empty()) settings.paths.local_settings = options_.local_settings_path;
    settings.overrides = options_.settings;
    // The last one of a key counts, and what is named for this run stands above all others.
    if (!options_.main_settings_path.empty()) {
      settings.overrides.emplace_back("MAIN_SETTINGS_PATH", AsSettingsPath(options_.main_settings_path));
    }
    return true;
  }

  bool OpenSettings() {
    const config::SettingsPaths& paths = plugin_.settings.paths;
    const bool named = !options_.main_settings_path.empty();
    // Where the one that was named is not to be had, the local copy would stand in for it without a word.
    if (named && paths.main_settings != plugin_.settings.main_settings_path) return false;
    return OpenSessionSettings(plugin_) || !named;
  }

  void PrepareSchemes() {
    if (plugin_.main_settings == host::kNone) return;
    if (schemes::LacksColors(host_, plugin_.main_settings)) OfferColors();
    LoadDefaultColoring(plugin_, true);
    WarnOfValidation(LoadDefaultValidation(plugin_));
  }

  void OfferColors() {
    constexpr char kQuestion[] = "QELM_MSG_GEN_19";
    messages::Messenger& messenger = plugin_.messenger;
    const std::string text = messenger.Format(kQuestion, plugin_.settings.paths.main_settings);
    if (!messenger.AskFormatted(kQuestion, text)) return;
    if (!schemes::AddPluginColors(host_.catalogs, plugin_.main_settings) ||
        !host_.documents.Save(plugin_.main_settings, {})) {
      messenger.Alert("QELM_MSG_GEN_20");
    }
  }

  void WarnOfValidation(const DefaultScheme& scheme) {
    if (scheme.outcome != DefaultScheme::kUnreadable) return;
    if (!plugin_.settings.prompt_bad_val_scheme_on_startup_warning) return;
    plugin_.messenger.Alert(
        messages::Messenger::FormatText(kBadValidationSchemeText, scheme.category, scheme.name));
  }

  void OpenFiles() {
    constexpr char kNotOpened[] = "QELM_MSG_STGS_EDIT_15";
    const config::LocalSettings& settings = plugin_.settings;
    host::OpenOptions options;
    options.suppress_alerts = settings.suppress_file_opening_alerts;
    // Opening one calls the plug-in back, which may read the settings again.
    const std::vector<std::string> files = settings.files_to_open_on_startup;
    for (const std::string& file : files) {
      if (file.starts_with(';')) continue;
      const std::string path = config::PathOfSetting(settings, kFilesKey, file);
      host::OpenStatus status = host::OpenStatus::kOpened;
      if (host_.documents.Open(path, options, &status) != host::kNone || options.suppress_alerts) continue;
      plugin_.messenger.AlertFormatted(kNotOpened, plugin_.messenger.Format(kNotOpened, path));
    }
  }

  Plugin& plugin_;
  host::Host& host_;
  const StartOptions& options_;
};

}  // namespace

bool StartUp(Plugin& plugin, const StartOptions& options) { return Start(plugin, options).Run(); }

bool ReadLocalSettingsAgain(Plugin& plugin, bool report) {
  const std::string before = plugin.settings.paths.main_settings;
  const bool read = ReadSettings(plugin, report);
  if (plugin.main_settings == host::kNone || plugin.settings.paths.main_settings != before) {
    OpenSessionSettings(plugin);
  }
  ReloadSchemes(plugin);
  if (!plugin.schemes.coloring.Active()) LoadDefaultColoring(plugin, report);
  if (!plugin.schemes.validation.Active()) LoadDefaultValidation(plugin);
  if (report) plugin.messenger.Alert("QELM_MSG_GEN_25");
  return read;
}

}  // namespace qelm
