// The element tree of a document: flows, elements, their definitions and attributes, read only.
//
// Made for walking: every operation here is constant time, and an element answers with the id of its
// definition, so that a name test is a comparison of two integers after one look-up a document. Element ids
// are dense: all are below IdLimit, so a caller can keep one bit an element. An id that names no element of
// the document gives 0, an empty view or an empty list; no error code is set by reading.
#pragma once

#include <span>

#include "host/interface/types.h"

namespace qelm::host {

class Elements {
 public:
  virtual ~Elements() = default;

  // The flows of a document in the host's order; the main flow, where the document's text is; 0 where none.
  virtual Id FirstFlow(Id document) = 0;
  virtual Id NextFlow(Id document, Id flow) = 0;
  virtual Id MainFlow(Id document) = 0;
  // The flow's name (tag). Holds as long as the document is open.
  virtual std::string_view FlowName(Id document, Id flow) = 0;
  virtual FlowKind KindOfFlow(Id document, Id flow) = 0;
  // The highest-level element, 0 when the flow is not structured.
  virtual Id Root(Id document, Id flow) = 0;

  // Around an element. 0 where there is none.
  virtual Id Parent(Id document, Id element) = 0;
  virtual Id FirstChild(Id document, Id element) = 0;
  virtual Id LastChild(Id document, Id element) = 0;
  virtual Id NextSibling(Id document, Id element) = 0;
  virtual Id PreviousSibling(Id document, Id element) = 0;

  // Whether the id names an element that is in the document now.
  virtual bool IsElement(Id document, Id element) = 0;
  // All element ids of the document are below this. It grows when elements are inserted.
  virtual Id IdLimit(Id document) = 0;

  virtual ElementKind Kind(Id document, Id element) = 0;
  // The element's definition; 0 for a text node.
  virtual Id Definition(Id document, Id element) = 0;

  // The flow in which the element is, 0 when it is in none.
  virtual Id FlowOf(Id document, Id element) = 0;

  // The element's unique id as the document's files record it; 0 when it has none.
  virtual std::int64_t UniqueId(Id document, Id element) = 0;
  // The element with that unique id, 0 when there is none.
  virtual Id FindUniqueId(Id document, std::int64_t unique_id) = 0;
};

class Definitions {
 public:
  virtual ~Definitions() = default;

  // The definition with that name, also one that is only used and nowhere defined; 0 when no element has it.
  virtual Id FindDefinition(Id document, std::string_view name) = 0;
  virtual Id FirstDefinition(Id document) = 0;
  virtual Id NextDefinition(Id document, Id definition) = 0;
  // The definition's tag. Holds as long as the document is open.
  virtual std::string_view DefinitionName(Id document, Id definition) = 0;
  // The attributes that the definition declares, in its order. Holds until the document's definitions change.
  virtual std::span<const AttributeDefinition> AttributeDefinitions(Id document, Id definition) = 0;

  // Replaces what is in `buffer` by the attributes that the element itself carries, in document order;
  // defaults of the definition are not among them. Views hold until the document is next edited.
  virtual void ReadAttributes(Id document, Id element, AttributeBuffer* buffer) = 0;
};

}  // namespace qelm::host
