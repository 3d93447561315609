// Making a language file from the English one, and bringing one up to date with it.
//
// What a language lacks is an error where the text is wanted, so a file that was made or brought up to date
// has every text: a text that has an id of its own comes in English, with a comment that says so, and works
// at once; a text that is its own id (a label) comes without a translation, and is shown as it stands. What
// is in the file already is not touched, neither translations nor comments, order or line ends; an entry that
// is marked fuzzy or has no text stays so, and the check of languages names it. A translation that an older
// version had, and that is commented out ("#~"), comes back when its placeholders still fit.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "messages/language_file.h"

namespace qelm::messages {

struct UpdateCounts {
  std::size_t added = 0;    // to be translated
  std::size_t revived = 0;  // translations that were commented out
};

// Adds the entries of `english` that `file` lacks, each behind the one that it follows in English.
UpdateCounts AddMissingEntries(const LanguageFile& english, LanguageFile* file);

// What the header of a new file says of it.
struct NewLanguage {
  std::string name;  // in English: "French"
  std::string code;  // of ISO 639 ("fr"); empty when it is not known
  std::string date;  // "2026-01-31 14:05"
};

// A file with all entries of `english`, none of them translated.
LanguageFile MakeLanguageFile(const LanguageFile& english, const NewLanguage& language);

}  // namespace qelm::messages
