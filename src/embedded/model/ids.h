// The plain types of the document model.
#pragma once

#include <cstdint>

namespace qelm::embedded::model {

// 0 names nothing. Elements, definitions, flows, conditions, colors, tables and rows are each numbered
// from 1.
using Id = std::uint32_t;
inline constexpr std::uint32_t kNoIndex = 0xFFFFFFFFU;

enum class Format : std::uint8_t { kMif, kXml };

enum class ElementKind : std::uint8_t {
  kContainer,
  kTable,
  kTableTitle,
  kTableHeading,
  kTableBody,
  kTableFooting,
  kTableRow,
  kTableCell,
  kFootnote,
  kCrossReference,
  kGraphic,
  kEquation,
  kMarker,
  kSystemVariable,
  kRubi,
  kText,
};

// Whether an element of that kind stands for a part of a table, which is more than its element.
constexpr bool IsTablePart(ElementKind kind) {
  return kind >= ElementKind::kTableTitle && kind <= ElementKind::kTableCell;
}

// Whether an element of that kind is a part of the document (Document::parts).
constexpr bool HasPart(ElementKind kind) {
  return IsTablePart(kind) || kind == ElementKind::kTable || kind == ElementKind::kFootnote;
}

enum class FlowKind : std::uint8_t { kBody, kMaster, kReference, kHidden, kFrame };

enum class Underlining : std::uint8_t { kNone, kSingle, kDouble, kNumeric };

// A range of bytes of the source.
struct Span {
  std::uint32_t begin = 0;
  std::uint32_t end = 0;
  bool Empty() const { return begin == end; }
};

}  // namespace qelm::embedded::model
