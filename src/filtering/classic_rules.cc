#include "filtering/classic_rules.h"

#include <algorithm>

#include "common/text.h"
#include "schemes/attribute_values.h"

namespace qelm::filtering {
ClassicRules::ClassicRules(const schemes::Scheme& scheme) : comparison_(scheme.ignore_case) {
  std::size_t count = 0;
  for (const schemes::Condition& condition : scheme.attributes) count += condition.values.size();
  folded_values_.reserve(count);  // the sets hold views of these texts: they may not move
  rules_.reserve(scheme.attributes.size());
  for (const schemes::Condition& condition : scheme.attributes) {
    Rule& rule = rules_.emplace_back();
    rule.name = comparison_.IgnoresCase() ? common::FoldCase(condition.attribute) : condition.attribute;
    for (const std::string& value : condition.values) {
      rule.values.insert(comparison_.IgnoresCase() ? folded_values_.emplace_back(common::FoldCase(value))
                                                   : value);
    }
    rule.no_value_allowed = rule.values.contains(schemes::kNoValue);
    rule.any_value_allowed = rule.values.contains(schemes::kAnyValue);
  }
}

bool ClassicRules::Fails(const host::AttributeBuffer& attributes) {
  if (attributes.attributes.empty()) return false;
  return std::any_of(rules_.begin(), rules_.end(),
                     [&](const Rule& rule) { return RuleFails(rule, attributes); });
}

bool ClassicRules::RuleFails(const Rule& rule, const host::AttributeBuffer& attributes) {
  const auto found = std::find_if(
      attributes.attributes.begin(), attributes.attributes.end(), [&](const host::AttributeView& attribute) {
        return comparison_.Comparable(attribute.name, &name_buffer_) == std::string_view(rule.name);
      });
  if (found == attributes.attributes.end()) return false;
  if (rule.values.empty()) return true;
  if (schemes::HasNoValue(attributes, *found)) return !rule.no_value_allowed;
  if (rule.any_value_allowed) return false;
  const auto first = attributes.values.begin() + static_cast<std::ptrdiff_t>(found->first_value);
  return std::none_of(first, first + static_cast<std::ptrdiff_t>(found->value_count),
                      [&](std::string_view value) {
                        return rule.values.contains(comparison_.Comparable(value, &value_buffer_));
                      });
}

}  // namespace qelm::filtering
