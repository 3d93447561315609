// Reading the substatements of a MIF statement. Only its own children are told; what they hold is passed over
// unless the caller reads it.
#pragma once

#include <string_view>

#include "embedded/mif/reader.h"
#include "embedded/model/document.h"
#include "embedded/model/mif_scan.h"

namespace qelm::embedded::render {

// Calls `child(reader)` for each child of the group that is the first statement of `statement`.
template <typename Function>
void EachChild(std::string_view statement, Function&& child) {
  mif::Reader reader(statement);
  if (!reader.Next() || reader.kind() != mif::Piece::kGroup) return;
  model::Children(&reader, [&] { child(reader); });
}

// The points in one unit of a number without a unit: what the document's `Units` statement says, else inches.
double DefaultUnit(const model::Document& document);

inline bool IsYes(std::string_view data) { return data == "Yes"; }

}  // namespace qelm::embedded::render
