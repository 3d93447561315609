#include "embedded/render/color.h"

#include <algorithm>
#include <array>

namespace qelm::embedded::render {
namespace {

struct Reserved {
  std::string_view name;
  double inks[4];
};
// Colors that text may name though the catalog lacks them.
constexpr std::array kReserved = {
    Reserved{"Black", {0, 0, 0, 100}},         Reserved{"White", {0, 0, 0, 0}},
    Reserved{"Red", {0, 100, 100, 0}},         Reserved{"Green", {100, 0, 100, 0}},
    Reserved{"Blue", {100, 100, 0, 0}},        Reserved{"Cyan", {100, 0, 0, 0}},
    Reserved{"Magenta", {0, 100, 0, 0}},       Reserved{"Yellow", {0, 0, 100, 0}},
    Reserved{"Dark Grey", {0, 0, 0, 60}},      Reserved{"Pale Green", {26, 0, 60, 0}},
    Reserved{"Forest Green", {41, 0, 41, 46}}, Reserved{"Royal Blue", {93, 46, 0, 0}},
    Reserved{"Mauve", {40, 60, 0, 0}},         Reserved{"Light Salmon", {0, 40, 60, 0}},
    Reserved{"Olive", {0, 0, 40, 60}},         Reserved{"Salmon", {0, 57, 76, 0}},
};

Rgb FromInks(const double inks[4]) {
  const auto light = [&](double share) {
    return (1 - std::clamp(share / 100, 0.0, 1.0)) * (1 - std::clamp(inks[3] / 100, 0.0, 1.0));
  };
  return {light(inks[0]), light(inks[1]), light(inks[2])};
}

}  // namespace

// The catalog has shares of the four inks in percent.
Rgb ColorOf(const model::Document& document, model::Id color) {
  if (color == 0 || color >= document.colors.size()) return {};
  const model::Color& ink = document.colors[color];
  if (!ink.declared && !ink.created) {
    for (const Reserved& known : kReserved) {
      if (known.name == ink.name) return FromInks(known.inks);
    }
    return {};
  }
  const double inks[] = {ink.cyan, ink.magenta, ink.yellow, ink.black};
  return FromInks(inks);
}

Rgb ColorNamed(const model::Document& document, std::string_view name) {
  const auto found = document.color_index.find(name);
  if (found != document.color_index.end()) return ColorOf(document, found->second);
  for (const Reserved& known : kReserved) {
    if (known.name == name) return FromInks(known.inks);
  }
  return {};
}

Rgb Tinted(Rgb color, double share) {
  const auto lighter = [&](double part) { return 1 - share * (1 - part); };
  return {lighter(color.red), lighter(color.green), lighter(color.blue)};
}

}  // namespace qelm::embedded::render
