// peer_pugixml IN [OUT CONDITIONS]...: what `qelm filter` does in mode duplicate with a classic scheme, by
// pugixml: opens the document, deletes every element that has an attribute without the value that a condition
// (ATTRIBUTE=VALUE,...) wants, and saves. For several schemes the tree is copied. With IN alone it only
// opens.
#include <algorithm>
#include <cstdio>
#include <pugixml.hpp>
#include <string>
#include <string_view>
#include <vector>

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

struct Condition {
  std::string attribute, value;
};

std::vector<Condition> Conditions(std::string_view text) {
  std::vector<Condition> conditions;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find(','), text.size());
    const std::size_t equals = text.find('=');
    conditions.push_back(
        {std::string(text.substr(0, equals)), std::string(text.substr(equals + 1, end - equals - 1))});
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return conditions;
}

void Filter(pugi::xml_node root, const std::vector<Condition>& conditions) {
  for (pugi::xml_node node = root; node;) {
    const bool fails = std::any_of(conditions.begin(), conditions.end(), [node](const Condition& condition) {
      const pugi::xml_attribute found = node.attribute(condition.attribute.c_str());
      return found && !HasWord(found.value(), condition.value);
    });
    if (fails) {
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
  if (argc < 2 || argc % 2 != 0) {
    std::fprintf(stderr, "usage: peer_pugixml IN [OUT CONDITIONS]...\n");
    return 2;
  }
  pugi::xml_document document;
  const pugi::xml_parse_result result = document.load_file(argv[1], pugi::parse_full | pugi::parse_ws_pcdata);
  if (!result) {
    std::fprintf(stderr, "peer_pugixml: %s: %s\n", argv[1], result.description());
    return 3;
  }
  pugi::xml_document copy;
  for (int i = 2; i < argc; i += 2) {
    const bool last = i + 2 == argc;
    if (!last) copy.reset(document);
    pugi::xml_document& filtered = last ? document : copy;
    Filter(filtered.document_element(), Conditions(argv[i + 1]));
    if (!filtered.save_file(argv[i], "", pugi::format_raw | pugi::format_no_declaration)) return 3;
  }
  return 0;
}
