#include "embedded/model/locate.h"

#include <algorithm>
#include <filesystem>
#include <vector>

namespace qelm::embedded::model {
namespace {

namespace fs = std::filesystem;

char ToLower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

std::string Lowered(std::string_view text) {
  std::string result;
  for (const char c : text) result.push_back(ToLower(c));
  return result;
}

bool IsFile(const fs::path& path) {
  std::error_code error;
  const fs::file_status status = fs::status(path, error);
  return fs::exists(status) && !fs::is_directory(status);
}

// The names that a file may have instead of its own.
std::vector<std::string> NamesFor(const std::string& name) {
  std::vector<std::string> names{name};
  const std::string extension = Lowered(fs::path(name).extension().native());
  if (extension != ".mif") {
    if (extension == ".fm" || extension == ".book" || extension == ".bk") {
      names.push_back(fs::path(name).replace_extension(".mif").native());
    }
    names.push_back(name + ".mif");
  }
  return names;
}

// The file of the folder that has one of the names but for the case; of several the first in the order of
// bytes.
fs::path FindWithoutCase(const fs::path& folder, const std::vector<std::string>& names) {
  std::error_code error;
  std::vector<std::string> lowered;
  for (const std::string& name : names) lowered.push_back(Lowered(name));
  std::vector<std::string> found(names.size());
  for (fs::directory_iterator at(folder.empty() ? fs::path(".") : folder, error), end; !error && at != end;
       at.increment(error)) {
    const std::string name = at->path().filename().native();
    const std::string small = Lowered(name);
    for (std::size_t i = 0; i < lowered.size(); ++i) {
      if (small == lowered[i] && (found[i].empty() || name < found[i]) && IsFile(at->path())) found[i] = name;
    }
  }
  for (const std::string& name : found) {
    if (!name.empty()) return folder / name;
  }
  return {};
}

// A file of that name, or of a name instead of it, in the folder.
fs::path FindIn(const fs::path& folder, const std::string& name) {
  const std::vector<std::string> names = NamesFor(name);
  for (const std::string& candidate : names) {
    if (IsFile(folder / candidate)) return folder / candidate;
  }
  return FindWithoutCase(folder, names);
}

// The folders and the name in a path of any system, without drive, root and steps that lead nowhere.
std::vector<std::string> Steps(std::string_view path) {
  std::vector<std::string> steps;
  while (!path.empty()) {
    const std::size_t end = std::min(path.find_first_of("/\\"), path.size());
    const std::string_view step = path.substr(0, end);
    const bool is_drive = steps.empty() && step.size() == 2 && step[1] == ':';
    if (!step.empty() && step != "." && step != ".." && !is_drive) steps.emplace_back(step);
    path.remove_prefix(std::min(end + 1, path.size()));
  }
  return steps;
}

// The path with the separators of this system.
fs::path Native(std::string path) {
  for (char& c : path) {
    if (c == '\\') c = '/';
  }
  return fs::path(std::move(path));
}

}  // namespace

// A file of which nobody can say whether it is there is not another one. Names too long are nobody's, and a
// folder without rights for the user is often in the home of whoever wrote the path.
Located LocateFile(const std::string& path) {
  std::error_code error;
  const bool is_known = fs::symlink_status(path, error).type() != fs::file_type::none;
  const bool is_elsewhere =
      !is_known && (error == std::errc::filename_too_long || error == std::errc::permission_denied);
  const bool exists = fs::exists(path, error);
  if (exists || (error && !is_elsewhere)) return {path, true, false};
  const fs::path native = Native(path);
  const fs::path found =
      native.has_filename() ? FindIn(native.parent_path(), native.filename().native()) : fs::path();
  if (found.empty()) return {path, false, false};
  return {found.native(), true, found != path};
}

Located LocateComponent(const std::string& book, const std::string& path) {
  const fs::path folder = fs::path(book).parent_path();
  // A drive is no folder of the book's.
  const bool has_drive = path.size() >= 2 && path[1] == ':';
  const fs::path named = (has_drive ? fs::path() : folder) / Native(path);
  Located located = LocateFile(named.native());
  const std::vector<std::string> steps = Steps(path);
  if (located.exists || steps.empty()) return located;
  for (std::size_t first = 0; first < steps.size(); ++first) {
    fs::path beside = folder;
    for (std::size_t i = first; i + 1 < steps.size(); ++i) beside /= steps[i];
    const fs::path found = FindIn(beside, steps.back());
    if (!found.empty()) return {found.native(), true, true};
  }
  return located;
}

}  // namespace qelm::embedded::model
