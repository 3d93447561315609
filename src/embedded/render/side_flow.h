// A flow besides the main one, on its way through the frames that body pages have for it.
//
// It is set only as far as the page that is asked for, and what was set for pages behind that one waits.
// Where its frames are full, a flow that connects by itself goes on on pages that are made for it, with the
// frames that the master pages have for its name; the text of others is cut, which is said.
#pragma once

#include <deque>
#include <unordered_map>
#include <vector>

#include "embedded/render/flow_filler.h"

namespace qelm::embedded::render {

struct PageNumbers {
  std::string_view style;
  std::int64_t first = 1;
  std::int64_t Of(std::size_t ordinal) const { return first + static_cast<std::int64_t>(ordinal) - 1; }
};

class SideFlow : private FlowPages {
 public:
  // Everything must outlive this.
  SideFlow(Setting& setting, const PageDesigns& designs, const FlowChain& chain, const PageNumbers& numbers);

  // Adds what the flow has on a page of its chain, an index into FlowChain::visits.
  void AddTo(std::size_t visit, LaidPage* page);
  // Whether there is text for a page behind those of the chain, which will be the one of that ordinal. Pages
  // of the chain must have been asked for before.
  bool HasFurther(std::size_t ordinal);
  void AddFurtherTo(LaidPage* page);

  // Whether nothing is left for further pages.
  bool is_done() const { return done_ && waiting_.empty() && further_.empty(); }
  bool is_cut() const { return filler_.is_cut(); }
  std::string CutNotice() const;
  const std::vector<PageStart>& page_starts() const { return filler_.page_starts(); }

 private:
  bool HasNext() const override { return visit_ + 1 < chain_.visits.size() || goes_on_; }
  bool Next() override;
  LaidPage& Page() override;
  const std::vector<Column>& Columns() const override { return columns_; }

  void Step();
  bool BeginPage();
  bool IsFurther() const { return visit_ >= chain_.visits.size(); }

  Setting& setting_;
  const PageDesigns& designs_;
  const FlowChain& chain_;
  const PageNumbers numbers_;
  FlowFiller filler_;
  bool goes_on_ = false;  // on pages behind those of the chain
  bool begun_ = false;
  bool done_ = false;
  std::size_t visit_ = 0;  // of the page at hand
  std::vector<Column> columns_;
  std::unordered_map<std::size_t, LaidPage> waiting_;  // by visit
  std::deque<LaidPage> further_;
  std::size_t next_further_ = 0;  // the ordinal of the next page behind the chain, as far as is known
  std::int64_t next_note_ = 1;
  std::string number_;  // of the page at hand
};

}  // namespace qelm::embedded::render
