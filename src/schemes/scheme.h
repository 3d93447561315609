// A scheme in memory, its rules and conditions, and the active scheme of each kind.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace qelm::schemes {

inline constexpr std::string_view kNoName = "<none>";
inline constexpr std::string_view kNoValue = "<no value>";
inline constexpr std::string_view kAnyValue = "<any value>";

enum class SchemeKind : std::uint8_t { kFilter, kColoring, kValidation };

// An attribute and the values that a scheme or rule lists for it; in a rule of an XPath scheme the one
// condition is named "XPathExpressions" and its values are the expressions.
struct Condition {
  std::string attribute;
  std::vector<std::string> values;
};

// A coloring rule.
struct Rule {
  std::string color;
  std::int32_t style = 0;  // 0 to 8, see styles.h
  std::string background = "None";
  bool match_all = false;
  bool override_others = false;
  std::vector<Condition> conditions;
};

struct Scheme {
  SchemeKind kind = SchemeKind::kColoring;
  std::string category{kNoName};
  std::string name{kNoName};
  bool is_xpath = false;
  bool include_edd_defaults = false;
  bool space_delimited = false;
  bool ignore_case = false;
  bool process_all_flows = false;
  bool use_negative_logic = false;  // filter schemes
  bool from_table = false;          // read from a document's table: the main settings do not hold it
  std::string comment;
  std::vector<Rule> rules;               // coloring schemes
  std::vector<Condition> attributes;     // classic filter and validation schemes
  std::vector<std::string> expressions;  // XPath filter and validation schemes

  bool Active() const { return name != kNoName; }
};

// The scheme in force of each kind.
struct ActiveSchemes {
  Scheme filter;
  Scheme coloring;
  Scheme validation;

  Scheme& Of(SchemeKind kind) {
    return kind == SchemeKind::kFilter ? filter : kind == SchemeKind::kColoring ? coloring : validation;
  }
};

}  // namespace qelm::schemes
