// A language file (gettext PO) as a whole: its entries in their order, each with everything that stands in
// the file for it.
//
// The file is cut into pieces, one an entry: the blank lines and comments before it, and its own lines. What
// is written back are the pieces, so an entry that nobody touched is byte for byte as it was, whatever tool
// wrote it. The whole of PO's syntax is understood: strings over several lines, C escapes, comments, plural
// forms (the first one counts), and obsolete entries ("#~"), which are kept and read, as they hold
// translations that may be wanted again. Obsolete lines that make no entry are comments.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "messages/language_reader.h"

namespace qelm::messages {

// The comment of an entry whose text is still the English one begins with this.
inline constexpr std::string_view kNotTranslatedYet = "# Not translated yet";

struct LanguageEntry {
  std::string section;        // msgctxt
  std::string id;             // msgid; empty in the entry that holds the file's header
  std::string text;           // msgstr
  std::string source;         // the lines of the file, the blank lines and comments before the entry included
  std::size_t line = 0;       // of its first keyword, from 1
  bool fuzzy = false;         // flagged so: not in use
  bool obsolete = false;      // commented out by "#~"
  bool to_translate = false;  // has the comment kNotTranslatedYet

  // Whether the entry has a text that is in use.
  bool InUse() const { return !obsolete && !fuzzy && !text.empty() && !id.empty(); }

  // Of an English entry: whether its text is its own id, which is shown as it stands where it is not
  // translated; and the text.
  bool IsOwnText() const { return text.empty() || text == id; }
  const std::string& EnglishText() const { return text.empty() ? id : text; }

  std::pair<std::string_view, std::string_view> Key() const { return {section, id}; }
};

// The places of entries by section and id.
using LanguageIndex = std::map<std::pair<std::string_view, std::string_view>, std::size_t>;

class LanguageFile {
 public:
  // Replaces everything by the file with this content, which is UTF-8. False, with `problem` (may be null)
  // filled and everything as it was, when it is damaged.
  bool Read(std::string_view content, LanguageProblem* problem);

  // The content to be written; what was read, when no entry was changed.
  std::string Write() const;

  const std::vector<LanguageEntry>& Entries() const { return entries_; }
  void SetEntries(std::vector<LanguageEntry> entries) { entries_ = std::move(entries); }

  // The places of those that hold, or of those that are commented out. It holds until the entries change.
  LanguageIndex Index(bool obsolete) const;

  // How lines end in this file: "\n", or "\r\n" when its first line ends so.
  std::string_view LineEnd() const { return crlf_ ? "\r\n" : "\n"; }

 private:
  std::string mark_;  // the byte order mark, when there is one
  std::vector<LanguageEntry> entries_;
  std::string tail_;  // what stands behind the last entry
  bool crlf_ = false;
};

// The lines of a piece of a language file, without their ends.
std::vector<std::string_view> SourceLines(const LanguageEntry& entry);

}  // namespace qelm::messages
