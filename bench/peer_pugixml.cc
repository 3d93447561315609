// peer_pugixml IN OUT ATTRIBUTE VALUE: what `qelm filter` does in mode duplicate with a classic rule, by
// pugixml: opens the document, deletes every element whose attribute is there and lacks the value, and saves.
// With IN alone it only opens.
#include <algorithm>
#include <cstdio>
#include <pugixml.hpp>
#include <string_view>

namespace {

bool HasWord(std::string_view words, std::string_view word) {
  while (!words.empty()) {
    const std::size_t end = std::min(words.find(' '), words.size());
    if (words.substr(0, end) == word) return true;
    words.remove_prefix(std::min(end + 1, words.size()));
  }
  return false;
}

// The node after the subtree of `node`, which ends with the document.
pugi::xml_node AfterSubtree(pugi::xml_node node) {
  while (node && !node.next_sibling()) node = node.parent();
  return node ? node.next_sibling() : node;
}

void Filter(pugi::xml_node root, const char* attribute, std::string_view value) {
  for (pugi::xml_node node = root; node;) {
    const pugi::xml_attribute found = node.attribute(attribute);
    if (found && !HasWord(found.value(), value)) {
      const pugi::xml_node next = AfterSubtree(node);
      node.parent().remove_child(node);
      node = next;
    } else {
      node = node.first_child() ? node.first_child() : AfterSubtree(node);
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2 && argc != 5) {
    std::fprintf(stderr, "usage: peer_pugixml IN [OUT ATTRIBUTE VALUE]\n");
    return 2;
  }
  pugi::xml_document document;
  const pugi::xml_parse_result result = document.load_file(argv[1], pugi::parse_full | pugi::parse_ws_pcdata);
  if (!result) {
    std::fprintf(stderr, "peer_pugixml: %s: %s\n", argv[1], result.description());
    return 3;
  }
  if (argc == 2) return 0;
  Filter(document.document_element(), argv[3], argv[4]);
  return document.save_file(argv[2], "", pugi::format_raw | pugi::format_no_declaration) ? 0 : 3;
}
