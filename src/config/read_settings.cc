#include "config/read_settings.h"

#include <algorithm>
#include <optional>
#include <span>

#include "common/nearest.h"
#include "common/paths.h"
#include "common/text.h"
#include "common/utf8.h"
#include "config/settings_paths.h"
#include "config/settings_table.h"

namespace qelm::config {
namespace {

constexpr std::string_view kSeparatorLine = "----------";
constexpr char kDebugFolderKey[] = "QELM_DEBUG_LOG_FOLDER";
constexpr char kDebugNameKey[] = "QELM_DEBUG_LOG_FILENAME";
constexpr std::int32_t kDebugLogLimit = 10;
constexpr double kInch = 4718592.0;
constexpr double kCentimetre = 1857713.0;

// Shown while there is no language file to take the message from.
constexpr char kBadFileText[] =
    "The settings file at:\n\n%s\n\n...appears to be invalid, or perhaps the file is empty. QELM will work "
    "with "
    "its default settings. Please check the file, or replace it by the one that is in the plug-in's folder.";
constexpr char kNoLocalCopyText[] =
    "A local copy of the main settings file at the following path could not be located:\n\n%s\n\n...QELM "
    "will "
    "certainly malfunction without one, as all schemes are kept in it. Please copy "
    "QELM_MainSettings_LocalCopy.fm from the plug-in's folder to that place, or name another main settings "
    "file "
    "by MAIN_SETTINGS_PATH in the local settings file.";

// A file with more lines than this that no key takes is not a settings file, and need not be gone through.
constexpr std::size_t kMostNotices = 100;

struct Line {
  std::size_t number;
  std::string_view text;
  bool taken = false;
};

std::vector<Line> SettingLines(std::string_view text) {
  std::vector<Line> lines;
  std::size_t number = 0;
  for (const std::string_view line : common::SplitLines(text)) {
    ++number;
    if (!line.starts_with(';') && !line.starts_with(kSeparatorLine)) lines.push_back({number, line});
  }
  return lines;
}

std::string_view ValueOf(std::string_view line, char separator) {
  const std::size_t at = line.find(separator);
  return at == line.npos ? std::string_view() : common::Trim(line.substr(at + 1));
}

// What is given for one setting: the values, of which only a list has more than one, and where they stand.
struct Given {
  std::vector<std::string_view> values;
  SettingOrigin origin;
};

Given FromCommandLine(const Setting& setting, const std::vector<SettingOverride>& overrides) {
  Given given;
  for (const auto& [key, value] : overrides) {
    if (key == setting.key) given.values.push_back(common::Trim(value));
  }
  // The last one of several wins, as with any option.
  if (setting.kind != SettingKind::kList && setting.kind != SettingKind::kPathList &&
      given.values.size() > 1) {
    given.values.erase(given.values.begin(), given.values.end() - 1);
  }
  if (!given.values.empty()) given.origin.source = SettingSource::kCommandLine;
  return given;
}

Given FromFile(const Setting& setting, std::vector<Line>& lines) {
  const bool list = setting.kind == SettingKind::kList || setting.kind == SettingKind::kPathList;
  Given given;
  for (Line& line : lines) {
    if (!line.text.starts_with(setting.key)) continue;
    line.taken = true;
    const std::string_view value = ValueOf(line.text, setting.separator);
    if (!value.empty() && given.values.empty()) given.origin = {SettingSource::kFile, line.number};
    if (!value.empty()) given.values.push_back(value);
    if (!list) break;
  }
  return given;
}

// A scheme that is active is not taken away by reading the settings again.
bool KeepsSessionValue(const Setting& setting, const LocalSettings& settings) {
  return setting.kind == SettingKind::kScheme &&
         settings.*std::get<std::string LocalSettings::*>(setting.field) != kNoName;
}

void Take(const Setting& setting, const Given& given, SettingOrigin* origin, LocalSettings* settings) {
  if (KeepsSessionValue(setting, *settings)) {
    if (origin->source == SettingSource::kDefault) origin->source = SettingSource::kSession;
    return;
  }
  SetDefault(setting, settings);
  for (const std::string_view value : given.values) {
    if (!value.empty()) SetValue(setting, value, settings);
  }
  *origin = given.origin;
}

void NoteUnknownLines(const std::vector<Line>& lines, LocalSettings* settings) {
  std::vector<std::string_view> keys;
  for (const Setting& setting : AllSettings()) keys.push_back(setting.key);
  for (const Line& line : lines) {
    if (line.taken || common::Trim(line.text).empty()) continue;
    if (settings->notices.size() == kMostNotices) break;
    const std::string_view key = common::Trim(line.text.substr(0, line.text.find_first_of("=~")));
    const bool known = std::find(keys.begin(), keys.end(), key) != keys.end();
    const std::string_view nearest = common::Nearest(key, keys);
    std::string text = "\"" + common::Bounded(key, common::kNameLimit) + "\" ";
    if (known && key.data() == line.text.data()) {
      text += "was set before; this line has no effect";
    } else if (known) {
      text += "must stand at the beginning of its line";
    } else {
      text += "is not a setting";
      if (!nearest.empty()) text.append("; did you mean ").append(nearest).append("?");
    }
    settings->notices.push_back({line.number, std::move(text)});
  }
}

void Reset(const char* key, std::span<const Setting> all, LocalSettings* settings) {
  const Setting* setting = FindSetting(key);
  SetDefault(*setting, settings);
  settings->origins[static_cast<std::size_t>(setting - all.data())] = {};
}

void TakeCategory(const std::string& category, std::string* session_value) {
  if (*session_value == kNoName) *session_value = category;
}

void SetPageSize(LocalSettings* settings) {
  const auto set = [settings](double width, double height, double unit) {
    // Larger than any paper, and still a number of 32 bits.
    constexpr double kMost = 2147483647.0;
    settings->pdf_page_width = static_cast<std::int32_t>(std::clamp(width * unit, 0.0, kMost));
    settings->pdf_page_height = static_cast<std::int32_t>(std::clamp(height * unit, 0.0, kMost));
  };
  if (settings->bf_post_process_pdf_page_width_in > 0) {
    set(settings->bf_post_process_pdf_page_width_in, settings->bf_post_process_pdf_page_height_in, kInch);
  } else if (settings->bf_post_process_pdf_page_width_cm > 0) {
    set(settings->bf_post_process_pdf_page_width_cm, settings->bf_post_process_pdf_page_height_cm,
        kCentimetre);
  } else {
    set(0, 0, 0);
  }
}

// The values that follow from others.
void Derive(LocalSettings* settings) {
  TakeCategory(settings->default_scheme_category, &settings->coloring_category);
  TakeCategory(settings->default_scheme_category, &settings->validation_category);
  TakeCategory(settings->default_scheme_category, &settings->classic_editor_category);
  settings->filter_type = settings->filt_default_filter_type.starts_with('D') ? 3 : 1;
  settings->debug_mode = settings->qelm_debug_mode == "DoPrompts"        ? messages::kDebugPrompts
                         : settings->qelm_debug_mode == "WriteFilterLog" ? messages::kDebugWriteLog
                                                                         : messages::kDebugOff;
  if (settings->debug_mode == messages::kDebugOff) {
    Reset(kDebugFolderKey, AllSettings(), settings);
    Reset(kDebugNameKey, AllSettings(), settings);
  }
  SetPageSize(settings);
}

void Report(messages::Messenger& messenger, const char* id, const char* plain_text, const std::string& path,
            const std::string& plain_path) {
  if (messenger.LanguageActive()) {
    messenger.AlertFormatted(id, messenger.Format(id, path));
  } else {
    messenger.Alert(messages::Messenger::FormatText(plain_text, plain_path));
  }
}

// The path that MAIN_SETTINGS_PATH stands for.
std::string NamedMainSettings(const LocalSettings& settings) {
  const std::string& value = settings.main_settings_path;
  if (value.starts_with("DEFA") || value == kNoName || value == kLocalCopyFile) {
    return settings.paths.local_copy;
  }
  return PathOfSetting(settings, kMainSettingsKey, value);
}

void OpenDebugLog(const LocalSettings& settings, messages::DebugLog& debug_log) {
  std::string folder = settings.qelm_debug_log_folder;
  if (!folder.empty()) folder = PathOfSetting(settings, kDebugFolderKey, folder);
  debug_log.Open({std::string(kProduct), settings.debug_mode, std::move(folder),
                  settings.qelm_debug_log_filename, kDebugLogLimit});
}

}  // namespace

std::string PathOfSetting(const LocalSettings& settings, std::string_view key, const std::string& value) {
  const auto index = static_cast<std::size_t>(FindSetting(key) - AllSettings().data());
  const bool in_file =
      index < settings.origins.size() && settings.origins[index].source == SettingSource::kFile;
  if (!in_file || common::IsAbsolutePath(value) || value.find("://") != value.npos) return value;
  return common::JoinPath(common::FolderOf(settings.paths.local_settings), value);
}

void ReadSettingsText(std::string_view text, LocalSettings* settings) {
  std::vector<Line> lines = SettingLines(text);
  const std::span<const Setting> all = AllSettings();
  settings->origins.resize(all.size());
  settings->notices.clear();
  for (std::size_t index = 0; index < all.size(); ++index) {
    const Given in_file = FromFile(all[index], lines);
    const Given in_command_line = FromCommandLine(all[index], settings->overrides);
    const bool overridden = in_command_line.origin.source == SettingSource::kCommandLine;
    Take(all[index], overridden ? in_command_line : in_file, &settings->origins[index], settings);
  }
  NoteUnknownLines(lines, settings);
  Derive(settings);
}

bool ReadLocalSettings(messages::Messenger& messenger, host::Platform& platform,
                       messages::DebugLog& debug_log, bool report, const MainSettingsCheck& is_main_settings,
                       LocalSettings* settings) {
  const std::optional<std::string> content = platform.ReadFile(settings->paths.local_settings);
  const std::string text = common::DecodeTextFile(content.value_or(""));
  const bool valid = common::SplitLines(text).size() >= 2;
  if (!valid && report) {
    Report(messenger, "QELM_MSG_GEN_4", kBadFileText, settings->paths.local_settings,
           settings->paths.local_settings);
  }
  ReadSettingsText(valid ? text : std::string_view(), settings);
  messenger.SetDebugPrompts(settings->debug_mode == messages::kDebugPrompts);
  OpenDebugLog(*settings, debug_log);
  messenger.SetAlternateAlerts(settings->use_alternate_alerts);
  ResolveMainSettings(messenger, platform, report, is_main_settings, settings);
  return valid;
}

void ResolveMainSettings(messages::Messenger& messenger, host::Platform& platform, bool report,
                         const MainSettingsCheck& is_main_settings, LocalSettings* settings) {
  SettingsPaths& paths = settings->paths;
  std::string named = NamedMainSettings(*settings);
  if (named == paths.main_settings) return;
  if (!is_main_settings(named)) {
    if (!platform.FileExists(paths.local_copy)) {
      if (report) {
        Report(messenger, "QELM_MSG_GEN_8", kNoLocalCopyText, paths.main_settings, paths.local_copy);
      }
      return;
    }
    named = paths.local_copy;
  }
  paths.main_settings = named;
  paths.configured_main_settings = std::move(named);
}

bool ParseOverride(std::string_view text, SettingOverride* result, std::string* error) {
  const std::size_t at = text.find('=');
  const std::string_view key = common::Trim(text.substr(0, at));
  if (FindSetting(key) == nullptr) {
    std::vector<std::string_view> keys;
    for (const Setting& setting : AllSettings()) keys.push_back(setting.key);
    const std::string_view nearest = common::Nearest(key, keys);
    *error = "\"" + common::Bounded(key, common::kNameLimit) + "\" is not a setting";
    if (!nearest.empty()) error->append("; did you mean ").append(nearest).append("?");
    return false;
  }
  if (at == text.npos) {
    *error = std::string(key) + " is given without a value; write " + std::string(key) + "=VALUE";
    return false;
  }
  *result = {std::string(key), std::string(common::Trim(text.substr(at + 1)))};
  return true;
}

}  // namespace qelm::config
