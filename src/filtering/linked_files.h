// The files that documents show, take text from or refer to.
#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "host/interface/host.h"

namespace qelm::filtering {

enum class LinksThatCount : std::uint8_t {
  kAll,
  kShown,  // what decides how a document reads: hypertext links do not, cross-references do
};

// The files to which links of the open documents lead, and those of the text insets among these, however
// deep. An inset is opened where it is not open, and closed again.
std::set<std::string> FilesBehind(host::Host& host, const std::vector<host::Id>& documents,
                                  LinksThatCount which);

}  // namespace qelm::filtering
