// What an index marker says: its entries, each with its levels, its place in the order, and its pages.
//
//   pump:seal; gasket[seals]      two entries; the second one sorts as "seals"
//   <$startrange>pump             a range of pages begins here, and <$endrange>pump ends it
//   <$nopage>pump: <Emphasis>see<Default Para Font> seal     an entry without a page
//   valve<Bold>                   a character format at the end is that of the page number
//
// A backslash takes its meaning from the character behind it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "embedded/model/reference_text.h"

namespace qelm::embedded::model {

enum class EntryPages : unsigned char { kOne, kRangeBegins, kRangeEnds, kNone };

struct MarkerEntry {
  std::vector<std::vector<StyledRun>> levels;  // at least one, the last one not empty
  std::vector<std::string> sort_as;            // by level; missing or empty: as the level reads
  EntryPages pages = EntryPages::kOne;
  std::optional<std::string> page_format;  // the character format that was in force at the end
};

std::vector<MarkerEntry> ReadIndexMarker(std::string_view text);

// The text of runs without their formats.
std::string PlainText(const std::vector<StyledRun>& runs);

}  // namespace qelm::embedded::model
