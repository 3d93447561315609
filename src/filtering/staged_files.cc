#include "filtering/staged_files.h"

#include <algorithm>
#include <filesystem>
#include <optional>

#include "common/paths.h"

namespace qelm::filtering {
namespace {

constexpr char kStageName[] = ".qelm-copy-";
constexpr std::string_view kBefore = "-before";
constexpr char kBetween = '\t';
constexpr char kListName[] = "placed";
constexpr char kKeptName[] = "kept";  // the list once nothing is to be put back any more
constexpr int kMostStages = 1000;     // left behind by processes that were killed

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

// Whether a path of a list names a file below the folder, or none yet. What lies behind a link to somewhere
// else is not of the folder.
bool IsBelow(const std::string& folder, const std::filesystem::path& target) {
  namespace fs = std::filesystem;
  if (target.empty() || target.is_absolute() || target.lexically_normal() != target) return false;
  std::error_code error;
  const fs::path top = fs::weakly_canonical(folder, error);
  if (error) return false;
  const fs::path parent = fs::weakly_canonical((fs::path(folder) / target).parent_path(), error);
  if (error || *parent.lexically_relative(top).begin() == "..") return false;
  const fs::file_type type = fs::symlink_status(parent / target.filename(), error).type();
  return type == fs::file_type::regular || type == fs::file_type::not_found;
}

// Whether a file is there; nothing where that cannot be found out, so that nobody knows whose it is.
std::optional<bool> WhetherThere(host::Platform& platform, const std::string& path) {
  if (platform.FileExists(path)) return true;
  return platform.MayExist(path) ? std::nullopt : std::optional(false);
}

// Puts back what one line of a list says. A line "N<tab>state<tab>path" is that of a file which came where
// none was, a line "N-before<tab>state<tab>path" that of one which replaced another. What lies there in
// another state is somebody's: it stays, and so does what it would have to give way to.
bool TakeBackLine(host::Platform& platform, const std::string& folder, const std::string& stage,
                  std::string_view line) {
  const std::size_t end = line.find(kBetween);
  const std::size_t second = line.find(kBetween, end + 1);
  if (end == std::string_view::npos || second == std::string_view::npos) return false;
  std::string_view number = line.substr(0, end);
  const bool replaced = number.ends_with(kBefore);
  if (replaced) number.remove_suffix(kBefore.size());
  if (!IsNumber(number)) return false;
  const std::string staged = common::JoinPath(stage, number);
  const std::string before = staged + std::string(kBefore);
  const std::string_view target = line.substr(second + 1);
  const std::string placed = common::JoinPath(folder, target);
  const std::optional<bool> is_there = WhetherThere(platform, placed);
  const std::optional<bool> is_staged = WhetherThere(platform, staged);
  if (!is_there || !is_staged) return false;
  const bool is_ours = *is_there && platform.FileState(placed) == line.substr(end + 1, second - end - 1);
  if (platform.MayExist(before)) {
    return (is_ours || !*is_there) && IsBelow(folder, target) && platform.MoveFile(before, placed);
  }
  // What was replaced is back already, or was not taken away yet.
  if (replaced || *is_staged || !IsBelow(folder, target)) return true;
  return !is_ours || platform.RemoveFile(placed);
}

// Puts back what was placed by the list in the inner folder. False when something of it remains to be done,
// or a file that was replaced lies there and nobody knows from where.
bool TakeBack(host::Platform& platform, const std::string& folder, const std::string& stage) {
  if (platform.FileExists(common::JoinPath(stage, kKeptName))) return true;
  const std::string path = common::JoinPath(stage, kListName);
  const std::optional<std::string> list = platform.ReadFile(path);
  if (!list && platform.MayExist(path)) return false;
  std::string_view left = list ? std::string_view(*list) : std::string_view();
  bool done = true;
  while (const std::size_t end = left.find('\n') + 1) {
    done = TakeBackLine(platform, folder, stage, left.substr(0, end - 1)) && done;
    left.remove_prefix(end);
  }
  const std::vector<std::string> names = platform.FolderNames(stage);
  return done && std::none_of(names.begin(), names.end(),
                              [](const std::string& name) { return name.ends_with(kBefore); });
}

bool IsStage(const std::string& folder, std::string_view name) {
  return name.starts_with(kStageName) && IsNumber(name.substr(sizeof(kStageName) - 1)) &&
         IsAbandonedFolder(common::JoinPath(folder, name));
}

}  // namespace

bool StagedFiles::Begin() {
  if (!MakeFolders()) return false;
  for (int number = 1; number <= kMostStages; ++number) {
    const std::string stage = common::JoinPath(folder_, kStageName + std::to_string(number));
    if (platform_.FolderExists(stage) || platform_.MayExist(stage)) continue;
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

// The name has no ending, so that a file is saved in the format that it has.
std::string StagedFiles::NextStaged() {
  return staged_.emplace_back(common::JoinPath(stage_, std::to_string(staged_.size())));
}

std::string StagedFiles::Add(const std::string& source) {
  std::string path = NextStaged();
  return platform_.CopyFile(source, path) ? path : std::string();
}

std::string StagedFiles::AddText(std::string_view content) {
  std::string path = NextStaged();
  return platform_.ReplaceFile(path, content) ? path : std::string();
}

bool StagedFiles::Place(const std::string& staged, const std::string& target) {
  if (!MakeFolder(std::string(common::FolderOf(target)))) return false;
  Placed placed{target, {}, platform_.FileState(staged)};
  if (platform_.MayExist(target)) placed.before = staged + std::string(kBefore);
  if (!List(placed.before.empty() ? staged : placed.before, placed)) return false;
  if (!placed.before.empty() && !platform_.MoveFile(target, placed.before)) return false;
  // From here on it is undone, also when the move fails.
  placed_.push_back(placed);
  if (!platform_.MoveFile(staged, target)) return false;
  placed_.back().state = platform_.FileState(target);  // a folder of another device gets a copy, not the file
  return true;
}

// Written before the move, so that of what was moved nothing is missing in it. A name that cannot stand in a
// line is left out: nobody puts that file back.
bool StagedFiles::List(const std::string& staged, const Placed& placed) {
  const std::string below = std::filesystem::path(placed.target).lexically_relative(folder_).string();
  if (below.find('\n') != std::string::npos) return true;
  const std::string line =
      std::string(common::FileName(staged)) + kBetween + placed.state + kBetween + below + "\n";
  return platform_.AppendFile(common::JoinPath(stage_, kListName), line);
}

void StagedFiles::Keep() {
  kept_ = true;
  // From here on nothing is to be put back, and what is left in the stage may go.
  const std::string list = common::JoinPath(stage_, kListName);
  if (platform_.MayExist(list) && !platform_.MoveFile(list, common::JoinPath(stage_, kKeptName))) {
    Remove(list);
  }
  for (const Placed& placed : placed_) {
    if (!placed.before.empty()) Remove(placed.before);
  }
  RemoveStage();
}

// What cannot be put back stays in the stage, with the list; what somebody has put in its place stays there.
bool StagedFiles::Undo() {
  if (kept_) return true;
  bool done = true;
  for (auto placed = placed_.rbegin(); placed != placed_.rend(); ++placed) {
    const std::optional<bool> is_there = WhetherThere(platform_, placed->target);
    if (!is_there) {
      done = false;
      continue;
    }
    const bool is_ours = *is_there && platform_.FileState(placed->target) == placed->state;
    if (!placed->before.empty()) {
      done = (is_ours || !*is_there) &&
             (platform_.MoveFile(placed->before, placed->target) ||
              platform_.MoveFile(placed->before, placed->target)) &&
             done;
    } else if (is_ours) {
      Remove(placed->target);
      done = done && !platform_.MayExist(placed->target);
    }
  }
  placed_.clear();
  if (done) RemoveStage();
  stage_.clear();
  return done;
}

StagedFiles::~StagedFiles() {
  Undo();
  if (kept_) return;
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
    if (platform_.MayExist(file)) Remove(file);
  }
  for (const char* name : {kListName, kKeptName}) {
    const std::string list = common::JoinPath(stage_, name);
    if (platform_.MayExist(list)) Remove(list);
  }
  if (!platform_.RemoveFolder(stage_)) platform_.RemoveFolder(stage_);
}

bool HasAbandoned(host::Platform& platform, const std::string& folder) {
  const std::vector<std::string> names = platform.FolderNames(folder);
  return std::any_of(names.begin(), names.end(),
                     [&](const std::string& name) { return IsStage(folder, name); });
}

void UndoAbandoned(host::Platform& platform, const std::string& folder) {
  for (const std::string& name : platform.FolderNames(folder)) {
    const std::string path = common::JoinPath(folder, name);
    if (!IsStage(folder, name) || !TakeBack(platform, folder, path)) continue;
    // The word that all of it may go comes last: a process that ends here must not leave files without it.
    const std::string list = common::JoinPath(path, kListName);
    if (platform.MayExist(list)) platform.RemoveFile(list);
    for (const std::string& file : platform.FolderNames(path)) {
      if (IsStaged(file)) platform.RemoveFile(common::JoinPath(path, file));
    }
    const std::string kept = common::JoinPath(path, kKeptName);
    if (platform.MayExist(kept)) platform.RemoveFile(kept);
    platform.RemoveFolder(path);
  }
}

}  // namespace qelm::filtering
