// The document filter: every element is tested against the active filter scheme, and one that fails is hidden
// under a condition or deleted.
//
// A run, from the inside out: bw_DeleteElement (delete_element.h) and Hiding (hiding.h) carry a verdict out;
// Verdicts (verdicts.h) tells what fails; TreeFilter (tree_filter.h) walks one flow; FilterDocument drives
// one document through it; FilterActiveDocument puts the questions, the copy and the undoing around it.
#pragma once

#include <functional>
#include <memory>

#include "config/local_settings.h"
#include "filtering/copy_record.h"
#include "filtering/filter_run.h"
#include "filtering/run_log.h"
#include "host/interface/host.h"
#include "messages/messenger.h"
#include "schemes/scheme.h"
#include "xpath/engine.h"

namespace qelm::filtering {

// How far a run is with a component of a book.
enum class ComponentStage : std::uint8_t {
  kChecked,  // it was only looked at
  kFinished,
  kGivenUp,  // the run ends in it; what was done in place is undone
};

// Takes a component when the run is through with it; `opened` tells that the run opened it. So a caller can
// save and close it. False ends the run, as it could not be saved; the host's last error tells why. Without
// one, components stay open, changed and not saved.
using ComponentSink = std::function<bool(host::Id document, bool opened, ComponentStage stage)>;

// What a filter works with. Refers to what the plug-in holds; made anew for a run.
struct FilterContext {
  host::Host& host;
  messages::Messenger& messenger;
  xpath::Engine& engine;
  const schemes::Scheme& scheme;
  FilterRun& run;
  // Takes the scheme coloring off the whole document; false when that failed. Without one, a run that is to
  // remove coloring tells the user that it did not.
  std::function<bool(host::Id document)> remove_coloring = {};
  RunLog log = {};
  ComponentSink component_done = {};
  // Whether the caller still writes into the folder of a book's copy when the run was completed: he saves the
  // book, and the folder is marked as one that is not complete until he completes the copy's record.
  bool caller_ends_filling = false;
  std::unique_ptr<CopyRecord> copy_record = {};  // of the copy of the book, once there is one
};

// Fills what was asked for in a run from the local settings, and clears what came of the last one. The
// notification client and its status stay, and whether to overwrite.
void PrepareRun(const config::LocalSettings& settings, FilterRun* run);

// Filters the active document from the first question to the last message. Returns kDone, kNoDocument,
// kNoActiveScheme, kCopyFailed, kCancelled, or 0 when a run failed or the user declined; the run's ending
// tells more. A document whose flows hold no element is kDone and stays as it is. In mode 3 the copy stays
// open, not saved since it was filtered.
std::int32_t FilterActiveDocument(FilterContext& context);

// The driver for one document, which leaves its outcome in the run's cancel flag.
void FilterDocument(FilterContext& context, host::Id document);

// 1 when the element fails the scheme and is to go, 0 when it is kept. For single elements: an XPath scheme
// is evaluated anew with each call. A scheme that cannot be used gives 0, with the run's cancel flag set.
std::int32_t FilterCheck(FilterContext& context, host::Id document, host::Id element);

// 1 when the highest-level element of the main flow fails the scheme.
std::int32_t RootWouldBeFiltered(FilterContext& context, host::Id document);

}  // namespace qelm::filtering
