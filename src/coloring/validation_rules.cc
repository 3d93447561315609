#include "coloring/validation_rules.h"

#include <algorithm>

namespace qelm::coloring {
namespace {

// Lists up to this length are compared value by value, longer ones by an index.
constexpr std::size_t kShortList = 8;

}  // namespace

AllowedValues::AllowedValues(const schemes::Scheme& scheme) : comparison_(scheme.ignore_case) {
  std::string buffer;
  for (const schemes::Condition& condition : scheme.attributes) {
    const auto [found, is_new] =
        by_comparable_name_.try_emplace(std::string(comparison_.Comparable(condition.attribute, &buffer)),
                                        static_cast<std::int32_t>(attributes_.size()));
    if (is_new) attributes_.emplace_back();
    Attribute& attribute = attributes_[static_cast<std::size_t>(found->second)];
    for (const std::string& value : condition.values) {
      attribute.no_value = attribute.no_value || value == schemes::kNoValue;
      attribute.any_value = attribute.any_value || value == schemes::kAnyValue;
      attribute.values.emplace(comparison_.Comparable(value, &buffer));
    }
  }
}

std::int32_t AllowedValues::Find(std::string_view name) {
  const auto known = by_name_.find(name);
  if (known != by_name_.end()) return known->second;
  std::string buffer;
  const auto found = by_comparable_name_.find(std::string(comparison_.Comparable(name, &buffer)));
  const std::int32_t index = found == by_comparable_name_.end() ? -1 : found->second;
  by_name_.emplace(name, index);
  return index;
}

bool AllowedValues::Allows(std::int32_t attribute, std::string_view value) const {
  const Attribute& listed = At(attribute);
  if (listed.any_value) return true;
  std::string buffer;
  return listed.values.contains(comparison_.Comparable(value, &buffer));
}

ElementRules::ElementRules(host::Host& host, host::Id document, const schemes::Scheme& scheme,
                           const ValidationRun& run)
    : host_(host),
      document_(document),
      run_(run),
      allowed_(scheme),
      reader_(host.definitions, host.elements, document, scheme),
      nearest_(allowed_.Count(), -1) {}

void ElementRules::EnterAncestors(host::Id start) {
  std::vector<host::Id> ancestors;
  for (host::Id above = host_.elements.Parent(document_, start); above != host::kNone;
       above = host_.elements.Parent(document_, above)) {
    ancestors.push_back(above);
  }
  for (auto above = ancestors.rbegin(); above != ancestors.rend(); ++above) {
    Take(*above, start_depth_++, reader_.Read(*above), nullptr);
  }
}

void ElementRules::Enter(const host::WalkedNode& element, std::vector<Violation>* violations) {
  const std::size_t depth = start_depth_ + element.depth;
  while (!levels_.empty() && levels_.back().depth >= depth) LeaveLevel();
  const host::AttributeBuffer& attributes = reader_.Read(element);
  if (!attributes.attributes.empty()) Take(element.element, depth, attributes, violations);
}

void ElementRules::Take(host::Id element, std::size_t depth, const host::AttributeBuffer& attributes,
                        std::vector<Violation>* violations) {
  const Level level{depth, carried_.size()};
  named_.clear();
  for (const host::AttributeView& attribute : attributes.attributes) {
    const std::int32_t index = allowed_.Find(attribute.name);
    if (index < 0) continue;
    Values values;
    if (!schemes::HasNoValue(attributes, attribute)) {
      values = Values(attributes.values).subspan(attribute.first_value, attribute.value_count);
    }
    named_.push_back({index, attribute.name, values});
  }
  if (named_.empty()) return;
  if (violations != nullptr) {
    for (const Named& named : named_) Check(element, named, violations);
  }
  // What this element carries itself is no ancestor's, so it is put on the stack only now. Of two attributes
  // that the scheme does not tell apart the first one counts for what lies below.
  for (const Named& named : named_) {
    const std::int32_t nearest = nearest_[static_cast<std::size_t>(named.attribute)];
    if (nearest < static_cast<std::int32_t>(level.first_carried)) Carry(named.attribute, named.values);
  }
  levels_.push_back(level);
}

void ElementRules::Check(host::Id element, const Named& named, std::vector<Violation>* violations) {
  const Values values = named.values;
  const auto report = [&](ValidationRule rule, std::string_view value = {}) {
    violations->push_back({rule, document_, element, named.name, value});
  };
  Carried* above = Nearest(named.attribute);
  const bool valued_above = above != nullptr && above->value_count != 0;
  if (run_.Enabled(kValueNotAllowed)) {
    const auto bad = std::find_if(values.begin(), values.end(), [&](std::string_view value) {
      return !allowed_.Allows(named.attribute, value);
    });
    if (bad != values.end()) report(kValueNotAllowed, *bad);
  }
  if (run_.Enabled(kValueNotInherited) && valued_above) {
    const auto bad = std::find_if(values.rbegin(), values.rend(),
                                  [&](std::string_view value) { return !Holds(*above, value); });
    if (bad != values.rend()) report(kValueNotInherited, *bad);
  }
  if (!values.empty()) return;
  if (run_.Enabled(kValueMissing) && valued_above) report(kValueMissing);
  if (run_.Enabled(kNoValueNotAllowed) && !allowed_.AllowsNoValue(named.attribute))
    report(kNoValueNotAllowed);
}

bool ElementRules::Holds(Carried& carried, std::string_view value) {
  const Values values = Values(values_).subspan(carried.first_value, carried.value_count);
  std::string buffer;
  const std::string_view wanted = allowed_.comparison().Comparable(value, &buffer);
  if (values.size() <= kShortList) {
    return std::any_of(values.begin(), values.end(), [&](std::string_view candidate) {
      return allowed_.comparison().Comparable(candidate, &buffer_) == wanted;
    });
  }
  if (!carried.index) {
    carried.index = std::make_unique<TextSet>();
    for (const std::string_view candidate : values) {
      carried.index->emplace(allowed_.comparison().Comparable(candidate, &buffer_));
    }
  }
  return carried.index->contains(wanted);
}

ElementRules::Carried* ElementRules::Nearest(std::int32_t attribute) {
  const std::int32_t index = nearest_[static_cast<std::size_t>(attribute)];
  return index < 0 ? nullptr : &carried_[static_cast<std::size_t>(index)];
}

void ElementRules::Carry(std::int32_t attribute, Values values) {
  std::int32_t& nearest = nearest_[static_cast<std::size_t>(attribute)];
  carried_.push_back({.attribute = attribute,
                      .covered = nearest,
                      .first_value = values_.size(),
                      .value_count = values.size(),
                      .index = nullptr});
  values_.insert(values_.end(), values.begin(), values.end());
  nearest = static_cast<std::int32_t>(carried_.size()) - 1;
}

void ElementRules::LeaveLevel() {
  for (; carried_.size() > levels_.back().first_carried; carried_.pop_back()) {
    const Carried& carried = carried_.back();
    nearest_[static_cast<std::size_t>(carried.attribute)] = carried.covered;
    values_.resize(carried.first_value);
  }
  levels_.pop_back();
}

}  // namespace qelm::coloring
