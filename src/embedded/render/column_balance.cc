#include "embedded/render/column_balance.h"

#include <algorithm>

namespace qelm::embedded::render {
namespace {

constexpr double kTolerance = 0.05;

// Strips that stay together, with the height that they take.
struct Group {
  std::size_t count = 0;
  double space_before = 0;
  double height = 0;
  double space_after = 0;
};

std::vector<Group> GroupsOf(const std::vector<Strip>& strips) {
  std::vector<Group> groups;
  for (std::size_t i = 0; i < strips.size(); ++i) {
    const Strip& strip = strips[i];
    if (i == 0 || !strip.glued) {
      groups.push_back({1, strip.space_before, strip.height, strip.space_after});
      continue;
    }
    Group& group = groups.back();
    group.height += SpaceBetween(strips[i - 1], strip) + strip.height;
    group.space_after = strip.space_after;
    ++group.count;
  }
  return groups;
}

// The column of each group; empty where they do not fit.
std::vector<std::size_t> Fill(const std::vector<Group>& groups, std::size_t columns, double height) {
  std::vector<std::size_t> places;
  std::size_t column = 0;
  double y = 0;
  double behind = 0;
  for (const Group& group : groups) {
    double above = y > 0 ? std::max(behind, group.space_before) : 0;
    if (y > 0 && y + above + group.height > height + kTolerance) {
      ++column;
      y = above = 0;
    }
    if (column >= columns || group.height > height + kTolerance) return {};
    y += above + group.height;
    behind = group.space_after;
    places.push_back(column);
  }
  return places;
}

}  // namespace

std::vector<std::size_t> BalanceColumns(const std::vector<Strip>& strips, std::size_t columns,
                                        double height) {
  const std::vector<Group> groups = GroupsOf(strips);
  std::vector<std::size_t> best = Fill(groups, columns, height);
  if (best.empty()) return {};
  double too_low = 0;
  double enough = height;
  while (enough - too_low > kTolerance) {
    const double middle = (too_low + enough) / 2;
    std::vector<std::size_t> places = Fill(groups, columns, middle);
    (places.empty() ? too_low : enough) = middle;
    if (!places.empty()) best = std::move(places);
  }
  std::vector<std::size_t> of_strips;
  for (std::size_t i = 0; i < groups.size(); ++i) of_strips.insert(of_strips.end(), groups[i].count, best[i]);
  return of_strips;
}

}  // namespace qelm::embedded::render
