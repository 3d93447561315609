// Where elements stand in a document: their numbers and their paths.
//
// Elements (text nodes not counted) of a flow are numbered from 0 in document order, all of them when the
// number of one is first asked for. A path is like /Doc[1]/Section[2]: the index counts the siblings of the
// same name, and is worked out for all of them when that of one is first asked for. So each further answer is
// a look-up, and a path costs no more than the siblings along it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <unordered_map>
#include <vector>

#include "host/interface/host.h"

namespace qelm::messages {

class ElementPlaces {
 public:
  ElementPlaces(host::Host& host, host::Id document) : host_(host), document_(document) {}

  // The number of the element; of its parent for a text node.
  std::uint32_t Number(host::Id element);

  // Appends the path of the element or text node; of one that has more steps than `max_steps` the last ones,
  // with "..." before them.
  void AppendPath(host::Id element, std::string* path,
                  std::size_t max_steps = std::numeric_limits<std::size_t>::max());

  // The element with that number in the flow in which expressions start; 0 when there are fewer.
  host::Id ByNumber(std::uint32_t number);

  // The flow in which expressions start: the one named "Main", else the main flow. 0 where there is none.
  host::Id DefaultFlow();

 private:
  std::uint32_t Ordinal(host::Id element);
  void NumberTree(host::Id root);
  void PlaceChildren(host::Id parent);

  // How many children of one parent had a definition so far; text nodes count under 0.
  struct Count {
    host::Id parent = host::kNone;
    std::uint32_t children = 0;
  };

  host::Host& host_;
  host::Id document_;
  std::vector<std::uint32_t> numbers_;          // by element; kUnknown until its flow was placed
  std::vector<std::uint32_t> ordinals_;         // by element: the index in its path
  std::unordered_map<host::Id, Count> counts_;  // by definition
};

}  // namespace qelm::messages
