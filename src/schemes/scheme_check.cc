#include "schemes/scheme_check.h"

#include <algorithm>
#include <array>
#include <map>
#include <set>
#include <span>
#include <tuple>

#include "common/text.h"
#include "common/utf8.h"
#include "schemes/color_names.h"
#include "schemes/element_forms.h"
#include "schemes/expressions.h"
#include "schemes/scheme_loading.h"
#include "schemes/settings_tree.h"

namespace qelm::schemes {
namespace {

using common::kNameLimit;
using host::Id;
using host::kNone;

struct Group {
  std::string_view tag;
  SchemeKind kind;
};
constexpr std::array<Group, 3> kGroups = {{{"FilterSchemes", SchemeKind::kFilter},
                                           {"ColoringSchemes", SchemeKind::kColoring},
                                           {"ValidationSchemes", SchemeKind::kValidation}}};

constexpr std::array<std::string_view, 5> kSchemeSwitches = {"SpaceDelimitedVals", "IncludeEDDDefaults",
                                                             "IgnoreCaseSensitivity", "ProcessAllFlows",
                                                             "UseNegativeLogic"};
constexpr std::array<std::string_view, 2> kRuleSwitches = {"MatchAll", "Override"};

bool IsUsableName(const std::string& name) {
  return IsSchemeName(name) && common::CountCharacters(name) <= kNameLimit;
}

class Checker {
 public:
  Checker(xpath::Engine& engine, Id main_settings, Id document)
      : engine_(engine), host_(xpath::HostOf(engine)), tree_(host_, main_settings), document_(document) {}

  std::vector<SchemeFinding> Run();

 private:
  void CheckCategory(Id category);
  void CheckScheme(Id scheme);
  void CheckSwitches(Id owner, std::string_view settings, std::span<const std::string_view> names);
  void CheckRule(Id rule);
  void CheckColor(Id rule, std::string_view tag);
  void CheckAttributes(Id owner, bool match_all);
  void CheckValues(Id attribute, const std::string& name, bool match_all);
  void CheckExpressions(Id owner);
  bool Holds(Id owner, std::string_view tag) { return tree_.FirstChild(owner, tag) != kNone; }

  // A text of any length, as names that are too long are among what is looked for.
  std::string TextAt(Id element, std::string_view parent, std::string_view child) {
    return tree_.TextAt(element, parent, child, kTextLimit);
  }
  // The element with that text, for the place of a finding; `element` where it is missing.
  Id PlaceOf(Id element, std::string_view parent, std::string_view child) {
    const Id group = tree_.FirstChild(element, parent);
    const Id found = group == kNone ? kNone : tree_.FirstChild(group, child);
    return found == kNone ? element : found;
  }
  void Add(SchemeFault fault, Id element, std::string text1 = {}, std::string text2 = {}) {
    findings_.push_back({fault, category_, scheme_, kind_, element, std::move(text1), std::move(text2), {}});
  }

  xpath::Engine& engine_;
  host::Host& host_;
  SettingsTree tree_;
  Id document_;
  std::vector<SchemeFinding> findings_;

  // Where the check is.
  bool is_xpath_ = false;
  bool space_delimited_ = false;
  std::string category_;
  std::string scheme_;
  SchemeKind kind_ = SchemeKind::kFilter;

