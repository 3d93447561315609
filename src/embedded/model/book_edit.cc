#include "embedded/model/book_edit.h"

#include <algorithm>

#include "embedded/mif/strings.h"
#include "embedded/model/mif_attributes.h"
#include "embedded/model/mif_layout.h"
#include "embedded/model/splice.h"

namespace qelm::embedded::model {
namespace {

bool IsBlank(char c) { return c == ' ' || c == '\t'; }

// The statement with the whole of its lines, where nothing else stands on them but a comment behind it.
Span WholeLines(std::string_view source, Span span) {
  std::size_t begin = span.begin;
  while (begin > 0 && IsBlank(source[begin - 1])) --begin;
  if (begin > 0 && source[begin - 1] != '\n') return span;
  std::size_t end = span.end;
  while (end < source.size() && IsBlank(source[end])) ++end;
  if (end < source.size() && source[end] == '#') end = std::min(source.find('\n', end), source.size());
  if (end < source.size() && source[end] == '\r') ++end;
  if (end < source.size()) {
    if (source[end] != '\n') return span;
    ++end;
  }
  return {static_cast<std::uint32_t>(begin), static_cast<std::uint32_t>(end)};
}

class BookSaver {
 public:
  explicit BookSaver(const Book& book) : book_(book), source_(book.tree.source) {}

  Pieces Run() {
    for (const Component& component : book_.components) WriteComponent(component);
    for (const BookReference& reference : book_.references) {
      if (reference.new_file) WriteString(reference.file_data, *reference.new_file);
    }
    RemoveElements();
    WriteAttributes();
    for (const auto& [statement, edit] : book_.tree.replacements) {
      splice_.Replace(edit.place.begin, edit.place.end, edit.text);
    }
    return splice_.Apply(source_);
  }

 private:
  std::string String(std::string_view text) const {
    return "`" + mif::Encode(text, book_.tree.encoding) + "'";
  }
  void WriteString(Span data, std::string_view text) {
    if (data.begin != data.end) splice_.Replace(data.begin, data.end, String(text));
  }
  void Remove(Span span) {
    const Span lines = WholeLines(source_, span);
    splice_.Remove(lines.begin, lines.end);
  }

  void WriteComponent(const Component& component) {
    if (component.removed) return Remove(component.span);
    if (component.file_changed) WriteString(component.file_data, component.file);
    if (!component.text_changed) return;
    if (component.text_data.begin != component.text_data.end) {
      WriteString(component.text_data, component.entry_text);
    } else if (component.file_data.begin != component.file_data.end) {
      // Behind the file's statement, whose bracket is the next one.
      const auto at = static_cast<std::uint32_t>(source_.find('>', component.file_data.end) + 1);
      const std::string line_end = book_.tree.crlf ? "\r\n" : "\n";
      splice_.Insert(at, line_end + " <DisplayText " + String(component.entry_text) + ">");
    }
  }

  void RemoveElements() {
    const bool none_removed = std::none_of(book_.components.begin(), book_.components.end(),
                                           [](const Component& component) { return component.removed; });
    if (none_removed) return;
    std::vector<std::uint32_t> numbers(book_.components.size());
    std::uint32_t number = 0;
    for (std::size_t i = 0; i < numbers.size(); ++i) {
      numbers[i] = number;
      if (!book_.components[i].removed) ++number;
    }
    for (const Id id : book_.removed_elements) Remove(ElementSpan(id));
    for (Id id = 1; id < book_.element_components.size(); ++id) {
      const std::uint32_t component = book_.element_components[id];
      const Span statement = book_.element_numbers[id];
      if (component == kNoIndex || book_.tree.elements[id].deleted) continue;
      if (book_.components[component].removed) {
        Remove(statement);
      } else if (numbers[component] != component) {
        splice_.Replace(statement.begin, statement.end,
                        "<EComponent " + std::to_string(numbers[component]) + ">");
      }
    }
  }

  void WriteAttributes() {
    const MifLayout layout(book_.tree);
    for (const Element& element : book_.tree.elements) {
      if (!element.attributes_changed || element.deleted) continue;
      SaveElementAttributes(book_.tree, layout, element, &splice_);
    }
  }

  Span ElementSpan(Id id) const {
    const Element& element = book_.tree.elements[id];
    return {book_.tree.items[element.first_item].begin, book_.tree.items[element.end_item - 1].end};
  }

  const Book& book_;
  std::string_view source_;
  Splice splice_;
};

// Takes an element without children out of the tree.
void TakeOut(Document* tree, Id id) {
  Element& element = tree->elements[id];
  if (element.previous != 0) tree->elements[element.previous].next = element.next;
  if (element.next != 0) tree->elements[element.next].previous = element.previous;
  if (element.parent != 0) {
    Element& parent = tree->elements[element.parent];
    if (parent.first_child == id) parent.first_child = element.next;
    if (parent.last_child == id) parent.last_child = element.previous;
  }
  if (Flow& flow = tree->flows[tree->main_flow]; flow.root == id) flow.root = 0;
  element.parent = element.previous = element.next = 0;
  element.deleted = true;
}

}  // namespace

void SetEntryText(Book* book, std::size_t index, std::string_view text) {
  Component& component = book->components[index];
  if (component.entry_text == text) return;
  component.entry_text = text;
  component.text_changed = true;
  book->tree.modified = true;
}

void SetComponentFile(Book* book, std::size_t index, std::string_view path) {
  Component& component = book->components[index];
  const std::string file = DeviceIndependentPath(path);
  if (component.file == file) return;
  // By the name that was read: another component may have that of this one by now.
  if (!component.file_changed) component.read_file = component.file;
  for (BookReference& reference : book->references) {
    if (reference.file == component.read_file) reference.new_file = file;
  }
  component.file = file;
  component.path = path;
  component.file_changed = true;
  book->tree.modified = true;
}

bool RemoveComponent(Book* book, std::size_t index) {
  Component& component = book->components[index];
  const auto lies_in_it = [&](const Component& other) {
    return !other.removed && other.span.begin > component.span.begin && other.span.end < component.span.end;
  };
  if (std::any_of(book->components.begin(), book->components.end(), lies_in_it)) return false;
  component.removed = true;
  book->tree.modified = true;
  for (Id id = 1; id < book->element_components.size(); ++id) {
    const Element& element = book->tree.elements[id];
    if (book->element_components[id] != index || element.deleted || element.first_child != 0) continue;
    TakeOut(&book->tree, id);
    book->removed_elements.push_back(id);
  }
  return true;
}

Pieces BookPieces(const Book& book) { return BookSaver(book).Run(); }

}  // namespace qelm::embedded::model
