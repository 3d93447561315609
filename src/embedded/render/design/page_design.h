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
#include "embedded/render/design/geometry.h"

namespace qelm::embedded::render {

// Text that stands in one place of every page of a master: a header, a footer.
struct BackgroundFlow {
  model::Id flow = 0;
  Rect place;
  double angle = 0;  // counterclockwise around the middle of the place, in degrees
};

// A column that text runs through. A frame with several of them is turned as a whole.
struct Column : Rect {
  Rect side_head;         // the area of its side heads; no width: there are none
  Rect frame;             // that it belongs to
  double angle = 0;       // of the frame, counterclockwise around its middle, in degrees
  bool balanced = false;  // the columns of the frame are to end at the same height
};

// The columns that a page has for a flow, in the order in which text runs through them.
struct FlowColumns {
  model::Id flow = 0;
  std::string_view tag;  // the flow's name
  std::vector<Column> columns;
};

struct PageDesign {
  double width = 612;
  double height = 792;
  // Of the main text flow, in the order in which text runs through them. A body page that the document has
  // without a text frame of its main flow (a blank page, a cover) has none; pages behind the last record have
  // at least one.
  std::vector<Column> columns;
  std::vector<BackgroundFlow> background;  // text of the master page
  // What the page has for flows besides the main one: of the document's own body page, else what its master
  // page has for body pages.
  std::vector<FlowColumns> others;
  std::uint32_t master = model::kNoIndex;  // index into Document::pages, for Graphics::DrawMasterPage
  std::uint32_t page = model::kNoIndex;    // the document's own body page, for Graphics::DrawBodyPage
  std::string_view master_name;            // empty: no master page
  bool left = false;                       // lies on the left side of a double-sided document
};

// The way of a flow besides the main one through the document's own body pages.
struct FlowChain {
  model::Id flow = 0;
  struct Visit {
    std::size_t ordinal = 0;  // of the page
    std::size_t index = 0;    // into PageDesign::others
  };
  std::vector<Visit> visits;  // in the order of the text; none: no page has a place for the flow
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
  // The flows of body pages besides the main one, in the order of the document.
  const std::vector<FlowChain>& chains() const { return chains_; }
  // The columns that a page behind the last record has for a flow; none where its master has no place for it.
  std::vector<Column> FurtherColumns(model::Id flow, std::size_t ordinal, std::int64_t number) const;

 private:
  class Builder;
  enum class FirstSide : std::uint8_t { kByNumber, kLeft, kRight };
  // One page as it looks on the right side and on the left one.
  struct Sides {
    PageDesign right;
    PageDesign left;
  };
  bool IsLeft(std::size_t ordinal, std::int64_t number) const;

  const model::Document& document_;
  double width_ = 612;
  double height_ = 792;
  bool double_sided_ = false;
  FirstSide first_side_ = FirstSide::kByNumber;
  Sides further_;                // pages behind the last record
  std::vector<Sides> recorded_;  // by ordinal - 1
  std::vector<FlowChain> chains_;
};

}  // namespace qelm::embedded::render
