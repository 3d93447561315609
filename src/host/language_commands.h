// The commands for language files: choosing the language of the session, and making, completing and opening
// the files that translators work on. Where the files lie is told in config/language_files.h.
#pragma once

#include <string>
#include <string_view>

#include "host/plugin.h"

namespace qelm {

// Lets the user choose the language of messages and dialogs for the rest of the session.
void SetLanguage(Plugin& plugin);
// The same for a choice that was made. Menus keep the labels with which they were defined. False, after a
// message and with the language as it was, when its file cannot be used.
bool UseLanguage(Plugin& plugin, std::string_view name);

// Asks for the name of a language and makes its file from the English one. No file is replaced.
void CreateLanguageFile(Plugin& plugin);
void CreateLanguageFile(Plugin& plugin, std::string_view name);

// Adds what the current language lacks to its file, and reads the file again.
void UpdateLanguageFile(Plugin& plugin);

// Opens the file of the current language in the text editor, and the English one beside it.
void OpenLanguageFiles(Plugin& plugin);

}  // namespace qelm
