// Writing XML: text and attribute values with what must be escaped escaped, and start tags taken apart, so
// that one attribute can be changed and all else stays as it was written.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace qelm::embedded::xml {

// Appends text as content: `<`, `>` and `&` as entities, a carriage return as a reference, because it would
// be read as a line end. What cannot be in XML at all (other control characters, bytes that are no UTF-8)
// becomes U+FFFD.
void AppendText(std::string_view text, std::string* out);

// Appends an attribute's value, for the quotation mark given; line ends and tabs as references, because they
// would be read as blanks.
void AppendValue(std::string_view value, char quote, std::string* out);

// One attribute in a start tag: from its name's first byte to behind its closing quotation mark, with the
// value between the marks.
struct TagAttribute {
  std::size_t begin = 0;
  std::size_t end = 0;
  std::size_t name_end = 0;
  std::size_t value_begin = 0;
  std::size_t value_end = 0;
};

// The attributes of a well-formed start tag in an encoding that has ASCII's bytes. `tail` takes where `>` or
// `/>` begins.
void SplitTag(std::string_view tag, std::vector<TagAttribute>* attributes, std::size_t* tail);

// A raw attribute value as it reads: references to characters and XML's five entities resolved, white space
// as blanks. False when it refers to another entity.
bool ReadValue(std::string_view raw, std::string* value);

}  // namespace qelm::embedded::xml
