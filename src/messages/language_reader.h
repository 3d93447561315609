// Reads a PO file, line by line, and cuts it into entries. A session begins with this, so that it copies
// nothing that can stay where it is: what an entry says is a view into the content where it stands there in
// one piece, and else into one array of all texts that were put together.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
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

// Texts that are put together, one behind the other.
class JoinedTexts {
 public:
  // There will be no more than that many bytes.
  void Reserve(std::size_t bytes);
  // Appends to a text that may stand anywhere; the first time it is taken along.
  void Append(std::string_view piece, std::string_view* text);

 private:
  void Put(std::string_view piece);

  std::unique_ptr<char[]> memory_;
  char* end_ = nullptr;
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
  JoinedTexts joined;
  std::string_view tail;  // what stands behind the last entry
};

// Reads the content, which is UTF-8 without a byte order mark, and has to outlive what was read. False, with
// `problem` (may be null) filled, when it is damaged.
bool ReadEntries(std::string_view content, ReadLanguage* read, LanguageProblem* problem);

}  // namespace qelm::messages
