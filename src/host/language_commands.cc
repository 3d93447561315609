#include "host/language_commands.h"

#include <algorithm>
#include <vector>

#include "config/language_files.h"

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

// Tells why nothing was written.
void ReportFailure(messages::Messenger& messenger, std::string_view name, const LanguageOutcome& outcome) {
  switch (outcome.result) {
    case LanguageResult::kDone:
      return;
    case LanguageResult::kBadName:
      return Alert(messenger, "QELM_MSG_LANG_3", std::string(name));
    case LanguageResult::kExists:
      return Alert(messenger, "QELM_MSG_LANG_4", outcome.path);
    case LanguageResult::kNotThere:
      return Alert(messenger, "QELM_MSG_LANG_5", std::string(name));
    case LanguageResult::kDamaged:
      return Alert(messenger, "QELM_MSG_LANG_6", outcome.problem);
    case LanguageResult::kUnwritten:
      return Alert(messenger, "QELM_MSG_LANG_7", outcome.path);
  }
}

}  // namespace

bool UseLanguage(Plugin& plugin, std::string_view name) {
  messages::Messenger& messenger = plugin.messenger;
  const LanguagePlace place = config::FindLanguage(plugin.host.platform, plugin.settings.paths, name);
  const std::string before = messenger.LanguageName();
  if (place.folder.empty()) {
    ReportFailure(messenger, name, {.result = LanguageResult::kNotThere});
    return false;
  }
  if (!messenger.LoadLanguage(place.folder, name)) {
    Alert(messenger, kCannotBeUsed, place.name, messenger.LanguageProblemText(), before);
    return false;
  }
  Alert(messenger, kLanguageSet, place.name);
  return true;
}

void CreateLanguageFile(Plugin& plugin, std::string_view name) {
  const LanguageOutcome outcome = config::CreateLanguage(plugin.host.platform, plugin.settings.paths, name);
  if (outcome.result != LanguageResult::kDone) return ReportFailure(plugin.messenger, name, outcome);
  Alert(plugin.messenger, "QELM_MSG_LANG_8", outcome.path, outcome.added);
}

void UpdateLanguageFile(Plugin& plugin) {
  messages::Messenger& messenger = plugin.messenger;
  const std::string name = messenger.LanguageName();
  const LanguageOutcome outcome = config::UpdateLanguage(plugin.host.platform, plugin.settings.paths, name);
  if (outcome.result != LanguageResult::kDone) return ReportFailure(messenger, name, outcome);
  const LanguagePlace place = config::FindLanguage(plugin.host.platform, plugin.settings.paths, name);
  messenger.LoadLanguage(place.folder, name);
  if (outcome.added + outcome.revived == 0) return Alert(messenger, "QELM_MSG_LANG_10", outcome.path);
  Alert(messenger, "QELM_MSG_LANG_9", outcome.path, outcome.added, outcome.revived);
}

void OpenLanguageFiles(Plugin& plugin) {
  messages::Messenger& messenger = plugin.messenger;
  const LanguagePlace english{std::string(config::kEnglish), config::ShippedLanguages(plugin.settings.paths)};
  std::vector<std::string> paths = {english.Path()};
  if (messenger.LanguageActive() && messenger.LanguageFile() != paths.front()) {
    paths.push_back(messenger.LanguageFile());
  }
  for (const std::string& path : paths) {
    if (plugin.host.platform.Start(plugin.settings.notepad_exe_path, {path})) continue;
    return messenger.Alert("QELM_MSG_GEN_24");
  }
}

}  // namespace qelm
