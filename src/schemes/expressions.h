// Evaluating the expressions of a scheme over a document.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "schemes/scheme.h"
#include "xpath/engine.h"

namespace qelm::schemes {

// Expressions of a scheme read attributes as the scheme says; everything else reads them with defaults. The
// engine goes back to that when this ends.
class AttributeMode {
 public:
  AttributeMode(xpath::Engine& engine, bool with_defaults) : engine_(engine) {
    xpath::SetAttributeValuesMode(engine_, with_defaults ? 1 : 0);
  }
  ~AttributeMode() { xpath::SetAttributeValuesMode(engine_, 1); }
  AttributeMode(const AttributeMode&) = delete;
  AttributeMode& operator=(const AttributeMode&) = delete;

 private:
  xpath::Engine& engine_;
};

// Whether the engine takes the expression; if not, xpath::LastParseError says why.
bool IsValidExpression(xpath::Engine& engine, std::string_view expression);

// Collects what the expression selects from `root`. False when the expression is not valid, or when not all
// of it could be collected.
bool Select(xpath::Engine& engine, host::Id document, host::Id root, std::string_view expression,
            xpath::MatchList* matches);

// "CATEGORY/NAME", as messages name a scheme.
inline std::string FullName(const Scheme& scheme) { return scheme.category + "/" + scheme.name; }

}  // namespace qelm::schemes
