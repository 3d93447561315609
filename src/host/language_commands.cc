#include "host/language_commands.h"

#include <optional>
#include <vector>

#include "common/result_codes.h"
#include "common/text.h"
#include "config/language_files.h"
#include "host/dialog_events.h"
#include "host/text_editor.h"
#include "messages/dialog.h"
#include "messages/drop_down.h"

namespace qelm {
namespace {

using config::LanguageOutcome;
using config::LanguagePlace;
using config::LanguageResult;

constexpr char kLanguageSet[] = "QELM_MSG_LANG_1";
constexpr char kCannotBeUsed[] = "QELM_MSG_LANG_2";

template <typename... Arguments>
void Alert(messages::Messenger& messenger, const char* id, const Arguments&... arguments) {
  messenger.AlertFormatted(id, messenger.Format(id, arguments...));
}

// Tells why nothing was done.
std::int32_t ReportFailure(messages::Messenger& messenger, std::string_view name,
                           const LanguageOutcome& outcome) {
  switch (outcome.result) {
    case LanguageResult::kDone:
      break;
    case LanguageResult::kBadName:
      Alert(messenger, "QELM_MSG_LANG_3", std::string(name));
      break;
    case LanguageResult::kExists:
      Alert(messenger, "QELM_MSG_LANG_4", outcome.path);
      break;
    case LanguageResult::kNotThere:
      Alert(messenger, "QELM_MSG_LANG_5", std::string(name));
      break;
    case LanguageResult::kDamaged:
      Alert(messenger, "QELM_MSG_LANG_6", outcome.problem);
      break;
    case LanguageResult::kUnwritten:
      Alert(messenger, "QELM_MSG_LANG_7", outcome.path);
      break;
  }
  return 0;
}

std::int32_t ReportMissing(messages::Messenger& messenger, std::string_view name) {
  LanguageOutcome outcome;
  outcome.result = LanguageResult::kNotThere;
  return ReportFailure(messenger, name, outcome);
}

// Lets the user write the name of a new language.
std::optional<std::string> AskName(messages::Messenger& messenger) {
  enum Item : std::int32_t { kText, kAccept, kClose, kItemCount };
  messages::Dialog dialog(messenger, "bw_Dialog_ItemEntry", kItemCount);
  if (!dialog.Opened()) {
    dialog.ReportMissing();
    return std::nullopt;
  }
  dialog.SetTitle(messenger.Translated(messages::kDialogStrings, "Create Language File"));
  dialog.SetLabel(kText, messenger.Translated(messages::kDialogStrings, "English name of the language"));
  dialog.SetLabel(kAccept, messenger.Translated(messages::kDialogStrings, "Create"));
  if (dialog.Run(kItemEntryNumber) != kAccept) return std::nullopt;
  return std::string(common::Trim(dialog.Text(kText)));
}

}  // namespace

std::int32_t SetLanguage(Plugin& plugin) {
  messages::Messenger& messenger = plugin.messenger;
  std::vector<std::string> names;
  std::int32_t current = -1;
  for (const LanguagePlace& place : config::InstalledLanguages(plugin.host.platform, plugin.settings.paths)) {
    if (place.name == messenger.LanguageName()) current = static_cast<std::int32_t>(names.size());
    names.push_back(place.name);
  }
  if (names.empty()) return ReportMissing(messenger, config::kEnglish);
  const std::string title = messenger.Translated(messages::kDialogStrings, "Set Language");
  const std::int32_t chosen = messages::ChooseEntry(messenger, title, names, current);
  return chosen < 0 ? 0 : UseLanguage(plugin, names[static_cast<std::size_t>(chosen)]);
}

std::int32_t CreateLanguageFile(Plugin& plugin) {
  const std::optional<std::string> name = AskName(plugin.messenger);
  return name ? CreateLanguageNamed(plugin, *name) : 0;
}

std::int32_t UseLanguage(Plugin& plugin, std::string_view name) {
  messages::Messenger& messenger = plugin.messenger;
  const LanguagePlace place = config::FindLanguage(plugin.host.platform, plugin.settings.paths, name);
  const std::string before = messenger.LanguageName();
  if (place.folder.empty()) {
    return ReportMissing(messenger, name);
  }
  if (!messenger.LoadLanguage(place.folder, name)) {
    Alert(messenger, kCannotBeUsed, place.name, messenger.LanguageProblemText(), before);
    return 0;
  }
  Alert(messenger, kLanguageSet, place.name);
  return common::kDone;
}

std::int32_t CreateLanguageNamed(Plugin& plugin, std::string_view name) {
  const LanguageOutcome outcome = config::CreateLanguage(plugin.host.platform, plugin.settings.paths, name);
  if (outcome.result != LanguageResult::kDone) return ReportFailure(plugin.messenger, name, outcome);
  Alert(plugin.messenger, "QELM_MSG_LANG_8", outcome.path, outcome.added);
  return common::kDone;
}

std::int32_t UpdateLanguageFile(Plugin& plugin) {
  messages::Messenger& messenger = plugin.messenger;
  const std::string name = messenger.LanguageName();
  const LanguageOutcome outcome = config::UpdateLanguage(plugin.host.platform, plugin.settings.paths, name);
  if (outcome.result != LanguageResult::kDone) return ReportFailure(messenger, name, outcome);
  const LanguagePlace place = config::FindLanguage(plugin.host.platform, plugin.settings.paths, name);
  messenger.LoadLanguage(place.folder, name);
  if (outcome.added + outcome.revived == 0) {
    Alert(messenger, "QELM_MSG_LANG_10", outcome.path);
  } else {
    Alert(messenger, "QELM_MSG_LANG_9", outcome.path, outcome.added, outcome.revived);
  }
  return common::kDone;
}

std::int32_t OpenLanguageFiles(Plugin& plugin) {
  messages::Messenger& messenger = plugin.messenger;
  const LanguagePlace english{std::string(config::kEnglish), config::ShippedLanguages(plugin.settings.paths)};
  std::vector<std::string> paths;
  if (plugin.host.platform.FileExists(english.Path())) paths.push_back(english.Path());
  if (messenger.LanguageActive() && messenger.LanguageFile() != english.Path()) {
    paths.push_back(messenger.LanguageFile());
  }
  if (paths.empty()) return ReportMissing(messenger, config::kEnglish);
  for (const std::string& path : paths) {
    if (!OpenInTextEditor(plugin, path, "QELM_MSG_GEN_24")) return 0;
  }
  return common::kDone;
}

}  // namespace qelm
