// A book: its components in order, and the element tree that it keeps of them.
#pragma once

#include <string>
#include <vector>

#include "embedded/model/document.h"

namespace qelm::embedded::model {

struct Component {
  std::string file;  // FileName decoded: a device-independent path
  std::string path;  // the same as a path of the platform, relative or absolute
  bool generated = false;
  bool excluded = false;
  std::string entry_text;
  Span span;
};

// The book's own elements are those of `tree`, a document without text whose one flow holds them; `component`
// of an element is in element_components, kNoIndex where it has none.
class Book {
 public:
  Document tree;
  std::vector<Component> components;
  std::vector<std::uint32_t> element_components;
};

// A device-independent path ("<v\>M:<c\>Docs<c\>ch1.fm", decoded) as a path with "/".
std::string PlatformPath(std::string_view device_independent);
std::string DeviceIndependentPath(std::string_view path);

}  // namespace qelm::embedded::model
