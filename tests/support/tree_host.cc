#include "support/tree_host.h"

#include <array>
#include <stdexcept>

namespace qelm::testing {
namespace {

constexpr std::array<std::string_view, 11> kPropertyNames = {
    "ImportObFile", "PgfTag",    "TblTag", "FChangeBar", "XRefName",  "XRefSrcText",
    "XRefSrcFile",  "MTypeName", "MText",  "PageNumInt", "PageNumStr"};

// Reads the notation.
class Reader {
 public:
  Reader(std::string_view text, TreeDocument& document) : text_(text), document_(document) {}

  // The content of `parent`, up to the end of the text. Elements around it are kept in a list, not on the
  // stack: trees may be as deep as they like.
  void Read() {
    std::vector<host::Id> around = {0};
    host::Id last = 0;
    for (Skip(); at_ < text_.size(); Skip()) {
      if (Take('{')) {
        around.push_back(last);
      } else if (Take('}')) {
        around.pop_back();
      } else if (text_[at_] == '"') {
        document_.AddElement(around.back(), {}, Quoted());
      } else {
        last = document_.AddElement(around.back(), Name());
        if (Take('(')) Attributes(last);
      }
    }
    if (around.size() != 1) Fail("open braces");
  }

 private:
  [[noreturn]] void Fail(const std::string& what) const {
    throw std::invalid_argument(what + " at " + std::to_string(at_) + ": " +
                                std::string(text_.substr(0, at_)));
  }
  void Skip() { at_ = std::min(text_.find_first_not_of(" \n", at_), text_.size()); }
  bool Take(char mark) {
    if (at_ == text_.size() || text_[at_] != mark) return false;
    ++at_;
    return true;
  }
  std::string_view Name() {
    const std::size_t end = std::min(text_.find_first_of(" \n{}()\"=,", at_), text_.size());
    if (end == at_) Fail("a name is missing");
    const std::string_view name = text_.substr(at_, end - at_);
    at_ = end;
    return name;
  }
  std::string Quoted() {
    const std::size_t end = text_.find('"', at_ + 1);
    if (end == text_.npos) Fail("open quotation mark");
    std::string value(text_.substr(at_ + 1, end - at_ - 1));
    at_ = end + 1;
    return value;
  }
  void Attributes(host::Id id) {
    TreeDocument::Element& element = document_.elements[id];
    for (Skip(); !Take(')'); Skip()) {
      const bool is_property = Take('!');
      TreeDocument::Attribute attribute{std::string(Name()), {}};
      if (Take('=')) {
        do attribute.values.push_back(Quoted());
        while (Take(','));
      }
      if (is_property) {
        element.properties[attribute.name] = attribute.values.at(0);
      } else {
        element.attributes.push_back(attribute);
      }
    }
  }

  std::string_view text_;
  TreeDocument& document_;
  std::size_t at_ = 0;
};

}  // namespace

host::Id TreeDocument::AddFlow(std::string name, host::FlowKind kind, std::string_view tree) {
  flows.push_back({std::move(name), kind, 0});
  Reader(tree, *this).Read();
  return flows.back().root;
}

host::Id TreeDocument::AddElement(host::Id parent, std::string_view name, std::string text) {
  const auto id = static_cast<host::Id>(elements.size());
  Changed();
  Element element;
  element.parent = parent;
  element.definition = name.empty() ? 0 : DefinitionOf(name);
  element.flow = static_cast<host::Id>(flows.size());
  element.text = std::move(text);
  if (parent == 0) {
    flows.back().root = id;
  } else {
    element.previous = elements[parent].last_child;
    (element.previous == 0 ? elements[parent].first_child : elements[element.previous].next) = id;
    elements[parent].last_child = id;
  }
  elements.push_back(std::move(element));
  return id;
}

host::Id TreeDocument::DefinitionOf(std::string_view name) {
  const auto [found, is_new] = definitions.try_emplace(std::string(name), names.size() + 1);
  if (is_new) names.emplace_back(name);
  return found->second;
}

void TreeDocument::Declare(std::string_view element, std::string_view attribute,
                           std::vector<std::string_view> defaults) {
  Changed();
  host::AttributeDefinition definition;
  definition.name = attribute;
  definition.defaults = std::move(defaults);
  declared[DefinitionOf(element)].push_back(std::move(definition));
}

TreeHost::TreeHost()
    : host_{session_,  *this,   *this,  *this, *this,    editing_, *this,
            catalogs_, tables_, links_, user,  dialogs_, clients_, platform} {}

TreeDocument& TreeHost::Add(std::string path) {
  documents_.push_back(std::make_unique<TreeDocument>(std::move(path)));
  return *documents_.back();
}

const TreeDocument::Element& TreeHost::At(host::Id document, host::Id element) {
  ++calls;
  return Document(document).elements[element];
}

host::Id TreeHost::FindDefinition(host::Id document, std::string_view name) {
  ++calls;
  const auto found = Document(document).definitions.find(name);
  return found == Document(document).definitions.end() ? 0 : found->second;
}

std::span<const host::AttributeDefinition> TreeHost::AttributeDefinitions(host::Id document,
                                                                          host::Id definition) {
  ++calls;
  return Document(document).declared[definition];
}

void TreeHost::ReadAttributes(host::Id document, host::Id element, host::AttributeBuffer* buffer) {
  buffer->Clear();
  for (const TreeDocument::Attribute& attribute : At(document, element).attributes) {
    buffer->attributes.push_back({attribute.name, static_cast<std::uint32_t>(buffer->values.size()),
                                  static_cast<std::uint32_t>(attribute.values.size())});
    buffer->values.insert(buffer->values.end(), attribute.values.begin(), attribute.values.end());
  }
}

// Cut by bytes: tests that cut keep to ASCII.
std::string_view TreeHost::ElementText(host::Id document, host::Id element, std::size_t max_characters,
                                       std::string* buffer) {
  buffer->clear();
  const std::vector<TreeDocument::Element>& elements = Document(document).elements;
  for (host::Id id = element; id != 0 && buffer->size() < max_characters;) {
    ++calls;
    buffer->append(elements[id].text);
    if (elements[id].first_child != 0) {
      id = elements[id].first_child;
      continue;
    }
    while (id != element && elements[id].next == 0) id = elements[id].parent;
    id = id == element ? 0 : elements[id].next;
  }
  return std::string_view(*buffer).substr(0, max_characters);
}

bool TreeHost::ReadTexts(host::Id document, std::span<const host::Id> ids, host::TextColumn* column) {
  if (!reads_texts) return false;
  *column = {};
  std::string buffer;
  for (const host::Id id : ids) {
    column->begins.push_back(static_cast<std::uint32_t>(column->text.size()));
    column->text += ElementText(document, id, std::string::npos, &buffer);
    column->ends.push_back(static_cast<std::uint32_t>(column->text.size()));
  }
  return true;
}

bool TreeHost::ReadElementProperty(host::Id document, host::Id element, host::ElementProperty property,
                                   std::string* value) {
  const auto& properties = At(document, element).properties;
  const auto found = properties.find(std::string(kPropertyNames[static_cast<std::size_t>(property)]));
  *value = found == properties.end() ? std::string() : found->second;
  return found != properties.end();
}

}  // namespace qelm::testing
