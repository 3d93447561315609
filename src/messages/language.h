// One language: the texts of a gettext PO file, by section (the entry's msgctxt) and id (its msgid).
//
// language_reader.h reads the file. As in gettext, an entry without a text and one that is marked fuzzy are
// not there.
//
//   msgctxt "General Strings"
//   msgid "QELM_MSG_GEN_10"
//   msgstr "There is no active document."
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "messages/language_reader.h"

namespace qelm::messages {

// The section of the messages.
inline constexpr std::string_view kGeneralStrings = "General Strings";

// The section of the lines of the status dialog.
inline constexpr std::string_view kStatusTexts = "Status";

// The section of the words and sentences of the plug-in that are put into messages.
inline constexpr std::string_view kWords = "Words";

class Language {
 public:
  // Replaces all texts by those of a PO file with this content. False, with `problem` filled and the texts as
  // they were, when it is damaged.
  bool Read(std::string_view content, LanguageProblem* problem);

  // Replaces only the texts of one section.
  bool ReadSection(std::string_view content, std::string_view section, LanguageProblem* problem);

  // The text of an id; nothing when there is none. Holds until the next reading.
  std::optional<std::string_view> Find(std::string_view section, std::string_view id) const;

 private:
  // The entries of a file, and its content, which they are views into and which so never moves.
  struct File {
    std::unique_ptr<const std::string> content;
    ReadLanguage read;
  };
  static bool ReadFile(std::string_view content, LanguageProblem* problem, File* file);

  File file_;
  std::map<std::string, File, std::less<>> sections_;  // those that were read on their own
};

}  // namespace qelm::messages
