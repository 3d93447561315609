// The driver for one document, given the verdicts.
#pragma once

#include <vector>

#include "filtering/document_filter.h"
#include "filtering/verdicts.h"

namespace qelm::filtering {

// Filters the flows of the document by verdicts that are ready for them. Leaves the outcome in the run's
// cancel flag, ending and counts; puts back what it switched on every way out.
void DriveFilter(FilterContext& context, host::Id document, const std::vector<FlowRoot>& flows,
                 Verdicts& verdicts);

// Clears what came of an earlier run; of what came of a book, nothing.
void ClearOutcome(FilterRun* run);

// Undoes what a run that was cancelled or failed did to a document in place, and shows the element that the
// cancel flag names. The run's ending stays.
void UndoFilter(FilterContext& context, host::Id document);

// The result code for a run that ended so.
std::int32_t ResultOf(Ending ending);

}  // namespace qelm::filtering
