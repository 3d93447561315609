#include "filtering/staged_files.h"

#include <algorithm>
#include <filesystem>

#include "common/paths.h"

namespace qelm::filtering {
namespace {

constexpr char kStageName[] = ".qelm-copy-";
constexpr std::string_view kBefore = "-before";
constexpr char kListName[] = "placed";
constexpr int kMostStages = 1000;  // left behind by processes that were killed

const std::filesystem::file_time_type kProgramBegan = std::filesystem::file_time_type::clock::now();

bool IsNumber(std::string_view text) {
  return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

// Whether the file's name is one that a stage gives, or that of the file beside in which it was written.
bool IsStaged(std::string_view name) {
  if (name.starts_with(".qelm-")) return true;
  if (name.ends_with(kBefore)) name.remove_suffix(kBefore.size());
  return IsNumber(name);
}

bool IsAbandonedFolder(const std::string& path) {
  std::error_code error;
  if (!std::filesystem::is_directory(std::filesystem::symlink_status(path, error)) || error) return false;
  const std::filesystem::file_time_type changed = std::filesystem::last_write_time(path, error);
  return !error && changed < kProgramBegan;
}

// Whether a path of a list leads to a file below the folder.
bool IsBelow(const std::filesystem::path& target) {
  return !target.empty() && target.is_relative() && target.lexically_normal() == target &&
         *target.begin() != "..";
}

// Puts back what was placed by the list in the inner folder.
void TakeBack(host::Platform& platform, const std::string& folder, const std::string& stage) {
  const std::optional<std::string> list = platform.ReadFile(common::JoinPath(stage, kListName));
  if (!list) return;
  std::string_view left = *list;
  while (const std::size_t end = left.find('\n') + 1) {
    const std::string_view line = left.substr(0, end - 1);
    left.remove_prefix(end);
    const std::size_t blank = line.find(' ');
    if (blank == std::string_view::npos || !IsNumber(line.substr(0, blank))) continue;
    const std::string staged = common::JoinPath(stage, line.substr(0, blank));
    const std::string_view target = line.substr(blank + 1);
    if (!IsBelow(target)) continue;
    const std::string placed = common::JoinPath(folder, target);
    const std::string before = staged + std::string(kBefore);
    if (platform.FileExists(before)) {
      platform.MoveFile(before, placed);
    } else if (!platform.FileExists(staged) && platform.FileExists(placed)) {
      platform.RemoveFile(placed);
    }
  }
}

}  // namespace

bool StagedFiles::Begin() {
  if (!MakeFolder(folder_)) return false;
  for (int number = 1; number <= kMostStages; ++number) {
    const std::string stage = common::JoinPath(folder_, kStageName + std::to_string(number));
    if (platform_.FolderExists(stage) || platform_.FileExists(stage)) continue;
    stage_ = stage;
    return platform_.MakeFolder(stage);
  }
  return false;
}

// Takes note of each folder that was not there, so that those and no others go again.
bool StagedFiles::MakeFolder(const std::string& folder) {
  std::vector<std::string> missing;
  for (std::string at = folder; !at.empty() && !platform_.FolderExists(at);
       at = std::string(common::FolderOf(at))) {
    missing.push_back(at);
  }
  made_folders_.insert(made_folders_.end(), missing.rbegin(), missing.rend());
  return missing.empty() || platform_.MakeFolder(folder);
}

std::string StagedFiles::Add(const std::string& source) {
  // The name has no ending, so that a file is saved in the format that it has.
  const std::string path = common::JoinPath(stage_, std::to_string(staged_.size()));
  staged_.push_back(path);
  return platform_.CopyFile(source, path) ? path : std::string();
}

bool StagedFiles::Place(const std::string& staged, const std::string& target) {
  if (!MakeFolder(std::string(common::FolderOf(target))) || !List(staged, target)) return false;
  Placed placed{target, {}};
  if (platform_.FileExists(target)) {
    placed.before = staged + std::string(kBefore);
    if (!platform_.MoveFile(target, placed.before)) return false;
  }
  // From here on it is undone, also when the move fails.
  placed_.push_back(placed);
  return platform_.MoveFile(staged, target);
}

// Written before the move, so that of what was moved nothing is missing in it. A name that cannot stand in a
// line is left out: nobody puts that file back.
bool StagedFiles::List(const std::string& staged, const std::string& target) {
  const std::string below = std::filesystem::path(target).lexically_relative(folder_).string();
  if (below.find('\n') != std::string::npos) return true;
  const std::string line = std::string(common::FileName(staged)) + " " + below + "\n";
  return platform_.AppendFile(common::JoinPath(stage_, kListName), line);
}

void StagedFiles::Keep() {
  kept_ = true;
  Remove(common::JoinPath(stage_, kListName));  // from here on nothing is to be put back
  for (const Placed& placed : placed_) {
    if (!placed.before.empty()) Remove(placed.before);
  }
  RemoveStage();
}

void StagedFiles::Undo() {
  if (kept_) return;
  for (auto placed = placed_.rbegin(); placed != placed_.rend(); ++placed) {
    if (!placed->before.empty()) {
      if (!platform_.MoveFile(placed->before, placed->target)) {
        platform_.MoveFile(placed->before, placed->target);
      }
    } else if (platform_.FileExists(placed->target)) {
      Remove(placed->target);
    }
  }
  RemoveStage();
  for (auto folder = made_folders_.rbegin(); folder != made_folders_.rend(); ++folder) {
    platform_.RemoveFolder(*folder);
  }
}

// A file may be in use for a moment; the second try is often the one that does it.
void StagedFiles::Remove(const std::string& file) {
  if (!platform_.RemoveFile(file)) platform_.RemoveFile(file);
}

void StagedFiles::RemoveStage() {
  if (stage_.empty()) return;
  for (const std::string& file : staged_) {
    if (platform_.FileExists(file)) Remove(file);
  }
  const std::string list = common::JoinPath(stage_, kListName);
  if (platform_.FileExists(list)) Remove(list);
  if (!platform_.RemoveFolder(stage_)) platform_.RemoveFolder(stage_);
}

void UndoAbandoned(host::Platform& platform, const std::string& folder) {
  for (const std::string& name : platform.FolderNames(folder)) {
    const bool is_stage =
        name.starts_with(kStageName) && IsNumber(std::string_view(name).substr(sizeof(kStageName) - 1));
    const std::string path = common::JoinPath(folder, name);
    if (!is_stage || !IsAbandonedFolder(path)) continue;
    TakeBack(platform, folder, path);
    for (const std::string& file : platform.FolderNames(path)) {
      if (IsStaged(file) || file == kListName) platform.RemoveFile(common::JoinPath(path, file));
    }
    platform.RemoveFolder(path);
  }
}

}  // namespace qelm::filtering
