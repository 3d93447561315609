#include "config/language_files.h"

#include <fmt/format.h>

#include <algorithm>

#include "common/language_codes.h"
#include "common/paths.h"
#include "common/text.h"
#include "common/utf8.h"
#include "messages/language_update.h"

namespace qelm::config {
namespace {

using messages::LanguageFile;

constexpr std::string_view kEnding = ".po";
constexpr std::size_t kLongestName = 64;

// The names of the language files in a folder, without their ending.
std::vector<std::string> NamesIn(host::Platform& platform, const std::string& folder) {
  std::vector<std::string> names;
  for (const std::string& name : platform.FolderNames(folder)) {
    if (name.size() > kEnding.size() && name.ends_with(kEnding) && name.front() != '.') {
      names.push_back(name.substr(0, name.size() - kEnding.size()));
    }
  }
  return names;
}

bool ReadLanguage(host::Platform& platform, const std::string& path, LanguageFile* file,
                  LanguageOutcome* outcome) {
  outcome->path = path;
  outcome->result = LanguageResult::kDamaged;
  const std::optional<std::string> content = platform.ReadFile(path);
  messages::LanguageProblem problem;
  if (!content) {
    outcome->problem = path + ": cannot be read";
  } else if (!common::IsWellFormed(*content)) {
    outcome->problem = path + ": is not UTF-8; save it as UTF-8 and try again";
  } else if (!file->Read(*content, &problem)) {
    outcome->problem = fmt::format("{}:{}: {}", path, problem.line, problem.text);
  } else {
    outcome->result = LanguageResult::kDone;
  }
  return outcome->result == LanguageResult::kDone;
}

// Reads the shipped English file, and the file of a language.
bool ReadBoth(host::Platform& platform, const SettingsPaths& paths, std::string_view name,
              LanguageFile* english, LanguageFile* file, LanguageOutcome* outcome) {
  const LanguagePlace place = FindLanguage(platform, paths, name);
  outcome->result = LanguageResult::kNotThere;
  if (place.folder.empty()) return false;
  const LanguagePlace reference{std::string(kEnglish), ShippedLanguages(paths)};
  return ReadLanguage(platform, reference.Path(), english, outcome) &&
         ReadLanguage(platform, place.Path(), file, outcome);
}

void WriteLanguage(host::Platform& platform, const SettingsPaths& paths, std::string_view name,
                   const LanguageFile& file, LanguageOutcome* outcome) {
  const LanguagePlace place{std::string(name), OwnLanguages(paths)};
  outcome->path = place.Path();
  const bool written = platform.MakeFolder(place.folder) && platform.ReplaceFile(place.Path(), file.Write());
  outcome->result = written ? LanguageResult::kDone : LanguageResult::kUnwritten;
}

}  // namespace

std::string LanguagePlace::Path() const { return common::JoinPath(folder, name + std::string(kEnding)); }

std::string ShippedLanguages(const SettingsPaths& paths) {
  return common::JoinPath(paths.plugin_folder, "languages");
}

std::string OwnLanguages(const SettingsPaths& paths) {
  const bool own = paths.per_user && !paths.settings_folder.empty();
  return own ? common::JoinPath(paths.settings_folder, "languages") : ShippedLanguages(paths);
}

bool IsLanguageName(std::string_view name) {
  const bool plain = std::none_of(name.begin(), name.end(), [](char byte) {
    const auto code = static_cast<unsigned char>(byte);
    return code < ' ' || code == 0x7F || std::string_view("<>:\"/\\|?*").find(byte) != std::string_view::npos;
  });
  return plain && !name.empty() && name.size() <= kLongestName && common::IsWellFormed(name) &&
         name.front() != '.' && name.back() != '.' && common::Trim(name) == name;
}

std::vector<LanguagePlace> InstalledLanguages(host::Platform& platform, const SettingsPaths& paths) {
  std::vector<LanguagePlace> places;
  const std::string shipped = ShippedLanguages(paths);
  const std::string own = OwnLanguages(paths);
  if (own != shipped) {
    for (std::string& name : NamesIn(platform, own)) places.push_back({std::move(name), own, true});
  }
  for (std::string& name : NamesIn(platform, shipped)) places.push_back({std::move(name), shipped, false});
  const auto by_name = [](const LanguagePlace& left, const LanguagePlace& right) {
    return left.name < right.name;
  };
  // Of two files for one language the user's stays: it was there first.
  std::stable_sort(places.begin(), places.end(), by_name);
  const auto same = [](const LanguagePlace& left, const LanguagePlace& right) {
    return left.name == right.name;
  };
  places.erase(std::unique(places.begin(), places.end(), same), places.end());
  return places;
}

LanguagePlace FindLanguage(host::Platform& platform, const SettingsPaths& paths, std::string_view name) {
  if (!IsLanguageName(name)) return {};
  const std::string shipped = ShippedLanguages(paths);
  for (const std::string& folder : {OwnLanguages(paths), shipped}) {
    LanguagePlace place{std::string(name), folder, folder != shipped};
    if (platform.FileExists(place.Path())) return place;
  }
  return {};
}

LanguageOutcome CreateLanguage(host::Platform& platform, const SettingsPaths& paths, std::string_view name) {
  LanguageOutcome outcome;
  if (!IsLanguageName(name)) {
    outcome.result = LanguageResult::kBadName;
    return outcome;
  }
  for (const LanguagePlace& place : InstalledLanguages(platform, paths)) {
    if (common::FoldCase(place.name) != common::FoldCase(name)) continue;
    outcome.result = LanguageResult::kExists;
    outcome.path = place.Path();
    return outcome;
  }
  LanguageFile english;
  const LanguagePlace reference{std::string(kEnglish), ShippedLanguages(paths)};
  if (!ReadLanguage(platform, reference.Path(), &english, &outcome)) return outcome;
  const host::LocalTime now = platform.Now();
  const std::string date =
      fmt::format("{:04}-{:02}-{:02} {:02}:{:02}", now.year, now.month, now.day, now.hour, now.minute);
  const LanguageFile file =
      messages::MakeLanguageFile(english, {std::string(name), common::LanguageCode(name), date});
  WriteLanguage(platform, paths, name, file, &outcome);
  for (const messages::LanguageEntry& entry : file.Entries()) outcome.added += entry.id.empty() ? 0U : 1U;
  return outcome;
}

LanguageOutcome UpdateLanguage(host::Platform& platform, const SettingsPaths& paths, std::string_view name) {
  LanguageOutcome outcome;
  LanguageFile english;
  LanguageFile file;
  if (!ReadBoth(platform, paths, name, &english, &file, &outcome)) return outcome;
  const messages::UpdateCounts counts = messages::AddMissingEntries(english, &file);
  outcome.added = counts.added;
  outcome.revived = counts.revived;
  if (counts.added + counts.revived > 0) WriteLanguage(platform, paths, name, file, &outcome);
  return outcome;
}

LanguageOutcome CheckLanguage(host::Platform& platform, const SettingsPaths& paths, std::string_view name,
                              std::vector<messages::LanguageFinding>* findings) {
  LanguageOutcome outcome;
  LanguageFile english;
  LanguageFile file;
  if (ReadBoth(platform, paths, name, &english, &file, &outcome)) {
    *findings = messages::CheckLanguage(english, file);
  }
  return outcome;
}

}  // namespace qelm::config
