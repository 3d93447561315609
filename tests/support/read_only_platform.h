// A platform on which nothing can be written below some folders, around the one that does the work: tests run
// as a user whom permissions do not stop.
#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "host/interface/platform.h"

namespace qelm::testing {

class ReadOnlyPlatform : public host::Platform {
 public:
  explicit ReadOnlyPlatform(host::Platform& inner) : inner_(inner) {}

  std::vector<std::string> read_only;  // what begins like this cannot be written
  bool folders_too = true;             // else folders can still be made, as on a disk that is full

  bool FileExists(const std::string& path) override { return inner_.FileExists(path); }
  bool FolderExists(const std::string& path) override { return inner_.FolderExists(path); }
  std::optional<std::string> ReadFile(const std::string& path) override { return inner_.ReadFile(path); }
  bool ReplaceFileByPieces(const std::string& path, std::span<const std::string_view> pieces) override {
    return MayWrite(path) && inner_.ReplaceFileByPieces(path, pieces);
  }
  bool AppendFile(const std::string& path, std::string_view content) override {
    return MayWrite(path) && inner_.AppendFile(path, content);
  }
  bool CopyFile(const std::string& from, const std::string& to) override {
    return MayWrite(to) && inner_.CopyFile(from, to);
  }
  bool RemoveFile(const std::string& path) override { return MayWrite(path) && inner_.RemoveFile(path); }
  bool MakeFolder(const std::string& path) override {
    return (!folders_too || MayWrite(path)) && inner_.MakeFolder(path);
  }
  std::vector<std::string> FolderNames(const std::string& path) override { return inner_.FolderNames(path); }
  std::string Environment(std::string_view name) override { return inner_.Environment(name); }
  host::LocalTime Now() override { return inner_.Now(); }
  std::int64_t CalendarSeconds() override { return inner_.CalendarSeconds(); }
  std::int64_t Milliseconds() override { return inner_.Milliseconds(); }
  bool Start(const std::string& program, const std::vector<std::string>& arguments) override {
    return inner_.Start(program, arguments);
  }

 private:
  bool MayWrite(const std::string& path) const {
    return std::none_of(read_only.begin(), read_only.end(),
                        [&path](const std::string& start) { return path.starts_with(start); });
  }

  host::Platform& inner_;
};

}  // namespace qelm::testing
