// Structured documents as outlines, for tests: written down in one line, made into MIF, and read back from a
// host.
//
//   Doc(P a='x'('one') Table(Body(Row(Cell('two')) Row b='1|2'(Cell))))
//
// An element is its tag, its attributes (values between "|", none where nothing follows the "=") and its
// content in brackets; text stands between apostrophes. Table, Title, Heading, Body, Footing, Row and Cell
// are the parts of a table, Inset is a text inset and no element. Read back, there are no attributes, and
// what has conditions is followed by their names: Row~Hidden(Cell('two'~Hidden)).
#pragma once

#include <string>
#include <vector>

#include "host/interface/host.h"
#include "support/mif_files.h"

namespace qelm::testing {

// A MIF document with one flow an outline; the first one is the main flow.
std::string MifOf(const std::vector<std::string>& outlines,
                  const std::vector<MifDefinition>& definitions = {});

// The outlines of all flows that hold elements, in the host's order, with " / " between.
std::string OutlineOf(host::Host& host, host::Id document);

}  // namespace qelm::testing
