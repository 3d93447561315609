#include "filtering/linked_files.h"

namespace qelm::filtering {
namespace {

// Of the files that were not known the insets go into `insets`.
void AddLinks(host::Host& host, host::Id document, LinksThatCount which, std::set<std::string>* paths,
              std::vector<std::string>* insets) {
  std::vector<host::Link> links;
  if (document == host::kNone || !host.links.Read(document, &links)) return;
  for (const host::Link& link : links) {
    const bool counts = which == LinksThatCount::kAll || link.kind != host::LinkKind::kHypertext;
    if (link.path.empty() || !counts) continue;
    const bool is_new = paths->insert(link.path).second;
    if (is_new && link.kind == host::LinkKind::kTextInset) insets->push_back(link.path);
  }
}

}  // namespace

std::set<std::string> FilesBehind(host::Host& host, const std::vector<host::Id>& documents,
                                  LinksThatCount which) {
  std::set<std::string> paths;
  std::vector<std::string> insets;
  for (const host::Id document : documents) AddLinks(host, document, which, &paths, &insets);
  while (!insets.empty()) {
    const std::string path = std::move(insets.back());
    insets.pop_back();
    host::OpenStatus status = host::OpenStatus::kUnreadable;
    const host::Id inset = host.documents.Open(path, {.visible = false, .suppress_alerts = true}, &status);
    AddLinks(host, inset, which, &paths, &insets);
    if (status == host::OpenStatus::kOpened) host.documents.Close(inset, /*discard=*/true);
  }
  return paths;
}

}  // namespace qelm::filtering
