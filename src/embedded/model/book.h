// A book: its components in order, and the element tree that it keeps of them. book_edit.h changes it.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "embedded/model/document.h"

namespace qelm::embedded::model {

struct Component {
  std::string file;       // FileName decoded: a device-independent path
  std::string read_file;  // the name before it was changed
  std::string path;       // the same as a path of the platform, relative or absolute
  bool generated = false;
  bool excluded = false;
  bool is_group = false;  // names no file: a group or folder, which may hold other components
  bool removed = false;
  std::string entry_text;
  Span span;
  Span file_data;  // of `file` in the source, with its marks; empty where there is none
  Span text_data;  // of `entry_text`
  bool file_changed = false;
  bool text_changed = false;
};

// A cross-reference of which the book itself keeps the text.
struct BookReference {
  std::string file;
  Span file_data;
  std::optional<std::string> new_file;
};

// The book's own elements are those of `tree`, a document without text whose one flow holds them; `component`
// of an element is in element_components, kNoIndex where it has none.
class Book {
 public:
  Document tree;
  std::vector<Component> components;
  std::vector<std::uint32_t> element_components;
  std::vector<Span> element_numbers;  // by element: the statement that names its component
  std::vector<BookReference> references;
  std::vector<Id> removed_elements;  // that went with their components
};

// A device-independent path ("<v\>M:<c\>Docs<c\>ch1.fm", decoded) as a path with "/".
std::string PlatformPath(std::string_view device_independent);
std::string DeviceIndependentPath(std::string_view path);

}  // namespace qelm::embedded::model
