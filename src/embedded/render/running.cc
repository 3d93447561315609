#include "embedded/render/running.h"

#include <algorithm>

#include "embedded/model/numbering.h"

namespace qelm::embedded::render {
namespace {

// Calls `each` for the names in the brackets of a block ("+,Heading1, Heading2").
template <typename Function>
void EachName(std::string_view argument, Function&& each) {
  while (!argument.empty()) {
    const std::size_t comma = std::min(argument.find(','), argument.size());
    std::string_view name = argument.substr(0, comma);
    while (!name.empty() && name.front() == ' ') name.remove_prefix(1);
    while (!name.empty() && name.back() == ' ') name.remove_suffix(1);
    if (!name.empty()) each(name);
    argument.remove_prefix(std::min(comma + 1, argument.size()));
  }
}

// The text without what stands for objects in it and without line ends.
std::string PlainText(std::string_view text) {
  std::string plain;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text.substr(i).starts_with("\xEF\xBF\xBC")) {
      i += 2;
    } else if (text.substr(i).starts_with("\xE2\x80\xA8")) {
      plain += " ";
      i += 2;
    } else {
      plain.push_back(text[i]);
    }
  }
  return plain;
}

// What a header shows of a marker's text: its codes as they are in formats. A return is a blank, as a running
// head has one line.
std::string MarkerText(std::string_view text) {
  std::string shown;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] != '\\') {
      shown.push_back(text[at]);
    } else if (text.substr(at + 1).starts_with('r')) {
      if (!shown.empty()) shown.push_back(' ');
      ++at;
    } else {
      at += model::AppendFormatEscape(text.substr(at + 1), &shown);
    }
  }
  return shown;
}

}  // namespace

RunningText::RunningText(const Setting& setting) : setting_(setting) {
  for (const auto& [name, definition] : setting.document.variables) Ask(definition);
}

void RunningText::Ask(std::string_view definition) {
  for (std::size_t at = definition.find("<$"); at != std::string_view::npos;
       at = definition.find("<$", at + 1)) {
    const std::size_t open = definition.find('[', at);
    const std::size_t close = definition.find(']', at);
    if (open == std::string_view::npos || close == std::string_view::npos || close < open) return;
    const std::string_view block = definition.substr(at + 2, open - at - 2);
    std::unordered_set<std::string>* tags = block.starts_with("para")   ? &paragraph_tags_
                                            : block.starts_with("elem") ? &element_tags_
                                                                        : nullptr;
    if (tags == nullptr) continue;
    EachName(definition.substr(open + 1, close - open - 1),
             [tags](std::string_view name) { tags->insert(std::string(name)); });
  }
}

void RunningText::BeginPage() {
  for (Event& event : page_) {
    std::erase_if(before_, [&](const Event& old) {
      return old.tag == event.tag && old.is_element == event.is_element;
    });
    before_.push_back(std::move(event));
  }
  page_.clear();
}

void RunningText::Add(const StoryParagraph& story) {
  Event event;
  const auto fill = [&] {
    if (!event.text.empty()) return;
    event.text = PlainText(std::string_view(story.text).substr(story.number_length));
    if (story.paragraph >= setting_.numbers.size()) return;
    event.number = setting_.numbers[story.paragraph].text;
    event.number_only = setting_.numbers[story.paragraph].only;
  };
  const std::string_view tag = setting_.document.paragraph_states[story.state].tag;
  if (paragraph_tags_.contains(std::string(tag))) {
    fill();
    event.tag = tag;
    page_.push_back(event);
  }
  for (const StoryMarker& marker : story.markers) {
    page_.push_back({false, marker.type.ends_with("1") ? "$1" : "$2", MarkerText(marker.text), {}, {}});
  }
  if (element_tags_.empty()) return;
  for (std::uint32_t i = story.first_item; i < story.end_item; ++i) {
    const model::Item& item = setting_.document.items[i];
    if (item.kind != model::ItemKind::kElementBegin || item.Is(model::kDeleted)) continue;
    const model::Element& element = setting_.document.elements[item.ref];
    const std::string_view name = setting_.document.definitions[element.definition].name;
    if (!element_tags_.contains(std::string(name))) continue;
    fill();
    event.tag = name;
    event.is_element = true;
    page_.push_back(event);
  }
}

const RunningText::Event* RunningText::Find(std::string_view argument, bool is_element) const {
  bool last = false;
  std::vector<std::string_view> tags;
  EachName(argument, [&](std::string_view name) {
    if (name == "+") {
      last = true;
    } else {
      tags.push_back(name);
    }
  });
  const auto meant = [&](const Event& event) {
    return event.is_element == is_element && std::find(tags.begin(), tags.end(), event.tag) != tags.end();
  };
  if (last) {
    const auto found = std::find_if(page_.rbegin(), page_.rend(), meant);
    if (found != page_.rend()) return &*found;
  } else {
    const auto found = std::find_if(page_.begin(), page_.end(), meant);
    if (found != page_.end()) return &*found;
  }
  const auto before = std::find_if(before_.rbegin(), before_.rend(), meant);
  return before == before_.rend() ? nullptr : &*before;
}

std::string RunningText::Value(std::string_view block, std::string_view argument) const {
  if (block == "marker1" || block == "marker2") {
    const Event* marker = Find(block == "marker1" ? "$1" : "$2", false);
    return marker == nullptr ? std::string() : marker->text;
  }
  const bool is_element = block.starts_with("elem");
  if (!is_element && !block.starts_with("para")) return {};
  const Event* event = Find(argument, is_element);
  if (event == nullptr) return {};
  if (block.ends_with("numonly")) return event->number_only;
  if (block.ends_with("num")) return event->number;
  return block.ends_with("tag") ? std::string(event->tag) : event->text;
}

}  // namespace qelm::embedded::render
