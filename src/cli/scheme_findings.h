// What a look over all schemes found, in words and as results for other programs.
#pragma once

#include <string>
#include <vector>

#include "cli/sarif.h"
#include "cli/session.h"
#include "schemes/scheme_check.h"

namespace qelm::cli {

struct SchemeReport {
  std::string file;  // the main settings document, as the user knows it
  std::vector<schemes::SchemeFinding> findings;
  std::vector<std::uint32_t> lines;  // of the findings, 0 where it is not known
};

// Checks the open main settings document; colors against `document`, 0 for none.
SchemeReport CheckAllSchemes(Session& session, host::Id document);

// One line for each finding, a refused expression with its place below; and how many there were.
std::string TextOf(Session& session, const SchemeReport& report);
nlohmann::ordered_json JsonOf(Session& session, const SchemeReport& report);
SarifLog SarifOf(Session& session, const SchemeReport& report);

}  // namespace qelm::cli
