#include "cli/scheme_json.h"

#include "cli/scheme_choice.h"
#include "schemes/styles.h"

namespace qelm::cli {
namespace {

nlohmann::ordered_json ConditionsJson(const std::vector<schemes::Condition>& conditions) {
  nlohmann::ordered_json list = nlohmann::ordered_json::array();
  for (const schemes::Condition& condition : conditions) {
    list.push_back({{"attribute", condition.attribute}, {"values", condition.values}});
  }
  return list;
}

nlohmann::ordered_json RulesJson(const schemes::Scheme& scheme) {
  nlohmann::ordered_json list = nlohmann::ordered_json::array();
  for (const schemes::Rule& rule : scheme.rules) {
    nlohmann::ordered_json entry{{"color", rule.color},
                                 {"style", schemes::StyleName(rule.style)},
                                 {"background", rule.background},
                                 {"match_all", rule.match_all},
                                 {"override", rule.override_others}};
    if (scheme.is_xpath && !rule.conditions.empty()) {
      entry["expressions"] = rule.conditions.front().values;
    } else {
      entry["conditions"] = ConditionsJson(rule.conditions);
    }
    list.push_back(std::move(entry));
  }
  return list;
}

}  // namespace

nlohmann::ordered_json SchemeJson(const schemes::Scheme& scheme) {
  nlohmann::ordered_json object{{"category", scheme.category},
                                {"name", scheme.name},
                                {"kind", KindName(scheme.kind)},
                                {"family", scheme.is_xpath ? "xpath" : "classic"},
                                {"include_edd_defaults", scheme.include_edd_defaults},
                                {"space_delimited", scheme.space_delimited},
                                {"ignore_case", scheme.ignore_case},
                                {"process_all_flows", scheme.process_all_flows}};
  if (scheme.kind == schemes::SchemeKind::kFilter) object["use_negative_logic"] = scheme.use_negative_logic;
  object["comment"] = scheme.comment;
  if (scheme.kind == schemes::SchemeKind::kColoring) {
    object["rules"] = RulesJson(scheme);
  } else if (scheme.is_xpath) {
    object["expressions"] = scheme.expressions;
  } else {
    object["attributes"] = ConditionsJson(scheme.attributes);
  }
  return object;
}

}  // namespace qelm::cli
