#include "filtering/delete_empties.h"

#include "common/strings.h"
#include "filtering/components.h"
#include "filtering/copy_record.h"
#include "schemes/flows.h"

namespace qelm::filtering {

using host::Id;
using host::kNone;
using Role = CopiedFile::Role;

void EmptyComponents::Look(Id document, FilteredComponent* entry) {
  host::Host& host = context_.host;
  // A file that stands twice in the book is filtered when it first comes up.
  const std::string file = host.platform.ResolvedPath(entry->path);
  entry->emptied = emptied_.contains(file) || IsEmptied(document, *entry);
  if (entry->emptied) {
    emptied_.insert(file);
    return;
  }
  std::vector<host::Link> links;
  if (!host.links.Read(document, &links)) complete_ = false;
  for (const host::Link& link : links) {
    if (!link.path.empty()) Keep(link.path);
  }
}

void EmptyComponents::Keep(const std::string& path) {
  const std::string resolved = context_.host.platform.ResolvedPath(path);
  if (resolved.empty()) complete_ = false;
  referred_.insert(resolved);
}

bool EmptyComponents::IsEmptied(Id document, const FilteredComponent& entry) {
  if (entry.deleted == 0) return false;
  host::Host& host = context_.host;
  const Id root = schemes::MainFlow(host, document).root;
  if (root == kNone) return true;
  for (Id child = host.elements.FirstChild(document, root); child != kNone;
       child = host.elements.NextSibling(document, child)) {
    if (!schemes::IsTextNode(host, document, child)) return false;
  }
  // Blanks do not show.
  constexpr std::size_t kEnough = 1000;
  std::string buffer;
  const std::string_view text = host.text.ElementText(document, root, kEnough, &buffer);
  return text.find_first_not_of(" \t\r\n") == std::string_view::npos;
}

bool EmptyComponents::Remove() {
  bool changed = false;
  if (!RemoveEntries(&changed)) return false;
  if (changed && !context_.host.documents.Save(book_, {})) return false;
  RemoveFiles();
  return true;
}

bool EmptyComponents::RemoveEntries(bool* changed) {
  for (FilteredComponent& entry : context_.run.components) {
    if (!entry.emptied) {
      if (entry.generated) generated_.insert(entry.path);
      Keep(entry.path);
      continue;
    }
    if (!context_.host.books.RemoveComponent(book_, entry.component)) return false;
    entry.removed = *changed = true;
    removed_.insert(entry.path);
  }
  return true;
}

// Insets, generated components, and emptied ones that something still leads to, stay as they are: they show
// what they showed in the source, and that may be insets again.
void EmptyComponents::KeepWhatIsShown() {
  const std::vector<CopiedFile>& copied = context_.run.copied;
  std::vector<std::size_t> unfiltered;
  std::vector<bool> seen(copied.size(), false);
  const auto see = [&](std::size_t i) {
    const std::string& path = copied[i].target;
    const bool stays = copied[i].role == Role::kInset || generated_.contains(path) || removed_.contains(path);
    if (!seen[i] && stays) unfiltered.push_back(i);
    seen[i] = true;
  };
  for (std::size_t i = 0; i < copied.size(); ++i) {
    if (referred_.contains(context_.host.platform.ResolvedPath(copied[i].target))) see(i);
  }
  while (!unfiltered.empty()) {
    const std::size_t file = unfiltered.back();
    unfiltered.pop_back();
    for (const std::size_t shown : copied[file].refers_to) {
      Keep(copied[shown].target);
      see(shown);
    }
  }
}

void EmptyComponents::RemoveFiles() {
  KeepWhatIsShown();
  if (!complete_) return;
  for (const CopiedFile& file : context_.run.copied) {
    if (file.role == Role::kBook) continue;
    if (file.role == Role::kComponent && !removed_.contains(file.target)) continue;
    if (referred_.contains(context_.host.platform.ResolvedPath(file.target))) continue;
    // What somebody made of it meanwhile is his.
    if (context_.copy_record && !context_.copy_record->IsUnchanged(file.target)) continue;
    if (CloseAndRemove(file.target)) context_.run.removed_files.push_back(file.target);
  }
  if (!context_.run.removed_files.empty()) RemoveFolders();
}

void EmptyComponents::RemoveFolders() {
  const std::vector<std::string>& made = context_.run.made_folders;
  for (auto folder = made.rbegin(); folder != made.rend(); ++folder) {
    context_.host.platform.RemoveFolder(*folder);
  }
}

bool EmptyComponents::CloseAndRemove(const std::string& path) {
  host::Host& host = context_.host;
  for (Id open = host.documents.FirstOpenDocument(); open != kNone;
       open = host.documents.NextOpenDocument(open)) {
    if (!host.platform.SameFile(std::string(host.documents.Path(open)), path)) continue;
    host.documents.Close(open, true);
    break;
  }
  return host.platform.RemoveFile(path);
}

}  // namespace qelm::filtering
