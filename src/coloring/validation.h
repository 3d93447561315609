// Validation: the attributes of elements are checked by four rules against the active validation scheme and
// against the values of the elements above; what violates a rule is reported, and struck through in the text.
//
// From the inside out: ElementRules (validation_rules.h) checks one element; ValidateTree walks one and all
// that it holds; ValidateDocument takes the flows of a document; ValidateActiveDocument, ValidateActiveBook
// and ValidateSelection are the commands; ValidateElement and AutoValidate check one element alone.
#pragma once

#include <functional>
#include <vector>

#include "coloring/validation_run.h"
#include "coloring/validation_sink.h"
#include "common/result_codes.h"
#include "config/local_settings.h"
#include "host/interface/host.h"
#include "messages/messenger.h"
#include "schemes/scheme.h"

namespace qelm::coloring {

// What a validation works with. Refers to what the plug-in holds; made anew for a run.
struct ValidationContext {
  host::Host& host;
  messages::Messenger& messenger;
  const schemes::Scheme& scheme;
  ValidationRun& run;
  std::vector<ViolationSink*> sinks = {};  // told in this order
  // Called when a component of a book is done, and whether the run opened it. Without one it stays open.
  std::function<void(host::Id document, bool opened)> component_done = {};
};

// Fills what was asked for in a run from the local settings, and clears what came of the last one.
void PrepareValidation(const config::LocalSettings& settings, ValidationRun* run);

// The commands. Each returns kDone, kNoDocument, kNoElementSelected, kNoActiveScheme, kNoFlowOrRoot or
// kCancelled; the run tells what was found. A main flow without elements, where only that one is to be
// checked, ends the document command as cancelled, with an alert.
std::int32_t ValidateSelection(ValidationContext& context);
std::int32_t ValidateActiveDocument(ValidationContext& context);
// The components of the active book, in its order. One that cannot be opened is passed over and named.
std::int32_t ValidateActiveBook(ValidationContext& context);

// One document, as part of whatever the run is. False when it was cancelled, or there is no scheme.
bool ValidateDocument(ValidationContext& context, host::Id document, bool by_command);

// An element with all that it holds, in document order. Esc is looked for at every 102nd element. Returns the
// last rule that was violated, kNoViolation when none was.
std::int32_t ValidateTree(ValidationContext& context, host::Id document, host::Id start);

// One element alone: violations are shown as alerts, and its whole text is marked. Returns the last rule that
// it violates.
std::int32_t ValidateElement(ValidationContext& context, host::Id document, host::Id element);

// The same for a host's notification that something has changed: nothing happens, and nothing is said, when
// no scheme is active or the object is no element.
std::int32_t AutoValidate(ValidationContext& context, host::Id document, host::Id object);

}  // namespace qelm::coloring
