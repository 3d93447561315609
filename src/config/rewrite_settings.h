// The one change that the plug-in makes in a user's local settings file: another main settings path.
//
//   MAIN_SETTINGS_PATH=DEFAULT              ;MAIN_SETTINGS_PATH=DEFAULT
//                                     ->    ;MAIN_SETTINGS_PATH=/home/eva/QELM_MainSettings_LocalCopy.fm
//                                           MAIN_SETTINGS_PATH=/team/main.fm
//
// The line that counted becomes a comment, a second comment records the path that was in force, and behind
// them stands the new path, which is thereby the first line with the key. A file without such a line gets the
// two new ones behind its last comment about the key, else at its end. Every other byte stays as it was.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace qelm::config {

// The bytes of the file with the new path. Nothing when they would not say the path when they are read: the
// file's encoding lacks a character of it or is damaged, or the path is one that a line cannot hold.
std::optional<std::string> WithMainSettingsPath(std::string_view bytes, std::string_view previous,
                                                const std::string& path);

}  // namespace qelm::config
