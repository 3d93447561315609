// Comparing many values with the values of one other operand at once: which elements have a value that
// satisfies a test, and which count as empty.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "xpath/comparison.h"
#include "xpath/environment.h"
#include "xpath/set_axes.h"

namespace qelm::xpath {

// The other operand of a comparison.
struct OtherOperand {
  Test test = Test::kEqual;
  ValueSet* values = nullptr;
  bool is_left = false;

  // Whether a pair of this value and one of the operand's satisfies the test (for "!=": whether it is equal).
  bool Matches(std::string_view value) const { return values->AnyPair(test, value, !is_left); }
  // The outcome when this operand, the one asked about or both are empty.
  bool OutcomeOfEmpty(bool asked_is_empty) const {
    return is_left ? CompareEmpty(test, values->IsEmpty(), asked_is_empty)
                   : CompareEmpty(test, asked_is_empty, values->IsEmpty());
  }
};

// Of some elements, rising: all that have a value, those with a value that matches, those whose first value
// is empty.
struct ValuedElements {
  RankList all;
  RankList matching;
  RankList empty;
};

// The elements of the scope that have an attribute.
ValuedElements CompareAttributes(const SetScope& scope, const AttributeIndex& attributes,
                                 const OtherOperand& other);

// The texts of a list of elements. They are read all at once where that does not mean to read much more than
// what counts of them, and else one by one.
class TextReader {
 public:
  // The list must live as long.
  TextReader(Environment& environment, const SetScope& scope, std::span<const std::uint32_t> ranks,
             bool rising);
  // As much of the text of the element at a place in the list as counts in a comparison. Holds until the next
  // call.
  std::string_view Read(std::size_t place);

 private:
  Environment& environment_;
  const SetScope& scope_;
  std::span<const std::uint32_t> ranks_;
  host::TextColumn texts_;
  bool at_once_ = false;
};

// The elements of a rising list by their texts.
ValuedElements CompareTexts(Environment& environment, const SetScope& scope, RankList ranks,
                            const OtherOperand& other);

// Adds the values of one attribute of elements, each value once, the first one first.
void GatherAttributes(const AttributeIndex& attributes, std::span<const std::uint32_t> ranks,
                      ValueSet* values);
void GatherTexts(Environment& environment, const SetScope& scope, std::span<const std::uint32_t> ranks,
                 bool rising, ValueSet* values);

}  // namespace qelm::xpath
