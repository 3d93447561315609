#include "host/plugin.h"

#include <exception>

#include "config/read_settings.h"
#include "config/settings_paths.h"
#include "config/startup_language.h"
#include "host/menus.h"
#include "host/notifications.h"
#include "schemes/main_settings.h"

namespace qelm {
namespace {

// Limits until the local settings are known: the longest expression, and the engine's default elsewhere.
constexpr std::int32_t kProvisionalExpressionLength = 1000;
constexpr std::int32_t kDefault = 0;

void ShowStage(host::UserInterface& user, const char* stage) {
  user.ShowStatus({"Initializing the QELM plugin...", stage, "Please wait...", ""});
}

// The name of a main settings document as the local settings take it: some words there stand for the local
// copy, and a file that happens to begin with one of them must still be found.
std::string AsSettingsPath(const std::string& path) {
  return path.find('/') == std::string::npos ? "./" + path : path;
}

}  // namespace

Plugin::Plugin(host::Host& host_roles)
    : host(host_roles), messenger(host.user, host.platform), engine(host, messenger) {}

bool Plugin::Initialize(const StartOptions& options) {
  bool ready = false;
  try {
    ready = Start(options);
  } catch (const std::exception& problem) {
    messenger.Alert(std::string("QELM cannot initialize.\n\n") + problem.what());
  }
  host.user.HideStatus();
  return ready;
}

bool Plugin::Start(const StartOptions& options) {
  ShowStage(host.user, "Initializing variables");
  settings.paths = config::FindSettingsPaths(host.session, host.platform);
  if (!options.local_settings_path.empty()) settings.paths.local_settings = options.local_settings_path;
  settings.overrides = options.settings;
  const bool named = !options.main_settings_path.empty();
  // The last one of a key counts, and what is named for this run stands above all others.
  if (named)
    settings.overrides.emplace_back("MAIN_SETTINGS_PATH", AsSettingsPath(options.main_settings_path));
  xpath::bw_XPathEngineInit(engine, kDefault, kProvisionalExpressionLength, kDefault);

  ShowStage(host.user, "Retrieving local settings");
  const auto check = schemes::CheckMainSettingsFile(host, engine, messenger, true);
  config::ReadLocalSettings(messenger, host.platform, true, check, &settings);
  xpath::bw_XPathEngineInit(engine, kDefault, settings.xpath_expression_max_length,
                            settings.xpath_max_matches);
  config::LoadStartupLanguage(host.session, messenger, settings);

  ShowStage(host.user, "Retrieving main settings");
  if (settings.paths.main_settings.empty() && named) return false;
  // Where the one that was named is not to be had, the local copy would stand in for it without a word.
  if (named && settings.paths.main_settings != settings.main_settings_path) return false;
  if (!settings.paths.main_settings.empty())
    main_settings = schemes::OpenMainSettings(host, engine, messenger, settings.paths.main_settings, true);
  if (named && main_settings == host::kNone) return false;

  ShowStage(host.user, "Creating menu paths");
  RegisterNotifications(*this);
  DefineMenus(*this);
  return true;
}

}  // namespace qelm
