#include "schemes/scheme_loading.h"

#include <array>

#include "common/text.h"
#include "common/utf8.h"
#include "schemes/main_settings.h"
#include "schemes/settings_tree.h"
#include "schemes/styles.h"

namespace qelm::schemes {
namespace {

using common::kNameLimit;

// A name that other parts of the product hand over when there is none.
constexpr std::string_view kErrorName = "ThisIsAnERROR_ThisIsAnERROR ThisIsAnERROR_ThisIsAnERROR!";
// How many names a message lists.
constexpr std::size_t kListedNames = 20;

// What differs between the kinds: where their schemes lie and what is said when one is not found.
struct KindTraits {
  SchemeKind kind;
  std::string_view group;
  std::string_view not_found;
};
constexpr std::array<KindTraits, 3> kKinds = {{
    {SchemeKind::kFilter, "FilterSchemes", "QELM_MSG_COLORING_11"},
    {SchemeKind::kColoring, "ColoringSchemes", "QELM_MSG_COLORING_11"},
    {SchemeKind::kValidation, "ValidationSchemes", "QELM_MSG_VAL_GEN_7"},
}};

const KindTraits& TraitsOf(SchemeKind kind) { return kKinds[static_cast<std::size_t>(kind)]; }

// Calls visit(category name, kind, scheme element) for every scheme of the document, in document order, until
// it returns false.
template <typename Visit>
void ForEachScheme(SettingsTree& tree, const Visit& visit) {
  const host::Id root = tree.Root();
  for (host::Id category = tree.NextBelow(root, root, "SchemeCategory"); category != host::kNone;
       category = tree.NextBelow(root, category, "SchemeCategory")) {
    const std::string name = tree.TextAt(category, "CategorySettings", "Name", kNameLimit);
    for (const KindTraits& traits : kKinds) {
      for (host::Id group = tree.FirstChild(category, traits.group); group != host::kNone;
           group = tree.NextSibling(group)) {
        for (host::Id scheme = tree.FirstChild(group, "Scheme"); scheme != host::kNone;
             scheme = tree.NextSibling(scheme)) {
          if (!visit(name, traits.kind, scheme)) return;
        }
      }
    }
  }
}

// The scheme's element by the expression that says where it lies; 0 when no expression can hold the names.
host::Id FindByExpression(xpath::Engine& engine, host::Id document, std::string_view group,
                          std::string_view category, std::string_view name) {
  const std::string category_literal = NameLiteral(category);
  const std::string name_literal = NameLiteral(name);
  if (category_literal.empty() || name_literal.empty()) return host::kNone;
  const std::string expression = "//SchemeCategory[CategorySettings/Name=" + category_literal + "]/" +
                                 std::string(group) + "/Scheme[SchemeSettings/Name=" + name_literal + "]";
  return xpath::FindFirst(engine, document, host::kNone, expression).element;
}

// The scheme's element. Names that no expression can hold, expressions that are longer than the user allows,
// and names with white space around them are found by looking at all schemes.
host::Id FindScheme(xpath::Engine& engine, SettingsTree& tree, host::Id document, SchemeKind kind,
                    std::string_view category, std::string_view name) {
  const host::Id element = FindByExpression(engine, document, TraitsOf(kind).group, category, name);
  if (element != host::kNone) return element;
  host::Id found = host::kNone;
  ForEachScheme(tree, [&](const std::string& in, SchemeKind of, host::Id scheme) {
    if (of == kind && in == category && tree.TextAt(scheme, "SchemeSettings", "Name", kNameLimit) == name) {
      found = scheme;
    }
    return found == host::kNone;
  });
  return found;
}

// The names of the schemes of one kind, for the message that one of them is missing.
std::string NamesOf(SettingsTree& tree, SchemeKind kind) {
  std::string names;
  std::size_t count = 0;
  ForEachScheme(tree, [&](const std::string& category, SchemeKind of, host::Id scheme) {
    if (of != kind) return true;
    if (++count > kListedNames) {
      names += "\n...";
      return false;
    }
    if (!names.empty()) names += "\n";
    names += category + "/" + tree.TextAt(scheme, "SchemeSettings", "Name", kNameLimit);
    return true;
  });
  return names.empty() ? std::string(kNoName) : names;
}

void ReportNotFound(xpath::Engine& engine, messages::Messenger& messenger, SettingsTree& tree,
                    host::Id document, SchemeKind kind, std::string_view category, std::string_view name) {
  const std::string_view id = TraitsOf(kind).not_found;
  const std::string path(xpath::HostOf(engine).documents.Path(document));
  messenger.AlertFormatted(
      id, messenger.Format(id, std::string(name), std::string(category), path, NamesOf(tree, kind)));
}

Condition ReadAttribute(SettingsTree& tree, host::Id attribute) {
  Condition condition;
  condition.attribute = tree.Text(tree.FirstChild(attribute, "Name"), kNameLimit);
  for (host::Id value = tree.FirstChild(attribute, "Value"); value != host::kNone;
       value = tree.NextSibling(value)) {
    condition.values.push_back(tree.Text(value, kNameLimit));
  }
  return condition;
}

std::vector<Condition> ReadAttributes(SettingsTree& tree, host::Id owner) {
  std::vector<Condition> conditions;
  for (host::Id attribute = tree.FirstChild(owner, "Attribute"); attribute != host::kNone;
       attribute = tree.NextSibling(attribute)) {
    conditions.push_back(ReadAttribute(tree, attribute));
  }
  return conditions;
}

std::vector<std::string> ReadExpressions(SettingsTree& tree, host::Id owner) {
  std::vector<std::string> expressions;
  for (host::Id group = tree.FirstChild(owner, "XPathExpressions"); group != host::kNone;
       group = tree.NextSibling(group)) {
    for (host::Id expression = tree.FirstChild(group, "XPathExpression"); expression != host::kNone;
         expression = tree.NextSibling(expression)) {
      std::string text = tree.Text(expression, kTextLimit);
      if (!text.empty()) expressions.push_back(std::move(text));
    }
  }
  return expressions;
}

Rule ReadRule(SettingsTree& tree, host::Id element, bool is_xpath) {
  constexpr std::string_view kSettings = "RuleSettings";
  Rule rule;
  rule.color = tree.TextAt(element, kSettings, "Name", kNameLimit);
  rule.style = ReadStyle(tree.TextAt(element, kSettings, "Style", kNameLimit));
  if (std::string background = tree.TextAt(element, kSettings, "BkgdColor", kNameLimit);
      !background.empty()) {
    rule.background = std::move(background);
  }
  rule.match_all = tree.SwitchAt(element, kSettings, "MatchAll");
  rule.override_others = tree.SwitchAt(element, kSettings, "Override");
  if (is_xpath) {
    rule.conditions.push_back({"XPathExpressions", ReadExpressions(tree, element)});
  } else {
    rule.conditions = ReadAttributes(tree, element);
  }
  return rule;
}

void ReadSwitches(SettingsTree& tree, host::Id element, Scheme* scheme) {
  constexpr std::string_view kSettings = "SchemeSettings";
  // Validation schemes hold attributes in whichever family their category is.
  scheme->is_xpath =
      scheme->kind != SchemeKind::kValidation && tree.IsInside(element, "SchemeCategories_XPath");
  scheme->include_edd_defaults = tree.SwitchAt(element, kSettings, "IncludeEDDDefaults");
  scheme->space_delimited = tree.SwitchAt(element, kSettings, "SpaceDelimitedVals");
  scheme->ignore_case = tree.SwitchAt(element, kSettings, "IgnoreCaseSensitivity");
  scheme->process_all_flows = tree.SwitchAt(element, kSettings, "ProcessAllFlows");
  if (scheme->kind == SchemeKind::kFilter) {
    scheme->use_negative_logic = tree.SwitchAt(element, kSettings, "UseNegativeLogic");
  }
  scheme->comment = tree.TextAt(element, kSettings, "Comment", kTextLimit);
}

Scheme ReadScheme(SettingsTree& tree, host::Id element, SchemeKind kind) {
  Scheme scheme;
  scheme.kind = kind;
  ReadSwitches(tree, element, &scheme);
  if (kind == SchemeKind::kColoring) {
    for (host::Id rule = tree.FirstChild(element, "Rule"); rule != host::kNone;
         rule = tree.NextSibling(rule)) {
      scheme.rules.push_back(ReadRule(tree, rule, scheme.is_xpath));
    }
  } else if (scheme.is_xpath) {
    scheme.expressions = ReadExpressions(tree, element);
  } else {
    scheme.attributes = ReadAttributes(tree, element);
  }
  return scheme;
}

}  // namespace

bool IsSchemeName(std::string_view name) { return !name.empty() && name != kNoName && name != kErrorName; }

std::int32_t LoadScheme(xpath::Engine& engine, messages::Messenger& messenger, host::Id main_settings,
                        std::string_view category, std::string_view name, bool report, Scheme* scheme) {
  if (!IsSchemeName(category) || !IsSchemeName(name)) return kInvalidNames;
  const SchemeKind kind = scheme->kind;
  // The names may be the scheme's own.
  const std::string wanted_category(category);
  const std::string wanted_name(name);
  *scheme = Scheme{};
  scheme->kind = kind;

  SettingsTree tree(xpath::HostOf(engine), main_settings);
  const host::Id element = FindScheme(engine, tree, main_settings, kind, wanted_category, wanted_name);
  if (element == host::kNone) {
    scheme->category = wanted_category;
    if (report) {
      ReportNotFound(engine, messenger, tree, main_settings, kind, wanted_category, wanted_name);
    }
    return kSchemeNotFound;
  }
  *scheme = ReadScheme(tree, element, kind);
  scheme->category = wanted_category;
  scheme->name = wanted_name;
  return kLoaded;
}

std::vector<SchemeListing> ListSchemes(xpath::Engine& engine, host::Id main_settings) {
  SettingsTree tree(xpath::HostOf(engine), main_settings);
  std::vector<SchemeListing> schemes;
  ForEachScheme(tree, [&](const std::string& category, SchemeKind kind, host::Id scheme) {
    schemes.push_back({category, tree.TextAt(scheme, "SchemeSettings", "Name", kNameLimit), kind,
                       tree.IsInside(scheme, "SchemeCategories_XPath")});
    return true;
  });
  return schemes;
}

}  // namespace qelm::schemes
