#include "messages/language.h"

#include "common/utf8.h"

namespace qelm::messages {

bool Language::Read(std::string_view content, LanguageProblem* problem) {
  LanguageFile file;
  if (!file.Read(common::DecodeTextFile(content), problem)) return false;
  texts_.clear();
  for (const LanguageEntry& entry : file.Entries()) {
    if (entry.InUse()) texts_.emplace(Key(entry.section, entry.id), entry.text);
  }
  return true;
}

bool Language::ReadSection(std::string_view content, std::string_view section, LanguageProblem* problem) {
  Language all;
  if (!all.Read(content, problem)) return false;
  std::erase_if(texts_, [section](const auto& entry) { return entry.first.first == section; });
  for (auto& [key, text] : all.texts_) {
    if (key.first == section) texts_.emplace(key, std::move(text));
  }
  return true;
}

const std::string* Language::Find(std::string_view section, std::string_view id) const {
  const auto found = texts_.find(KeyView(section, id));
  return found == texts_.end() ? nullptr : &found->second;
}

}  // namespace qelm::messages
