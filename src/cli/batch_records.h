// What a batch keeps of the schemes that it is through with, so that a later run need not do them again: one
// small file a scheme, in a folder beside the output folders. It is removed before the scheme is run and
// written when all of its files are complete, so that whatever ends a run in between, a scheme without a
// record is one that has to be done.
#pragma once

#include <mutex>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "embedded/adapter/platform.h"
#include "filtering/batch_run.h"

namespace qelm::cli {

nlohmann::ordered_json OutcomeJson(const filtering::BatchOutcome& outcome);

class BatchRecords {
 public:
  // The folder is made with the first record. `batch` tells the batch from others with records in the folder.
  // `inputs` is everything that decides what comes of the schemes; a record holds only for the same inputs.
  BatchRecords(std::string folder, std::string batch, nlohmann::ordered_json inputs);

  // What came of the scheme, when its record holds: the inputs are the same, and its files are there as they
  // were written.
  std::optional<filtering::BatchOutcome> Find(const filtering::BatchScheme& scheme) const;

  // Before a scheme is run, from any thread.
  void Forget(const filtering::BatchScheme& scheme);

  // When its files are complete, from any thread.
  void Keep(const filtering::BatchScheme& scheme, const filtering::BatchOutcome& outcome);

  // The records that could not be removed or written, each with what follows from that.
  std::vector<std::string> Troubles() const;

 private:
  std::string PathOf(const filtering::BatchScheme& scheme) const;
  std::optional<nlohmann::ordered_json> Read(const filtering::BatchScheme& scheme) const;

  std::string folder_;
  std::string batch_;
  nlohmann::ordered_json inputs_;
  mutable std::mutex mutex_;  // of what follows
  embedded::adapter::PosixPlatform platform_;
  std::vector<std::string> troubles_;
};

// A file as a record knows it: path, size and the time of its last change; null for one that is not there.
nlohmann::ordered_json FileState(const std::string& path);

}  // namespace qelm::cli
