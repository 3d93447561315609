#include "embedded/model/reference_text.h"

#include <algorithm>
#include <filesystem>

#include "embedded/mif/reader.h"
#include "embedded/model/mif_layout.h"
#include "embedded/model/mif_run.h"
#include "embedded/model/mif_scan.h"
#include "embedded/model/text_access.h"

namespace qelm::embedded::model {
namespace {

using mif::Piece;
using mif::Token;

// "name[argument]" in its two parts.
struct BlockName {
  std::string_view name;
  std::string_view argument;
};
BlockName SplitBlock(std::string_view block) {
  const std::size_t open = block.find('[');
  if (open == std::string_view::npos || !block.ends_with(']')) return {block, {}};
  return {block.substr(0, open), block.substr(open + 1, block.size() - open - 2)};
}

bool IsPart(ElementKind kind) {
  return (kind >= ElementKind::kTable && kind <= ElementKind::kTableCell) || kind == ElementKind::kFootnote;
}

}  // namespace

bool EndsCharacterFormat(std::string_view name) {
  return name.starts_with("Default ") && name.ends_with(" Font");
}

std::string ReferenceText::Plain() const {
  std::string text;
  for (const StyledRun& run : runs) text += run.text;
  return text;
}

std::unordered_map<std::string, std::string> ReferenceFormats(const Document& document) {
  std::unordered_map<std::string, std::string> formats;
  if (document.format != Format::kMif) return formats;
  mif::Reader reader(document.source);
  while (reader.Next()) {
    if (reader.kind() != Piece::kGroup) continue;
    if (reader.token() == Token::kTextFlow || reader.token() == Token::kDocument) break;
    if (reader.token() != Token::kXRefFormats) {
      reader.Skip();
      continue;
    }
    Children(&reader, [&] {
      if (reader.token() != Token::kXRefFormat || reader.kind() != Piece::kGroup) return;
      std::string name;
      std::string definition;
      Children(&reader, [&] {
        if (reader.token() == Token::kXRefName) name = mif::DecodeString(reader.data(), document.encoding);
        if (reader.token() == Token::kXRefDef)
          definition = mif::DecodeString(reader.data(), document.encoding);
      });
      formats.insert_or_assign(std::move(name), std::move(definition));
    });
  }
  return formats;
}

ReferenceTargets::ReferenceTargets(const Document& document, const std::vector<ParagraphNumber>& numbers,
                                   const PlaceNumbers& places)
    : document_(document), numbers_(numbers), places_(places), begins_(document.paragraphs.size(), kNoIndex) {
  for (LinkTarget& target : ReadTargets(document)) {
    if (target.kind != LinkKind::kCrossReference || target.state != TargetState::kShown) continue;
    const std::string name = target.name;
    targets_.try_emplace(name, std::move(target));
  }
  paragraph_of_ = ParagraphsOfItems(document);
  for (std::uint32_t i = 0; i < document.items.size(); ++i) {
    const Item& item = document.items[i];
    if (item.kind == ItemKind::kParagraphBegin) begins_[item.ref] = i;
  }
}

// As the document has them on record.
void ReferenceTargets::ReadPages() {
  pages_.emplace();
  for (std::uint32_t i = 0; i < document_.items.size(); ++i) {
    const Item& item = document_.items[i];
    if (item.kind != ItemKind::kTextFrame || item.Is(kInBlock)) continue;
    const auto frame = document_.text_frame_index.find(item.ref);
    if (frame == document_.text_frame_index.end()) continue;
    const std::int32_t index = document_.text_frames[frame->second].page;
    PageStart& start = pages_->emplace_back();
    start.item = i;
    if (index < 0 || static_cast<std::size_t>(index) >= document_.pages.size()) continue;
    const Page& page = document_.pages[static_cast<std::size_t>(index)];
    if (page.kind != FlowKind::kBody) continue;
    start.ordinal = page.ordinal;
    start.number = page.number;
  }
}

ReferenceText ReferenceTargets::Expand(std::string_view format, const std::string& target) {
  const auto found = targets_.find(target);
  if (found == targets_.end()) {
    ReferenceText nothing;
    nothing.problem = "the target is not there";
    nothing.no_target = true;
    return nothing;
  }
  const std::uint32_t item = found->second.item;
  const bool is_marker = document_.items[item].kind == ItemKind::kMarker;
  return ExpandAt(format, is_marker ? Place{0, item, paragraph_of_[item]} : PlaceOf(found->second.element));
}

ReferenceText ReferenceTargets::ExpandParagraph(std::string_view format, std::uint32_t paragraph) {
  return ExpandAt(format, Place{0, begins_[paragraph], paragraph});
}

ReferenceText ReferenceTargets::ExpandAtItem(std::string_view format, std::uint32_t item) {
  return ExpandAt(format, Place{0, item, paragraph_of_[item]});
}

std::int32_t ReferenceTargets::PageOfItem(std::uint32_t item) {
  const PageStart* page = PageAt(item);
  return page == nullptr ? -1 : page->ordinal;
}

ReferenceText ReferenceTargets::ExpandAt(std::string_view format, const Place& place) {
  ReferenceText result;
  result.runs.emplace_back();
  for (std::size_t at = 0; at < format.size(); ++at) {
    std::string& text = result.runs.back().text;
    if (format[at] == '\\') {
      at += AppendFormatEscape(format.substr(at + 1), &text);
      continue;
    }
    const std::size_t end = format[at] == '<' ? format.find('>', at) : std::string_view::npos;
    if (end == std::string_view::npos) {
      text.push_back(format[at]);
      continue;
    }
    const std::string_view block = format.substr(at + 1, end - at - 1);
    at = end;
    if (!block.starts_with('$')) {
      result.runs.push_back({{}, EndsCharacterFormat(block) ? std::string() : std::string(block)});
    } else if (!Block(block.substr(1), place, &text, &result.problem)) {
      return result;
    }
  }
  std::erase_if(result.runs, [](const StyledRun& run) { return run.text.empty(); });
  return result;
}

bool ReferenceTargets::Block(std::string_view block, const Place& target, std::string* text,
                             std::string* problem) {
  const auto [name, argument] = SplitBlock(block);
  bool known = true;
  if (name == "attribute") {
    known = Attribute(argument, target, text);
  } else if (name == "filename") {
    text->append(std::filesystem::path(document_.path).filename().string());
  } else if (name == "fullfilename") {
    text->append(document_.path);
  } else if (name == "volnum") {
    text->append(places_.volume);
  } else if (name == "chapnum") {
    text->append(places_.chapter);
  } else if (name == "sectionnum") {
    text->append(places_.section);
  } else if (name == "subsectionnum") {
    text->append(places_.subsection);
  } else if (name.starts_with("elem")) {
    const Place place = argument.empty() ? target : NearestElement(argument, target);
    known = place.element != 0 && ElementBlock(name.substr(4), place, text);
  } else if (name == "pagenum" && argument.empty() && target.element == 0) {
    // A paragraph may go on on another page.
    const PageStart* page = PageAt(target.item);
    known = page != nullptr;
    if (known) text->append(page->number);
  } else if (name == "pagenum" || name.starts_with("para")) {
    const std::uint32_t paragraph = argument.empty() ? target.paragraph : NearestParagraph(argument, target);
    known = paragraph != 0 && ParagraphBlock(name, paragraph, text);
  } else {
    known = false;
  }
  if (!known) *problem = "<$" + std::string(block) + "> has no value there, or is not known";
  return known;
}

bool ReferenceTargets::ElementBlock(std::string_view name, const Place& place, std::string* text) {
  if (name == "tag") {
    text->append(document_.definitions[document_.elements[place.element].definition].name);
  } else if (name == "text" || name == "textonly") {
    text->append(ElementText(place.element, name == "text"));
  } else {
    return place.paragraph != 0 && ParagraphBlock(name, place.paragraph, text);
  }
  return true;
}

bool ReferenceTargets::ParagraphBlock(std::string_view name, std::uint32_t paragraph, std::string* text) {
  if (name == "paratext") {
    text->append(ParagraphText(paragraph, true));
  } else if (name == "paratag") {
    text->append(document_.paragraph_states[document_.paragraphs[paragraph].state].tag);
  } else if (name == "paranum") {
    text->append(numbers_[paragraph].text);
  } else if (name == "paranumonly") {
    text->append(numbers_[paragraph].only);
  } else if (name == "pagenum") {
    const PageStart* page = PageAt(begins_[paragraph]);
    if (page == nullptr) return false;
    text->append(page->number);
  } else {
    return false;
  }
  return true;
}

// "Name" of the target, or "Name:Tag" of the nearest element of that tag.
bool ReferenceTargets::Attribute(std::string_view argument, const Place& target, std::string* text) {
  const std::size_t colon = argument.find(':');
  const std::string_view name = argument.substr(0, colon);
  Place place = target;
  if (colon != std::string_view::npos) place = NearestElement(argument.substr(colon + 1), target);
  if (place.element == 0) return false;
  const Element& element = document_.elements[place.element];
  for (std::uint32_t i = 0; i < element.attribute_count; ++i) {
    const model::Attribute& attribute = document_.attributes[element.first_attribute + i];
    if (document_.names[attribute.name] != name || attribute.value_count == 0) continue;
    text->append(document_.values[attribute.first_value]);
    return true;
  }
  for (const AttributeDefinition& attribute : document_.definitions[element.definition].attributes) {
    if (document_.names[attribute.name] != name) continue;
    if (!attribute.defaults.empty()) text->append(attribute.defaults.front());
    return true;
  }
  return false;
}

// An element's paragraph is the one in which it begins; of a table it is the first one in it.
ReferenceTargets::Place ReferenceTargets::PlaceOf(Id id) const {
  const Element& element = document_.elements[id];
  Place place{id, element.first_item, 0};
  if (!IsPart(element.kind)) {
    place.paragraph = paragraph_of_[element.first_item];
    return place;
  }
  for (std::uint32_t i = element.first_item; i < element.end_item && place.paragraph == 0; ++i) {
    if (document_.items[i].kind == ItemKind::kParagraphBegin) place.paragraph = document_.items[i].ref;
  }
  return place;
}

// The element itself or one around it, else the last one before it.
ReferenceTargets::Place ReferenceTargets::NearestElement(std::string_view tag, const Place& from) {
  const auto definition = document_.definition_index.find(tag);
  if (definition == document_.definition_index.end() || from.element == 0) return {};
  for (Id id = from.element; id != 0; id = document_.elements[id].parent) {
    if (document_.elements[id].definition == definition->second) return PlaceOf(id);
  }
  const auto [found, is_new] = by_definition_.try_emplace(definition->second);
  std::vector<Id>& ids = found->second;
  const auto before = [&](Id a, Id b) {
    return document_.elements[a].first_item < document_.elements[b].first_item;
  };
  if (is_new) {
    for (Id id = 1; id < document_.elements.size(); ++id) {
      const Element& element = document_.elements[id];
      if (element.definition == definition->second && !element.deleted) ids.push_back(id);
    }
    std::sort(ids.begin(), ids.end(), before);
  }
  const auto after = std::lower_bound(ids.begin(), ids.end(), from.element, before);
  return after == ids.begin() ? Place() : PlaceOf(*(after - 1));
}

// The paragraph itself, else the last one before it.
std::uint32_t ReferenceTargets::NearestParagraph(std::string_view tag, const Place& from) {
  const auto [found, is_new] = by_format_.try_emplace(std::string(tag));
  std::vector<std::uint32_t>& paragraphs = found->second;
  const auto before = [&](std::uint32_t a, std::uint32_t b) { return begins_[a] < begins_[b]; };
  if (is_new) {
    for (std::uint32_t i = 1; i < document_.paragraphs.size(); ++i) {
      const bool wanted = document_.paragraph_states[document_.paragraphs[i].state].tag == tag;
      if (wanted && begins_[i] != kNoIndex) paragraphs.push_back(i);
    }
    std::sort(paragraphs.begin(), paragraphs.end(), before);
  }
  const auto after = std::upper_bound(paragraphs.begin(), paragraphs.end(), from.paragraph, before);
  return after == paragraphs.begin() ? 0 : *(after - 1);
}

std::string ReferenceTargets::ParagraphText(std::uint32_t paragraph, bool generated) const {
  std::string text;
  for (std::uint32_t i = begins_[paragraph] + 1; i < document_.items.size(); i = EndOfItem(document_, i)) {
    const Item& item = document_.items[i];
    if (item.kind == ItemKind::kParagraphEnd && item.ref == paragraph) break;
    const bool counts =
        !item.Is(kDeleted) && IsShown(document_, item.conditions) && (generated || !item.Is(kGenerated));
    if (counts) AppendItemText(document_, item, &text);
  }
  return text;
}

// Up to the end of its first paragraph.
std::string ReferenceTargets::ElementText(Id id, bool generated) const {
  const Element& element = document_.elements[id];
  std::string text;
  for (std::uint32_t i = element.first_item; i < element.end_item; ++i) {
    const Item& item = document_.items[i];
    if (item.kind == ItemKind::kParagraphEnd && !text.empty()) break;
    const bool counts =
        !item.Is(kDeleted) && IsShown(document_, item.conditions) && (generated || !item.Is(kGenerated));
    if (counts) AppendItemText(document_, item, &text);
  }
  return text;
}

const ReferenceTargets::PageStart* ReferenceTargets::PageAt(std::uint32_t item) {
  if (item == kNoIndex) return nullptr;
  if (!pages_ && find_pages_) pages_ = find_pages_();
  if (!pages_) ReadPages();
  const auto after =
      std::upper_bound(pages_->begin(), pages_->end(), find_pages_ ? item : item + 1,
                       [](std::uint32_t at, const PageStart& start) { return at < start.item; });
  // A paragraph that begins a page enters its frame with its first line.
  const bool enters = !find_pages_ && after != pages_->end() && after->item <= item + 2;
  const auto own = enters ? after + 1 : after;
  return own == pages_->begin() || (own - 1)->ordinal == 0 ? nullptr : &*(own - 1);
}

namespace {

// The item that ends a reference; the number of items when it does not end.
std::uint32_t EndOfReference(const Document& document, std::uint32_t item) {
  std::uint32_t end = item + 1;
  while (end < document.items.size() && document.items[end].kind != ItemKind::kReferenceEnd &&
         document.items[end].kind != ItemKind::kReferenceBegin &&
         document.items[end].kind != ItemKind::kPartEnd) {
    ++end;
  }
  const bool ends = end < document.items.size() && document.items[end].kind == ItemKind::kReferenceEnd;
  return ends ? end : static_cast<std::uint32_t>(document.items.size());
}

}  // namespace

std::string ShownText(const Document& document, std::uint32_t item) {
  std::string text;
  const std::uint32_t end = EndOfReference(document, item);
  if (end == document.items.size()) return text;
  for (std::uint32_t i = item + 1; i < end; ++i) AppendItemText(document, document.items[i], &text);
  return text;
}

bool IsPlainReference(const Document& document, std::uint32_t item) {
  const std::uint32_t end = EndOfReference(document, item);
  if (end == document.items.size()) return false;
  for (std::uint32_t i = item + 1; i < end; ++i) {
    switch (document.items[i].kind) {
      case ItemKind::kString:
      case ItemKind::kCharacter:
      case ItemKind::kFont:
      case ItemKind::kLine:
      case ItemKind::kTextFrame:
        break;
      default:
        return false;
    }
  }
  return true;
}

bool SetReferenceText(Document* document, std::uint32_t index, const ReferenceText& text) {
  const std::uint32_t end = EndOfReference(*document, index);
  if (end == document->items.size() || ShownText(*document, index) == text.Plain()) return false;
  const MifLayout layout(*document);
  const Item& begins = document->items[index];
  const Item& ends = document->items[end];
  const std::uint32_t from = layout.Removal(begins.begin, begins.end).end;
  const std::uint32_t to = layout.LineBegin(ends.begin);
  if (from > to) return false;
  Numbers no_numbers(0);
  const Formattings formattings;
  MifRun::Start start;
  start.indentation = layout.Indentation(ends.begin);
  MifRun run(*document, layout, formattings, &no_numbers, start);
  bool own_format = false;
  for (const StyledRun& part : text.runs) {
    if (part.format) {
      run.Statement("<Font \n <FTag " + layout.Quoted(*part.format) + ">\n <FLocked No>\n> # end of Font");
      own_format = true;
    }
    run.Text(part.text);
  }
  if (own_format || begins.font != ends.font) run.Statement(FontStatement(*document, ends.font));
  std::string lines = run.lines();
  // The text goes on in the frame that it entered here.
  for (std::uint32_t i = index + 1; i < end; ++i) {
    const Item& item = document->items[i];
    if (item.kind != ItemKind::kTextFrame) continue;
    const std::string_view line_end = layout.LineEnd();
    lines.append(">").append(line_end).append("<ParaLine ").append(line_end);
    lines.append(document->At(item)).append(line_end);
  }
  const std::uint32_t place = index + 1 < end ? document->items[index + 1].begin : ends.begin;
  document->replacements.insert_or_assign(place, Replacement{{from, to}, std::move(lines)});
  document->modified = true;
  return true;
}

}  // namespace qelm::embedded::model
