// Restoring a document: what a filter hid is shown and untagged again.
//
// The tag is the only mark that a filter leaves, and it replaced whatever conditions a range had: a restored
// range has none. Rows lose all their conditions, tagged or not.
#pragma once

#include "filtering/document_filter.h"

namespace qelm::filtering {

// Restores one document (0: the active one) as a command: asks first when `ask` is set, tells the
// notification client when `notify` is set. Returns kDone, kNoDocument, kCancelled, or 0 when the user
// declined or something could not be restored; the run's ending tells which.
std::int32_t RestoreDocument(host::Host& host, messages::Messenger& messenger, FilterRun& run,
                             host::Id document, bool ask, bool notify);

// Restores every document of a book (0: the active one), in the book's order; `ask` as above. Stops at once
// when the user cancels; the documents before stay restored. Those that cannot be opened are passed over: the
// run's components tell of all. Returns kDone, kNoDocument, kCancelled, or 0 when the user declined or
// something could not be restored or saved.
std::int32_t RestoreBook(host::Host& host, messages::Messenger& messenger, FilterRun& run, host::Id book,
                         bool ask, const ComponentSink& component_done = {});

// The core, without question, notification or screen switching. False when it was cancelled. What the host
// could not do is told once, sets the run's restore_failed, and the rest goes on.
bool RestoreCore(host::Host& host, messages::Messenger& messenger, FilterRun& run, host::Id document);

}  // namespace qelm::filtering
