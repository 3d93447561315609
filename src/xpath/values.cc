#include "xpath/values.h"

#include <algorithm>
#include <array>

#include "xpath/components.h"

namespace qelm::xpath {
namespace {

constexpr std::array<std::string_view, 1> kNoValue = {std::string_view()};

}  // namespace

bool HasNoValue(std::span<const std::string_view> values) {
  return values.empty() || (values.size() == 1 && values.front().empty());
}

void AttributeSource::Forget() {
  element_ = host::kNone;
  defaults_.clear();
  last_defaults_ = nullptr;
}

void AttributeSource::Load(host::Id document, host::Id element) {
  if (element == element_ && document == document_) return;
  document_ = document;
  element_ = element;
  attributes_.clear();
  const host::Id definition = elements_.Definition(document, element);
  if (definition == host::kNone) return;
  definitions_.ReadAttributes(document, element, &buffer_);
  for (const host::AttributeView& view : buffer_.attributes) {
    const std::span<const std::string_view> values(buffer_.values);
    const auto own = values.subspan(view.first_value, view.value_count);
    attributes_.push_back({view.name, own.empty() ? std::span<const std::string_view>(kNoValue) : own});
  }
  if (with_defaults_) AddDefaults(DefaultsOf(document, definition));
}

const AttributeSource::Defaults& AttributeSource::DefaultsOf(host::Id document, host::Id definition) {
  const std::uint64_t key = std::uint64_t{document} << 32U | definition;
  if (last_defaults_ != nullptr && key == last_key_) return *last_defaults_;
  const auto [found, is_new] = defaults_.try_emplace(key);
  if (is_new) {
    for (const host::AttributeDefinition& attribute :
         definitions_.AttributeDefinitions(document, definition)) {
      if (!HasNoValue(attribute.defaults)) found->second.push_back(&attribute);
    }
  }
  last_key_ = key;
  last_defaults_ = &found->second;
  return found->second;
}

void AttributeSource::AddDefaults(const Defaults& defaults) {
  for (const host::AttributeDefinition* attribute : defaults) {
    const auto own =
        std::find_if(attributes_.begin(), attributes_.end(),
                     [attribute](const Attribute& carried) { return carried.name == attribute->name; });
    if (own == attributes_.end()) {
      attributes_.push_back({attribute->name, attribute->defaults});
    } else if (HasNoValue(own->values)) {
      own->values = attribute->defaults;
    }
  }
}

std::string_view ReadProperty(host::Text& text, host::Id document, host::Id element, std::int32_t code,
                              std::string* buffer) {
  buffer->clear();
  // The host's properties are numbered from 0, ours from 1, both in the same order.
  const auto property = static_cast<host::ElementProperty>(code - 1);
  const bool has_it = text.ReadElementProperty(document, element, property, buffer);
  if (property == host::ElementProperty::kChangeBar && (!has_it || buffer->empty())) *buffer = "false";
  if (property == host::ElementProperty::kCrossReferenceSource) {
    buffer->resize(std::min(buffer->find(':'), buffer->size()));
  }
  return *buffer;
}

}  // namespace qelm::xpath
