// A strip that is higher than a column, cut into pieces from the top.
//
// Its marks are put in the order of their upper edges once, so that each piece only looks at what it takes: a
// table row of a thousand pages costs what its lines cost.
#pragma once

#include <vector>

#include "embedded/render/page.h"

namespace qelm::embedded::render {

class StripCutter {
 public:
  // Takes the strip's marks. What else it has stays with its first piece.
  explicit StripCutter(Strip* strip);

  // What is left, without its marks: its height, and what it does not share with pieces.
  const Strip& rest() const { return *strip_; }
  // Cuts off what fits into `height`. Nothing is left out, and nothing that cannot be cut is: a line or frame
  // that does not fit goes to the rest with all that stands beside it or below. With `at_least_one`, the
  // highest of them are in the piece even when they do not fit. The piece has no height when nothing is cut.
  Strip Cut(double height, bool at_least_one);
  // The last piece.
  Strip Finish();

 private:
  struct Entry {
    double top = 0;           // in the whole strip
    std::uint32_t index = 0;  // among its marks
    Mark mark;
  };
  double FindCut(double height, bool at_least_one) const;
  void Place(Entry&& entry, double cut, std::vector<Entry>* piece);
  Strip MakePiece(double cut);

  Strip* strip_;
  std::vector<Entry> entries_;   // in the order of their upper edges
  std::size_t next_ = 0;         // the first that is in no piece
  std::vector<Entry> going_on_;  // fills that were begun in the piece before
  double above_ = 0;             // the height of the pieces so far
};

}  // namespace qelm::embedded::render
