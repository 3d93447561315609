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
  counting_.resize(listed_.size());
}

std::size_t ClassicMatcher::SlotOf(std::string_view name) {
  const auto [found, is_new] = slots_.try_emplace(std::string(name), slots_.size());
  if (is_new) listed_.emplace_back();
  return found->second;
}

void ClassicMatcher::LeaveLevel() {
  values_.resize(levels_.back().values_begin);
  levels_.pop_back();
  around_.resize(levels_.size() * listed_.size());
}

void ClassicMatcher::Take(std::size_t depth, const host::AttributeBuffer& attributes) {
  const Level level{depth, values_.size()};
  for (const host::AttributeView& attribute : attributes.attributes) {
    const auto slot = slots_.find(comparison_.Comparable(attribute.name, &buffer_));
    if (slot == slots_.end()) continue;
    if (!own_present_) own_.assign(own_.size(), {});
    own_present_ = true;
    // Of names that differ only in letter case the first counts.
    State& state = own_[slot->second];
    if (!state.present) TakeValues(slot->second, attributes, attribute, &state);
  }
  if (!own_present_) return;
  const std::size_t slots = own_.size();
  const std::size_t above = around_.size() - (levels_.empty() ? 0 : slots);
  for (std::size_t slot = 0; slot < slots; ++slot) {
    State nearest = own_[slot];
    if (!levels_.empty() && !nearest.has_values) {
      nearest = around_[above + slot];
      nearest.present = nearest.present || own_[slot].present;
    }
    around_.push_back(nearest);
  }
  levels_.push_back(level);
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

std::size_t ClassicMatcher::NumbersHash::operator()(const Numbers& numbers) const {
  std::size_t hash = 0;
  for (const std::uint32_t number : numbers) hash = (hash ^ number) * 0x9E3779B97F4A7C15ULL;
  return hash ^ (hash >> 32U);
}

// What counts for the rules: the element's own states, with those of the ancestors where they are sought.
void ClassicMatcher::Gather(bool inherits) {
  const std::size_t last_level = around_.size() - own_.size();
  alike_.clear();
  for (std::size_t slot = 0; slot < own_.size(); ++slot) {
    const bool is_own = own_present_ && (own_[slot].has_values || (!own_[slot].present && !inherits));
    const State& state = counting_[slot] = is_own ? own_[slot] : around_[last_level + slot];
    if (!state.present) continue;
    alike_.push_back(static_cast<std::uint32_t>(slot));
    alike_.push_back(state.has_values ? state.count + 1 : 0);
    const auto first = values_.begin() + state.first;
    alike_.insert(alike_.end(), first, first + state.count);
  }
}

std::int32_t ClassicMatcher::FindRule(bool inherits) {
  // No rule is for what is missing.
  if (!own_present_ && (!inherits || levels_.empty())) return kNoRule;
  Gather(inherits);
  // Where all are unlike, remembering is of no use.
  constexpr std::size_t kMost = 10'000;
  if (found_.size() > kMost) found_.clear();
  const auto [known, is_new] = found_.try_emplace(alike_, kNoRule);
  if (!is_new) return known->second;
  const auto found =
      std::find_if(rules_.begin(), rules_.end(), [this](const Rule& rule) { return Matches(rule); });
  if (found != rules_.end()) known->second = static_cast<std::int32_t>(found - rules_.begin());
  return known->second;
}

bool ClassicMatcher::Matches(const Rule& rule) const {
  bool last_held = false;
  for (const Condition& condition : rule.conditions) {
    switch (Test(condition, rule.match_all, counting_[condition.slot])) {
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
