// The attribute rules of a classic filter scheme, made ready for a walk over many elements.
//
// Names and values are folded once where letter case is ignored, and the values of a rule are a hash set, so
// that an element costs one comparison of names an attribute and rule, and one look-up a value.
#pragma once

#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "host/interface/types.h"
#include "schemes/comparable_text.h"
#include "schemes/scheme.h"

namespace qelm::filtering {

class ClassicRules {
 public:
  // Refers to the scheme, which must outlive this.
  explicit ClassicRules(const schemes::Scheme& scheme);

  // Whether an element with these attributes fails the scheme: whether one of the rules, in order, fails. One
  // without attributes passes.
  bool Fails(const host::AttributeBuffer& attributes);

 private:
  struct Rule {
    std::string name;
    std::unordered_set<std::string_view> values;
    bool no_value_allowed = false;
    bool any_value_allowed = false;
  };

  bool RuleFails(const Rule& rule, const host::AttributeBuffer& attributes);

  schemes::TextComparison comparison_;
  std::vector<Rule> rules_;
  std::vector<std::string> folded_values_;  // what the sets refer to where letter case is ignored
  std::string name_buffer_;
  std::string value_buffer_;
};

}  // namespace qelm::filtering
