#include "embedded/render/side_flow.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "embedded/model/text_access.h"

namespace qelm::embedded::render {
namespace {

// Whether there is anything to see of a flow.
bool HasContent(const model::Document& document, const model::Flow& flow) {
  using model::ItemKind;
  for (std::uint32_t i = flow.first_item; i < flow.end_item; ++i) {
    const model::Item& item = document.items[i];
    if (item.Is(model::kDeleted)) continue;
    std::string text;
    model::AppendItemText(document, item, &text);
    const bool object = item.kind == ItemKind::kTableAnchor || item.kind == ItemKind::kFrameAnchor ||
                        item.kind == ItemKind::kVariable;
    if (object || text.find_first_not_of(" \t") != std::string::npos) return true;
  }
  return false;
}

}  // namespace

SideFlow::SideFlow(Setting& setting, const PageDesigns& designs, const FlowChain& chain,
                   const PageNumbers& numbers)
    : setting_(setting),
      designs_(designs),
      chain_(chain),
      numbers_(numbers),
      filler_(setting, designs.double_sided(), chain.flow, this, nullptr),
      next_further_(designs.recorded() + 1),
      next_note_(setting.notes.first) {
  const model::Flow& flow = setting.document.flows[chain.flow];
  const auto has_place = [&] {
    return !designs.FurtherColumns(chain.flow, next_further_, numbers.Of(next_further_)).empty();
  };
  goes_on_ = chain.visits.empty() ? HasContent(setting.document, flow) : flow.auto_connect && has_place();
  done_ = chain.visits.empty() && !goes_on_;
}

// The notes of a flow are counted by themselves, and what is said of the page is that of the flow's own.
void SideFlow::Step() {
  const std::string number = std::exchange(setting_.facts.number, number_);
  std::swap(setting_.next_note, next_note_);
  if (!begun_) {
    begun_ = true;
    if (BeginPage()) filler_.Begin();
  }
  done_ = !filler_.Step();
  std::swap(setting_.next_note, next_note_);
  number_ = std::exchange(setting_.facts.number, number);
}

bool SideFlow::Next() {
  ++visit_;
  return BeginPage();
}

bool SideFlow::BeginPage() {
  const bool further = IsFurther();
  if (further && !goes_on_) return false;
  LaidPage& page = further ? further_.emplace_back() : waiting_[visit_];
  page.ordinal = further ? next_further_++ : chain_.visits[visit_].ordinal;
  page.number = numbers_.Of(page.ordinal);
  page.design = &designs_.Design(page.ordinal, page.number);
  setting_.facts.number = model::NumberIn(numbers_.style, page.number);
  if (!further) {
    columns_ = page.design->others[chain_.visits[visit_].index].columns;
  } else {
    columns_ = designs_.FurtherColumns(chain_.flow, page.ordinal, page.number);
    if (columns_.empty()) columns_ = page.design->columns;
  }
  return true;
}

LaidPage& SideFlow::Page() { return IsFurther() ? further_.back() : waiting_.at(visit_); }

namespace {

void MoveInto(LaidPage* page, LaidPage&& part) {
  const auto move = [](auto* from, auto* to) {
    to->insert(to->end(), std::make_move_iterator(from->begin()), std::make_move_iterator(from->end()));
  };
  move(&part.body, &page->body);
  move(&part.begins, &page->begins);
  move(&part.note_numbers, &page->note_numbers);
}

}  // namespace

void SideFlow::AddTo(std::size_t visit, LaidPage* page) {
  while (!done_ && visit_ <= visit) Step();
  const auto found = waiting_.find(visit);
  if (found == waiting_.end()) return;
  MoveInto(page, std::move(found->second));
  waiting_.erase(found);
}

bool SideFlow::HasFurther(std::size_t ordinal) {
  next_further_ = std::max(next_further_, ordinal + further_.size());
  while (!done_ && further_.size() < 2) Step();
  return !further_.empty();
}

void SideFlow::AddFurtherTo(LaidPage* page) {
  MoveInto(page, std::move(further_.front()));
  further_.pop_front();
}

std::string SideFlow::CutNotice() const {
  const std::string_view name = setting_.document.flows[chain_.flow].name;
  return "the text of " + (name.empty() ? "a flow without a name" : "the flow " + std::string(name)) +
         " does not fit into its text frames; its end has no place behind page " + number_ +
         " and is not printed.";
}

}  // namespace qelm::embedded::render
