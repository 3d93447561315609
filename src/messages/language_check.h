// What a language file lacks beside the English one.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "messages/language_file.h"

namespace qelm::messages {

// What keeps a language file from being complete.
enum class LanguageFault {
  kMissing,       // English has the entry, the file has not
  kNoText,        // the text is empty
  kFuzzy,         // flagged fuzzy, so not in use
  kEnglishStill,  // the comment says that it is not translated yet
  kPlaceholders,  // other placeholders than the English text
  kNotInEnglish,  // an entry that English does not have
};

struct LanguageFinding {
  LanguageFault fault = LanguageFault::kMissing;
  std::size_t line = 0;  // in the file; 0 for what is missing
  std::string section;
  std::string id;
};

// The faults, in the order of the English file; what English does not have at the end.
std::vector<LanguageFinding> CheckLanguage(const LanguageFile& english, const LanguageFile& file);

// What a fault is, in words that may follow the id.
std::string_view FaultText(LanguageFault fault);

}  // namespace qelm::messages
