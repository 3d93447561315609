// Documents that were read once and of which copies are made in place of reading them again: by the host that
// has them open, or by hosts on other threads, which are given them before they begin. A copy is made only of
// what the file still holds, by the stamp that the file had when it was read.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>

#include "embedded/model/document.h"

namespace qelm::embedded::adapter {

// What changes whenever a file is written, or another one takes its name.
struct FileStamp {
  std::uint64_t device = 0;
  std::uint64_t file = 0;
  std::int64_t size = 0;
  std::int64_t seconds = 0;
  std::int64_t nanoseconds = 0;
  friend bool operator==(const FileStamp&, const FileStamp&) = default;
};

// Nothing for a file that is not there, or was written so short a time ago that the next change might leave
// it with the same stamp.
std::optional<FileStamp> StampOf(const std::string& path);

class SharedDocuments {
 public:
  // `identity` is the path with links resolved.
  void Add(const std::string& identity, const FileStamp& stamp,
           std::shared_ptr<const model::Document> document) {
    documents_[identity] = {stamp, std::move(document)};
  }

  // Null for a document that is not among them, or not as the file is now.
  std::shared_ptr<const model::Document> Find(const std::string& identity, const FileStamp& stamp) const {
    const auto found = documents_.find(identity);
    return found != documents_.end() && found->second.stamp == stamp ? found->second.document : nullptr;
  }

 private:
  struct Entry {
    FileStamp stamp;
    std::shared_ptr<const model::Document> document;
  };
  std::unordered_map<std::string, Entry> documents_;
};

}  // namespace qelm::embedded::adapter
