// A host whose documents are element trees in memory, written in a compact notation:
//
//   TreeHost host;
//   TreeDocument& document = host.Add("manual.fm");
//   document.AddFlow("Main", host::FlowKind::kBody, R"(Doc(Audience="expert","admin" Empty) {
//     Title(!PgfTag="Heading") {"Pumps"} Section { Para {"one" Bold{"two"} "three"} } })");
//
// A name is an element, its attributes with their values in parentheses ("!" before one makes it a property),
// its content in braces, quoted text a text node. Ids count from 1 in the order of writing. Everything but
// elements, definitions and text gives what it gives when it fails.
#pragma once

#include <deque>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "support/memory_platform.h"
#include "support/null_roles.h"

namespace qelm::testing {

class TreeDocument {
 public:
  struct Flow {
    std::string name;
    host::FlowKind kind;
    host::Id root;
  };
  struct Attribute {
    std::string name;
    std::vector<std::string> values;
  };
  struct Element {
    host::Id parent = 0;
    host::Id first_child = 0;
    host::Id last_child = 0;
    host::Id next = 0;
    host::Id previous = 0;
    host::Id definition = 0;
    host::Id flow = 0;
    std::string text;  // of a text node
    std::vector<Attribute> attributes;
    std::map<std::string, std::string> properties;
  };

  explicit TreeDocument(std::string path_of_document) : path(std::move(path_of_document)) {
    elements.emplace_back();
  }

  // Adds a flow with the tree in this notation (empty: no structure). Returns the root element. Throws
  // std::invalid_argument, with the place, for a text that is not in the notation.
  host::Id AddFlow(std::string name, host::FlowKind kind, std::string_view tree);
  // Adds an element as the last child (parent 0: as the root of the last flow), a text node when `name` is
  // empty.
  host::Id AddElement(host::Id parent, std::string_view name, std::string text = {});

  host::Id DefinitionOf(std::string_view name);
  // Declares an attribute of an element definition with its default values.
  void Declare(std::string_view element, std::string_view attribute, std::vector<std::string_view> defaults);

  // To be called when a test has changed what stands below after a search.
  void Changed() { ++revision; }

  std::uint64_t revision = 1;
  std::string path;
  std::vector<Flow> flows;        // a flow's id is its place from 1
  std::vector<Element> elements;  // by id; 0 is not used
  std::deque<std::string> names;  // of definitions, by id less 1
  std::map<std::string, host::Id, std::less<>> definitions;
  std::map<host::Id, std::vector<host::AttributeDefinition>> declared;
};

class TreeHost : private NullDocuments,
                 private NullBooks,
                 private host::Elements,
                 private host::Definitions,
                 private NullText {
 public:
  TreeHost();

  TreeDocument& Add(std::string path);
  // The id of a document is its place from 1.
  TreeDocument& Document(host::Id id) { return *documents_[id - 1]; }
  host::Host& roles() { return host_; }

  // How many calls of the roles that read documents were made.
  std::uint64_t calls = 0;
  RecordingUser user;
  MemoryPlatform platform;
  // What a host may leave out: whether it counts edits, and whether it reads texts as a column.
  bool counts_edits = true;
  bool reads_texts = true;

  // The active book, itself one of the documents, and its components.
  struct Component {
    host::Id document;
    bool generated;
  };
  host::Id book = 0;
  std::vector<Component> components;

 private:
  const TreeDocument::Element& At(host::Id document, host::Id element);

  host::Id FirstOpenDocument() override { return documents_.empty() ? 0 : 1; }
  host::Id NextOpenDocument(host::Id document) override {
    return document < documents_.size() ? document + 1 : 0;
  }
  std::string_view Path(host::Id document) override { return documents_[document - 1]->path; }

  host::Id ActiveBook() override { return book; }
  bool IsBook(host::Id id) override { return id != 0 && id == book; }
  host::Id FirstComponent(host::Id) override { return components.empty() ? 0 : 1; }
  host::Id NextComponent(host::Id, host::Id component) override {
    return component < components.size() ? component + 1 : 0;
  }
  bool IsGenerated(host::Id, host::Id component) override { return components[component - 1].generated; }
  host::Id ComponentDocument(host::Id, host::Id component) override {
    return components[component - 1].document;
  }

  host::Id FirstFlow(host::Id document) override { return Document(document).flows.empty() ? 0 : 1; }
  host::Id NextFlow(host::Id document, host::Id flow) override {
    return flow < Document(document).flows.size() ? flow + 1 : 0;
  }
  host::Id MainFlow(host::Id document) override { return FirstFlow(document); }
  std::string_view FlowName(host::Id document, host::Id flow) override {
    return Document(document).flows[flow - 1].name;
  }
  host::FlowKind KindOfFlow(host::Id document, host::Id flow) override {
    return Document(document).flows[flow - 1].kind;
  }
  host::Id Root(host::Id document, host::Id flow) override { return Document(document).flows[flow - 1].root; }
  host::Id Parent(host::Id document, host::Id element) override { return At(document, element).parent; }
  host::Id FirstChild(host::Id document, host::Id element) override {
    return At(document, element).first_child;
  }
  host::Id LastChild(host::Id document, host::Id element) override {
    return At(document, element).last_child;
  }
  host::Id NextSibling(host::Id document, host::Id element) override { return At(document, element).next; }
  host::Id PreviousSibling(host::Id document, host::Id element) override {
    return At(document, element).previous;
  }
  bool IsElement(host::Id document, host::Id element) override {
    return element != 0 && element < Document(document).elements.size();
  }
  host::Id IdLimit(host::Id document) override {
    return static_cast<host::Id>(Document(document).elements.size());
  }
  host::ElementKind Kind(host::Id document, host::Id element) override {
    return At(document, element).definition == 0 ? host::ElementKind::kText : host::ElementKind::kContainer;
  }
  host::Id Definition(host::Id document, host::Id element) override {
    return At(document, element).definition;
  }
  host::Id FlowOf(host::Id document, host::Id element) override { return At(document, element).flow; }
  std::int64_t UniqueId(host::Id, host::Id) override { return 0; }
  host::Id FindUniqueId(host::Id, std::int64_t) override { return 0; }
  std::uint64_t Revision(host::Id document) override {
    return counts_edits && document <= documents_.size() ? Document(document).revision : 0;
  }
  bool ReadTexts(host::Id document, std::span<const host::Id> elements, host::TextColumn* column) override;

  host::Id FindDefinition(host::Id document, std::string_view name) override;
  host::Id FirstDefinition(host::Id document) override { return Document(document).names.empty() ? 0 : 1; }
  host::Id NextDefinition(host::Id document, host::Id definition) override {
    return definition < Document(document).names.size() ? definition + 1 : 0;
  }
  std::string_view DefinitionName(host::Id document, host::Id definition) override {
    return Document(document).names[definition - 1];
  }
  std::span<const host::AttributeDefinition> AttributeDefinitions(host::Id document,
                                                                  host::Id definition) override;
  void ReadAttributes(host::Id document, host::Id element, host::AttributeBuffer* buffer) override;

  std::string_view ElementText(host::Id document, host::Id element, std::size_t max_characters,
                               std::string* buffer) override;
  bool ReadElementProperty(host::Id document, host::Id element, host::ElementProperty property,
                           std::string* value) override;

  std::vector<std::unique_ptr<TreeDocument>> documents_;
  NullSession session_;
  NullEditing editing_;
  NullCatalogs catalogs_;
  NullTables tables_;
  NullLinks links_;
  NullDialogs dialogs_;
  NullClients clients_;
  host::Host host_;
};

}  // namespace qelm::testing
