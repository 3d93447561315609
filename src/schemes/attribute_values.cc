#include "schemes/attribute_values.h"

#include <algorithm>

#include "common/text.h"

namespace qelm::schemes {
namespace {

std::span<const std::string_view> ValuesOf(const host::AttributeBuffer& buffer,
                                           const host::AttributeView& attribute) {
  return std::span(buffer.values).subspan(attribute.first_value, attribute.value_count);
}

}  // namespace

bool HasNoValue(const host::AttributeBuffer& buffer, const host::AttributeView& attribute) {
  return attribute.value_count == 0 ||
         (attribute.value_count == 1 && buffer.values[attribute.first_value].empty());
}

const AttributeReader::Defaults& AttributeReader::DefaultsOf(host::Id definition) {
  const auto [found, is_new] = defaults_.try_emplace(definition);
  if (is_new && definition != host::kNone) {
    for (const host::AttributeDefinition& attribute :
         definitions_.AttributeDefinitions(document_, definition)) {
      if (!attribute.defaults.empty()) found->second.push_back(&attribute);
    }
  }
  return found->second;
}

void AttributeReader::Add(std::string_view name, std::span<const std::string_view> values) {
  const std::size_t first = result_.values.size();
  if (space_delimited_) {
    for (const std::string_view value : values) common::SplitAtSpaces(value, &result_.values);
  } else {
    result_.values.insert(result_.values.end(), values.begin(), values.end());
  }
  result_.attributes.push_back(
      {name, static_cast<std::uint32_t>(first), static_cast<std::uint32_t>(result_.values.size() - first)});
}

const host::AttributeBuffer& AttributeReader::Read(const host::WalkedNode& node) {
  if (node.may_have_attributes || (include_edd_defaults_ && !DefaultsOf(node.definition).empty())) {
    return Read(node.element);
  }
  result_.Clear();
  return result_;
}

const host::AttributeBuffer& AttributeReader::Read(host::Id element) {
  definitions_.ReadAttributes(document_, element, &own_);
  if (!include_edd_defaults_ && !space_delimited_) return own_;

  static const Defaults kNoDefaults;
  const Defaults& defaults =
      include_edd_defaults_ ? DefaultsOf(elements_.Definition(document_, element)) : kNoDefaults;
  if (defaults.empty() && !space_delimited_) return own_;
  result_.Clear();
  for (const host::AttributeView& attribute : own_.attributes) {
    std::span<const std::string_view> values = ValuesOf(own_, attribute);
    if (!defaults.empty() && HasNoValue(own_, attribute)) {
      const auto found = std::find_if(defaults.begin(), defaults.end(), [&](const auto* definition) {
        return definition->name == attribute.name;
      });
      if (found != defaults.end()) values = (*found)->defaults;
    }
    Add(attribute.name, values);
  }
  for (const host::AttributeDefinition* definition : defaults) {
    const bool present =
        std::any_of(own_.attributes.begin(), own_.attributes.end(),
                    [definition](const auto& attribute) { return attribute.name == definition->name; });
    if (!present) Add(definition->name, definition->defaults);
  }
  return result_;
}

}  // namespace qelm::schemes
