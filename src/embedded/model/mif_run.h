// Writing new elements, text and paragraphs one after the other, as lines to be put into a MIF file.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "embedded/model/document.h"
#include "embedded/model/mif_layout.h"

namespace qelm::embedded::model {

// What the element definitions of a file say of how their elements stand in the text.
struct Formatting {
  std::string paragraph_format;
  bool is_text_range = false;
};
using Formattings = std::unordered_map<std::string_view, Formatting>;

// Numbers for new objects.
class Numbers {
 public:
  explicit Numbers(std::int64_t next) : next_(next) {}
  // `<Unique N>`, or nothing when there are no more numbers.
  std::string Statement() { return next_ <= 0 ? std::string() : "<Unique " + std::to_string(next_++) + ">"; }
  std::int64_t next() const { return next_; }

 private:
  std::int64_t next_;
};

class MifRun {
 public:
  // Where the run begins: what holds there, and what new content shall have.
  struct Start {
    std::size_t indentation = 0;  // of the statements in the line
    bool in_line = false;         // elements stay in the line
    bool may_break = true;        // false: nothing may split the paragraph
    bool holds_content = false;   // the paragraph has something that a new paragraph has to leave behind
    std::uint32_t font = 0;
    std::uint16_t conditions = 0;
    std::uint32_t wanted_font = 0;
    std::uint16_t wanted_conditions = 0;
    std::vector<std::string> format;  // the statements of the paragraph around
  };

  MifRun(const Document& document, const MifLayout& layout, const Formattings& formattings, Numbers* numbers,
         Start start)
      : document_(document),
        layout_(layout),
        formattings_(formattings),
        numbers_(*numbers),
        start_(std::move(start)),
        holds_(start_.holds_content),
        font_(start_.font),
        conditions_(start_.conditions) {}

  // Writes one new child of an element of the source with all that is in it. `own_paragraph`: it may stand in
  // a paragraph of its own.
  void Add(Id id, bool own_paragraph);
  // Ends the paragraph and begins another one with the format around.
  void BreakBefore();
  // Sets the states, where they are others.
  void Restore(std::uint32_t font);
  void RestoreConditions(std::uint16_t conditions);

  void Text(std::string_view text);
  void Marker(std::string_view type, std::string_view text);
  void Statement(const std::string& statement) { lines_ += layout_.Lines({statement}, start_.indentation); }

  const std::string& lines() const { return lines_; }
  bool broke() const { return broke_; }
  // Whether the last paragraph that was begun has a format of its own.
  bool other_format() const { return other_format_; }
  // The format that the first element would give to the paragraph in which the run begins; empty: none.
  const std::string& first_format() const { return first_format_; }
  std::uint32_t font() const { return font_; }

  // Whether a child stands in a paragraph of its own when its parent lets it.
  bool IsBlock(Id id) const;

 private:
  struct Open {
    Id element;
    Id next_child;
    bool holds_blocks;
  };
  void Begin(Id id, bool block);
  void End(Id id);
  void Paragraph(Id id);
  void Break(const std::string& format);
  void Line(std::string_view text, std::size_t outdent);
  std::string FormatOf(Id id) const;
  void Require();
  bool IsMixed(Id id) const;

  const Document& document_;
  const MifLayout& layout_;
  const Formattings& formattings_;
  Numbers& numbers_;
  Start start_;
  std::string lines_;
  std::string first_format_;
  bool holds_;
  bool broke_ = false;
  bool other_format_ = false;
  std::uint32_t font_;
  std::uint16_t conditions_;
};

}  // namespace qelm::embedded::model
