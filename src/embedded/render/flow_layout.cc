#include "embedded/render/flow_layout.h"

#include <algorithm>
#include <utility>

namespace qelm::embedded::render {

FlowLayout::FlowLayout(Setting& setting, const PageDesigns& designs, std::string_view number_style,
                       std::int64_t first_number, PageSink* sink)
    : setting_(setting),
      designs_(designs),
      numbers_{number_style, first_number},
      sink_(sink),
      running_(setting),
      flows_(designs.chains().size()),
      ended_(designs.chains().size(), false),
      visits_(designs.recorded()) {
  setting_.facts.running = [this](std::string_view block, std::string_view argument) {
    return running_.Value(block, argument);
  };
  for (std::size_t chain = 0; chain < flows_.size(); ++chain) {
    const std::vector<FlowChain::Visit>& visits = designs.chains()[chain].visits;
    for (std::size_t i = 0; i < visits.size(); ++i) visits_[visits[i].ordinal - 1].push_back({chain, i});
  }
}

std::size_t FlowLayout::Run() {
  setting_.next_note = setting_.notes.first;
  FlowFiller filler(setting_, designs_.double_sided(), setting_.document.main_flow, this, &running_);
  BeginPage();
  if (SkipToText()) {
    filler.Begin();
    while (filler.Step()) {
    }
  }
  if (going_) EndPage();
  EmitRest();
  EmitFurther();
  page_starts_.insert(page_starts_.end(), filler.page_starts().begin(), filler.page_starts().end());
  setting_.facts.running = nullptr;
  return pages_;
}

std::vector<PageStart> FlowLayout::TakePageStarts() {
  std::stable_sort(page_starts_.begin(), page_starts_.end(),
                   [](const PageStart& one, const PageStart& other) { return one.item < other.item; });
  return std::move(page_starts_);
}

bool FlowLayout::Next() {
  EndPage();
  if (going_) BeginPage();
  return SkipToText();
}

void FlowLayout::BeginPage() {
  page_ = {};
  page_.ordinal = ++pages_;
  page_.number = numbers_.Of(page_.ordinal);
  page_.design = &designs_.Design(page_.ordinal, page_.number);
  setting_.facts.number = model::NumberIn(numbers_.style, page_.number);
  running_.BeginPage();
}

// Passes over pages on which the main flow has no place.
bool FlowLayout::SkipToText() {
  while (going_ && page_.design->columns.empty()) {
    EndPage();
    if (going_) BeginPage();
  }
  return going_;
}

void FlowLayout::EndPage() {
  AddOthers();
  for (const BackgroundFlow& text : page_.design->background) AddBackground(text);
  going_ = sink_->Take(std::move(page_)) && going_;
}

void FlowLayout::AddBackground(const BackgroundFlow& text) {
  const model::Flow& flow = setting_.document.flows[text.flow];
  LaidText& laid = page_.around.emplace_back();
  laid.place = text.place;
  laid.angle = text.angle;
  laid.flow = text.flow;
  StackStrips(MakeStrips(setting_, flow.first_item, flow.end_item, text.place.width, 1), text.place.x,
              text.place.y, &laid.marks);
}

SideFlow* FlowLayout::FlowOf(std::size_t chain) {
  if (ended_[chain]) return nullptr;
  std::unique_ptr<SideFlow>& flow = flows_[chain];
  if (!flow) flow = std::make_unique<SideFlow>(setting_, designs_, designs_.chains()[chain], numbers_);
  return flow.get();
}

void FlowLayout::AddOthers() {
  if (page_.ordinal > visits_.size()) return;
  for (const Visit& visit : visits_[page_.ordinal - 1]) {
    SideFlow* const flow = FlowOf(visit.chain);
    if (flow == nullptr) continue;
    flow->AddTo(visit.visit, &page_);
    if (flow->is_done()) EndFlow(visit.chain);
  }
}

void FlowLayout::EndFlow(std::size_t chain) {
  const SideFlow& flow = *flows_[chain];
  if (flow.is_cut()) setting_.notices.push_back(flow.CutNotice());
  page_starts_.insert(page_starts_.end(), flow.page_starts().begin(), flow.page_starts().end());
  flows_[chain].reset();
  ended_[chain] = true;
}

// Pages behind the end of the main flow are pages for what else stands on them.
void FlowLayout::EmitRest() {
  std::size_t last = designs_.recorded();
  const auto is_empty = [&] {
    const PageDesign& design = designs_.Design(last, numbers_.Of(last));
    return design.others.empty() && !design.columns.empty();
  };
  while (last > pages_ && is_empty()) --last;
  while (going_ && pages_ < last) {
    BeginPage();
    EndPage();
  }
}

void FlowLayout::EmitFurther() {
  for (std::size_t chain = 0; going_ && chain < flows_.size(); ++chain) {
    SideFlow* const flow = FlowOf(chain);
    while (flow != nullptr && going_ && flow->HasFurther(pages_ + 1)) {
      BeginPage();
      flow->AddFurtherTo(&page_);
      EndPage();
    }
    if (flow != nullptr && going_) EndFlow(chain);
  }
}

}  // namespace qelm::embedded::render
