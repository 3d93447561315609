#include "filtering/staged_files.h"

#include <algorithm>
#include <filesystem>

#include "common/paths.h"

namespace qelm::filtering {
namespace {

constexpr char kStageName[] = ".qelm-copy-";
constexpr std::string_view kBefore = "-before";
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
  if (!MakeFolder(std::string(common::FolderOf(target)))) return false;
  Placed placed{target, {}};
  if (platform_.FileExists(target)) {
    placed.before = staged + std::string(kBefore);
    if (!platform_.MoveFile(target, placed.before)) return false;
  }
  // From here on it is undone, also when the move fails.
  placed_.push_back(placed);
  return platform_.MoveFile(staged, target);
}

void StagedFiles::Keep() {
  kept_ = true;
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
  if (!platform_.RemoveFolder(stage_)) platform_.RemoveFolder(stage_);
}

void RemoveAbandonedStages(host::Platform& platform, const std::string& folder) {
  for (const std::string& name : platform.FolderNames(folder)) {
    if (!name.starts_with(kStageName) || !IsNumber(std::string_view(name).substr(sizeof(kStageName) - 1)))
      continue;
    const std::string stage = common::JoinPath(folder, name);
    std::error_code error;
    if (!std::filesystem::is_directory(std::filesystem::symlink_status(stage, error)) || error) continue;
    const std::filesystem::file_time_type changed = std::filesystem::last_write_time(stage, error);
    if (error || changed >= kProgramBegan) continue;
    for (const std::string& file : platform.FolderNames(stage)) {
      if (IsStaged(file)) platform.RemoveFile(common::JoinPath(stage, file));
    }
    platform.RemoveFolder(stage);
  }
}

}  // namespace qelm::filtering
