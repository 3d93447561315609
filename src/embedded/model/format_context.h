// The conditions by which format rules of element definitions hold: where an element stands.
//
//   Section < * < Chapter     the parent is a Section, and further up there is a Chapter
//   {first} < List            the element is the first child, and its parent is a List
//   [Draft = "Yes"]           the element itself has the attribute value
//   (Note | Warning)          the parent is one of the two
//
// A step without a name at the beginning is about the element itself, every other one about an ancestor. `*`
// passes over any number of ancestors, none included. Steps that follow one another without a `*` are
// consecutive ancestors, so each run of steps is looked for once, from the nearest place on.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "embedded/model/document.h"

namespace qelm::embedded::model {

class FormatContext {
 public:
  // Nothing when the text is not understood. An empty text always holds.
  static std::optional<FormatContext> Parse(std::string_view text);

  bool Holds(const Document& document, Id element) const;

 private:
  enum class Sibling : std::uint8_t {
    kAny,
    kFirst,
    kLast,
    kOnly,
    kMiddle,
    kNotFirst,
    kNotLast,
    kBefore,
    kAfter
  };
  struct AttributeTest {
    std::string name;
    std::string operation;  // "=", "!=", "<", "<=", ">", ">="
    std::string value;
  };
  struct Step {
    bool any_number = false;         // "*"
    std::vector<std::string> names;  // one of these; empty: any element
    Sibling sibling = Sibling::kAny;
    std::vector<std::string> neighbors;             // for kBefore and kAfter; "<TEXT>" is text
    std::vector<std::vector<AttributeTest>> tests;  // any of these, all tests of which hold
  };
  class Parser;

  static bool HoldsOf(const Document& document, Id element, const Step& step);
  static bool StandsSo(const Document& document, Id element, const Step& step);
  static bool Passes(const Document& document, Id element, const AttributeTest& test);

  bool about_itself_ = false;  // the first step is about the element
  std::vector<Step> steps_;
};

}  // namespace qelm::embedded::model
