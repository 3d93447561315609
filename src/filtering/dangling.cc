#include "filtering/dangling.h"

#include <array>

#include "filtering/id_set.h"
#include "filtering/plain_path.h"
#include "messages/element_places.h"

namespace qelm::filtering {
namespace {

using host::Id;
using host::kNone;
using host::Link;
using host::LinkKind;
using host::LinkTarget;

std::string KeyOf(LinkKind kind, std::string_view name) {
  std::string key(1, static_cast<char>('0' + static_cast<int>(kind)));
  key.append(name);
  return key;
}

// By element: whether it, or what it lies in, would go. Empty when nothing would.
IdSet GoneElements(host::Host& host, Id document, const std::vector<Id>& would_go) {
  IdSet gone;
  if (would_go.empty()) return gone;
  gone.Reset(host.elements.IdLimit(document));
  for (const Id element : would_go) gone.Add(element);
  host::ElementColumns columns;
  for (Id flow = host.elements.FirstFlow(document); flow != kNone;
       flow = host.elements.NextFlow(document, flow)) {
    const Id root = host.elements.Root(document, flow);
    if (root != kNone) host.elements.ReadTree(document, root, &columns);
  }
  for (std::size_t place = 0; place < columns.elements.size(); ++place) {
    const std::uint32_t parent = columns.parents[place];
    if (parent != host::ElementColumns::kNoPlace && gone.Holds(columns.elements[parent])) {
      gone.Add(columns.elements[place]);
    }
  }
  return gone;
}

// The names of which nothing is left.
std::unordered_set<std::string> GoneNames(const std::vector<LinkTarget>& targets, const IdSet& gone) {
  std::unordered_set<std::string> names;
  const auto went = [&gone](const LinkTarget& target) {
    return target.state != LinkTarget::State::kShown || gone.Holds(target.element);
  };
  for (const LinkTarget& target : targets) {
    if (went(target)) names.insert(KeyOf(target.kind, target.name));
  }
  if (names.empty()) return names;
  for (const LinkTarget& target : targets) {
    if (!went(target)) names.erase(KeyOf(target.kind, target.name));
  }
  return names;
}

// Whether the link names something that a filter may take away.
bool CanDangle(const Link& link) { return link.kind != LinkKind::kGraphic && link.command != "URL"; }

}  // namespace

std::string_view LinkKindName(LinkKind kind) {
  constexpr std::array<std::string_view, 4> kNames = {"cross-reference", "hypertext link", "text inset",
                                                      "graphic"};
  return kNames[static_cast<std::size_t>(kind)];
}

void DanglingReferences::Add(Id document, const std::vector<Id>& would_go) {
  std::vector<Link> links;
  std::vector<LinkTarget> targets;
  if (!host_.links.ReadAll(document, &links, &targets) || (links.empty() && single_)) return;
  const std::string path(host_.documents.Path(document));
  const std::string own = PlainPath(host_.platform, path);
  const IdSet gone = GoneElements(host_, document, would_go);
  Names& names = files_[own];
  names.gone.merge(GoneNames(targets, gone));
  messages::ElementPlaces places(host_, document);
  for (const Link& link : links) {
    if (!CanDangle(link) || link.hidden || gone.Holds(link.element)) continue;
    const bool inside = link.path.empty() || link.path == own;
    const bool dangling = inside && names.gone.contains(KeyOf(link.kind, link.target));
    if (!dangling && (inside || single_)) continue;
    Kept kept{{link.kind, path, {}, inside ? path : link.path, link.target}, dangling};
    if (with_places_ && link.element != kNone) places.AppendPath(link.element, &kept.reference.element);
    kept_.push_back(std::move(kept));
  }
}

void DanglingReferences::AddRemovedFile(const std::string& path) {
  files_[PlainPath(host_.platform, path)].file_gone = true;
}

std::vector<DanglingReference> DanglingReferences::Find() {
  std::vector<DanglingReference> found;
  for (Kept& kept : kept_) {
    DanglingReference& reference = kept.reference;
    const auto file = files_.find(PlainPath(host_.platform, reference.path));
    if (!kept.dangling && file == files_.end()) continue;
    const bool dangling = kept.dangling || file->second.file_gone ||
                          file->second.gone.contains(KeyOf(reference.kind, reference.target));
    // A file that went took its own references with it.
    const auto source = files_.find(PlainPath(host_.platform, reference.source));
    const bool is_left = source == files_.end() || !source->second.file_gone;
    if (dangling && is_left) found.push_back(std::move(reference));
  }
  return found;
}

}  // namespace qelm::filtering
