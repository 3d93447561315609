#include "embedded/render/frame_text.h"

#include <utility>

#include "embedded/render/flow_filler.h"

namespace qelm::embedded::render {

// By flow, what stands in its frames; only of flows that have more than one.
struct FrameTexts {
  std::unordered_map<model::Id, std::vector<std::vector<Mark>>> flows;
};

namespace {

// Each frame is a page of its own.
class FramePages : public FlowPages {
 public:
  explicit FramePages(const std::vector<std::vector<Rect>>& frames) : pages_(frames.size()) {
    for (const std::vector<Rect>& frame : frames) {
      std::vector<Column>& columns = columns_.emplace_back();
      for (const Rect& column : frame) columns.push_back({column, {}, frame.front(), 0});
    }
  }
  bool HasNext() const override { return at_ + 1 < pages_.size(); }
  bool Next() override { return ++at_ < pages_.size(); }
  LaidPage& Page() override { return pages_[at_]; }
  const std::vector<Column>& Columns() const override { return columns_[at_]; }

  std::vector<LaidPage> Take() { return std::move(pages_); }

 private:
  std::vector<LaidPage> pages_;
  std::vector<std::vector<Column>> columns_;
  std::size_t at_ = 0;
};

// False when the text is longer than the frames.
bool Fill(Setting& setting, model::Id flow, const std::vector<std::vector<Rect>>& frames,
          std::vector<std::vector<Mark>>* marks) {
  FramePages pages(frames);
  FlowFiller filler(setting, false, flow, &pages, nullptr);
  // The footnotes of the page's own text are counted on.
  const std::int64_t next_note = setting.next_note;
  filler.Begin();
  while (filler.Step()) {
  }
  setting.next_note = next_note;
  marks->clear();
  for (LaidPage& page : pages.Take()) {
    for (const auto& [part, number] : page.note_numbers) setting.note_numbers[part] = number;
    std::vector<Mark>& frame = marks->emplace_back();
    for (LaidText& text : page.body) {
      frame.insert(frame.end(), std::make_move_iterator(text.marks.begin()),
                   std::make_move_iterator(text.marks.end()));
    }
  }
  return !filler.is_cut();
}

std::vector<std::vector<Mark>> SetFrames(Setting& setting, model::Id flow) {
  std::vector<std::vector<Rect>> frames = setting.graphics.TextFrames(flow);
  std::vector<std::vector<Mark>> marks;
  if (frames.empty() || Fill(setting, flow, frames, &marks)) return marks;
  constexpr double kAnyHeight = 1e5;
  frames.back().back().height = kAnyHeight;
  Fill(setting, flow, frames, &marks);
  setting.notices.push_back("text in a graphic on page " + setting.facts.number +
                            " is longer than its text frame and may be cut off.");
  return marks;
}

}  // namespace

std::vector<Mark> FrameMarks(Setting& setting, model::Id flow, std::uint32_t place) {
  if (!setting.frame_texts) setting.frame_texts = std::make_shared<FrameTexts>();
  auto& flows = setting.frame_texts->flows;
  auto found = flows.find(flow);
  std::vector<std::vector<Mark>> marks =
      found == flows.end() ? SetFrames(setting, flow) : std::move(found->second);
  if (place >= marks.size()) return {};
  std::vector<Mark> own = marks[place];
  // Frames are mostly drawn one after the other, and once.
  if (place + 1 < marks.size()) {
    flows.insert_or_assign(flow, std::move(marks));
  } else {
    flows.erase(flow);
  }
  return own;
}

}  // namespace qelm::embedded::render
