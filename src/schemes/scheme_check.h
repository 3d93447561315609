// Looking over all schemes of a main settings document, before a run finds out: names that cannot be used or
// found, colors and styles that are none, expressions that the engine refuses, what is listed twice, and
// rules and values that can never match anything.
#pragma once

#include <string>
#include <vector>

#include "host/interface/host.h"
#include "schemes/scheme.h"
#include "xpath/engine.h"

namespace qelm::schemes {

enum class SchemeFault : std::uint8_t {
  kCategoryName,   // empty, "<none>", or longer than a name may be
  kSchemeName,     // the same of a scheme
  kCategoryAgain,  // in one family; text 1: the category
  kSchemeAgain,    // in one category; only the first one is ever found
  kSchemeHidden,   // a classic one of the same category and name is found in its place
  kSwitch,         // text 1: the switch, text 2: what it says; read as false
  kNothingInIt,    // no rules, attributes or expressions
  kNoConditions,   // of a rule
  kAttributeName,  // empty
  kNoValues,       // text 1: the attribute
  kAttributeAgain,
  kValueAgain,       // text 1: the value, text 2: the attribute
  kValueEmpty,       // text 1: the attribute
  kValueWithBlank,   // the scheme splits values at blanks; text 1: the value, text 2: the attribute
  kNoAndAnyValue,    // under MatchAll the two never match together; text 1: the attribute
  kColorName,        // empty
  kNoSuchColor,      // text 1: the color
  kStyle,            // text 1: what it says
  kExpressionAgain,  // text 1: the expression
  kExpression,       // refused; text 1: the expression
  kOldFormat,        // of the whole document: no scheme can be found in it
};

struct SchemeFinding {
  SchemeFault fault = SchemeFault::kSchemeName;
  std::string category;
  std::string scheme;  // empty where a category is meant
  SchemeKind kind = SchemeKind::kFilter;
  host::Id element = host::kNone;  // of the main settings document
  std::string text1;
  std::string text2;
  xpath::ParseError error;  // of a refused expression
};

// What is found in the main settings document, in document order. Colors are looked for in `document`; 0:
// they are not looked for.
std::vector<SchemeFinding> CheckSchemes(xpath::Engine& engine, host::Id main_settings, host::Id document);

}  // namespace qelm::schemes
