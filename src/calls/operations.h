// The words that work on files and elements, and the one that chooses the scheme to work by. Each gets its
// arguments complete.
//
// A file is one that is open in the host, named by its path. An element is named by the path of its document
// and its unique id; where the document has none of that id the result is common::kNoElementSelected, and
// common::kNoDocument where the file is a book, whose entries are no content to work on.
#pragma once

#include "calls/calls.h"

namespace qelm::calls {

// kind, category, name, report. Returns the result of loading the scheme, common::kInvalidSchemeNames also
// for a kind that does not exist.
Answer SetScheme(CallContext& context, Arguments arguments);

// path, unique id, with descendants, report; and path, report. Return what coloring returns.
Answer ColorElement(CallContext& context, Arguments arguments);
Answer ColorFile(CallContext& context, Arguments arguments);

// path, unique id. 1 when the active filter scheme removes the element, 0 when it keeps it;
// common::kNoActiveScheme when there is none that can be used.
Answer FilterCheckElement(CallContext& context, Arguments arguments);

// path, report. Returns what the filter returns. A book that is to be duplicated without a place for the copy
// gives common::kCopyFailed.
Answer FilterFile(CallContext& context, Arguments arguments);

// path. Returns what restoring returns.
Answer RestoreFile(CallContext& context, Arguments arguments);

// path, unique id. Violations are shown. Returns the number of the last rule that is violated, -1 for none.
Answer ValidateElement(CallContext& context, Arguments arguments);

}  // namespace qelm::calls
