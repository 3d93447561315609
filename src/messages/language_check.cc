#include "messages/language_check.h"

#include "messages/placeholders.h"

namespace qelm::messages {

std::vector<LanguageFinding> CheckLanguage(const LanguageFile& english, const LanguageFile& file) {
  const LanguageIndex known = english.Index(false);
  const LanguageIndex places = file.Index(false);
  std::vector<LanguageFinding> findings;
  const auto find = [&findings](LanguageFault fault, const LanguageEntry& entry, std::size_t line) {
    findings.push_back({fault, line, entry.section, entry.id});
  };
  for (const LanguageEntry& wanted : english.Entries()) {
    if (wanted.obsolete || wanted.fuzzy || wanted.id.empty()) continue;
    const auto found = places.find(wanted.Key());
    if (found == places.end()) {
      find(LanguageFault::kMissing, wanted, 0);
      continue;
    }
    const LanguageEntry& entry = file.Entries()[found->second];
    if (entry.fuzzy) {
      find(LanguageFault::kFuzzy, entry, entry.line);
    } else if (entry.text.empty()) {
      find(LanguageFault::kNoText, entry, entry.line);
    } else if (entry.to_translate) {
      find(LanguageFault::kEnglishStill, entry, entry.line);
    } else if (PlaceholderKinds(wanted.EnglishText()) != PlaceholderKinds(entry.text)) {
      find(LanguageFault::kPlaceholders, entry, entry.line);
    }
  }
  for (const LanguageEntry& entry : file.Entries()) {
    if (!entry.obsolete && !entry.id.empty() && !known.contains(entry.Key())) {
      find(LanguageFault::kNotInEnglish, entry, entry.line);
    }
  }
  return findings;
}

std::string_view FaultText(LanguageFault fault) {
  switch (fault) {
    case LanguageFault::kMissing:
      return "is missing";
    case LanguageFault::kNoText:
      return "is not translated";
    case LanguageFault::kFuzzy:
      return "is marked as fuzzy and not in use";
    case LanguageFault::kEnglishStill:
      return "is marked as not translated yet";
    case LanguageFault::kPlaceholders:
      return "has other placeholders than the English text";
    case LanguageFault::kNotInEnglish:
      return "is not in the English file";
  }
  return {};
}

}  // namespace qelm::messages
