// peer_libxml2 IN OUT ATTRIBUTE VALUE: what `qelm filter` does in mode duplicate with a classic rule, by
// libxml2: opens the document, deletes every element whose attribute is there and lacks the value, and saves.
#include <libxml/parser.h>
#include <libxml/tree.h>

#include <algorithm>
#include <cstdio>
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

bool Fails(const xmlNode* node, const xmlChar* attribute, std::string_view value) {
  if (node->type != XML_ELEMENT_NODE) return false;
  const xmlAttr* found = xmlHasProp(node, attribute);
  if (found == nullptr) return false;
  // The value is one text node unless it holds references to entities, which this document has none of.
  const xmlChar* text = found->children != nullptr ? found->children->content : nullptr;
  return text == nullptr || !HasWord(reinterpret_cast<const char*>(text), value);
}

xmlNode* AfterSubtree(xmlNode* node, const xmlNode* root) {
  while (node != root && node->next == nullptr) node = node->parent;
  return node == root ? nullptr : node->next;
}

void Filter(xmlNode* root, const xmlChar* attribute, std::string_view value) {
  for (xmlNode* node = root; node != nullptr;) {
    if (Fails(node, attribute, value)) {
      xmlNode* next = AfterSubtree(node, root);
      xmlUnlinkNode(node);
      xmlFreeNode(node);
      node = next;
    } else {
      node = node->type == XML_ELEMENT_NODE && node->children != nullptr ? node->children
                                                                         : AfterSubtree(node, root);
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2 && argc != 5) {
    std::fprintf(stderr, "usage: peer_libxml2 IN [OUT ATTRIBUTE VALUE]\n");
    return 2;
  }
  xmlDoc* document = xmlReadFile(argv[1], nullptr, XML_PARSE_HUGE | XML_PARSE_NONET);
  if (document == nullptr) return 3;
  if (argc == 2) {
    xmlFreeDoc(document);
    return 0;
  }
  Filter(xmlDocGetRootElement(document), reinterpret_cast<const xmlChar*>(argv[3]), argv[4]);
  const int written = xmlSaveFile(argv[2], document);
  xmlFreeDoc(document);
  return written < 0 ? 3 : 0;
}
