// Writing a document from XML as MIF: what the parts of the conversion share.
//
// The text goes into stories (the flow, cells, titles, footnotes), each a list of paragraphs. An element
// begins a paragraph where its parent has no text of its own, and is part of one where it has. Tables, frames
// and footnotes are written apart and anchored by number, as MIF wants it.
#pragma once

#include <string>
#include <string_view>

#include "embedded/model/document.h"

namespace qelm::embedded::model {

// A string statement's data: text between its marks.
std::string MifString(std::string_view text);

// The catalogs that the content relies on: colors, conditions, element definitions, character formats.
std::string MifColors(const Document& document);
std::string MifConditions(const Document& document);
std::string MifElementDefinitions(const Document& document);
std::string MifCharacterFormats(const Document& document);

// `<ETag ...>` with the attributes and the other children of an ElementBegin or Element statement.
std::string MifElementBody(const Document& document, const Element& element, std::string_view user_string);

// The text of a story, paragraph by paragraph.
class MifStory {
 public:
  // `first_line` is what the first line begins with; `format` the paragraphs' tag.
  MifStory(const Document& document, std::string_view format, std::string first_line = {})
      : document_(&document), format_(format), first_line_(std::move(first_line)) {}

  void BeginElement(const std::string& body, bool is_block, std::uint16_t conditions);
  void EndElement(std::string_view name, bool is_block, std::uint16_t conditions);
  // A statement that takes a place in the text. A block stands in a paragraph of its own.
  void Object(std::string_view statement, std::uint16_t conditions, std::uint32_t font,
              bool is_block = false);
  // Text without line ends, as it stands in XML.
  void Text(std::string_view in_xml, std::uint16_t conditions, std::uint32_t font);
  // A line end that is only white space: a blank, when there is text before and behind it in the paragraph.
  void FoldedLineEnd() { has_blank_ = true; }
  void HardReturn(std::uint16_t conditions, std::uint32_t font);
  void EndParagraph();
  void AddNote(std::string_view note) { notes_.append(note); }

  // Ends the story. What it consists of: footnotes, and paragraphs; and both as one text, `<Notes ...>`
  // first.
  void Finish();
  const std::string& notes() const { return notes_; }
  const std::string& paragraphs() const { return text_; }
  std::string Whole() const { return " <Notes " + notes_ + "> # end of Notes\n" + text_; }

 private:
  void Line();
  void Content(std::uint16_t conditions, std::uint32_t font);
  void Conditions(std::uint16_t conditions);
  void Font(std::uint32_t font);

  const Document* document_;
  std::string_view format_;
  std::string first_line_;
  std::string text_;
  std::string notes_;
  bool in_paragraph_ = false;
  bool in_line_ = false;
  bool has_content_ = false;  // in the paragraph
  bool must_break_ = false;   // a block ended; what comes next begins a paragraph
  bool has_blank_ = false;
  std::uint16_t conditions_ = 0;
  std::uint32_t font_ = 0;
};

}  // namespace qelm::embedded::model
