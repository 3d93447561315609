// Running heads: what headers and footers say of the page that they stand on (`$paratext[Heading]`).
//
// Only paragraphs and elements that some variable of the document asks for are remembered: those of the page
// at hand, in order, and the last one before it.
#pragma once

#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "embedded/render/story.h"

namespace qelm::embedded::render {

class RunningText {
 public:
  explicit RunningText(const Setting& setting);

  void BeginPage();
  // A paragraph of the main flow that begins on the page.
  void Add(const StoryParagraph& story);

  // The value of a block: of the first paragraph of the page that has one of the tags in `argument` ("+" in
  // it: of the last one), and where the page has none, of the last one before.
  std::string Value(std::string_view block, std::string_view argument) const;

 private:
  struct Event {
    bool is_element = false;
    std::string_view tag;  // of the paragraph or element; of a marker its type
    std::string text;
    std::string number;
    std::string number_only;
  };
  void Ask(std::string_view definition);
  const Event* Find(std::string_view argument, bool is_element) const;

  const Setting& setting_;
  std::unordered_set<std::string> paragraph_tags_;
  std::unordered_set<std::string> element_tags_;
  std::vector<Event> page_;
  std::vector<Event> before_;  // the last one of each tag, the latest last
};

}  // namespace qelm::embedded::render
