// Writes the benchmark's tree as MIF of level 7.00, statement by statement as FrameMaker lays it out:
// containers begin and end inside the lines of their paragraphs, tables stand in a section of their own with
// an anchor in the text, hidden text lies in the hidden flow with a marker at its place.
#pragma once

#include <string>

#include "tree.h"

namespace qelm::bench {

class MifWriter : public Writer {
 public:
  void Begin(Kind kind, std::string_view tag, std::span<const Attribute> attributes) override;
  void End(Kind kind, std::string_view tag) override;
  void Text(std::string_view utf8) override;
  void HiddenText(std::string_view utf8) override;

  // The whole document, once the tree is complete.
  std::string Document();

 private:
  // Where paragraphs are written: the main flow, or a title or cell of a table.
  struct Stream {
    std::string* out;
    std::size_t depth;       // of its paragraphs
    bool open = false;       // a paragraph is begun
    std::size_t column = 0;  // characters on its line
  };

  void OpenParagraph(std::string_view tag);
  void CloseParagraph();
  void BreakLine();
  void ElementGroup(std::string& out, std::size_t depth, std::string_view statement, std::string_view tag,
                    std::span<const Attribute> attributes);
  void ElementEnd(std::string_view tag);
  void BeginReference(std::string_view tag, std::span<const Attribute> attributes);
  void IndexMarker(std::string_view tag, std::span<const Attribute> attributes);
  void BlockMarker(std::string& out, std::size_t depth, char role);
  void BeginTable(std::string_view tag, std::span<const Attribute> attributes);
  void BeginTextPart(std::string_view part, std::string_view content, std::size_t depth, std::string_view tag,
                     std::span<const Attribute> attributes);
  void EndTextPart(std::string_view part, std::string_view content, std::size_t depth);
  std::size_t ItemDepth() const { return stream_->depth + 2; }
  std::string Unique() { return std::to_string(next_unique_++); }

  std::string text_, tables_, hidden_;
  std::string pending_;  // beginnings of containers that wait for their first paragraph
  Stream main_{&text_, 1};
  Stream part_{&tables_, 0};
  Stream* stream_ = &main_;
  bool in_text_frame_ = false;  // the main flow has entered its text frame
  std::uint64_t next_unique_ = 1000000;
  std::uint32_t tables_made_ = 0;
  std::uint32_t blocks_made_ = 100000;
};

}  // namespace qelm::bench
