// The lines of the file that a document was read from, and on which of them its elements stand. The file is
// gone through once, when it is first asked for; each answer is then a binary search.
#pragma once

#include <cstdint>
#include <vector>

#include "embedded/model/document.h"

namespace qelm::embedded::model {

class SourceLines {
 public:
  // The document must outlive this. Edits do not matter: lines are those of the file as it was read.
  explicit SourceLines(const Document& document) : document_(document) {}

  // The line, counted from 1, on which the element's statement or tag begins; of a text node, that of the
  // element around it. 0 for an element that is not in the file.
  std::uint32_t LineOf(Id element);

  // The line, counted from 1, of a place in the source.
  std::uint32_t LineAt(std::uint32_t offset);

 private:
  void FindLines();

  const Document& document_;
  std::vector<std::uint32_t> starts_;  // of the lines, by rising offset
};

}  // namespace qelm::embedded::model
