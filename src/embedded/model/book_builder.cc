#include <algorithm>
#include <charconv>

#include "embedded/model/files.h"
#include "embedded/model/mif_scan.h"

namespace qelm::embedded::model {
namespace {

using mif::Piece;
using mif::Token;

class BookReader {
 public:
  explicit BookReader(Book* book) : book_(*book), tree_(book->tree), reader_(tree_.source) {}
  bool Run(std::string* error);

 private:
  void Header();
  void ReadComponents();
  std::size_t BeginComponent();
  void ReadComponentField(Component* component);
  void EndComponent(Component* component);
  void ReadReference();
  void ReadElements();
  Id BeginElement(std::uint32_t* component);
  void ReadElement(Id id, std::uint32_t* component);
  void ReadAttributes(Id id);
  void EndElement(std::uint32_t begin, std::uint32_t end);
  void Attach(Id id);
  void FinishTree();
  void AddItem(ItemKind kind, Id id, std::uint32_t begin, std::uint32_t end);
  void Warn(std::uint32_t offset, std::string text);
  std::string Text() const { return mif::DecodeString(reader_.data(), tree_.encoding); }
  Span DataSpan() const {
    const auto begin = static_cast<std::uint32_t>(reader_.data().data() - tree_.source.data());
    return {begin, begin + static_cast<std::uint32_t>(reader_.data().size())};
  }

