// Going through the documents of a book.
#pragma once

#include <string>

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

// Forgets what came of an earlier run over a book.
void ClearBookOutcome(FilterRun* run);

}  // namespace qelm::filtering
