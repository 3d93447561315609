// Bringing a document's bytes and model up to date with what was done to it.
//
// The document is saved into memory and read again, so that the model is what a reader of the saved file
// would have. Everything keeps its id: elements, definitions, conditions, colors and flows that are the same
// have the number that they had. Text positions become stale. Costs as much as saving and opening.
#pragma once

#include <string>

#include "embedded/model/document.h"

namespace qelm::embedded::model {

// Whether something waits to be brought in: additions or marks.
bool NeedsSettling(const Document& document);

// After it there are neither additions nor marks. The document counts as modified as before. False when what
// was written cannot be read again; the document is then as it was.
bool Settle(Document* document);

// Gives the document other bytes, in which the same elements stand in the same order: what its saved form
// became by a change of its catalogs, for one. Ids are kept as by Settle; false as there.
bool ReadAnew(Document* document, std::string bytes);

}  // namespace qelm::embedded::model
