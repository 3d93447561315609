#include "messages/language.h"

#include "common/utf8.h"

namespace qelm::messages {

bool Language::ReadFile(std::string_view content, LanguageProblem* problem, File* file) {
  file->content = std::make_unique<const std::string>(common::DecodeTextFile(content));
  return ReadEntries(*file->content, &file->read, problem);
}

bool Language::Read(std::string_view content, LanguageProblem* problem) {
  File file;
  if (!ReadFile(content, problem, &file)) return false;
  file_ = std::move(file);
  sections_.clear();
  return true;
}

bool Language::ReadSection(std::string_view content, std::string_view section, LanguageProblem* problem) {
  File file;
  if (!ReadFile(content, problem, &file)) return false;
  sections_.insert_or_assign(std::string(section), std::move(file));
  return true;
}

std::optional<std::string_view> Language::Find(std::string_view section, std::string_view id) const {
  const auto own = sections_.find(section);
  const ReadLanguage& read = own == sections_.end() ? file_.read : own->second.read;
  const auto found = read.index.find({section, id});
  if (found == read.index.end() || !read.entries[found->second].InUse()) return std::nullopt;
  return read.entries[found->second].text;
}

}  // namespace qelm::messages
