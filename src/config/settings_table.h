// All local settings as one table, in their documented order: key, kind, default, bounds, field and meaning.
// Reading, printing, the template, the manual and the command line all go by it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "config/local_settings.h"

namespace qelm::config {

inline constexpr std::string_view kMainSettingsKey = "MAIN_SETTINGS_PATH";

enum class SettingKind : std::uint8_t {
  kBoolean,
  kFlag,  // a boolean with a number behind it: 0, 1, and up to its maximum
  kInteger,
  kReal,
  kString,
  kPath,    // a string whose separators are made the platform's
  kScheme,  // a name that is taken only while the session has none
  kList,
  kPathList,
};

using SettingField =
    std::variant<bool LocalSettings::*, std::int32_t LocalSettings::*, double LocalSettings::*,
                 std::string LocalSettings::*, std::vector<std::string> LocalSettings::*>;

struct Setting {
  std::string_view key;
  SettingKind kind;
  SettingField field;
  std::string_view default_text;  // as it would be written in the file
  std::int32_t minimum = 0;       // integers and flags
  std::int32_t maximum = 0;
  std::string_view meaning;  // one line for people
  char separator = '=';
};

std::span<const Setting> AllSettings();

// The setting with exactly that key, null when there is none.
const Setting* FindSetting(std::string_view key);

// The kind in a word for people: "yes/no", "number 0 to 200", "text", "list" and so on.
std::string KindText(const Setting& setting);

// The value as it would be written in the file; the items of a list, one each.
std::vector<std::string> ValueTexts(const Setting& setting, const LocalSettings& settings);

// Gives the setting a value by the rules of the file: a text that is empty or that does not say anything of
// its kind gives the default. For lists the one item, added.
void SetValue(const Setting& setting, std::string_view text, LocalSettings* settings);

// Gives the setting its default; a list is emptied.
void SetDefault(const Setting& setting, LocalSettings* settings);

}  // namespace qelm::config
