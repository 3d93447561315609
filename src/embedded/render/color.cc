#include "embedded/render/color.h"

#include <algorithm>

namespace qelm::embedded::render {

// The catalog has shares of the four inks in percent.
Rgb ColorOf(const model::Document& document, model::Id color) {
  if (color == 0 || color >= document.colors.size()) return {};
  const model::Color& ink = document.colors[color];
  const auto light = [&](double share) {
    return (1 - std::clamp(share / 100, 0.0, 1.0)) * (1 - std::clamp(ink.black / 100, 0.0, 1.0));
  };
  return {light(ink.cyan), light(ink.magenta), light(ink.yellow)};
}

Rgb ColorNamed(const model::Document& document, std::string_view name) {
  const auto found = document.color_index.find(name);
  return found == document.color_index.end() ? Rgb() : ColorOf(document, found->second);
}

Rgb Tinted(Rgb color, double share) {
  const auto lighter = [&](double part) { return 1 - share * (1 - part); };
  return {lighter(color.red), lighter(color.green), lighter(color.blue)};
}

}  // namespace qelm::embedded::render
