#include "embedded/render/page.h"

#include <algorithm>

namespace qelm::embedded::render {

void PlaceMarks(const std::vector<Mark>& marks, double x, double y, std::vector<Mark>* out) {
  for (const Mark& mark : marks) {
    Mark& placed = out->emplace_back(mark);
    placed.x += x;
    placed.y += y;
  }
}

// A side head takes no height of its own: what follows begins beside it.
double StackStrips(const std::vector<Strip>& strips, double x, double y, std::vector<Mark>* out) {
  double at = y;
  double lowest = y;
  for (std::size_t i = 0; i < strips.size(); ++i) {
    if (i > 0) at += SpaceBetween(strips[i - 1], strips[i]);
    if (out != nullptr) PlaceMarks(strips[i].marks, x, at, out);
    lowest = std::max(lowest, at + strips[i].height);
    if (!strips[i].side_head) at += strips[i].height;
  }
  return lowest - y;
}

double StackedHeight(const std::vector<Strip>& strips) { return StackStrips(strips, 0, 0, nullptr); }

namespace {

double TopOf(const Mark& mark) {
  return mark.kind == Mark::Kind::kLine ? mark.y - mark.paragraph->lines()[mark.ref].ascent : mark.y;
}

bool IsGroup(const Mark& mark) {
  return mark.kind == Mark::Kind::kGroupBegin || mark.kind == Mark::Kind::kGroupEnd;
}

bool CanBeCut(const Mark& mark) {
  return mark.kind == Mark::Kind::kFill || mark.kind == Mark::Kind::kChangeBar;
}

}  // namespace

// The cut is made above the highest line that does not fit, so that lines at other heights in other cells are
// not cut through.
Strip CutStrip(Strip* strip, double height) {
  double cut = strip->height;
  for (const Mark& mark : strip->marks) {
    if (IsGroup(mark) || CanBeCut(mark)) continue;
    const double bottom = mark.kind == Mark::Kind::kLine ? mark.y : mark.y + mark.height;
    if (bottom > height && TopOf(mark) > 0) cut = std::min(cut, TopOf(mark));
  }
  Strip rest = *strip;
  rest.marks.clear();
  rest.space_before = 0;
  rest.begins.reset();
  rest.first_item = model::kNoIndex;
  rest.notes.clear();
  std::vector<Mark> kept;
  for (Mark& mark : strip->marks) {
    if (IsGroup(mark)) continue;
    const bool fits = TopOf(mark) < cut;
    if (fits && CanBeCut(mark) && mark.y + mark.height > cut) {
      Mark below = mark;
      below.y = 0;
      below.height = mark.y + mark.height - cut;
      mark.height = cut - mark.y;
      rest.marks.push_back(std::move(below));
    }
    if (!fits) mark.y -= cut;
    (fits ? kept : rest.marks).push_back(std::move(mark));
  }
  strip->marks = std::move(kept);
  strip->space_after = 0;
  rest.height = strip->height - cut;
  strip->height = cut;
  return rest;
}

}  // namespace qelm::embedded::render
