// A document's colors as a screen and a PDF show them.
#pragma once

#include <string_view>

#include "embedded/model/document.h"

namespace qelm::embedded::render {

// Each from 0 to 1.
struct Rgb {
  double red = 0;
  double green = 0;
  double blue = 0;
  friend bool operator==(const Rgb&, const Rgb&) = default;
};

// The color of the catalog; one that only text names has the look that every document knows by that name.
// Black for 0.
Rgb ColorOf(const model::Document& document, model::Id color);
// By name; black for one that the document does not have.
Rgb ColorNamed(const model::Document& document, std::string_view name);

// Lighter: 1 is the color itself, 0 white.
Rgb Tinted(Rgb color, double share);

}  // namespace qelm::embedded::render
