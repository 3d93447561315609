// A document laid out in pages.
//
// The main flow makes pages until its text ends; each of the other flows fills the frames that the document's
// body pages have for it. What is left of flows that connect by themselves then makes pages behind the last
// one. A page is handed on as soon as it is full, so that a document of any length takes the memory of a few
// pages.
#pragma once

#include <memory>
#include <vector>

#include "embedded/render/flow_filler.h"
#include "embedded/render/side_flow.h"

namespace qelm::embedded::render {

class FlowLayout : private FlowPages {
 public:
  // Everything must outlive this. `first_number`: of the first page.
  FlowLayout(Setting& setting, const PageDesigns& designs, std::string_view number_style,
             std::int64_t first_number, PageSink* sink);

  // Lays out the document. Returns how many pages were made, also where the sink ended it.
  std::size_t Run();

  // Where each page begins in each flow, by item.
  std::vector<PageStart> TakePageStarts();

 private:
  bool HasNext() const override { return true; }
  bool Next() override;
  LaidPage& Page() override { return page_; }
  const std::vector<Column>& Columns() const override { return page_.design->columns; }

  void BeginPage();
  void EndPage();
  bool SkipToText();
  void AddBackground(const BackgroundFlow& text);
  void AddOthers();
  SideFlow* FlowOf(std::size_t chain);
  void EndFlow(std::size_t chain);
  void EmitRest();
  void EmitFurther();

  Setting& setting_;
  const PageDesigns& designs_;
  PageNumbers numbers_;
  PageSink* sink_;
  RunningText running_;
  bool going_ = true;
  std::size_t pages_ = 0;
  LaidPage page_;
  std::vector<PageStart> page_starts_;

  // By chain (PageDesigns::chains): a flow is there from its first page to its last.
  std::vector<std::unique_ptr<SideFlow>> flows_;
  std::vector<bool> ended_;
  struct Visit {
    std::size_t chain = 0;
    std::size_t visit = 0;
  };
  std::vector<std::vector<Visit>> visits_;  // by ordinal - 1
};

}  // namespace qelm::embedded::render
