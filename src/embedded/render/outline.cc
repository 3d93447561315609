#include "embedded/render/outline.h"

#include <algorithm>
#include <array>

namespace qelm::embedded::render {
namespace {

bool ContainsWord(std::string_view name, std::string_view word) {
  return std::search(name.begin(), name.end(), word.begin(), word.end(), [](char one, char other) {
           return (one >= 'A' && one <= 'Z' ? one - 'A' + 'a' : one) == other;
         }) != name.end();
}

struct NameLevel {
  std::string_view word;
  int level;
};
// In names of paragraph formats that are not numbered by level; the first that fits counts.
constexpr std::array kNameLevels = {
    NameLevel{"chapter", 1}, NameLevel{"appendix", 1},   NameLevel{"part", 1},    NameLevel{"subsection", 3},
    NameLevel{"section", 2}, NameLevel{"subheading", 3}, NameLevel{"heading", 2}, NameLevel{"title", 1},
};
// What such a name must have in it to be one of a heading at all.
constexpr std::array<std::string_view, 3> kHeadingWords = {"heading", "title", "head"};
// Headings of other things.
constexpr std::array<std::string_view, 4> kOtherWords = {"table", "figure", "cell", "header"};

template <std::size_t kCount>
bool ContainsAny(std::string_view name, const std::array<std::string_view, kCount>& words) {
  return std::any_of(words.begin(), words.end(),
                     [name](std::string_view word) { return ContainsWord(name, word); });
}

}  // namespace

Outline::Outline(const Setting& setting) : document_(setting.document) {
  by_format_ = setting.formats.HasBookmarkLevels();
  const model::Flow& flow = document_.flows[document_.main_flow];
  by_element_ = flow.root != 0 && document_.elements[flow.root].first_child != 0;
}

int Outline::Level(const StoryParagraph& story, const ParagraphFormat& format) {
  if (by_format_) return std::max(format.bookmark_level, 0);
  return by_element_ ? LevelInTree(story, format) : LevelByName(format.tag);
}

int Outline::LevelInTree(const StoryParagraph& story, const ParagraphFormat& format) {
  model::Id heading = 0;
  for (std::uint32_t i = story.first_item; i < story.end_item; ++i) {
    const model::Item& item = document_.items[i];
    if (model::IsContent(item.kind)) break;
    if (item.kind == model::ItemKind::kElementBegin && !item.Is(model::kDeleted)) heading = item.ref;
  }
  if (heading == 0) return 0;
  const model::Element& element = document_.elements[heading];
  if (element.parent == 0 || document_.elements[element.parent].first_child != heading || element.next == 0) {
    return 0;
  }
  const std::string_view name = document_.definitions[element.definition].name;
  if (!format.with_next && !ContainsAny(name, kHeadingWords)) return 0;
  const auto is_around = [&](model::Id other) {
    const model::Element& around = document_.elements[other];
    return around.first_item <= element.first_item && element.end_item <= around.end_item;
  };
  while (!open_.empty() && !is_around(open_.back())) open_.pop_back();
  open_.push_back(element.parent);
  return static_cast<int>(open_.size());
}

int Outline::LevelByName(std::string_view tag) {
  if (!ContainsAny(tag, kHeadingWords) || ContainsAny(tag, kOtherWords)) return 0;
  for (const char c : tag) {
    if (c >= '1' && c <= '9') return c - '0';
  }
  for (const NameLevel& level : kNameLevels) {
    if (ContainsWord(tag, level.word)) return level.level;
  }
  return 1;
}

std::string Outline::Title(const StoryParagraph& story) {
  std::string title;
  for (std::size_t i = 0; i < story.text.size(); ++i) {
    const std::string_view rest = std::string_view(story.text).substr(i);
    const bool object = rest.starts_with("\xEF\xBF\xBC");
    const bool blank = rest.front() == '\t' || rest.front() == ' ' || rest.starts_with("\xE2\x80\xA8");
    if (blank && !title.empty() && title.back() != ' ') title.push_back(' ');
    if (object || rest.starts_with("\xE2\x80\xA8")) {
      i += 2;
    } else if (!blank) {
      title.push_back(story.text[i]);
    }
  }
  while (!title.empty() && title.back() == ' ') title.pop_back();
  return title;
}

}  // namespace qelm::embedded::render
