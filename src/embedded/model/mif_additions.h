// Writing what was added to a MIF document (additions.h) as replacements of bytes of its source.
//
// New children of an element that stand side by side are written at one place: behind the statement that ends
// what is before them. Where the children of the element are paragraphs, each new one becomes a paragraph of
// its own; that is the same text put in at one place, because a paragraph is split by ending its line and
// itself and beginning anew. An element that has text of its own, and one whose definition says that it is a
// text range, is written in the line.
#pragma once

#include <vector>

#include "embedded/model/document.h"
#include "embedded/model/mif_layout.h"
#include "embedded/model/paragraph_format.h"
#include "embedded/model/splice.h"

namespace qelm::embedded::model {

// What the paragraphs of the source look like afterwards, by paragraph: gone into the one before, and
// followed in the file by another format than their own.
struct ParagraphChanges {
  std::vector<bool>* removed;
  std::vector<bool>* followed_by_other;
};

void WriteAdditions(const Document& document, const MifLayout& layout, ParagraphFormats* formats,
                    const ParagraphChanges& changes, Splice* splice);

}  // namespace qelm::embedded::model
