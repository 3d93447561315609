#include "messages/language_file.h"

#include "common/text.h"
#include "common/utf8.h"

namespace qelm::messages {
bool LanguageFile::Read(std::string_view content, LanguageProblem* problem) {
  const std::string_view mark =
      content.starts_with(common::kByteOrderMark) ? common::kByteOrderMark : std::string_view();
  content.remove_prefix(mark.size());
  ReadLanguage read;
  if (!ReadEntries(content, &read, problem)) return false;
  mark_ = mark;
  tail_ = read.tail;
  entries_.clear();
  for (const ReadEntry& entry : read.entries) {
    entries_.push_back({.section = std::string(entry.key.first),
                        .id = std::string(entry.key.second),
                        .text = std::string(entry.text),
                        .source = std::string(entry.source),
                        .line = entry.line,
                        .fuzzy = entry.fuzzy,
                        .obsolete = entry.obsolete,
                        .to_translate = entry.to_translate});
  }
  const std::size_t end = content.find('\n');
  crlf_ = end != content.npos && end > 0 && content[end - 1] == '\r';
  return true;
}

std::string LanguageFile::Write() const {
  std::string content = mark_;
  for (const LanguageEntry& entry : entries_) {
    content += entry.source;
    const bool last = &entry == &entries_.back() && tail_.empty();
    if (!last && !content.empty() && content.back() != '\n' && content.back() != '\r') {
      content += LineEnd();
    }
  }
  return content + tail_;
}

LanguageIndex LanguageFile::Index(bool obsolete) const {
  LanguageIndex index;
  for (std::size_t i = 0; i < entries_.size(); ++i) {
    if (entries_[i].obsolete == obsolete) index.emplace(entries_[i].Key(), i);
  }
  return index;
}

std::vector<std::string_view> SourceLines(const LanguageEntry& entry) {
  return common::SplitLines(entry.source);
}

}  // namespace qelm::messages
