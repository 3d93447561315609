// How text under conditions is marked where the document shows that.
#pragma once

#include <string_view>
#include <vector>

#include "embedded/model/document.h"

namespace qelm::embedded::render {

struct Indicator {
  enum class Style : std::uint8_t { kAsIs, kUnderline, kDouble, kNumeric, kOverline, kStrike, kChangeBar };
  Style style = Style::kAsIs;
  std::string_view color;       // empty: as it is
  std::string_view background;  // the same
};

// The indicators by condition set; empty where the document does not show them. A set has the look of its
// conditions one after the other, and where two colors meet, magenta.
std::vector<std::vector<Indicator>> ReadIndicators(const model::Document& document);

}  // namespace qelm::embedded::render
