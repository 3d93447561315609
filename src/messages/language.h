// One language: the texts of a gettext PO file, by section (the entry's msgctxt) and id (its msgid).
//
// language_file.h reads the file. As in gettext, an entry without a text and one that is marked fuzzy are not
// there.
//
//   msgctxt "General Strings"
//   msgid "QELM_MSG_GEN_10"
//   msgstr "There is no active document."
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <utility>

#include "messages/language_file.h"

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

  // The text of an id; null when there is none. Holds until the next reading.
  const std::string* Find(std::string_view section, std::string_view id) const;

  std::size_t Count() const { return texts_.size(); }

 private:
  using Key = std::pair<std::string, std::string>;
  using KeyView = std::pair<std::string_view, std::string_view>;
  struct Less {
    using is_transparent = void;
    bool operator()(const KeyView& left, const KeyView& right) const { return left < right; }
  };
  std::map<Key, std::string, Less> texts_;
};

}  // namespace qelm::messages
