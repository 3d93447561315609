// Going through the documents of a book.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "filtering/document_filter.h"
#include "messages/component_document.h"

namespace qelm::filtering {

using messages::OpenedComponent;

// What the run tells of the component, in the order in which components first came up.
FilteredComponent& EntryOf(FilterRun* run, host::Id component);

// Opens a component for the run, and notes in its entry, which it returns, what came of that.
FilteredComponent& OpenForRun(host::Host& host, FilterRun* run, host::Id book, host::Id component,
                              OpenedComponent* found);

// The paths of the components that were passed over, with the reasons, a line each; empty for none. Generated
// ones are not among them.
std::string PassedOver(const FilterRun& run);

// Filters the documents of a book and updates it, with what the run knows of its components already.
void FilterComponents(FilterContext& context, host::Id book);

// The components of a book and those of another reading of its file, each with its counterpart, in book
// order: an open book keeps the ids of components that were taken out of it, and its file does not have them.
// Nothing when there are not as many in both, as when what was taken out is not saved.
using SameComponents = std::vector<std::pair<host::Id, host::Id>>;
std::optional<SameComponents> MatchComponents(host::Books& books, host::Id book, host::Id other);

// Lets the run, which knows components by their ids in one reading of a book, know them by those in another.
void TakeIdsOfOther(const SameComponents& components, FilterRun* run);

// Forgets what came of an earlier run over a book.
void ClearBookOutcome(FilterRun* run);

}  // namespace qelm::filtering
