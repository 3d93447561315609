#include "filtering/copy_plan.h"

#include <algorithm>
#include <filesystem>

#include "common/paths.h"
#include "filtering/plain_path.h"

namespace qelm::filtering {
namespace {

namespace fs = std::filesystem;
using host::Id;
using host::kNone;
using host::LinkKind;
using Role = CopiedFile::Role;

// The names under which a file may be found that is called so: documents are often saved as MIF after others
// came to refer to them.
std::vector<std::string> NamesFor(const std::string& path) {
  constexpr std::string_view kOwn[] = {".fm", ".book", ".bk", ".FM", ".BOOK", ".BK"};
  std::vector<std::string> names{path};
  const std::string extension = fs::path(path).extension().string();
  if (std::find(std::begin(kOwn), std::end(kOwn), extension) != std::end(kOwn)) {
    names.push_back(fs::path(path).replace_extension(".mif").string());
  }
  names.push_back(path + ".mif");
  return names;
}

// A drive is the root of a path of another system.
bool IsAbsolute(const std::string& path) {
  return common::IsAbsolutePath(path) || (path.size() > 1 && path[1] == ':');
}

// What leads from `from` to `path`; empty for nothing.
std::string Below(const std::string& from, const std::string& path) {
  const std::string relative = fs::path(path).lexically_relative(from).string();
  const bool outside = relative == ".." || relative.starts_with("../") || relative == ".";
  return outside ? std::string() : relative;
}

// What of a link is the same wherever its document lies. The file that it leads to may be found with another
// ending, or in other letters.
std::uint64_t LooksOf(const host::Link& link) {
  std::string text(1, static_cast<char>('0' + static_cast<int>(link.kind)));
  text.append(link.target).append(1, '\n').append(link.command).append(1, '\n');
  const std::string_view name = common::FileName(link.path);
  for (const char c : name.substr(0, name.find('.'))) {
    if (c >= 'A' && c <= 'Z') text += static_cast<char>(c - 'A' + 'a');
    if (c >= ' ' && c <= '~' && !(c >= 'A' && c <= 'Z')) text += c;
  }
  return std::hash<std::string>()(text);
}

}  // namespace

CopyPlan::CopyPlan(host::Host& host, Id book) : host_(host) {
  const std::string path = PlainPath(host.platform, std::string(host.documents.Path(book)));
  book_folder_ = common::FolderOf(path);
  AddFile(Role::kBook, path);
  files_.front().state = host.documents.FileStateAsRead(book);
}

std::size_t CopyPlan::AddFile(Role role, const std::string& source) {
  const auto [entry, is_new] = by_source_.try_emplace(host_.platform.ResolvedPath(source), files_.size());
  if (is_new) {
    File& file = files_.emplace_back();
    file.role = role;
    file.source = PlainPath(host_.platform, source);
  }
  return entry->second;
}

std::uint32_t CopyPlan::Intern(const std::string& path) {
  const auto [entry, is_new] = path_numbers_.try_emplace(path, static_cast<std::uint32_t>(paths_.size()));
  if (is_new) paths_.push_back(path);
  return entry->second;
}

bool CopyPlan::AddComponent(Id component, Id document) {
  const std::size_t file = AddFile(Role::kComponent, std::string(host_.documents.Path(document)));
  if (files_[file].component != kNone) return true;  // a book may name a file twice
  files_[file].component = component;
  return ReadReferences(file, document);
}

// What is copied is the file, in which the references are others than in a document with unsaved changes, or
// in one that somebody else saved since it was opened.
bool CopyPlan::ReadReferences(std::size_t file, Id document) {
  std::string& state = files_[file].state;
  state = host_.documents.FileStateAsRead(document);
  const bool same = state.empty() || state == host_.platform.FileState(files_[file].source);
  if (!same || host_.documents.Switch(document, host::DocumentSwitch::kModified)) {
    return ReadReferencesOfFile(file);
  }
  std::vector<host::Link> links;
  if (!host_.links.Read(document, &links)) return false;
  for (std::uint32_t i = 0; i < links.size(); ++i) AddReference(file, i, links[i], links[i].path);
  return true;
}

bool CopyPlan::ReadReferencesOfFile(std::size_t file) {
  files_[file].state = host_.platform.FileState(files_[file].source);
  std::vector<host::Link> links;
  if (!ReadAsWritten(file, &links)) return false;
  const std::string folder(common::FolderOf(files_[file].source));
  for (std::uint32_t i = 0; i < links.size(); ++i) {
    const std::string& path = links[i].path;
    const bool relative = !path.empty() && !IsAbsolute(path);
    AddReference(file, i, links[i], relative ? common::JoinPath(folder, path) : path);
  }
  return true;
}

void CopyPlan::AddReference(std::size_t file, std::uint32_t number, const host::Link& link,
                            const std::string& path) {
  if (path.empty()) return;
  const bool inset = link.kind == LinkKind::kTextInset;
  const bool shown = inset || link.kind == LinkKind::kGraphic;
  const std::uint32_t interned = Intern(PlainPath(host_.platform, path));
  files_[file].references.push_back({number, LooksOf(link), interned, false, shown, inset});
}

const host::Link* CopyPlan::Find(const std::vector<host::Link>& links, const Rewrite& rewrite) {
  const bool same = rewrite.link < links.size() && LooksOf(links[rewrite.link]) == rewrite.looks;
  return same ? &links[rewrite.link] : nullptr;
}

// Opened as new, a document lies nowhere: what is absolute then is written so.
bool CopyPlan::ReadAsWritten(std::size_t file, std::vector<host::Link>* links) {
  host::OpenOptions options{.visible = false, .suppress_alerts = true, .as_new = true};
  host::OpenStatus status = host::OpenStatus::kUnreadable;
  const Id document = host_.documents.Open(files_[file].source, options, &status);
  if (document == kNone) return false;
  const bool read = host_.links.Read(document, links);
  host_.documents.Close(document, true);
  return read;
}

bool CopyPlan::AddShownFiles(const std::function<bool()>& stopped) {
  // Insets that are found are put at the end of the list and come up in turn.
  for (std::size_t i = 0; i < files_.size(); ++i) {
    if (files_[i].role == Role::kInset) {
      if (stopped()) return false;
      ReadInset(i);
    }
    for (std::size_t r = 0; r < files_[i].references.size(); ++r) {
      const Reference reference = files_[i].references[r];
      const std::string path = paths_[reference.path];
      if (!reference.shown) continue;
      if (!host_.platform.MayExist(path)) {
        missing_.insert(path);
        continue;
      }
      if (!IsBelowBook(path)) LearnSpelling(i);
      if (!IsBelowBook(path) && files_[i].references[r].absolute) continue;
      AddFile(reference.inset ? Role::kInset : Role::kGraphic, path);
    }
  }
  return true;
}

// An inset need not be a document: text and tables come from files of other kinds too.
void CopyPlan::ReadInset(std::size_t file) {
  host::OpenStatus status = host::OpenStatus::kUnreadable;
  const std::string path = files_[file].source;
  const Id document = host_.documents.Open(path, {.visible = false, .suppress_alerts = true}, &status);
  if (document == kNone) return;
  ReadReferences(file, document);
  if (status == host::OpenStatus::kOpened) host_.documents.Close(document, true);
}

void CopyPlan::LearnSpelling(std::size_t file) {
  if (files_[file].spelling_known) return;
  files_[file].spelling_known = true;
  std::vector<host::Link> links;
  if (!ReadAsWritten(file, &links)) return;
  for (Reference& reference : files_[file].references) {
    if (reference.link < links.size()) reference.absolute = IsAbsolute(links[reference.link].path);
  }
}

bool CopyPlan::IsBelowBook(const std::string& path) const { return !Below(book_folder_, path).empty(); }

// What lies below the book keeps its place, so it chooses before what comes from elsewhere.
void CopyPlan::ChooseTargets(const std::string& folder) {
  for (const bool below : {true, false}) {
    for (std::size_t i = 0; i < files_.size(); ++i) {
      if (IsBelowBook(files_[i].source) != below) continue;
      files_[i].target = TargetFor(files_[i].source, folder);
      by_target_.emplace(files_[i].target, i);
    }
  }
}

std::string CopyPlan::TargetFor(const std::string& source, const std::string& folder) {
  const std::string below = Below(book_folder_, source);
  if (!below.empty() && !by_target_.contains(common::JoinPath(folder, below))) {
    return common::JoinPath(folder, below);
  }
  const std::string own(common::FileName(common::FolderOf(source)));
  const std::string name(common::FileName(source));
  for (int number = 1;; ++number) {
    const std::string beside = number == 1 ? own : own + "-" + std::to_string(number);
    std::string target = common::JoinPath(common::JoinPath(folder, beside), name);
    if (!by_target_.contains(target)) return target;
  }
}

std::size_t CopyPlan::FindFile(const std::string& path) const {
  for (const std::string& name : NamesFor(path)) {
    const auto found = by_source_.find(host_.platform.ResolvedPath(name));
    if (found != by_source_.end()) return found->second;
    if (host_.platform.MayExist(name)) break;  // it means that file
  }
  return kNoFile;
}

std::vector<CopyPlan::Rewrite> CopyPlan::RewritesFor(std::size_t number, bool redirect) {
  if (SpellingMatters(files_[number], redirect)) LearnSpelling(number);
  const File& file = files_[number];
  std::vector<Rewrite> rewrites;
  std::unordered_map<std::uint64_t, std::string> known;  // a document refers to few files, and often
  for (const Reference& reference : file.references) {
    const std::uint64_t key = std::uint64_t{reference.path} * 2 + (reference.absolute ? 1 : 0);
    const auto [entry, is_new] = known.try_emplace(key);
    if (is_new) entry->second = NewPath(file, reference, redirect);
    if (!entry->second.empty()) rewrites.push_back({reference.link, reference.looks, entry->second});
  }
  return rewrites;
}

// Whether an absolute path among the references would be treated otherwise than a relative one.
bool CopyPlan::SpellingMatters(const File& file, bool redirect) const {
  std::unordered_map<std::uint32_t, bool> known;
  for (const Reference& reference : file.references) {
    const auto [entry, is_new] = known.try_emplace(reference.path, false);
    if (!is_new) continue;
    if (redirect && FindFile(paths_[reference.path]) != kNoFile) return true;
    if (!NewPath(file, reference, redirect).empty()) return true;
  }
  return false;
}

// The path to which the reference of a copied document is to lead; empty where it leads there as it is.
std::string CopyPlan::NewPath(const File& file, const Reference& reference, bool redirect) const {
  const std::string& path = paths_[reference.path];
  const std::size_t copied = FindFile(path);
  if (reference.absolute && (copied == kNoFile || !redirect)) return {};
  // What is missing here is missing for the copy too, wherever it would look for it.
  if (copied == kNoFile && !host_.platform.MayExist(path)) return {};
  const std::string& wanted = copied == kNoFile ? path : files_[copied].target;
  // Where it leads as it is written, read at its new place.
  const fs::path relative = RelativePath(host_.platform, std::string(common::FolderOf(file.source)), path);
  const std::string leads =
      reference.absolute ? path
                         : (fs::path(file.target).parent_path() / relative).lexically_normal().string();
  const auto names = NamesFor(leads);
  return std::find(names.begin(), names.end(), wanted) != names.end() ? std::string() : wanted;
}

std::vector<CopiedFile> CopyPlan::CopiedFiles() const {
  std::vector<CopiedFile> copied;
  copied.reserve(files_.size());
  for (const File& file : files_) {
    CopiedFile& entry = copied.emplace_back(CopiedFile{file.role, file.source, file.target, {}});
    for (const Reference& reference : file.references) {
      const std::size_t shown = reference.shown ? FindFile(paths_[reference.path]) : kNoFile;
      if (shown != kNoFile) entry.refers_to.push_back(shown);
    }
  }
  return copied;
}

}  // namespace qelm::filtering
