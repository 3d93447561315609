#include "filtering/components.h"

namespace qelm::filtering {

using host::Id;
using host::kNone;

FilteredComponent& EntryOf(FilterRun* run, Id component) {
  const auto [found, is_new] = run->component_places.try_emplace(component, run->components.size());
  if (is_new) run->components.emplace_back().component = component;
  return run->components[found->second];
}

FilteredComponent& OpenForRun(host::Host& host, FilterRun* run, Id book, Id component,
                              OpenedComponent* found) {
  FilteredComponent& entry = EntryOf(run, component);
  entry.generated = host.books.IsGenerated(book, component);
  *found = messages::OpenComponent(host, book, component, run->suppress_opening_alerts);
  entry.path = found->path;
  entry.why = found->why;
  entry.opened = found->document != kNone;
  return entry;
}

std::string PassedOver(const FilterRun& run) {
  std::string lines;
  for (const FilteredComponent& entry : run.components) {
    if (entry.opened || entry.generated) continue;
    if (!lines.empty()) lines += "\n";
    lines += entry.why;
  }
  return lines;
}

std::optional<SameComponents> MatchComponents(host::Books& books, Id book, Id other) {
  SameComponents same;
  Id there = books.FirstComponent(other);
  for (Id here = books.FirstComponent(book); here != kNone; here = books.NextComponent(book, here)) {
    if (there == kNone) return std::nullopt;
    same.emplace_back(here, there);
    there = books.NextComponent(other, there);
  }
  return there == kNone ? std::optional(std::move(same)) : std::nullopt;
}

void TakeIdsOfOther(const SameComponents& components, FilterRun* run) {
  std::unordered_map<Id, std::size_t> places;
  for (const auto& [here, there] : components) {
    const auto known = run->component_places.find(here);
    if (known == run->component_places.end()) continue;
    run->components[known->second].component = there;
    places.emplace(there, known->second);
  }
  run->component_places = std::move(places);
}

void ClearBookOutcome(FilterRun* run) {
  run->result_book = kNone;
  run->components.clear();
  run->component_places.clear();
  run->copied.clear();
  run->made_folders.clear();
  run->unchanged_links.clear();
  run->removed_files.clear();
  run->left_over.clear();
  run->missing.clear();
  run->not_updated.clear();
  run->not_updated_code = 0;
}

}  // namespace qelm::filtering
