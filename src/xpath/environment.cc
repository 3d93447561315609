#include "xpath/environment.h"

#include <algorithm>

namespace qelm::xpath {

std::uint32_t Environment::TreeOfDocument(host::Id document) {
  const auto found =
      std::find_if(trees_.begin(), trees_.end(),
                   [document](const std::unique_ptr<Tree>& tree) { return tree->Document() == document; });
  const auto number = static_cast<std::uint32_t>(found - trees_.begin());
  if (found == trees_.end()) {
    trees_.push_back(std::make_unique<Tree>(host_.elements, host_.definitions, document));
  }
  return number;
}

DocumentIndex* Environment::Index(std::uint32_t tree) {
  if (tree >= used_indexes_.size()) used_indexes_.resize(tree + 1);
  std::shared_ptr<DocumentIndex>& index = used_indexes_[tree];
  if (index == nullptr) index = indexes_.Get(host_, trees_[tree]->Document());
  return index.get();
}

bool Environment::HasIndex(std::uint32_t tree) const {
  return (tree < used_indexes_.size() && used_indexes_[tree] != nullptr) ||
         indexes_.Has(host_, trees_[tree]->Document());
}

bool Environment::FindAttribute(std::string_view name, Node* node) {
  const AttributeSource& attributes = AttributesOf(*node);
  for (std::size_t index = 0; index < attributes.Count(); ++index) {
    if (attributes.Name(index) != name) continue;
    node->part = static_cast<std::int32_t>(index);
    return true;
  }
  return false;
}

std::string_view Environment::SingleValue(const Node& node, std::size_t most_characters) {
  const host::Id document = TreeOf(node).Document();
  if (node.IsProperty())
    return ReadProperty(host_.text, document, node.element, node.PropertyCode(), &buffer_);
  return host_.text.ElementText(document, node.element, most_characters, &buffer_);
}

}  // namespace qelm::xpath
