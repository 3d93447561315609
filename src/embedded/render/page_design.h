// How the pages of a document look: size, text columns, and the text of its master pages around them.
//
// A body page is laid out on a master page. The document's own record of a page (its body page) names the
// master and has the text frames as they were last; behind the last record, and where the record leaves it
// open, the master is Left or Right by the side on which the page lies. A document without pages has pages of
// its own size, or letter size, with margins of an inch.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "embedded/model/document.h"
#include "embedded/render/geometry.h"

namespace qelm::embedded::render {

// Text that stands in one place of a page: a header, a footer, side text.
struct BackgroundFlow {
  model::Id flow = 0;
  Rect place;
  double angle = 0;  // counterclockwise around the middle of the place, in degrees
};

struct PageDesign {
  double width = 612;
  double height = 792;
  // Of the main text flow, in the order in which text runs through them. A body page that the document has
  // without a text frame of its main flow (a blank page, a cover) has none; pages behind the last record have
  // at least one.
  std::vector<Rect> columns;
  std::vector<Rect> side_heads;            // by column, the area of its side heads; empty when there are none
  bool balanced = false;                   // columns are to end at the same height
  std::vector<BackgroundFlow> background;  // text of the master page
  std::vector<BackgroundFlow> own_text;    // text of the body page that is not the main flow's
  std::uint32_t master = model::kNoIndex;  // index into Document::pages, for Graphics::DrawMasterPage
  std::uint32_t page = model::kNoIndex;    // the document's own body page, for Graphics::DrawBodyPage
  std::string_view master_name;            // empty: no master page
  bool left = false;                       // lies on the left side of a double-sided document
};

// What a document says of its page numbers.
struct PageNumbering {
  std::int64_t first = 1;
  std::string_view style = "Arabic";  // as model::NumberIn takes it
  bool continues = false;             // in a book: goes on from the component before
};
PageNumbering ReadPageNumbering(const model::Document& document);

class PageDesigns {
 public:
  // The document must outlive this and stay as it is.
  explicit PageDesigns(const model::Document& document);

  // The design of the body page with that ordinal, from 1 in the document, when its page number is `number`.
  // Which side it lies on: the document says on which side its first page is; where it does not, odd page
  // numbers are on the right. Holds for as long as this does.
  const PageDesign& Design(std::size_t ordinal, std::int64_t number) const;
  bool double_sided() const { return double_sided_; }
  // How many body pages the document has a record of.
  std::size_t recorded() const { return recorded_.size(); }

 private:
  class Builder;
  enum class FirstSide : std::uint8_t { kByNumber, kLeft, kRight };
  // One page as it looks on the right side and on the left one.
  struct Sides {
    PageDesign right;
    PageDesign left;
  };
  bool IsLeft(std::size_t ordinal, std::int64_t number) const;

  double width_ = 612;
  double height_ = 792;
  bool double_sided_ = false;
  FirstSide first_side_ = FirstSide::kByNumber;
  Sides further_;                // pages behind the last record
  std::vector<Sides> recorded_;  // by ordinal - 1
};

}  // namespace qelm::embedded::render
