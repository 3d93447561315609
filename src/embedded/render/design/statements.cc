#include "embedded/render/design/statements.h"

#include "embedded/render/design/geometry.h"

namespace qelm::embedded::render {

// Lengths are mostly written with their unit; the statement that says what the others have stands at the
// beginning.
double DefaultUnit(const model::Document& document) {
  mif::Reader reader(document.source);
  while (reader.Next() && reader.kind() == mif::Piece::kLeaf) {
    if (reader.token() == mif::Token::kUnits) return PointsOfUnit(reader.data());
  }
  return PointsOfUnit("Uin");
}

}  // namespace qelm::embedded::render
