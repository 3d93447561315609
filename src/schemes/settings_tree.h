// Walking in the main settings document: children by their tag, and texts. Reading a scheme goes this way
// once its element is found, so that no limit on expressions, matches or values can cut a scheme short.
#pragma once

#include <string>
#include <string_view>

#include "host/interface/host.h"

namespace qelm::schemes {

// More characters than any text of a settings document may have that counts, the longest expression included.
inline constexpr std::size_t kTextLimit = 16384;

class SettingsTree {
 public:
  SettingsTree(host::Host& host, host::Id document) : host_(host), document_(document) {}

  // The highest-level element: of the flow named "Main", else of the main flow; 0 when there is none.
  host::Id Root();

  // The tag of an element; empty for a text node.
  std::string_view Tag(host::Id element);

  // The first child with that tag, and the next sibling with the same tag. 0 at the end.
  host::Id FirstChild(host::Id element, std::string_view tag);
  host::Id NextSibling(host::Id element);

  // The next element in document order below `top` that has the tag; `after` is where the search went on
  // from, at first `top` itself. What lies inside an element that was found is passed over. 0 at the end.
  host::Id NextBelow(host::Id top, host::Id after, std::string_view tag);

  // Whether an element with that tag is around `element`.
  bool IsInside(host::Id element, std::string_view tag);

  // The text of an element without white space around it, at most `limit` characters.
  std::string Text(host::Id element, std::size_t limit);

  // The text of the first `child` in a `parent` child of `element`; empty when there is none.
  std::string TextAt(host::Id element, std::string_view parent, std::string_view child, std::size_t limit);

  // A switch at the same place: true only for a text that begins with "t", "y" or "1".
  bool SwitchAt(host::Id element, std::string_view parent, std::string_view child);

 private:
  host::Id Definition(std::string_view tag);
  host::Id SameFrom(host::Id element, host::Id definition);

  host::Host& host_;
  host::Id document_;
  std::string buffer_;
};

}  // namespace qelm::schemes
