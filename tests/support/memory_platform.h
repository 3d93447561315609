// A platform of files in memory, and a user who is only recorded: for tests of what is read and said.
#pragma once

#include <algorithm>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "host/interface/platform.h"
#include "host/interface/user_interface.h"
#include "support/menu_taker.h"

namespace qelm::testing {

class MemoryPlatform : public host::Platform {
 public:
  std::map<std::string, std::string> files;
  std::map<std::string, std::string, std::less<>> environment;
  int reads = 0;
  bool read_only = false;
  std::int64_t seconds = 0;  // the calendar time

  bool FileExists(const std::string& path) override { return files.contains(path); }
  bool FolderExists(const std::string& path) override {
    const auto inside = files.lower_bound(path + "/");
    return inside != files.end() && inside->first.starts_with(path + "/");
  }
  std::optional<std::string> ReadFile(const std::string& path) override {
    ++reads;
    const auto found = files.find(path);
    if (found == files.end()) return std::nullopt;
    return found->second;
  }
  bool ReplaceFileByPieces(const std::string& path, std::span<const std::string_view> pieces) override {
    if (read_only) return false;
    std::string& content = files[path];
    content.clear();
    for (const std::string_view piece : pieces) content.append(piece);
    return true;
  }
  bool AppendFile(const std::string& path, std::string_view content) override {
    files[path].append(content);
    return true;
  }
  bool CopyFile(const std::string& from, const std::string& to) override {
    files[to] = files.at(from);
    return true;
  }
  bool RemoveFile(const std::string& path) override { return files.erase(path) > 0; }
  bool MoveFile(const std::string& from, const std::string& to) override {
    if (!files.contains(from)) return false;
    files[to] = files.at(from);
    return RemoveFile(from);
  }
  bool MakeFolder(const std::string&) override { return true; }
  std::vector<std::string> FolderNames(const std::string& path) override {
    std::vector<std::string> names;
    for (auto file = files.lower_bound(path + "/"); file != files.end(); ++file) {
      if (!file->first.starts_with(path + "/")) break;
      names.push_back(file->first.substr(path.size() + 1));
      names.back().resize(std::min(names.back().find('/'), names.back().size()));
    }
    names.erase(std::unique(names.begin(), names.end()), names.end());
    return names;
  }
  bool RemoveFolder(const std::string&) override { return true; }
  std::optional<std::uint64_t> FileSize(const std::string& path) override {
    const auto found = files.find(path);
    if (found == files.end()) return std::nullopt;
    return found->second.size();
  }
  std::optional<std::uint64_t> FreeSpace(const std::string&) override { return std::nullopt; }
  std::string ResolvedPath(const std::string& path) override { return path; }
  bool SameFile(const std::string& left, const std::string& right) override { return left == right; }
  std::string Environment(std::string_view name) override {
    const auto found = environment.find(name);
    return found == environment.end() ? std::string() : found->second;
  }
  host::LocalTime Now() override { return {}; }
  std::int64_t CalendarSeconds() override { return seconds; }
  std::int64_t Milliseconds() override { return 0; }
  bool Start(const std::string&, const std::vector<std::string>&) override { return false; }
};

class RecordingUser : public MenuTaker {
 public:
  std::vector<std::string> notes;
  std::vector<std::string> questions;
  std::string console;
  std::int32_t answer = 1;  // 0 yes, 1 no

  void Note(std::string_view text) override { notes.emplace_back(text); }
  std::int32_t Question(std::string_view text) override {
    questions.emplace_back(text);
    return answer;
  }
  void ShowStatus(const host::Status&) override {}
  void HideStatus() override {}
  bool EscPressed() override { return false; }
  void Print(std::string_view text) override { console.append(text); }
};

}  // namespace qelm::testing
