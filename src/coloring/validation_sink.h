// Who is told what a validation finds, as it finds it: the report document, and whatever a caller adds.
#pragma once

#include "coloring/validation_run.h"

namespace qelm::coloring {

class ViolationSink {
 public:
  virtual ~ViolationSink() = default;

  // A document is begun. `by_command`: the user asked for this document, and not for its book.
  virtual void BeginDocument(host::Id document, bool by_command) = 0;

  // In the order of the walk. The violation's texts hold until this returns. The document must not be edited.
  virtual void Add(const Violation& violation) = 0;

  // The document is done; `violations` is how many were added to it. Not `finished`: the run was cancelled,
  // or there was nothing that it could check.
  virtual void EndDocument(host::Id document, std::uint64_t violations, bool finished) = 0;
};

}  // namespace qelm::coloring
