// What nodes are worth: the attributes of an element, with the defaults of its definition where they count,
// and the values of nodes as strings. Nothing is copied; what a function hands out holds until the next call.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "host/interface/host.h"

namespace qelm::xpath {

// How much of an element's text counts in a comparison, and how much is handed out as its value.
inline constexpr std::size_t kComparedCharacters = 255;
inline constexpr std::size_t kValueCharacters = 1000;

// The attributes of one element after another. With defaults, an attribute without a value has those of the
// element definition, and defaults for attributes that the element does not carry stand behind its own ones.
class AttributeSource {
 public:
  AttributeSource(host::Elements& elements, host::Definitions& definitions, bool with_defaults)
      : elements_(elements), definitions_(definitions), with_defaults_(with_defaults) {}

  // Makes the element the one that is asked about. Nothing is read when it was the last one already.
  void Load(host::Id document, host::Id element);
  // Forgets what was read, which may have been edited since.
  void Forget();

  std::size_t Count() const { return attributes_.size(); }
  std::string_view Name(std::size_t index) const { return attributes_[index].name; }
  // Never empty: an attribute without a value has one empty one.
  std::span<const std::string_view> Values(std::size_t index) const { return attributes_[index].values; }

 private:
  struct Attribute {
    std::string_view name;
    std::span<const std::string_view> values;
  };
  using Defaults = std::vector<const host::AttributeDefinition*>;

  const Defaults& DefaultsOf(host::Id document, host::Id definition);
  void AddDefaults(const Defaults& defaults);

  host::Elements& elements_;
  host::Definitions& definitions_;
  bool with_defaults_;
  host::Id document_ = host::kNone;
  host::Id element_ = host::kNone;
  host::AttributeBuffer buffer_;
  std::vector<Attribute> attributes_;
  // By document and definition; most documents have few definitions with defaults.
  std::unordered_map<std::uint64_t, Defaults> defaults_;
  std::uint64_t last_key_ = 0;
  const Defaults* last_defaults_ = nullptr;
};

// Whether an attribute with these values counts as one without: then its definition's defaults hold.
bool HasNoValue(std::span<const std::string_view> values);

// The value of a FrameMaker property of an element; empty when it has none. The view is into `buffer`.
std::string_view ReadProperty(host::Text& text, host::Id document, host::Id element, std::int32_t code,
                              std::string* buffer);

}  // namespace qelm::xpath
