// Coloring and uncoloring: every element is tested against the active coloring scheme, and its text gets the
// color and style of the rule that it matches; uncoloring takes such marks away again.
//
// A run, from the inside out: ClassicMatcher (classic_matcher.h) and NodePositions (node_positions.h) find an
// element's rule, MarkStack (mark_stack.h) carries it out, ElementWalk (element_walk.h) goes over one tree,
// ColorDocument puts the checks and the uncoloring before it, and RunColoring is what commands and calls use.
#pragma once

#include "coloring/coloring_run.h"
#include "config/local_settings.h"
#include "host/interface/host.h"
#include "messages/messenger.h"
#include "schemes/scheme.h"
#include "xpath/engine.h"

namespace qelm::coloring {

// What a run works with. Refers to what the plug-in holds; made anew for a run.
struct ColoringContext {
  host::Host& host;
  messages::Messenger& messenger;
  xpath::Engine& engine;
  const schemes::Scheme& scheme;  // the active coloring scheme; not used by uncoloring
  ColoringRun& run;
};

// Fills what was asked for in a run from the local settings, and clears what came of the last one.
void PrepareRun(const config::LocalSettings& settings, ColoringRun* run);

// Runs a command on the active document or book, from its checks to its last message. `report` says whether
// the user is told and asked. Returns kDone, kNoDocument, kNoElementSelected, kNoActiveScheme, kNoFlowOrRoot,
// kCancelled, or 0 when it failed; the run's ending tells more. For a book it is the result of the last
// component, and the endings of all are in `components`. What was marked before a run ended stays marked.
std::int32_t RunColoring(ColoringContext& context, Command command, bool report);

// Colors one document, which is uncolored first. Returns as RunColoring does.
std::int32_t ColorDocument(ColoringContext& context, host::Id document);

// Colors one element and what is in it, with attributes that they lack taken from their ancestors. Nothing is
// uncolored before. Returns as RunColoring does.
std::int32_t ColorElement(ColoringContext& context, host::Id document, host::Id element);

}  // namespace qelm::coloring
