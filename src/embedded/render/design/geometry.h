// Places on pages: lengths are points, y runs downward.
#pragma once

#include <string_view>
#include <vector>

namespace qelm::embedded::render {

struct Point {
  double x = 0;
  double y = 0;
};

struct Rect {
  double x = 0;
  double y = 0;
  double width = 0;
  double height = 0;
};

// The lengths of a MIF statement in points (" 1.0" 6.5 pc 12 pt"); one without a unit is in units of `unit`
// points. Reading ends at what is no length. None is beyond 100,000 points.
std::vector<double> Lengths(std::string_view data, double unit);
// The first of them, 0 when there is none.
double Length(std::string_view data, double unit);

// A number, a percentage or an angle, in the range of an int; `missing` when there is none.
double Number(std::string_view data, double missing = 0);

// How many points the unit of a Units statement has (Uin, Ucm, Umm, Upica, Upt, Udd, Ucc); inches for an
// unknown one.
double PointsOfUnit(std::string_view keyword);

}  // namespace qelm::embedded::render
