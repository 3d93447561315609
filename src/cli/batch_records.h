// What a batch keeps of the schemes that it is through with, so that a later run need not do them again: one
// small file a scheme, in a folder beside the output folders. It is removed before the scheme is run and
// written when all of its files are complete, so that whatever ends a run in between, a scheme without a
// record is one that has to be done.
#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "filtering/batch_run.h"

namespace qelm::cli {

nlohmann::ordered_json OutcomeJson(const filtering::BatchOutcome& outcome);

class BatchRecords {
 public:
  // The folder is made with the first record. `inputs` is everything that decides what comes of the schemes;
  // a record holds only for the same inputs.
  BatchRecords(std::string folder, nlohmann::ordered_json inputs)
      : folder_(std::move(folder)), inputs_(std::move(inputs)) {}

  // What came of the scheme, when its record holds: the inputs are the same, and its files are there as they
  // were written.
  std::optional<filtering::BatchOutcome> Find(const filtering::BatchScheme& scheme) const;

  // Before a scheme is run. False when a record is there and cannot be removed.
  bool Forget(const filtering::BatchScheme& scheme) const;

  // When its files are complete. A record that cannot be written is as good as none.
  void Keep(const filtering::BatchScheme& scheme, const filtering::BatchOutcome& outcome) const;

 private:
  std::string PathOf(const filtering::BatchScheme& scheme) const;

  std::string folder_;
  nlohmann::ordered_json inputs_;
};

// A file as a record knows it: path, size and the time of its last change; null for one that is not there.
nlohmann::ordered_json FileState(const std::string& path);

}  // namespace qelm::cli
