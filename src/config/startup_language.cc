#include "config/startup_language.h"

#include "config/language_files.h"

namespace qelm::config {
namespace {

constexpr std::string_view kHostLanguage = "DEFAULT";

constexpr char kFallbackText[] =
    "The language \"%s\", which STARTUP_LANGUAGE in the local settings asks for, cannot be used:\n\n%s\n\n%s";
constexpr char kNotThere[] = "There is no language file of this name. The languages are: %s.";
constexpr std::string_view kEnglishInstead = "English is used instead.";
constexpr std::string_view kShippedInstead = "The English file of the plug-in's folder is used instead.";
constexpr std::string_view kNothingInstead =
    "There is no language file for English either: messages cannot be shown.";

std::string NotThere(host::Platform& platform, const SettingsPaths& paths) {
  std::string names;
  for (const LanguagePlace& place : InstalledLanguages(platform, paths)) {
    if (!names.empty()) names += ", ";
    names += place.name;
  }
  return messages::Messenger::FormatText(kNotThere, names.empty() ? std::string(kNoName) : names);
}

}  // namespace

bool LoadStartupLanguage(host::Session& session, messages::Messenger& messenger,
                         const LocalSettings& settings) {
  std::string name = settings.startup_language;
  if (name == kHostLanguage) name = session.InterfaceLanguage();
  const LanguagePlace place = FindLanguage(messenger.Platform(), settings.paths, name);
  const bool found = !place.folder.empty();
  if (found && messenger.LoadLanguage(place.folder, name)) return true;
  const std::string problem =
      found ? messenger.LanguageProblemText() : NotThere(messenger.Platform(), settings.paths);
  const bool english = messenger.LoadLanguage(ShippedLanguages(settings.paths), kEnglish);
  std::string_view instead = kNothingInstead;
  if (english) instead = name == kEnglish ? kShippedInstead : kEnglishInstead;
  messenger.Alert(messages::Messenger::FormatText(kFallbackText, name, problem, std::string(instead)));
  return english;
}

}  // namespace qelm::config
