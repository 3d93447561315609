// The elements of the main settings document as conversions make them: their content rules and paragraph
// formats, word for word as the element definitions of the template have them, and the attributes in which
// documents from before format 3.00 keep what these elements hold.
#pragma once

#include <array>
#include <string_view>

namespace qelm::schemes {

struct ElementForm {
  std::string_view tag;
  std::string_view content_rule;
  std::string_view paragraph_format = {};  // empty: none, as of all containers
};

inline constexpr std::string_view kTextOnly = "<TEXT>";

inline constexpr std::string_view kRootTag = "QELM_MainSettings";
inline constexpr std::string_view kOldRootTag = "TSP_MainSettings";  // before format 3.00

// Format 3.00, in the order in which a conversion comes to them: what is new, and what gets other content.
inline constexpr std::array kAttributeParts = {
    ElementForm{"Name", kTextOnly, "Body"},
    ElementForm{"Value", kTextOnly, "BodyIndent"},
};
inline constexpr ElementForm kAttributeForm{"Attribute", "Name, Value*"};

inline constexpr std::array kColorListParts = {ElementForm{"Color", kTextOnly, "Body"}};
inline constexpr ElementForm kColorListForm{"ColorList", "Color*"};

inline constexpr std::array kCategoryParts = {ElementForm{"CategorySettings", "Name"}};
inline constexpr ElementForm kCategoryForm{"SchemeCategory",
                                           "CategorySettings, FilterSchemes, ColoringSchemes, "
                                           "ValidationSchemes"};

inline constexpr std::array kSchemeParts = {
    ElementForm{"SpaceDelimitedVals", kTextOnly, "Body"},
    ElementForm{"IncludeEDDDefaults", kTextOnly, "Body"},
    ElementForm{"IgnoreCaseSensitivity", kTextOnly, "Body"},
    ElementForm{"ProcessAllFlows", kTextOnly, "Body"},
    ElementForm{"Comment", kTextOnly, "Body"},
    ElementForm{"XPathExpression", kTextOnly, "Body"},
    ElementForm{"XPathExpressions", "XPathExpression*"},
    ElementForm{"SchemeSettings",
                "(Name | SpaceDelimitedVals | IncludeEDDDefaults | IgnoreCaseSensitivity | ProcessAllFlows | "
                "Comment)*"},
};
inline constexpr ElementForm kSchemeForm{"Scheme", "SchemeSettings, (Rule | Attribute | XPathExpressions)*"};

inline constexpr std::array kRuleParts = {
    ElementForm{"Style", kTextOnly, "Body"},
    ElementForm{"MatchAll", kTextOnly, "Body"},
    ElementForm{"Override", kTextOnly, "Body"},
    ElementForm{"RuleSettings", "(Name | Style | MatchAll | Override)*"},
};
inline constexpr ElementForm kRuleForm{"Rule", "RuleSettings, (Attribute | XPathExpressions)*"};

inline constexpr std::array kHistoryParts = {ElementForm{"XPathHistory", "XPathExpression*"}};
inline constexpr ElementForm kOldRootForm{
    kOldRootTag, "SchemeCategories & SchemeCategories_XPath & AttributeList & ColorList & XPathHistory"};

// Attributes of a Scheme and of a Rule that become elements of the same name in its settings.
inline constexpr std::array<std::string_view, 6> kSchemeSwitches = {
    "Name",   "SpaceDelimitedVals", "IncludeEDDDefaults", "IgnoreCaseSensitivity", "ProcessAllFlows",
    "Comment"};
inline constexpr std::array<std::string_view, 4> kRuleSwitches = {"Name", "Style", "MatchAll", "Override"};

// Format 3.04. "BodyIndentIndent" is deliberate.
inline constexpr ElementForm kBackgroundForm{"BkgdColor", kTextOnly, "BodyIndentIndent"};
inline constexpr ElementForm kRuleSettingsForm{"RuleSettings",
                                               "Name & Style & MatchAll & Override & BkgdColor"};

}  // namespace qelm::schemes
