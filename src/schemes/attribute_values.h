// The attributes of an element as schemes see them: with the defaults of the element definition and split at
// spaces where the scheme asks for it. Filter, coloring and validation all read attributes here.
#pragma once

#include <span>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "host/interface/elements.h"
#include "schemes/scheme.h"

namespace qelm::schemes {

// Reads the attributes of elements of one document under the switches of one scheme. Made once a run: its
// buffers are used again for each element, and what a definition has as defaults is looked up once. The
// element definitions of the document must not change while it is used.
class AttributeReader {
 public:
  AttributeReader(host::Definitions& definitions, host::Elements& elements, host::Id document,
                  const Scheme& scheme)
      : definitions_(definitions),
        elements_(elements),
        document_(document),
        include_edd_defaults_(scheme.include_edd_defaults),
        space_delimited_(scheme.space_delimited) {}

  // The attributes of `element`. An attribute without a value, or one that is absent, takes the definition's
  // default where the scheme includes them. The buffer holds until the next call, the texts that it refers to
  // until an edit of the document.
  const host::AttributeBuffer& Read(host::Id element);
  // The same of a node that a walk has come to: one that has no attributes costs next to nothing.
  const host::AttributeBuffer& Read(const host::WalkedNode& node);

 private:
  // The attributes of one element definition that have defaults.
  using Defaults = std::vector<const host::AttributeDefinition*>;

  const Defaults& DefaultsOf(host::Id definition);
  void Add(std::string_view name, std::span<const std::string_view> values);

  host::Definitions& definitions_;
  host::Elements& elements_;
  host::Id document_;
  bool include_edd_defaults_;
  bool space_delimited_;
  std::unordered_map<host::Id, Defaults> defaults_;  // by definition
  host::AttributeBuffer own_;
  host::AttributeBuffer result_;
};

// Whether the attribute has no value: no value at all, or one empty one.
bool HasNoValue(const host::AttributeBuffer& buffer, const host::AttributeView& attribute);

}  // namespace qelm::schemes
