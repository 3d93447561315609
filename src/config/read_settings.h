// Reading the local settings file.
//
// Lines that begin with ";" or "----------" are comments. A setting is a line that begins with its key;
// behind the first separator stands the value. The first line that begins with a key is the one that counts,
// also when it holds a longer key, so that the order of the lines decides. What the command line gave stands
// before the file.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "config/local_settings.h"
#include "host/interface/platform.h"
#include "messages/debug_log.h"
#include "messages/messenger.h"

namespace qelm::config {

// Whether the file at a path, which exists, is a main settings document.
using MainSettingsCheck = std::function<bool(const std::string& path)>;

// Reads the file at settings->paths.local_settings into `settings`, settles the main settings path, tells the
// messenger what it has to know of the settings, and opens the debug log as they ask for it. Names of active
// schemes and categories that the session has chosen stay. False, after an alert when `report` is set and
// with every value at its default, when the file is missing or unreadable or has fewer than two lines.
bool ReadLocalSettings(messages::Messenger& messenger, host::Platform& platform,
                       messages::DebugLog& debug_log, bool report, const MainSettingsCheck& is_main_settings,
                       LocalSettings* settings);

// Reads settings from the text of a file: all of the above but the main settings path and the messenger.
void ReadSettingsText(std::string_view text, LocalSettings* settings);

// Settles which main settings document is in force after MAIN_SETTINGS_PATH was read: the one it names if
// that is one, else the local copy if it is there, else the one before, after an alert when `report` is set.
void ResolveMainSettings(messages::Messenger& messenger, host::Platform& platform, bool report,
                         const MainSettingsCheck& is_main_settings, LocalSettings* settings);

// The path that the value of a setting of that key means. In the file, a relative path is seen from the
// file's folder; on the command line, from where the user is.
std::string PathOfSetting(const LocalSettings& settings, std::string_view key, const std::string& value);

// Splits "KEY=VALUE" into `result`. False, with `error` saying what is wrong and which key may have been
// meant, when there is no "=" or no such key.
bool ParseOverride(std::string_view text, SettingOverride* result, std::string* error);

}  // namespace qelm::config
