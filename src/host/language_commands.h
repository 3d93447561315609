// The commands for language files: choosing the language of the session, and making, completing and opening
// the files that translators work on. Where the files lie is told in config/language_files.h.
#pragma once

#include <cstdint>
#include <string_view>

#include "host/plugin.h"

namespace qelm {

// Each returns kDone, or 0 when the user declined or it failed; the user was told.

// Lets the user choose the language of messages and dialogs for the rest of the session. Menus keep the
// labels with which they were defined.
std::int32_t SetLanguage(Plugin& plugin);
// The same for a choice that was made. When its file cannot be used, the language stays as it was.
std::int32_t UseLanguage(Plugin& plugin, std::string_view name);

// Asks for the name of a language and makes its file from the English one. No file is replaced.
std::int32_t CreateLanguageFile(Plugin& plugin);
std::int32_t CreateLanguageNamed(Plugin& plugin, std::string_view name);

// Adds what the current language lacks to its file, and reads the file again.
std::int32_t UpdateLanguageFile(Plugin& plugin);

// Opens the file of the current language in the text editor, and the English one beside it.
std::int32_t OpenLanguageFiles(Plugin& plugin);

}  // namespace qelm
