// Coloring and uncoloring the documents of a book.
#pragma once

#include "coloring/coloring.h"

namespace qelm::coloring {

// Runs the command on every component of the book that is not generated, in book order. They are opened where
// they are not open, and stay open, changed and not saved; one that cannot be opened is passed over. Returns
// the result of the last one; kCancelled when the user ended it before or between two components.
std::int32_t RunOnBook(ColoringContext& context, Command command, host::Id book);

}  // namespace qelm::coloring
