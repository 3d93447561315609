#include "host/settings_commands.h"

#include "host/main_settings_location.h"
#include "host/plugin.h"
#include "host/start_up.h"
#include "host/text_editor.h"

namespace qelm {
namespace {

// The element of the main settings document in which a part stands.
std::string_view PlaceOf(MainSettingsPart part) {
  switch (part) {
    case MainSettingsPart::kClassicSchemes:
      return "SchemeCategories";
    case MainSettingsPart::kXPathSchemes:
      return "SchemeCategories_XPath";
    case MainSettingsPart::kAttributeLibrary:
      return "AttributeList";
    case MainSettingsPart::kColorList:
      return "ColorList";
  }
  return {};
}

host::Id OpenForEditing(Plugin& plugin, const std::string& path, bool fallback) {
  if (path.empty()) return host::kNone;
  host::OpenOptions options;
  options.suppress_alerts = plugin.settings.suppress_file_opening_alerts;
  options.fallback = fallback;
  host::OpenStatus status = host::OpenStatus::kOpened;
  return plugin.host.documents.Open(path, options, &status);
}

bool AskToOpen(Plugin& plugin, const char* id, const std::string& path) {
  return plugin.messenger.AskFormatted(id, plugin.messenger.Format(id, path));
}

}  // namespace

std::int32_t ReadLocalSettingsOnCommand(Plugin& plugin) {
  ReadLocalSettingsAgain(plugin, /*report=*/true);
  return common::kDone;
}

std::int32_t OpenLocalSettings(Plugin& plugin) {
  const std::string& path = plugin.settings.paths.local_settings;
  plugin.messenger.AlertFormatted("QELM_MSG_GEN_23", plugin.messenger.Format("QELM_MSG_GEN_23", path));
  return OpenInTextEditor(plugin, path, "QELM_MSG_GEN_24") ? common::kDone : 0;
}

std::int32_t OpenMasterCopy(Plugin& plugin) {
  const std::string path = plugin.settings.paths.main_settings;
  if (!AskToOpen(plugin, "QELM_MSG_STGS_EDIT_33", path)) return 0;
  if (OpenForEditing(plugin, path, /*fallback=*/false) != host::kNone) return common::kDone;
  if (OpenForEditing(plugin, path, /*fallback=*/true) != host::kNone) {
    plugin.messenger.AlertFormatted("QELM_MSG_GEN_34", plugin.messenger.Format("QELM_MSG_GEN_34", path));
    return common::kDone;
  }
  plugin.messenger.Alert("QELM_MSG_STGS_EDIT_35");
  return 0;
}

std::int32_t OpenLocalCopy(Plugin& plugin) {
  const std::string path = plugin.settings.paths.local_copy;
  if (!AskToOpen(plugin, "QELM_MSG_STGS_EDIT_34", path)) return 0;
  if (OpenForEditing(plugin, path, /*fallback=*/false) != host::kNone) return common::kDone;
  plugin.messenger.Alert("QELM_MSG_STGS_EDIT_35");
  return 0;
}

std::int32_t EditMainSettings(Plugin& plugin, MainSettingsPart part) {
  const bool edited = plugin.main_settings != host::kNone &&
                      plugin.host.documents.Switch(plugin.main_settings, host::DocumentSwitch::kOnScreen);
  const std::string path = plugin.settings.paths.main_settings;
  if (OpenForEditing(plugin, path, /*fallback=*/false) == host::kNone) {
    plugin.messenger.Alert("QELM_MSG_STGS_EDIT_35");
    return 0;
  }
  messages::Messenger& messenger = plugin.messenger;
  const std::string place(PlaceOf(part));
  if (edited) {
    messenger.AlertFormatted("QELM_MSG_STGS_EDIT_37", messenger.Format("QELM_MSG_STGS_EDIT_37", path, place));
  } else {
    messenger.AlertFormatted("QELM_MSG_STGS_EDIT_36", messenger.Format("QELM_MSG_STGS_EDIT_36", path, place));
  }
  return common::kDone;
}

std::int32_t ChooseMainSettings(Plugin& plugin) {
  SetMainSettingsLocation(plugin);
  return common::kDone;
}

}  // namespace qelm
