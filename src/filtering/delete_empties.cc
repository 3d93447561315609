#include "filtering/delete_empties.h"

#include "common/strings.h"
#include "filtering/components.h"
#include "schemes/flows.h"

namespace qelm::filtering {

using host::Id;
using host::kNone;
using Role = CopiedFile::Role;

void EmptyComponents::Look(Id document, FilteredComponent* entry) {
  entry->emptied = IsEmptied(document, *entry);
  if (entry->emptied) return;
  host::Host& host = context_.host;
  std::vector<host::Link> links;
  if (!host.links.Read(document, &links)) complete_ = false;
  for (const host::Link& link : links) {
    if (!link.path.empty()) referred_.insert(host.platform.ResolvedPath(link.path));
  }
  referred_.insert(host.platform.ResolvedPath(entry->path));
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
  if (complete_) RemoveFiles();
  return true;
}

bool EmptyComponents::RemoveEntries(bool* changed) {
  for (FilteredComponent& entry : context_.run.components) {
    if (!entry.emptied) {
      referred_.insert(context_.host.platform.ResolvedPath(entry.path));
      continue;
    }
    if (!context_.host.books.RemoveComponent(book_, entry.component)) return false;
    entry.removed = *changed = true;
  }
  return true;
}

// An inset that stays shows files in turn, and those may be insets again.
void EmptyComponents::KeepShownByInsets() {
  const std::vector<CopiedFile>& copied = context_.run.copied;
  std::vector<std::size_t> shown;
  std::vector<bool> seen(copied.size(), false);
  const auto see = [&](std::size_t i) {
    if (!seen[i] && copied[i].role == Role::kInset) shown.push_back(i);
    seen[i] = true;
  };
  for (std::size_t i = 0; i < copied.size(); ++i) {
    if (referred_.contains(context_.host.platform.ResolvedPath(copied[i].target))) see(i);
  }
  while (!shown.empty()) {
    const std::size_t inset = shown.back();
    shown.pop_back();
    for (const std::size_t file : copied[inset].refers_to) {
      referred_.insert(context_.host.platform.ResolvedPath(copied[file].target));
      see(file);
    }
  }
}

void EmptyComponents::RemoveFiles() {
  KeepShownByInsets();
  for (const CopiedFile& file : context_.run.copied) {
    if (file.role == Role::kBook) continue;
    if (referred_.contains(context_.host.platform.ResolvedPath(file.target))) continue;
    if (CloseAndRemove(file.target)) context_.run.removed_files.push_back(file.target);
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
