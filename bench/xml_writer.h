// Writes the benchmark's tree as XML, the way an export writes it: a document type with the attributes'
// types, containers indented, paragraphs on a line. Hidden text stands between the processing instructions
// that carry conditions.
#pragma once

#include <string>

#include "tree.h"

namespace qelm::bench {

class XmlWriter : public Writer {
 public:
  XmlWriter();
  void Begin(Kind kind, std::string_view tag, std::span<const Attribute> attributes) override;
  void End(Kind kind, std::string_view tag) override;
  void Text(std::string_view utf8) override;
  void HiddenText(std::string_view utf8) override;

  // The whole document, once the tree is complete.
  const std::string& Document() const { return document_; }

 private:
  void NewLine();
  void Escaped(std::string_view utf8);

  std::string document_;
  int depth_ = 0;
};

}  // namespace qelm::bench
