// The rules of a classic coloring scheme, made ready for a walk over many elements.
//
// All attribute names that the rules speak of are numbered once ("slots"), and so are the values that they
// list for each. An element's attributes are read once and reduced to what the rules can tell apart: for each
// slot, whether the element has the attribute, whether it has a value, and which of the listed values. That
// is a short list of numbers, and the rule that was found for it is remembered: the rules are only tested for
// the first of all the elements that are alike to them.
//
// What the ancestors have is kept as a summary for each of them that has any of the attributes - for each
// slot the nearest values, and whether anyone has the attribute - so that looking up the ancestors takes no
// walk, however deep the document is.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "host/interface/types.h"
#include "schemes/comparable_text.h"
#include "schemes/scheme.h"

namespace qelm::coloring {

inline constexpr std::int32_t kNoRule = -1;

class ClassicMatcher {
 public:
  explicit ClassicMatcher(const schemes::Scheme& scheme);

  // Takes the attributes of the element that the walk has come to at `depth`; those at smaller depths that
  // were taken last are its ancestors. The views of `attributes` are not kept.
  void Enter(std::size_t depth, const host::AttributeBuffer& attributes) {
    while (!levels_.empty() && levels_.back().depth >= depth) LeaveLevel();
    own_present_ = false;
    if (!attributes.attributes.empty()) Take(depth, attributes);
  }

  // The first rule that the element entered last matches, kNoRule when none does. An attribute that is there
  // without a value is sought on the ancestors, and with `inherits` one that is missing.
  std::int32_t FindRule(bool inherits);

 private:
  // What is known of one attribute: of an element, or of it and its ancestors.
  struct State {
    bool present = false;
    bool has_values = false;
    std::uint32_t first = 0;  // the listed values that it has: sorted, a range of values_
    std::uint32_t count = 0;
  };
  struct Condition {
    std::size_t slot = 0;
    bool no_value = false;
    bool any_value = false;
    std::vector<std::uint32_t> values;  // the others
  };
  struct Rule {
    bool match_all = false;
    std::vector<Condition> conditions;
  };
  // What came of one condition.
  enum class Verdict : std::uint8_t { kGoOn, kHolds, kMatches, kFails };

  // Finds texts by views of them.
  struct ViewHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
  };
  template <typename Number>
  using NumberOfText = std::unordered_map<std::string, Number, ViewHash, std::equal_to<>>;

  // An entered element that has one of the attributes.
  struct Level {
    std::size_t depth = 0;
    std::size_t values_begin = 0;  // its values in values_
  };

  using Numbers = std::vector<std::uint32_t>;
  struct NumbersHash {
    std::size_t operator()(const Numbers& numbers) const;
  };

  std::size_t SlotOf(std::string_view name);
  void Take(std::size_t depth, const host::AttributeBuffer& attributes);
  void LeaveLevel();
  void TakeValues(std::size_t slot, const host::AttributeBuffer& attributes,
                  const host::AttributeView& attribute, State* state);
  bool Has(const State& state, std::uint32_t value) const;
  bool Matches(const Rule& rule) const;
  Verdict Test(const Condition& condition, bool match_all, const State& state) const;
  void Gather(bool inherits);

  schemes::TextComparison comparison_;
  std::vector<Rule> rules_;
  NumberOfText<std::size_t> slots_;
  std::vector<NumberOfText<std::uint32_t>> listed_;  // by slot: value to its number

  std::vector<State> own_;       // of the element entered last, by slot
  bool own_present_ = false;     // whether it has any
  std::vector<Level> levels_;    // it, when it has any, and its ancestors
  std::vector<State> around_;    // by level and slot: the element itself, else its ancestors
  Numbers values_;               // of all levels, one after the other
  std::vector<State> counting_;  // by slot: what counts for the rules, and
  Numbers alike_;                // the same in numbers
  std::unordered_map<Numbers, std::int32_t, NumbersHash>
      found_;  // the rules that were found, by such numbers
  std::string buffer_;
};

}  // namespace qelm::coloring
