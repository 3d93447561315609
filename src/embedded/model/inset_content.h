// The content of a text inset, made anew out of its source: paragraphs as the statements that they will be in
// the document around it, and the tables, frames and footnotes that go with them.
//
// The text of a source is gone over once, in the order in which it reads. Each item brings its own statement,
// and before it what sets the conditions and the character format that the source has there, so that nothing
// depends on what stood before it in the source.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "embedded/model/document.h"

namespace qelm::embedded::model {

// How the text of an inset looks.
enum class InsetFormatting : unsigned char {
  kEnclosing,  // by the formats of the document around it
  kSource,     // by the formats that its source has
  kPlainText,  // like the paragraph in which it begins
};

// What an inset's statement says.
struct InsetSettings {
  enum class Kind : unsigned char { kFlow, kText, kOther };
  Kind kind = Kind::kFlow;
  std::string type;  // the statement that says the kind
  std::string file;  // a path with "/"
  std::string flow;  // the name; empty for the main flow
  bool on_reference_page = false;
  InsetFormatting formatting = InsetFormatting::kEnclosing;
  bool removes_overrides = false;
  bool line_ends_paragraph = false;  // of a text file
};
InsetSettings ReadInset(const Document& document, std::uint32_t item);

// Statements in paragraphs are indented from 0, their lines separated by '\n'. Objects have their lines as in
// the source: image data stands in the first column.
struct InsetParagraph {
  std::vector<std::string> format;              // empty: the format around
  std::vector<std::vector<std::string>> lines;  // at least one
};
struct InsetContent {
  std::vector<InsetParagraph> paragraphs;
  std::vector<std::string> tables;
  std::vector<std::string> frames;
  std::vector<std::string> notes;
  std::vector<std::string> flows;                        // of the text in frames
  std::vector<std::pair<std::string, bool>> conditions;  // that the text has, and whether they are shown
};

// Numbers for objects that come into a document: above all that it has.
class ObjectNumbers {
 public:
  explicit ObjectNumbers(const Document& document);
  std::uint32_t Next() { return ++last_; }

 private:
  std::uint32_t last_ = 0;
};

// The content of a flow of another MIF document. False, with `problem` set, where there is no such flow.
// `moved` gives the path that stands for a relative one of the source.
bool ReadFlowContent(const Document& source, const InsetSettings& settings, const Document& target,
                     const std::vector<std::string>& enclosing_format,
                     const std::function<std::string(const std::string&)>& moved, ObjectNumbers* numbers,
                     InsetContent* content, std::string* problem);

// The content of a text file in UTF-8.
InsetContent ReadTextContent(std::string_view text, const InsetSettings& settings, const Document& target);

}  // namespace qelm::embedded::model
