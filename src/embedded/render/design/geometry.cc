#include "embedded/render/design/geometry.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace qelm::embedded::render {
namespace {

constexpr double kInch = 72;
constexpr double kPica = 12;
constexpr double kCentimeter = kInch / 2.54;
// A Didot point is 0.01483 inch, and twelve make a cicero.
constexpr double kDidot = 1.0678;

// No page is larger; beyond it drawing libraries lose their way.
constexpr double kLongest = 100'000;

// Every number fits into an int.
constexpr double kLargest = 2147483647;

struct Unit {
  std::string_view name;
  double points;
};
// Longer names before those that they begin with.
constexpr Unit kUnits[] = {
    {"\"", kInch},   {"in", kInch},  {"cm", kCentimeter},     {"mm", kCentimeter / 10},
    {"pica", kPica}, {"pc", kPica},  {"pi", kPica},           {"point", 1},
    {"pt", 1},       {"dd", kDidot}, {"cicero", 12 * kDidot}, {"cc", 12 * kDidot},
};
constexpr Unit kUnitKeywords[] = {
    {"Uin", kInch}, {"Ucm", kCentimeter}, {"Umm", kCentimeter / 10}, {"Upica", kPica},
    {"Upt", 1},     {"Udd", kDidot},      {"Ucc", 12 * kDidot},
};

void SkipBlanks(std::string_view* rest) {
  while (!rest->empty() &&
         (rest->front() == ' ' || rest->front() == '\t' || rest->front() == '\n' || rest->front() == '\r')) {
    rest->remove_prefix(1);
  }
}

// Takes a finite number off the front.
bool TakeNumber(std::string_view* rest, double* value) {
  SkipBlanks(rest);
  if (rest->starts_with('+')) rest->remove_prefix(1);
  const auto read = std::from_chars(rest->data(), rest->data() + rest->size(), *value);
  if (read.ec != std::errc() || !std::isfinite(*value)) return false;
  rest->remove_prefix(static_cast<std::size_t>(read.ptr - rest->data()));
  return true;
}

}  // namespace

std::vector<double> Lengths(std::string_view data, double unit) {
  std::vector<double> lengths;
  double value = 0;
  while (TakeNumber(&data, &value)) {
    SkipBlanks(&data);
    double points = unit;
    for (const Unit& known : kUnits) {
      if (!data.starts_with(known.name)) continue;
      points = known.points;
      data.remove_prefix(known.name.size());
      break;
    }
    lengths.push_back(std::clamp(value * points, -kLongest, kLongest));
  }
  return lengths;
}

double Length(std::string_view data, double unit) {
  const std::vector<double> lengths = Lengths(data, unit);
  return lengths.empty() ? 0 : lengths.front();
}

double Number(std::string_view data, double missing) {
  double value = 0;
  return TakeNumber(&data, &value) ? std::clamp(value, -kLargest, kLargest) : missing;
}

double PointsOfUnit(std::string_view keyword) {
  for (const Unit& unit : kUnitKeywords) {
    if (unit.name == keyword) return unit.points;
  }
  return kInch;
}

}  // namespace qelm::embedded::render
