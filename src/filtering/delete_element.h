// Deleting an element by its kind, as filters do it.
#pragma once

#include "filtering/run_log.h"
#include "host/interface/host.h"

namespace qelm::filtering {

// The error code of the element utilities after bw_DeleteElement: 0 for none.
struct DeleteOutcome {
  std::int32_t error = 0;     // -3: an element of that kind cannot be deleted; -1: the host could not do it
  std::int32_t internal = 0;  // 200: an argument is missing; 221: a table cell; 222: the host refused

  bool refused_kind() const { return error == -3; }
};

// Deletes the element: a text node's text, a title by setting the table to have none, all rows of a heading
// or footing, a row - and for a body, or the only row of one, the whole table. A cell is refused. Returns 1
// on success, 0 on failure with `outcome` (may be null) filled.
std::int32_t bw_DeleteElement(host::Host& host, host::Id document, host::Id element, DeleteOutcome* outcome,
                              const RunLog& log = {});

// The table that an element is a part of, by the element of the table; 0 for elements that are no table part
// or only a cell's.
host::Id TableOfPart(host::Host& host, host::Id document, host::Id element);

}  // namespace qelm::filtering
