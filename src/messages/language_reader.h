// Reads a PO file, line by line, and cuts it into entries. A session begins with this, so that it copies
// nothing that can stay where it is: what an entry says is a view into the content where it stands there in
// one piece, and else into a string that was put together.
#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace qelm::messages {

// Why a language file was refused. Line 0: not at a line of its own.
struct LanguageProblem {
  std::size_t line = 0;
  std::string text;
};

// Section and id.
using LanguageKey = std::pair<std::string_view, std::string_view>;

struct ReadEntry {
  LanguageKey key;
  std::string_view text;
  std::string_view source;  // from the end of the entry before it on
  std::size_t line = 0;     // of its first keyword, from 1
  bool fuzzy = false;
  bool obsolete = false;
  bool to_translate = false;

  // Whether the entry has a text that is in use.
  bool InUse() const { return !obsolete && !fuzzy && !text.empty() && !key.second.empty(); }
};

struct ReadLanguage {
  struct Hash {
    std::size_t operator()(const LanguageKey& key) const {
      const std::hash<std::string_view> hash;
      return hash(key.first) * 31 + hash(key.second);
    }
  };
  std::vector<ReadEntry> entries;
  std::unordered_map<LanguageKey, std::size_t, Hash> index;  // of those that are not obsolete
  std::deque<std::string> joined;                            // what no view into the content can be
  std::string_view tail;                                     // what stands behind the last entry
};

// Reads the content, which is UTF-8 without a byte order mark, and has to outlive what was read. False, with
// `problem` (may be null) filled, when it is damaged.
bool ReadEntries(std::string_view content, ReadLanguage* read, LanguageProblem* problem);

}  // namespace qelm::messages
