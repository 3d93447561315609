// The numbers of volumes, chapters, sections and subsections of a book, and where the numbering of paragraphs
// begins anew: as the book says of each of its components, one after the other.
#pragma once

#include <array>
#include <cstdint>

#include "embedded/model/document.h"
#include "embedded/model/numbering.h"

namespace qelm::embedded::model {

// Volume, chapter, section, subsection.
inline constexpr std::size_t kNumberedLevels = 4;

struct BookCounters {
  Counters paragraphs;
  std::array<std::int64_t, kNumberedLevels> levels{};
  bool any = false;  // a component came before
};

// The numbers that a document says it has by itself.
PlaceNumbers DocumentPlaces(const Document& document);

// Goes on to a component, whose statement in the book is `component`. Returns its numbers, and leaves in
// `counters` what its paragraphs go on from.
PlaceNumbers NextComponent(const Document& book, Span component, const Document& document,
                           BookCounters* counters);

}  // namespace qelm::embedded::model
