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

}  // namespace qelm::embedded::render
