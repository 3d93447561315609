// The second of two passes over a MIF document: brings the raw items into reading order and builds the
// element tree from them.
//
// Each flow is walked in file order. Where a table, footnote or frame is anchored, what it holds follows its
// anchor; where hidden text belongs, the block from the hidden flow is put in. The places still to be walked
// are kept on a stack of ranges, so nesting costs no recursion.
#pragma once

#include "embedded/model/mif_scan.h"

namespace qelm::embedded::model {

// Fills items, elements, flows and blocks of `document` from what the scan found, and leaves warnings for
// element statements that do not nest. `scan` is used up.
void BuildTree(Document* document, Scan* scan);

}  // namespace qelm::embedded::model
