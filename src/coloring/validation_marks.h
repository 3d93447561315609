// Strikethrough on what violates a validation scheme, and off what does not.
//
// A text is struck through when the element that holds it directly violates a rule. That is what comes of
// marking element after element from the outside in, each over all that it holds; but here every text is
// written once, after the walk: verdicts are collected by element, and then each text node takes the verdict
// of its element. So neither depth nor nesting costs anything, and what the walk reads by reference is not
// edited under it.
#pragma once

#include <vector>

#include "coloring/validation_run.h"
#include "host/interface/host.h"

namespace qelm::coloring {

class VerdictMarks {
 public:
  VerdictMarks(host::Host& host, host::Id document);

  // What came of one element. Elements without a verdict are left alone.
  void Set(host::Id element, bool violates);

  // Writes the verdicts below `start`, itself included, into the text, as `use` says.
  void Write(host::Id start, StrikethroughUse use, ValidationRun* run);

  // Gives all text of one element, with everything in it, the same verdict.
  static void WriteWhole(host::Host& host, host::Id document, host::Id element, bool violates,
                         ValidationRun* run);

 private:
  host::Host& host_;
  host::Id document_;
  std::vector<bool> has_verdict_;  // by element
  std::vector<bool> violates_;
};

}  // namespace qelm::coloring