  std::set<std::pair<bool, std::string>> categories_;                         // by family
  std::map<std::tuple<std::string, SchemeKind, std::string>, bool> schemes_;  // and its family
};

std::vector<SchemeFinding> Checker::Run() {
  const Id root = tree_.Root();
  if (root != kNone && tree_.Tag(root) == kOldRootTag) {
    Add(SchemeFault::kOldFormat, root);
    return std::move(findings_);
  }
  for (Id category = tree_.NextBelow(root, root, "SchemeCategory"); category != kNone;
       category = tree_.NextBelow(root, category, "SchemeCategory")) {
    CheckCategory(category);
  }
  return std::move(findings_);
}

void Checker::CheckCategory(Id category) {
  is_xpath_ = tree_.IsInside(category, "SchemeCategories_XPath");
  category_ = TextAt(category, "CategorySettings", "Name");
  scheme_.clear();
  const Id place = PlaceOf(category, "CategorySettings", "Name");
  if (!IsUsableName(category_)) {
    Add(SchemeFault::kCategoryName, place);
  } else if (!categories_.emplace(is_xpath_, category_).second) {
    Add(SchemeFault::kCategoryAgain, place, category_);
  }
  for (const Group& group : kGroups) {
    kind_ = group.kind;
    for (Id schemes = tree_.FirstChild(category, group.tag); schemes != kNone;
         schemes = tree_.NextSibling(schemes)) {
      for (Id scheme = tree_.FirstChild(schemes, "Scheme"); scheme != kNone;
           scheme = tree_.NextSibling(scheme)) {
        CheckScheme(scheme);
      }
    }
  }
}

void Checker::CheckScheme(Id scheme) {
  scheme_ = TextAt(scheme, "SchemeSettings", "Name");
  const Id place = PlaceOf(scheme, "SchemeSettings", "Name");
  if (!IsUsableName(scheme_)) {
    Add(SchemeFault::kSchemeName, place);
  } else if (const auto [first, is_new] = schemes_.try_emplace({category_, kind_, scheme_}, is_xpath_);
             !is_new) {
    Add(first->second == is_xpath_ ? SchemeFault::kSchemeAgain : SchemeFault::kSchemeHidden, place);
  }
  CheckSwitches(scheme, "SchemeSettings", kSchemeSwitches);
  // Expressions do not look at the switch, and validation schemes hold attributes in both families.
  const bool has_attributes = !is_xpath_ || kind_ == SchemeKind::kValidation;
  space_delimited_ = has_attributes && tree_.SwitchAt(scheme, "SchemeSettings", "SpaceDelimitedVals");
  const std::string_view content = kind_ == SchemeKind::kColoring ? "Rule"
                                   : has_attributes               ? "Attribute"
                                                                  : "XPathExpressions";
  if (!Holds(scheme, content)) Add(SchemeFault::kNothingInIt, scheme);
  if (kind_ == SchemeKind::kColoring) {
    for (Id rule = tree_.FirstChild(scheme, "Rule"); rule != kNone; rule = tree_.NextSibling(rule)) {
      CheckRule(rule);
    }
  } else if (has_attributes) {
    CheckAttributes(scheme, false);
  } else {
    CheckExpressions(scheme);
  }
}

void Checker::CheckSwitches(Id owner, std::string_view settings, std::span<const std::string_view> names) {
  for (const std::string_view name : names) {
    const Id place = PlaceOf(owner, settings, name);
    const std::string text = TextAt(owner, settings, name);
    if (place == owner || text.empty() || common::ReadSwitchWord(text) != common::SwitchWord::kUnclear)
      continue;
    Add(SchemeFault::kSwitch, place, std::string(name), text);
  }
}

void Checker::CheckRule(Id rule) {
  CheckSwitches(rule, "RuleSettings", kRuleSwitches);
  CheckColor(rule, "Name");
  CheckColor(rule, "BkgdColor");
  const std::string style = TextAt(rule, "RuleSettings", "Style");
  if (!style.empty() && (style.size() != 1 || style[0] < '0' || style[0] > '8')) {
    Add(SchemeFault::kStyle, PlaceOf(rule, "RuleSettings", "Style"), style);
  }
  if (!Holds(rule, is_xpath_ ? "XPathExpressions" : "Attribute")) Add(SchemeFault::kNoConditions, rule);
  if (is_xpath_) {
    CheckExpressions(rule);
  } else {
    CheckAttributes(rule, tree_.SwitchAt(rule, "RuleSettings", "MatchAll"));
  }
}

void Checker::CheckColor(Id rule, std::string_view tag) {
  const std::string color = TextAt(rule, "RuleSettings", tag);
  const Id place = PlaceOf(rule, "RuleSettings", tag);
  if (color.empty()) {
    if (tag == "Name") Add(SchemeFault::kColorName, place);
    return;
  }
  const bool none = tag == "Name" ? IsNoColor(color) : IsNoBackground(color);
  if (document_ == kNone || none || host_.catalogs.FindColor(document_, color) != kNone) return;
  Add(SchemeFault::kNoSuchColor, place, color);
}

void Checker::CheckAttributes(Id owner, bool match_all) {
  std::set<std::string> names;
  for (Id attribute = tree_.FirstChild(owner, "Attribute"); attribute != kNone;
       attribute = tree_.NextSibling(attribute)) {
    const Id name_element = tree_.FirstChild(attribute, "Name");
    const std::string name = tree_.Text(name_element, kTextLimit);
    if (name.empty()) {
      Add(SchemeFault::kAttributeName, attribute);
    } else if (!names.insert(name).second) {
      Add(SchemeFault::kAttributeAgain, name_element, name);
    }
    CheckValues(attribute, name, match_all);
  }
}

void Checker::CheckValues(Id attribute, const std::string& name, bool match_all) {
  std::set<std::string> values;
  for (Id element = tree_.FirstChild(attribute, "Value"); element != kNone;
       element = tree_.NextSibling(element)) {
    const std::string value = tree_.Text(element, kTextLimit);
    const bool special = value.starts_with('<') && value.ends_with('>');
    if (value.empty()) {
      Add(SchemeFault::kValueEmpty, element, name);
    } else if (!values.insert(value).second) {
      Add(SchemeFault::kValueAgain, element, value, name);
    } else if (space_delimited_ && !special && value.find(' ') != std::string::npos) {
      Add(SchemeFault::kValueWithBlank, element, value, name);
    }
  }
  // In a filter, an attribute without values has a meaning: what has it goes.
  if (values.empty() && kind_ != SchemeKind::kFilter) Add(SchemeFault::kNoValues, attribute, name);
  if (match_all && values.contains(std::string(kNoValue)) && values.contains(std::string(kAnyValue))) {
    Add(SchemeFault::kNoAndAnyValue, attribute, name);
  }
}

void Checker::CheckExpressions(Id owner) {
  std::set<std::string> expressions;
  bool any = false;
  for (Id group = tree_.FirstChild(owner, "XPathExpressions"); group != kNone;
       group = tree_.NextSibling(group)) {
    for (Id element = tree_.FirstChild(group, "XPathExpression"); element != kNone;
         element = tree_.NextSibling(element)) {
      std::string expression = tree_.Text(element, kTextLimit);
      if (expression.empty()) continue;
      any = true;
      if (!expressions.insert(expression).second) Add(SchemeFault::kExpressionAgain, element, expression);
      if (IsValidExpression(engine_, expression)) continue;
      Add(SchemeFault::kExpression, element, std::move(expression));
      findings_.back().error = xpath::LastParseError(engine_);
    }
  }
  if (!any && Holds(owner, "XPathExpressions")) Add(SchemeFault::kNoConditions, owner);
}

}  // namespace

std::vector<SchemeFinding> CheckSchemes(xpath::Engine& engine, Id main_settings, Id document) {
  return Checker(engine, main_settings, document).Run();
}

}  // namespace qelm::schemes
