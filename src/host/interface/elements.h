// The element tree of a document: flows, elements, their definitions and attributes, read only.
//
// Made for walking: every operation here is constant time, and an element answers with the id of its
// definition, so that a name test is a comparison of two integers after one look-up a document. Element ids
// are dense: all are below IdLimit, so a caller can keep one bit an element. An id that names no element of
// the document gives 0, an empty view or an empty list; no error code is set by reading.
//
// Whoever asks about a whole document asks for columns instead: one call gives one answer for each element,
// in arrays. A host whose documents lie in arrays copies them; others do not override these operations, and
// the elements are then read one by one.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/interface/types.h"

namespace qelm::host {

// Elements in document order. A place is an index into these columns, which have the same length.
struct ElementColumns {
  static constexpr std::uint32_t kNoPlace = 0xFFFFFFFFU;

  std::vector<Id> elements;
  std::vector<Id> definitions;         // 0: a text node
  std::vector<std::uint32_t> parents;  // places; kNoPlace for the element at the top
  std::vector<std::uint32_t> ends;     // one more than the last place inside the element

  void Resize(std::size_t size) {
    elements.resize(size);
    definitions.resize(size);
    parents.resize(size);
    ends.resize(size);
  }
};

// The elements of a list that carry an attribute of one name, in the order of the list.
struct AttributeColumn {
  struct Entry {
    std::uint32_t place = 0;  // in the list
    std::uint32_t index = 0;  // among the attributes of the element
    std::uint32_t first_value = 0;
    std::uint32_t value_count = 0;
  };
  std::vector<Entry> entries;
  std::vector<std::string_view> values;

  void Clear() {
    entries.clear();
    values.clear();
  }
};

// The text of a list of elements: of the one at a place, the bytes [begins[place], ends[place]) of `text`.
// What lies inside another element is not written twice.
struct TextColumn {
  std::string text;
  std::vector<std::uint32_t> begins;
  std::vector<std::uint32_t> ends;
};

// A node as a walk in document order comes to it.
struct WalkedNode {
  Id element = kNone;
  Id definition = kNone;    // 0: a text node
  std::uint32_t depth = 0;  // below the element where the walk began
  ElementKind kind = ElementKind::kContainer;
  bool may_have_attributes = true;  // false: it carries none itself, so that its definition says all
};

// What a walk asks of each element. 0 where there is none.
struct ElementAround {
  Id parent = kNone;
  Id first_child = kNone;
  Id next_sibling = kNone;
  Id definition = kNone;
  bool may_have_attributes = true;  // false: it carries none itself, so that its definition says all
};

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
  // Several of these answers, and the definition, in one.
  virtual ElementAround Around(Id document, Id element);

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

  // A number that is another one after every edit of elements, attributes, their definitions or text, and for
  // every document that gets the id later, so that what was read can be kept; 0: the host does not know.
  virtual std::uint64_t Revision(Id document);

  // Appends `root` and everything inside it to the columns. False, with the columns as they were, when the
  // links of the elements run in circles.
  virtual bool ReadTree(Id document, Id root, ElementColumns* columns);

  // Goes on with a walk over `root` and everything inside it: writes the nodes behind `last`, or from the
  // root on when `last` names none, to `nodes`. Returns how many; fewer than there is room for: the walk is
  // over. Of `last`, which may be any element inside, only the element and the depth count: depths go on from
  // that one.
  virtual std::size_t ReadNodes(Id document, Id root, const WalkedNode& last, std::span<WalkedNode> nodes);

  // Replaces what is in `column` by the texts of the elements, which come in document order: what
  // Text::ElementText gives without a limit. False when the host has no faster way than that.
  virtual bool ReadTexts(Id document, std::span<const Id> elements, TextColumn* column);
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

  // Replaces what is in `column` by the attributes of this name that the elements carry themselves. Views
  // hold until the document is next edited.
  virtual void ReadAttributeColumn(Id document, std::span<const Id> elements, std::string_view name,
                                   AttributeColumn* column);
};

}  // namespace qelm::host
