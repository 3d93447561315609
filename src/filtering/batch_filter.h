// The batch filter: one source filtered by scheme after scheme, each into an output folder of its own, with a
// report of everything that was done.
//
//   BatchRequest request = BatchDefaults(settings);
//   request.source = "/docs/pump.book.mif";
//   request.category = "Audience";
//   const BatchRun run = RunBatchFilter(context, request);
#pragma once

#include <optional>

#include "filtering/batch_run.h"

namespace qelm::filtering {

// How a caller takes part in a batch, or does some of its work. All may be empty.
struct BatchHooks {
  // Told once, before the first scheme, which ones will be run; may say what they replace.
  std::function<void(std::vector<BatchScheme>*)> begin = {};
  // Whether a scheme is to be run; one that is not is not in the report either.
  std::function<bool(const BatchScheme&)> wanted = {};
  // What came of a scheme that was run elsewhere; nothing: it is run here.
  std::function<std::optional<BatchOutcome>(const BatchScheme&)> outcome_of = {};
  std::function<void(const BatchOutcome&)> done = {};
  // When the batch was cancelled: what came of a scheme that was begun elsewhere by then.
  std::function<std::optional<BatchOutcome>(const BatchScheme&)> left = {};
};

// A request as the local settings have it; source and schemes are still to be named.
BatchRequest BatchDefaults(const config::LocalSettings& settings);

// Where the configuration of the request is: as it is named, or in the folder that the settings name for
// them.
std::string ConfigurationPath(host::Platform& platform, const BatchRequest& request);

// The schemes of the request with their output folders: those of the category in the main settings, or of the
// configuration. `settings_document` becomes the document that they are read from, `opened` whether it was
// opened for that; `why` tells why there is none.
struct BatchSchemes {
  std::vector<BatchScheme> schemes;
  host::Id settings_document = host::kNone;
  bool opened = false;
  std::string why;
};
BatchSchemes FindBatchSchemes(BatchContext& context, const BatchRequest& request);

// Runs the batch from the report's first line to the last alert. The document or book that was active is
// active again afterwards.
BatchRun RunBatchFilter(BatchContext& context, const BatchRequest& request, const BatchHooks& hooks = {});

}  // namespace qelm::filtering
