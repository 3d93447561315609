// What was added to a document and is not in its bytes yet.
//
// Adding an element changes the tree at once; its statements, and its items, come into being when somebody
// needs them (settle.h). Until then the elements from Additions::first on are new: they have their place in
// the tree, their attributes and their text, but no items. So adding ten thousand elements costs one pass
// over the document and not ten thousand.
//
// Additions and marks (what edit.h leaves on items) do not stand side by side: whoever begins with one
// settles the other.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "embedded/model/ids.h"

namespace qelm::embedded::model {

// A new element, or a new text node: by its id from Additions::first on.
struct NewContent {
  std::int64_t unique = 0;    // an element's number; 0: none
  std::string text;           // a text node's
  bool is_paragraph = false;  // a text node that is a paragraph of its own
  std::string format;         // its paragraph format
  std::string variable;       // what stands before the text: the name of a variable,
  std::string marker_type;    // and before that a marker
  std::string marker_text;
};

// Text, or with a `marker_type` a marker, before an item.
struct Insertion {
  std::uint32_t item = 0;
  std::string marker_type;
  std::string text;
};

struct DefinitionChange {
  Id definition = 0;
  std::string content_rule;
  std::string paragraph_format;
};

struct Additions {
  Id first = 0;  // 0: no new elements
  std::vector<NewContent> contents;
  std::vector<Id> parents;  // elements of the source with new ones among their children
  std::vector<Id> emptied;  // elements of the source whose content goes
  std::vector<Id> renamed;  // elements of the source with another definition
  std::vector<Insertion> insertions;
  std::vector<DefinitionChange> definitions;

  bool IsNew(Id element) const { return first != 0 && element >= first; }
  const NewContent& Of(Id element) const { return contents[element - first]; }
  bool Pending() const {
    return first != 0 || !emptied.empty() || !renamed.empty() || !insertions.empty() || !definitions.empty();
  }
};

// Calls `run` for each run of new children of `parent`, with the last child of the source before it (0: none)
// and the run's first.
template <typename Elements, typename Run>
void ForEachNewRun(const Elements& elements, const Additions& additions, Id parent, Run&& run) {
  Id last_before = 0;
  for (Id child = elements[parent].first_child; child != 0;) {
    if (!additions.IsNew(child)) {
      last_before = child;
      child = elements[child].next;
      continue;
    }
    run(last_before, child);
    while (child != 0 && additions.IsNew(child)) child = elements[child].next;
  }
}

}  // namespace qelm::embedded::model
