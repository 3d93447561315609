#include "filtering/components.h"

#include <algorithm>

namespace qelm::filtering {

using host::Id;
using host::kNone;

OpenedComponent OpenComponent(host::Host& host, Id book, Id component, bool suppress_alerts) {
  OpenedComponent result;
  result.path = host.books.ComponentPath(book, component);
  result.document = host.books.ComponentDocument(book, component);
  if (result.document != kNone) return result;
  host::OpenOptions options;
  options.suppress_alerts = suppress_alerts;
  host::OpenStatus status = host::OpenStatus::kUnreadable;
  result.document = host.documents.Open(result.path, options, &status);
  if (result.document == kNone) {
    result.why = host.documents.LastError();
    if (result.why.find(result.path) == std::string::npos) result.why = result.path + ": " + result.why;
    return result;
  }
  result.opened = status != host::OpenStatus::kAlreadyOpen;
  if (!host.books.IsBook(result.document)) return result;
  if (result.opened) host.documents.Close(result.document, true);
  result.document = kNone;
  result.opened = false;
  result.why = result.path + ": this is a book, and its documents are not those of the book that names it.";
  return result;
}

FilteredComponent& EntryOf(FilterRun* run, Id component) {
  const auto found =
      std::find_if(run->components.begin(), run->components.end(),
                   [&](const FilteredComponent& entry) { return entry.component == component; });
  if (found != run->components.end()) return *found;
  FilteredComponent& entry = run->components.emplace_back();
  entry.component = component;
  return entry;
}

FilteredComponent& OpenForRun(host::Host& host, FilterRun* run, Id book, Id component,
                              OpenedComponent* found) {
  FilteredComponent& entry = EntryOf(run, component);
  entry.generated = host.books.IsGenerated(book, component);
  *found = OpenComponent(host, book, component, run->suppress_opening_alerts);
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

void ClearBookOutcome(FilterRun* run) {
  run->result_book = kNone;
  run->components.clear();
  run->copied.clear();
  run->removed_files.clear();
  run->not_updated.clear();
}

}  // namespace qelm::filtering
