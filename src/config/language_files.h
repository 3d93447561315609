// Where language files lie, and what can be done with them: listing, making, completing and checking them.
//
// The files that are shipped lie in the folder "languages" of the plug-in. In per-user mode the user may have
// files of the same names in the folder "languages" of the settings folder: they stand before the shipped
// ones, and everything that is made or completed is written there, so that the plug-in's folder may be
// read-only. In install-folder mode both are the same folder. What all others are completed from and checked
// against is the English file that is shipped.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "config/local_settings.h"
#include "host/interface/platform.h"
#include "messages/language_check.h"

namespace qelm::config {

inline constexpr std::string_view kEnglish = "English";

struct LanguagePlace {
  std::string name;
  std::string folder;
  bool own = false;  // in the user's folder
  std::string Path() const;
};

// The folder of the shipped language files, and the one in which the plug-in writes them.
std::string ShippedLanguages(const SettingsPaths& paths);
std::string OwnLanguages(const SettingsPaths& paths);

// Whether this can be the name of a language: a file's name on every platform, without a folder.
bool IsLanguageName(std::string_view name);

// The languages that there are, by name.
std::vector<LanguagePlace> InstalledLanguages(host::Platform& platform, const SettingsPaths& paths);

// The file of a language; one with an empty folder when there is none.
LanguagePlace FindLanguage(host::Platform& platform, const SettingsPaths& paths, std::string_view name);

enum class LanguageResult {
  kDone,
  kBadName,    // no name of a language
  kExists,     // there is one of that name: `path`
  kNotThere,   // there is none of that name
  kDamaged,    // `path` cannot be used: `problem`
  kUnwritten,  // `path` cannot be written
};

// What making or completing a language came to.
struct LanguageOutcome {
  LanguageResult result = LanguageResult::kDone;
  std::string path;         // the file that was meant
  std::string problem;      // with file and line
  std::size_t added = 0;    // texts that are to be translated
  std::size_t revived = 0;  // translations that had been commented out
};

// Makes a language file with the English texts. A file that exists is left alone, whatever the case of its
// letters.
LanguageOutcome CreateLanguage(host::Platform& platform, const SettingsPaths& paths, std::string_view name);

// Adds what a language lacks. A complete file is not written.
LanguageOutcome UpdateLanguage(host::Platform& platform, const SettingsPaths& paths, std::string_view name);

// Compares a language with English. `findings` is filled only when both files can be read.
LanguageOutcome CheckLanguage(host::Platform& platform, const SettingsPaths& paths, std::string_view name,
                              std::vector<messages::LanguageFinding>* findings);

}  // namespace qelm::config
