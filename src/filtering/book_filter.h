// The book filter: the document filter over every document of a book, in place or on a copy of the whole
// book.
//
// Generated components are left as they are: what is in them is made anew from the others when the book is
// updated. A component that cannot be opened is named, and the run goes on with the others; in mode 3 it is
// not copied, as a copy of it would hold what the filter should have deleted.
#pragma once

#include "filtering/document_filter.h"

namespace qelm::filtering {

// Filters the active book from the first check to the last message, as the run says. Returns kDone,
// kNoDocument, kNoActiveScheme, kCopyFailed, kOutputIsSource, kCancelled, or 0 when it failed or was
// cancelled before anything was filtered; the run's ending tells more, its components tell of each document.
// In mode 3 the run's result_book is the new book, which is saved and stays open; kCopyFailed also when a
// file of it cannot be saved, and its folder stays marked as one that is not complete then. The documents
// that were filtered are not saved, unless the context's component_done does it.
std::int32_t FilterActiveBook(FilterContext& context);

// The folder that a user or a client means by a text: one without a root is seen from the book's own folder.
// Empty when the text is.
std::string OutputFolder(std::string_view book_path, std::string_view text);

// The same, and in mode 3 saves each document of the new book when the run is through with it.
std::int32_t FilterAndSaveActiveBook(FilterContext& context);

// Filters the documents of a book and updates the book. The outcome is in the run's cancel flag, ending,
// counts and components.
void FilterBookComponents(FilterContext& context, host::Id book);

}  // namespace qelm::filtering
