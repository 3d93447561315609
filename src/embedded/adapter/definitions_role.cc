#include "embedded/adapter/roles.h"

namespace qelm::embedded::adapter {
namespace {

static_assert(static_cast<int>(host::AttributeType::kString) == 0);
static_assert(static_cast<int>(host::AttributeType::kUniqueIdReferences) == 9);

host::AttributeDefinition Convert(const model::Document& document,
                                  const model::AttributeDefinition& attribute) {
  return {.name = document.names[attribute.name],
          .type = static_cast<host::AttributeType>(attribute.type),
          .required = attribute.required,
          .read_only = attribute.read_only,
          .hidden = attribute.hidden,
          .choices = attribute.choices,
          .defaults = attribute.defaults};
}

class DefinitionsRole : public host::Definitions {
 public:
  explicit DefinitionsRole(Workspace& workspace) : workspace_(workspace) {}

  Id FindDefinition(Id document, std::string_view name) override {
    const model::Document* tree = workspace_.Tree(document);
    if (tree == nullptr) return host::kNone;
    const auto found = tree->definition_index.find(name);
    return found == tree->definition_index.end() ? host::kNone : found->second;
  }
  Id FirstDefinition(Id document) override { return Existing(document, 1); }
  Id NextDefinition(Id document, Id definition) override {
    return Existing(document, definition) == host::kNone ? host::kNone : Existing(document, definition + 1);
  }
  std::string_view DefinitionName(Id document, Id definition) override {
    if (Existing(document, definition) == host::kNone) return {};
    return workspace_.Tree(document)->definitions[definition].name;
  }

  std::span<const host::AttributeDefinition> AttributeDefinitions(Id document, Id definition) override {
    if (Existing(document, definition) == host::kNone) return {};
    OpenFile* file = workspace_.File(document);
    auto& converted = file->derived.attribute_definitions;
    const model::Document& tree = file->Tree();
    if (converted.size() < tree.definitions.size()) converted.resize(tree.definitions.size());
    auto& attributes = converted[definition];
    if (!attributes) {
      attributes = std::make_unique<std::vector<host::AttributeDefinition>>();
      for (const model::AttributeDefinition& attribute : tree.definitions[definition].attributes) {
        attributes->push_back(Convert(tree, attribute));
      }
    }
    return *attributes;
  }

  void ReadAttributes(Id document, Id element, host::AttributeBuffer* buffer) override {
    buffer->Clear();
    const model::Element* found = workspace_.Element(document, element);
    if (found == nullptr) return;
    const model::Document& tree = *workspace_.Tree(document);
    for (std::uint32_t i = 0; i < found->attribute_count; ++i) {
      const model::Attribute& attribute = tree.attributes[found->first_attribute + i];
      buffer->attributes.push_back({.name = tree.names[attribute.name],
                                    .first_value = static_cast<std::uint32_t>(buffer->values.size()),
                                    .value_count = attribute.value_count});
      const auto values = tree.values.Run(attribute.first_value, attribute.value_count);
      buffer->values.insert(buffer->values.end(), values.begin(), values.end());
    }
  }

  void ReadAttributeColumn(Id document, std::span<const Id> elements, std::string_view name,
                           host::AttributeColumn* column) override {
    column->Clear();
    const model::Document* tree = workspace_.Tree(document);
    if (tree == nullptr) return;
    const auto known = tree->name_index.find(name);
    if (known == tree->name_index.end()) return;
    for (std::size_t place = 0; place < elements.size(); ++place) {
      const model::Element& element = tree->elements[elements[place]];
      for (std::uint32_t index = 0; index < element.attribute_count; ++index) {
        const model::Attribute& attribute = tree->attributes[element.first_attribute + index];
        if (attribute.name != known->second) continue;
        column->entries.push_back({static_cast<std::uint32_t>(place), index,
                                   static_cast<std::uint32_t>(column->values.size()), attribute.value_count});
        const auto values = tree->values.Run(attribute.first_value, attribute.value_count);
        column->values.insert(column->values.end(), values.begin(), values.end());
      }
    }
  }

 private:
  // The id itself when the document has such a definition, else 0.
  Id Existing(Id document, Id definition) {
    const model::Document* tree = workspace_.Tree(document);
    const bool there = tree != nullptr && definition != host::kNone && definition < tree->definitions.size();
    return there ? definition : host::kNone;
  }

  Workspace& workspace_;
};

}  // namespace

std::unique_ptr<host::Definitions> MakeDefinitions(Workspace& workspace) {
  return std::make_unique<DefinitionsRole>(workspace);
}

}  // namespace qelm::embedded::adapter
