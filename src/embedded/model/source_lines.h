// The lines of the file that a document was read from, and on which of them its elements stand. Line ends are
// counted from the nearest place before the one that is asked for whose line is known: the last one that was
// asked for, or the beginning of a block that was counted already. So the file is gone through once, as far
// as the last place, and who asks in the order of the file pays for what lies between.
#pragma once

#include <cstdint>
#include <vector>

#include "embedded/model/document.h"
#include "embedded/xml/encoding.h"

namespace qelm::embedded::model {

class SourceLines {
 public:
  // The document must outlive this. Edits do not matter: lines are those of the file as it was read.
  explicit SourceLines(const Document& document);

  // The line, counted from 1, on which the element's statement or tag begins; of a text node, that of the
  // element around it. 0 for an element that is not in the file.
  std::uint32_t LineOf(Id element);

  // The line, counted from 1, of a place in the source.
  std::uint32_t LineAt(std::uint32_t offset);

 private:
  struct Place {
    std::uint32_t offset = 0;
    std::uint32_t line = 1;
  };

  // How many lines begin behind `begin`, up to `end`.
  std::uint32_t LinesBetween(std::uint32_t begin, std::uint32_t end) const;

  // The memory of a stretch of the source may go.
  void Rest(std::uint32_t stretch) const;
  // A place in this stretch was asked for. Who asks goes to and fro between where lines are counted and a
  // place further back, and both move on slowly.
  void LookedAt(std::uint32_t stretch);

  const Document& document_;
  xml::Encoding encoding_;
  std::vector<std::uint32_t> blocks_{1};  // the line at the beginning of each block, as far as was counted
  Place last_;
  std::uint32_t stretch_ = 0;  // of those that are counted, the one where a place was asked for last
};

}  // namespace qelm::embedded::model