  Book& book_;
  Document& tree_;
  mif::Reader reader_;
  std::vector<Id> open_;
  std::vector<Id> tops_;
};

void BookReader::Warn(std::uint32_t offset, std::string text) {
  constexpr std::size_t kMostWarnings = 100;
  if (tree_.warnings.size() >= kMostWarnings) return;
  const mif::Place place = mif::PlaceOf(tree_.source, offset);
  tree_.warnings.push_back({"line " + std::to_string(place.line) + ": " + std::move(text)});
}

bool BookReader::Run(std::string* error) {
  book_.element_components.assign(1, kNoIndex);
  book_.element_numbers.resize(1);
  while (reader_.Next()) {
    if (reader_.token() == Token::kBook) Header();
    if (reader_.kind() != Piece::kGroup) continue;
    const std::uint32_t begin = reader_.begin();
    switch (reader_.token()) {
      case Token::kBookComponent:
        ReadComponents();
        break;
      case Token::kBookXRef:
        ReadReference();
        break;
      case Token::kBookElements:
        ReadElements();
        break;
      case Token::kElementDefCatalog:
        ScanElementDefinitions(&reader_, &tree_);
        break;
      case Token::kColorCatalog:
        ScanColors(&reader_, &tree_);
        tree_.color_catalog = {begin, reader_.end()};
        break;
      case Token::kConditionCatalog:
        ScanConditions(&reader_, &tree_);
        tree_.condition_catalog = {begin, reader_.end()};
        break;
      default:
        reader_.Skip();
        break;
    }
  }
  if (reader_.Failed()) {
    *error = mif::Describe(tree_.source, reader_.error());
    return false;
  }
  FinishTree();
  return true;
}

void BookReader::Header() {
  const std::string_view data = reader_.data();
  std::from_chars(data.data(), data.data() + data.size(), tree_.level);
  tree_.encoding = tree_.level >= 8 ? mif::Encoding::kUtf8 : mif::Encoding::kFrameRoman;
  tree_.first_statement_end = reader_.end();
}

// One component, and those that it holds where it is a group: nesting has no limit, so it is a stack.
void BookReader::ReadComponents() {
  std::vector<std::size_t> open{BeginComponent()};
  while (!open.empty() && reader_.Next()) {
    if (reader_.kind() == Piece::kGroupEnd) {
      EndComponent(&book_.components[open.back()]);
      open.pop_back();
    } else if (reader_.kind() != Piece::kGroup) {
      ReadComponentField(&book_.components[open.back()]);
    } else if (reader_.token() == Token::kBookComponent) {
      open.push_back(BeginComponent());
    } else {
      reader_.Skip();
    }
  }
}

std::size_t BookReader::BeginComponent() {
  book_.components.emplace_back().span.begin = reader_.begin();
  return book_.components.size() - 1;
}

void BookReader::ReadComponentField(Component* component) {
  switch (reader_.token()) {
    case Token::kFileName:
      component->file = Text();
      component->file_data = DataSpan();
      break;
    case Token::kDeriveType:
      component->generated = !reader_.data().empty();
      break;
    case Token::kDisplayText:
      component->entry_text = Text();
      component->text_data = DataSpan();
      break;
    default:
      // What newer programs call it is not settled; it can only mean one thing.
      if (reader_.name().find("Exclude") != std::string_view::npos && reader_.data() == "Yes") {
        component->excluded = true;
      }
      break;
  }
}

void BookReader::EndComponent(Component* component) {
  component->span.end = reader_.end();
  component->path = PlatformPath(component->file);
  component->is_group = component->file.empty();
}

void BookReader::ReadReference() {
  Children(&reader_, [&] {
    if (reader_.token() != Token::kXRefSrcFile || reader_.kind() != Piece::kLeaf) return;
    book_.references.push_back({Text(), DataSpan(), std::nullopt});
  });
}

void BookReader::ReadElements() {
  const std::size_t inside = reader_.depth();
  std::uint32_t component = kNoIndex;
  while (reader_.Next() && reader_.depth() >= inside) {
    const std::uint32_t begin = reader_.begin();
    const bool is_group = reader_.kind() == Piece::kGroup;
    if (reader_.token() == Token::kElementBegin && is_group) {
      const Id id = BeginElement(&component);
      AddItem(ItemKind::kElementBegin, id, begin, reader_.end());
      open_.push_back(id);
    } else if (reader_.token() == Token::kElement && is_group) {
      const Id id = BeginElement(&component);
      AddItem(ItemKind::kElementBegin, id, begin, reader_.end());
      open_.push_back(id);
      EndElement(reader_.end(), reader_.end());
    } else if (reader_.token() == Token::kElementEnd && !is_group) {
      if (open_.empty()) {
        Warn(begin, "an ElementEnd ends no element; it is ignored");
      } else {
        EndElement(begin, reader_.end());
      }
    } else if (is_group) {
      reader_.Skip();
    }
  }
  if (!open_.empty())
    Warn(reader_.begin(), "elements are still open at the end of the book's; they are closed there");
  while (!open_.empty()) EndElement(reader_.begin(), reader_.begin());
}

Id BookReader::BeginElement(std::uint32_t* component) {
  const auto id = static_cast<Id>(tree_.elements.size());
  Element& element = tree_.elements.emplace_back();
  element.source = reader_.begin();
  element.first_item = static_cast<std::uint32_t>(tree_.items.size());
  *component = kNoIndex;
  book_.element_numbers.emplace_back();
  ReadElement(id, component);
  if (*component != kNoIndex && *component >= book_.components.size()) {
    Warn(tree_.elements[id].source, "an element names a component that the book does not have");
    *component = kNoIndex;
  }
  book_.element_components.push_back(*component);
  Attach(id);
  return id;
}

void BookReader::ReadElement(Id id, std::uint32_t* component) {
  Element& element = tree_.elements[id];
  element.first_attribute = static_cast<std::uint32_t>(tree_.attributes.size());
  std::string_view tag;
  Children(&reader_, [&] {
    switch (reader_.token()) {
      case Token::kETag:
        tag = StringData(reader_, &tree_);
        break;
      case Token::kEComponent:
        *component = NumberData(reader_);
        book_.element_numbers[id] = {reader_.begin(), reader_.end()};
        break;
      case Token::kAttributes:
        if (reader_.kind() == Piece::kGroup) ReadAttributes(id);
        break;
      default:
        break;
    }
  });
  // A component without structure has an element without a name.
  tree_.elements[id].definition = tree_.InternDefinition(tag);
}

void BookReader::ReadAttributes(Id id) {
  Children(&reader_, [&] {
    if (reader_.token() != Token::kAttribute || reader_.kind() != Piece::kGroup) return;
    Attribute attribute{};
    attribute.first_value = static_cast<std::uint32_t>(tree_.values.size());
    Children(&reader_, [&] {
      if (reader_.token() == Token::kAttrName) attribute.name = tree_.InternName(StringData(reader_, &tree_));
      if (reader_.token() == Token::kAttrValue) tree_.values.push_back(StringData(reader_, &tree_));
    });
    attribute.value_count = static_cast<std::uint32_t>(tree_.values.size()) - attribute.first_value;
    tree_.attributes.push_back(attribute);
    if (tree_.elements[id].attribute_count < 0xFFFF) ++tree_.elements[id].attribute_count;
  });
}

void BookReader::AddItem(ItemKind kind, Id id, std::uint32_t begin, std::uint32_t end) {
  Item item{};
  item.begin = begin;
  item.end = end;
  item.kind = kind;
  item.ref = id;
  tree_.items.push_back(item);
}

void BookReader::EndElement(std::uint32_t begin, std::uint32_t end) {
  const Id id = open_.back();
  open_.pop_back();
  AddItem(ItemKind::kElementEnd, id, begin, end);
  tree_.elements[id].end_item = static_cast<std::uint32_t>(tree_.items.size());
}

void BookReader::Attach(Id id) {
  if (open_.empty()) {
    tops_.push_back(id);
    return;
  }
  Element& element = tree_.elements[id];
  element.parent = open_.back();
  Element& parent = tree_.elements[element.parent];
  element.previous = parent.last_child;
  if (parent.last_child != 0) {
    tree_.elements[parent.last_child].next = id;
  } else {
    parent.first_child = id;
  }
  parent.last_child = id;
}

// A book whose elements have no single one above them has a root that only the reader made. It comes last,
// because ids are given by then.
void BookReader::FinishTree() {
  Flow flow;
  flow.name = "Book";
  flow.page = -1;
  flow.end_item = static_cast<std::uint32_t>(tree_.items.size());
  if (tops_.size() > 1) {
    const auto root = static_cast<Id>(tree_.elements.size());
    Element element{};
    element.definition = tree_.InternDefinition("NoName");
    element.is_virtual = true;
    element.end_item = flow.end_item;
    element.first_child = tops_.front();
    element.last_child = tops_.back();
    for (std::size_t i = 0; i < tops_.size(); ++i) {
      Element& top = tree_.elements[tops_[i]];
      top.parent = root;
      top.previous = i == 0 ? 0 : tops_[i - 1];
      top.next = i + 1 == tops_.size() ? 0 : tops_[i + 1];
    }
    tree_.elements.push_back(element);
    book_.element_components.push_back(kNoIndex);
    book_.element_numbers.emplace_back();
    tops_.assign(1, root);
    Warn(0, "the book has no single highest-level element; one called NoName stands for it");
  }
  flow.root = tops_.empty() ? 0 : tops_.front();
  tree_.flows.push_back(flow);
  tree_.main_flow = 1;
}

struct Code {
  std::string_view code;
  std::string_view before;  // what stands before the name
};
// The codes of device-independent paths (MIF reference, "Pathnames").
constexpr Code kCodes[] = {{"<r>", "/"}, {"<v>", ""}, {"<h>", "//"}, {"<c>", ""}, {"<u>", ".."}};

}  // namespace

std::unique_ptr<Book> BuildBook(SourceBytes bytes, std::string* error) {
  auto book = std::make_unique<Book>();
  Document& tree = book->tree;
  tree.format = Format::kMif;
  tree.source = std::move(bytes);
  const std::size_t line_end = tree.source.find('\n');
  tree.crlf = line_end != std::string::npos && line_end > 0 && tree.source[line_end - 1] == '\r';
  if (!BookReader(book.get()).Run(error)) return nullptr;
  return book;
}

std::string PlatformPath(std::string_view device_independent) {
  std::string path;
  std::string_view rest = device_independent;
  const auto code_at = [](std::string_view text) -> const Code* {
    for (const Code& code : kCodes) {
      if (text.starts_with(code.code)) return &code;
    }
    return nullptr;
  };
  if (code_at(rest) == nullptr) {
    // A path of the program's own system.
    path = rest;
    for (char& c : path) {
      if (c == '\\') c = '/';
    }
    return path;
  }
  while (!rest.empty()) {
    const Code* code = code_at(rest);
    if (code == nullptr) {
      path.push_back(rest.front());
      rest.remove_prefix(1);
      continue;
    }
    rest.remove_prefix(code->code.size());
    if (!path.empty() && path.back() != '/') path.push_back('/');
    path.append(code->before);
  }
  return path;
}

std::string DeviceIndependentPath(std::string_view path) {
  std::string result;
  if (path.starts_with("//")) {
    result = "<h>";
    path.remove_prefix(2);
    const std::size_t end = std::min(path.find('/'), path.size());
    result.append(path.substr(0, end));
    path.remove_prefix(end);
  } else if (path.starts_with('/')) {
    result = "<r>";
  } else if (path.size() >= 2 && path[1] == ':') {
    result.append("<v>").append(path.substr(0, 2));
    path.remove_prefix(2);
  }
  while (!path.empty()) {
    const std::size_t end = std::min(path.find('/'), path.size());
    const std::string_view step = path.substr(0, end);
    if (step == "..") {
      result.append("<u>");
    } else if (!step.empty() && step != ".") {
      result.append("<c>").append(step);
    }
    path.remove_prefix(std::min(end + 1, path.size()));
  }
  return result;
}

}  // namespace qelm::embedded::model
