#include "embedded/render/color.h"

#include <algorithm>

#include "embedded/model/xml_marks.h"

namespace qelm::embedded::render {
namespace {

Rgb FromInks(const double inks[4]) {
  const auto light = [&](double share) {
    return (1 - std::clamp(share / 100, 0.0, 1.0)) * (1 - std::clamp(inks[3] / 100, 0.0, 1.0));
  };
  return {light(inks[0]), light(inks[1]), light(inks[2])};
}

// Text may name a reserved color though the catalog lacks it.
Rgb Reserved(std::string_view name) {
  const double* const inks = model::ReservedInks(name);
  return inks == nullptr ? Rgb() : FromInks(inks);
}

}  // namespace

// The catalog has shares of the four inks in percent.
Rgb ColorOf(const model::Document& document, model::Id color) {
  if (color == 0 || color >= document.colors.size()) return {};
  const model::Color& ink = document.colors[color];
  if (!ink.declared && !ink.created) return Reserved(ink.name);
  const double inks[] = {ink.cyan, ink.magenta, ink.yellow, ink.black};
  return FromInks(inks);
}

Rgb ColorNamed(const model::Document& document, std::string_view name) {
  const auto found = document.color_index.find(name);
  return found == document.color_index.end() ? Reserved(name) : ColorOf(document, found->second);
}

Rgb Tinted(Rgb color, double share) {
  const auto lighter = [&](double part) { return 1 - share * (1 - part); };
  return {lighter(color.red), lighter(color.green), lighter(color.blue)};
}

}  // namespace qelm::embedded::render
