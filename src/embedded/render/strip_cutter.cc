#include "embedded/render/strip_cutter.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace qelm::embedded::render {
namespace {

double TopOf(const Mark& mark) {
  return mark.kind == Mark::Kind::kLine ? mark.y - mark.paragraph->lines()[mark.ref].ascent : mark.y;
}

// A line fits when its letters do.
double BottomOf(const Mark& mark) { return mark.kind == Mark::Kind::kLine ? mark.y : mark.y + mark.height; }

bool IsGroup(const Mark& mark) {
  return mark.kind == Mark::Kind::kGroupBegin || mark.kind == Mark::Kind::kGroupEnd;
}

bool CanBeCut(const Mark& mark) {
  return mark.kind == Mark::Kind::kFill || mark.kind == Mark::Kind::kChangeBar;
}

}  // namespace

StripCutter::StripCutter(Strip* strip) : strip_(strip) {
  std::uint32_t index = 0;
  for (Mark& mark : std::exchange(strip->marks, {})) {
    if (IsGroup(mark)) continue;
    const double top = TopOf(mark);
    entries_.push_back({top, index++, std::move(mark)});
  }
  std::stable_sort(entries_.begin(), entries_.end(),
                   [](const Entry& one, const Entry& other) { return one.top < other.top; });
}

// The cut is made above the highest line that does not fit, so that lines at other heights in other cells are
// not cut through.
double StripCutter::FindCut(double height, bool at_least_one) const {
  const double end = above_ + height;
  const Entry* first = nullptr;
  for (std::size_t i = next_; i < entries_.size(); ++i) {
    const Entry& entry = entries_[i];
    if (CanBeCut(entry.mark)) continue;
    if (first == nullptr) first = &entry;
    const bool highest = entry.top <= first->top;
    if (BottomOf(entry.mark) <= end || (at_least_one && highest)) continue;
    return highest ? 0 : entry.top - above_;
  }
  return strip_->height;
}

Strip StripCutter::Cut(double height, bool at_least_one) {
  const double cut = FindCut(height, at_least_one);
  return cut > 0 && cut < strip_->height ? MakePiece(cut) : Strip();
}

Strip StripCutter::Finish() { return MakePiece(std::numeric_limits<double>::infinity()); }

// What goes on below the cut is there twice.
void StripCutter::Place(Entry&& entry, double cut, std::vector<Entry>* piece) {
  const double end = entry.mark.y + entry.mark.height;
  if (CanBeCut(entry.mark) && end > above_ + cut) {
    Entry below = entry;
    below.mark.y = above_ + cut;
    below.mark.height = end - below.mark.y;
    entry.mark.height = below.mark.y - entry.mark.y;
    going_on_.push_back(std::move(below));
  }
  entry.mark.y -= above_;
  piece->push_back(std::move(entry));
}

Strip StripCutter::MakePiece(double cut) {
  std::vector<Entry> taken;
  for (Entry& entry : std::exchange(going_on_, {})) Place(std::move(entry), cut, &taken);
  for (; next_ < entries_.size() && entries_[next_].top < above_ + cut; ++next_) {
    Place(std::move(entries_[next_]), cut, &taken);
  }
  // Text is read cell by cell.
  std::sort(taken.begin(), taken.end(),
            [](const Entry& one, const Entry& other) { return one.index < other.index; });
  Strip piece = std::move(*strip_);
  *strip_ = {};
  strip_->table = piece.table;
  strip_->side_head = piece.side_head;
  strip_->foots = piece.foots;
  strip_->ends_table = std::exchange(piece.ends_table, false);
  strip_->space_after = std::exchange(piece.space_after, 0);
  strip_->height = std::max(piece.height - cut, 0.0);
  piece.height = std::min(piece.height, cut);
  if (strip_->height == 0) {
    piece.space_after = strip_->space_after;
    piece.ends_table = strip_->ends_table;
  }
  for (Entry& entry : taken) piece.marks.push_back(std::move(entry.mark));
  above_ += cut;
  return piece;
}

}  // namespace qelm::embedded::render
