// Which paragraphs are headings, for the bookmarks of a PDF.
//
// Where paragraph formats have bookmark levels, these decide. Else it is the element tree: the first
// paragraph of an element that has more in it than that, when it is called a title or heading or stays with
// what follows. In documents without elements it is the name of the format ("Heading2", "ChapterTitle").
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "embedded/render/story.h"

namespace qelm::embedded::render {

class Outline {
 public:
  explicit Outline(const Setting& setting);

  // The level of the heading that the paragraph is, from 1; 0 when it is none. Paragraphs come in their
  // order.
  int Level(const StoryParagraph& story, const ParagraphFormat& format);
  // What the bookmark says.
  static std::string Title(const StoryParagraph& story);

 private:
  int LevelInTree(const StoryParagraph& story, const ParagraphFormat& format);
  static int LevelByName(std::string_view tag);

  const model::Document& document_;
  bool by_format_ = false;
  bool by_element_ = false;
  std::vector<model::Id> open_;  // elements that have headings, each in the one before
};

}  // namespace qelm::embedded::render
