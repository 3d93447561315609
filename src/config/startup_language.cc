#include "config/startup_language.h"

#include "common/paths.h"

namespace qelm::config {
namespace {

constexpr std::string_view kDefaultLanguage = "English";
constexpr std::string_view kHostLanguage = "DEFAULT";

constexpr char kFallbackText[] =
    "The language \"%s\", which STARTUP_LANGUAGE in the local settings asks for, cannot be used:\n\n%s\n\n%s";
constexpr char kEnglishInstead[] = "English is used instead.";
constexpr char kNothingInstead[] = "There is no language file for English either: messages cannot be shown.";

// A language's name is a file's name: one with a separator would name a file somewhere else.
bool IsLanguageName(std::string_view name) {
  return !name.empty() && name.find_first_of("/\\:") == name.npos && name.front() != '.';
}

}  // namespace

std::string LanguageFolder(const LocalSettings& settings) {
  return common::JoinPath(settings.paths.plugin_folder, "languages");
}

bool LoadStartupLanguage(host::Session& session, messages::Messenger& messenger,
                         const LocalSettings& settings) {
  const std::string folder = LanguageFolder(settings);
  std::string name = settings.startup_language;
  if (name == kHostLanguage) name = session.InterfaceLanguage();
  std::string problem = "This is not the name of a language.";
  if (IsLanguageName(name)) {
    if (messenger.LoadLanguage(folder, name)) return true;
    problem = messenger.LanguageProblemText();
  }
  const bool english = messenger.LoadLanguage(folder, kDefaultLanguage);
  messenger.Alert(messages::Messenger::FormatText(kFallbackText, name, problem,
                                                  std::string(english ? kEnglishInstead : kNothingInstead)));
  return english;
}

}  // namespace qelm::config
