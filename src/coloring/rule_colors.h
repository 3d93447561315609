// The colors of a scheme's rules as colors of one document, looked up once before anything is colored.
#pragma once

#include <string>
#include <vector>

#include "host/interface/catalogs.h"
#include "schemes/scheme.h"

namespace qelm::coloring {

// What a rule does to text: the properties that it sets, and whether the text first gets the formatting again
// that its element definition gives it.
struct RuleMark {
  host::TextProperties properties;  // the mask is 0 where nothing is set
  bool from_definition = false;
};

struct RuleMarks {
  std::vector<RuleMark> rules;       // by rule
  std::vector<std::string> missing;  // colors that the document does not define, each once, in rule order
};

// Looks the colors of the rules up in the document, and turns their styles into text properties. A color that
// is missing is not made: what it should have colored keeps its color.
RuleMarks ResolveMarks(host::Catalogs& catalogs, host::Id document, const schemes::Scheme& scheme);

}  // namespace qelm::coloring
