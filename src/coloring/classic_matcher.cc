#include "coloring/classic_matcher.h"

#include <algorithm>

#include "schemes/attribute_values.h"

namespace qelm::coloring {

ClassicMatcher::ClassicMatcher(const schemes::Scheme& scheme) : comparison_(scheme.ignore_case) {
  rules_.reserve(scheme.rules.size());
  for (const schemes::Rule& from : scheme.rules) {
    Rule& rule = rules_.emplace_back();
    rule.match_all = from.match_all;
    for (const schemes::Condition& listed : from.conditions) {
      Condition condition;
      condition.slot = SlotOf(comparison_.Comparable(listed.attribute, &buffer_));
      auto& numbers = listed_[condition.slot];
      for (const std::string& value : listed.values) {
        const std::string_view text = comparison_.Comparable(value, &buffer_);
        condition.no_value = condition.no_value || text == schemes::kNoValue;
        condition.any_value = condition.any_value || text == schemes::kAnyValue;
        if (text == schemes::kNoValue || text == schemes::kAnyValue) continue;
        const auto number = static_cast<std::uint32_t>(numbers.size());
        condition.values.push_back(numbers.try_emplace(std::string(text), number).first->second);
      }
      rule.conditions.push_back(std::move(condition));
    }
  }
  own_.resize(listed_.size());
}

std::size_t ClassicMatcher::SlotOf(std::string_view name) {
  const auto [found, is_new] = slots_.try_emplace(std::string(name), slots_.size());
  if (is_new) listed_.emplace_back();
  return found->second;
}

void ClassicMatcher::Enter(std::size_t depth, const host::AttributeBuffer& attributes) {
  const std::size_t slots = listed_.size();
  values_end_.resize(depth + 1);
  values_.resize(depth == 0 ? 0 : values_end_[depth - 1]);
  own_.assign(slots, {});
  own_present_ = false;
  for (const host::AttributeView& attribute : attributes.attributes) {
    // Of names that differ only in letter case the first counts.
    const auto slot = slots_.find(comparison_.Comparable(attribute.name, &buffer_));
    if (slot == slots_.end() || own_[slot->second].present) continue;
    TakeValues(slot->second, attributes, attribute, &own_[slot->second]);
    own_present_ = true;
  }
  values_end_[depth] = values_.size();
  around_.resize((depth + 1) * slots);
  for (std::size_t slot = 0; slot < slots; ++slot) {
    State& nearest = around_[depth * slots + slot];
    nearest = own_[slot];
    if (depth == 0 || nearest.has_values) continue;
    const bool present = nearest.present;
    nearest = around_[(depth - 1) * slots + slot];
    nearest.present = nearest.present || present;
  }
}

void ClassicMatcher::TakeValues(std::size_t slot, const host::AttributeBuffer& attributes,
                                const host::AttributeView& attribute, State* state) {
  state->present = true;
  state->has_values = !schemes::HasNoValue(attributes, attribute);
  state->first = static_cast<std::uint32_t>(values_.size());
  if (!state->has_values) return;
  const auto& numbers = listed_[slot];
  for (std::uint32_t i = 0; i < attribute.value_count; ++i) {
    const std::string_view value = attributes.values[attribute.first_value + i];
    const auto number = numbers.find(comparison_.Comparable(value, &buffer_));
    if (number != numbers.end()) values_.push_back(number->second);
  }
  state->count = static_cast<std::uint32_t>(values_.size()) - state->first;
  std::sort(values_.begin() + state->first, values_.end());
}

bool ClassicMatcher::Has(const State& state, std::uint32_t value) const {
  const auto first = values_.begin() + state.first;
  return std::binary_search(first, first + state.count, value);
}

std::int32_t ClassicMatcher::FindRule(std::size_t depth, bool inherits) const {
  // Most elements have none of the attributes, and no rule is for what is missing.
  if (!own_present_ && !inherits) return kNoRule;
  const auto found = std::find_if(rules_.begin(), rules_.end(),
                                  [&](const Rule& rule) { return Matches(rule, depth, inherits); });
  return found == rules_.end() ? kNoRule : static_cast<std::int32_t>(found - rules_.begin());
}

ClassicMatcher::State ClassicMatcher::StateOf(std::size_t slot, std::size_t depth, bool inherits) const {
  const State& own = own_[slot];
  if (own.has_values || (!own.present && !inherits)) return own;
  return around_[depth * own_.size() + slot];
}

bool ClassicMatcher::Matches(const Rule& rule, std::size_t depth, bool inherits) const {
  bool last_held = false;
  for (const Condition& condition : rule.conditions) {
    switch (Test(condition, rule.match_all, StateOf(condition.slot, depth, inherits))) {
      case Verdict::kMatches:
        return true;
      case Verdict::kFails:
        return false;
      case Verdict::kHolds:
        last_held = true;
        break;
      case Verdict::kGoOn:
        last_held = false;
        break;
    }
  }
  return last_held;
}

ClassicMatcher::Verdict ClassicMatcher::Test(const Condition& condition, bool match_all,
                                             const State& state) const {
  const Verdict good = match_all ? Verdict::kHolds : Verdict::kMatches;
  const Verdict bad = match_all ? Verdict::kFails : Verdict::kGoOn;
  if (!state.present) return bad;
  // Both words together say that every state of the attribute is right, and yet refuse it where all
  // conditions must hold: that is on purpose.
  if (condition.no_value && condition.any_value) return match_all ? Verdict::kFails : Verdict::kMatches;
  if (!state.has_values) return condition.no_value ? good : bad;
  if (condition.any_value) return good;
  const auto has = [&](std::uint32_t value) { return Has(state, value); };
  if (match_all) {
    return std::all_of(condition.values.begin(), condition.values.end(), has) ? good : bad;
  }
  // "<no value>" counts as found also among the values of an attribute that has some.
  const bool found = condition.no_value || std::any_of(condition.values.begin(), condition.values.end(), has);
  return found ? good : bad;
}

}  // namespace qelm::coloring
