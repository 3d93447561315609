#include "embedded/render/story.h"

#include <algorithm>
#include <utility>

#include "embedded/model/book.h"
#include "embedded/model/link_statements.h"
#include "embedded/model/text_access.h"
#include "embedded/render/symbols.h"

namespace qelm::embedded::render {
namespace {

using model::Item;
using model::ItemKind;

constexpr std::string_view kReplacement = "\xEF\xBF\xBC";
// Says that a table goes on from the page before; there is nothing to see of it where it begins.
constexpr std::string_view kContinuation = "Table Continuation";
constexpr std::string_view kLineSeparator = "\xE2\x80\xA8";

std::uint32_t SizeOf(const std::string& text) { return static_cast<std::uint32_t>(text.size()); }

// Line ends within a paragraph end its lines and not the paragraph.
void AppendLine(std::string_view text, std::string* line) {
  for (const char c : text) {
    if (c == '\n' || c == '\r') {
      line->append(kLineSeparator);
    } else {
      line->push_back(c);
    }
  }
}

}  // namespace

StoryParagraph SplitLongText(StoryParagraph* story) {
  std::size_t at = story->text.rfind(' ', kLongestText);
  at = at == std::string::npos ? kLongestText : at + 1;
  while ((static_cast<unsigned char>(story->text[at]) & 0xC0) == 0x80) --at;
  return SplitText(story, static_cast<std::uint32_t>(at));
}

StoryParagraph SplitText(StoryParagraph* story, std::uint32_t cut) {
  StoryParagraph rest;
  rest.paragraph = story->paragraph;
  rest.state = story->state;
  rest.first_item = story->first_item;
  rest.end_item = story->end_item;
  rest.goes_on = true;
  rest.tables = std::exchange(story->tables, {});
  rest.text = story->text.substr(cut);
  story->text.resize(cut);
  story->is_split = true;
  for (const StoryRun& run : story->runs) {
    if (run.end > cut) rest.runs.emplace_back(run).end -= cut;
  }
  std::erase_if(story->runs, [cut](const StoryRun& run) { return run.end > cut; });
  if (!rest.runs.empty() && (story->runs.empty() || story->runs.back().end < cut)) {
    story->runs.emplace_back(rest.runs.front()).end = cut;
  }
  const auto move = [cut](auto* from, auto* to, auto at_of) {
    for (auto& one : *from) {
      if (at_of(one) < cut) continue;
      to->push_back(one);
      at_of(to->back()) -= cut;
    }
    std::erase_if(*from, [&](auto& one) { return at_of(one) >= cut; });
  };
  move(&story->objects, &rest.objects, [](auto& one) -> std::uint32_t& { return one.at; });
  move(&story->places, &rest.places, [](auto& one) -> std::uint32_t& { return one.at; });
  move(&story->item_starts, &rest.item_starts, [](auto& one) -> std::uint32_t& { return one.first; });
  for (StoryLink& link : story->links) {
    if (link.end <= cut) continue;
    rest.links.push_back({link.begin > cut ? link.begin - cut : 0, link.end - cut, link.attributes});
    link.end = std::max(link.begin, cut);
  }
  return rest;
}

StoryReader::StoryReader(Setting& setting, std::uint32_t first, std::uint32_t end, std::uint32_t depth)
    : setting_(setting), document_(setting.document), at_(first), end_(end), depth_(depth) {
  const auto place = std::lower_bound(setting.places.begin(), setting.places.end(), first,
                                      [](const Place& one, std::uint32_t item) { return one.item < item; });
  place_ = static_cast<std::size_t>(place - setting.places.begin());
}

bool StoryReader::Next(StoryParagraph* paragraph) {
  *paragraph = {};
  if (!ReadParagraph(paragraph)) return false;
  const ParagraphFormat* format = &setting_.formats.Paragraph(paragraph->state);
  while (format->style == PlacementStyle::kRunIn && at_ < end_) {
    StoryParagraph next;
    if (!ReadParagraph(&next)) break;
    // The head ends in a mark of its own unless it has one.
    if (!paragraph->text.empty() &&
        std::string_view(".:;?!").find(paragraph->text.back()) == std::string_view::npos) {
      paragraph->text += format->run_in_mark;
    } else {
      paragraph->text += " ";
    }
    if (!paragraph->runs.empty()) paragraph->runs.back().end = SizeOf(paragraph->text);
    const std::uint32_t shift = SizeOf(paragraph->text);
    for (StoryRun& run : next.runs) run.end += shift;
    for (StoryObject& object : next.objects) object.at += shift;
    for (StoryPlace& place : next.places) place.at += shift;
    for (auto& [begin, item] : next.item_starts) begin += shift;
    for (StoryLink& link : next.links) link.begin += shift, link.end += shift;
    next.text.insert(0, paragraph->text);
    const auto join = [](auto* head, auto* tail) {
      head->insert(head->end(), std::make_move_iterator(tail->begin()), std::make_move_iterator(tail->end()));
      *tail = std::move(*head);
    };
    join(&paragraph->runs, &next.runs);
    join(&paragraph->item_starts, &next.item_starts);
    join(&paragraph->objects, &next.objects);
    join(&paragraph->places, &next.places);
    join(&paragraph->links, &next.links);
    join(&paragraph->markers, &next.markers);
    join(&paragraph->tables, &next.tables);
    next.first_item = paragraph->first_item;
    *paragraph = std::move(next);
    format = &setting_.formats.Paragraph(paragraph->state);
  }
  return true;
}

// The mark that ends the paragraph says which it is; one that is hidden or was deleted ends nothing.
bool StoryReader::ReadParagraph(StoryParagraph* paragraph) {
  paragraph->first_item = at_;
  bool any = false;
  std::uint32_t last_mark = 0;
  while (at_ < end_) {
    const Item& item = document_.items[at_];
    if (item.kind == ItemKind::kParagraphEnd) {
      last_mark = item.ref;
      AddPlaces(paragraph, at_);
      ++at_;
      if (item.Is(model::kDeleted) || !setting_.shown[item.conditions]) continue;
      paragraph->paragraph = item.ref;
      any = true;
      break;
    }
    const bool counts = model::HasConditions(item.kind);
    const bool seen = !item.Is(model::kDeleted) && (!counts || setting_.shown[item.conditions]);
    std::uint32_t next = model::EndOfItem(document_, at_);
    if (seen) {
      AddPlaces(paragraph, at_);
      if (!Visit(item, paragraph)) next = at_ + 1;
    } else if (item.kind == ItemKind::kReferenceBegin) {
      reference_.clear();
    }
    at_ = next;
  }
  if (!any && !paragraph->text.empty()) {
    paragraph->paragraph = last_mark;
    any = true;
  }
  if (!any && paragraph->tables.empty()) return false;
  Finish(paragraph);
  return true;
}

// False when what follows an anchor is to be read as part of this text.
bool StoryReader::Visit(const Item& item, StoryParagraph* paragraph) {
  switch (item.kind) {
    case ItemKind::kString:
    case ItemKind::kCharacter: {
      std::string text;
      model::AppendItemText(document_, item, &text);
      AddText(paragraph, item, text);
      break;
    }
    case ItemKind::kVariable:
      AddVariable(paragraph, item);
      break;
    case ItemKind::kFrameAnchor:
      if (item.ref != 0) AddObject(paragraph, item, StoryObject::Kind::kFrame);
      break;
    case ItemKind::kNoteAnchor:
      if (item.ref == 0) break;
      if (depth_ >= kDeepestNesting) return false;
      AddObject(paragraph, item, StoryObject::Kind::kNote);
      break;
    case ItemKind::kTableAnchor:
      if (item.ref == 0 || document_.parts[item.ref].deleted) break;
      if (depth_ >= kDeepestNesting) return false;
      paragraph->tables.push_back(item.ref);
      break;
    case ItemKind::kMarker:
      ReadMarker(paragraph, item);
      break;
    case ItemKind::kReferenceBegin: {
      const model::ReferenceStatement reference = model::ReadReference(document_, item.begin);
      reference_ = setting_.link ? setting_.link(reference.file, reference.target) : std::string();
      reference_begin_ = SizeOf(paragraph->text);
      break;
    }
    case ItemKind::kReferenceEnd:
      if (!reference_.empty() && SizeOf(paragraph->text) > reference_begin_) {
        paragraph->links.push_back({reference_begin_, SizeOf(paragraph->text), std::move(reference_)});
      }
      reference_.clear();
      break;
    default:
      break;
  }
  return true;
}

void StoryReader::AddRun(StoryParagraph* paragraph, const Item& item, std::optional<std::string> format) {
  const std::uint32_t end = SizeOf(paragraph->text);
  paragraph->item_starts.emplace_back(end, at_ + 1);
  std::vector<StoryRun>& runs = paragraph->runs;
  const bool same = !runs.empty() && runs.back().font == item.font &&
                    runs.back().conditions == item.conditions && runs.back().format == format;
  if (same) {
    runs.back().end = end;
  } else {
    runs.push_back({end, 0, item.font, item.conditions, std::move(format)});
  }
}

void StoryReader::AddText(StoryParagraph* paragraph, const Item& item, std::string_view text) {
  if (text.empty()) return;
  if (!hotspot_.empty() && item.font != hotspot_font_) EndHotspot(paragraph);
  AppendLine(text, &paragraph->text);
  AddRun(paragraph, item, std::nullopt);
}

void StoryReader::AddVariable(StoryParagraph* paragraph, const Item& item) {
  const std::string name = model::Substatement(document_, item, "VariableName");
  if (!setting_.table_goes_on && name == kContinuation) return;
  for (const model::StyledRun& run : VariableRuns(document_, name, setting_.facts, setting_.time)) {
    if (run.text.empty()) continue;
    AppendLine(run.text, &paragraph->text);
    AddRun(paragraph, item, run.format);
  }
}

void StoryReader::AddObject(StoryParagraph* paragraph, const Item& item, StoryObject::Kind kind) {
  paragraph->objects.push_back({SizeOf(paragraph->text), kind, item.ref, at_});
  paragraph->text += kReplacement;
  AddRun(paragraph, item, std::nullopt);
}

void StoryReader::ReadMarker(StoryParagraph* paragraph, const Item& item) {
  const std::string type = model::Substatement(document_, item, "MTypeName");
  if (type.starts_with("Header/Footer")) {
    paragraph->markers.push_back({type, model::Substatement(document_, item, "MText")});
  }
  if (type != "Hypertext" || !setting_.link) return;
  const std::string text = model::Substatement(document_, item, "MText");
  const model::Hypertext command = model::ReadHypertext(text);
  std::string attributes;
  if (command.kind == model::Hypertext::Kind::kAddress) {
    attributes = setting_.link("URL", command.target);
  } else if (command.kind == model::Hypertext::Kind::kLink) {
    attributes = setting_.link(model::PlatformPath(command.file), command.target);
  }
  if (attributes.empty()) return;
  EndHotspot(paragraph);
  hotspot_ = std::move(attributes);
  hotspot_font_ = item.font;
  hotspot_begin_ = SizeOf(paragraph->text);
  // The marker may stand anywhere in the text that it makes active.
  if (!paragraph->runs.empty() && paragraph->runs.back().font == item.font) {
    hotspot_begin_ = paragraph->runs.size() < 2 ? 0 : paragraph->runs[paragraph->runs.size() - 2].end;
  }
}

void StoryReader::EndHotspot(StoryParagraph* paragraph) {
  if (!hotspot_.empty() && SizeOf(paragraph->text) > hotspot_begin_) {
    paragraph->links.push_back({hotspot_begin_, SizeOf(paragraph->text), std::move(hotspot_)});
  }
  hotspot_.clear();
}

void StoryReader::AddPlaces(StoryParagraph* paragraph, std::uint32_t item) {
  while (place_ < setting_.places.size() && setting_.places[place_].item <= item) {
    const Place& place = setting_.places[place_++];
    if (place.item == item) paragraph->places.push_back({SizeOf(paragraph->text), place.name});
  }
}

void StoryReader::Finish(StoryParagraph* paragraph) {
  EndHotspot(paragraph);
  paragraph->end_item = at_;
  if (paragraph->paragraph != 0) last_state_ = document_.paragraphs[paragraph->paragraph].state;
  paragraph->state = last_state_;
  for (StoryRun& run : paragraph->runs) run.paragraph_state = paragraph->state;
  PutNumber(paragraph);
  ShowSymbols(paragraph);
}

// Letters in a symbol font that is not there become the symbols themselves, and every offset behind moves.
void StoryReader::ShowSymbols(StoryParagraph* paragraph) {
  const auto family_of = [&](const StoryRun& run) {
    const FontFormat& font = setting_.formats.Font(run.paragraph_state, run.font);
    return run.format ? setting_.formats.WithCharacterFormat(font, *run.format).family : font.family;
  };
  const auto is_symbols = [&](const StoryRun& run) {
    const std::string_view family = family_of(run);
    return IsSymbolFamily(family) && !setting_.fonts.Has(family);
  };
  if (std::none_of(paragraph->runs.begin(), paragraph->runs.end(), is_symbols)) return;
  const std::string old = std::exchange(paragraph->text, {});
  std::vector<std::uint32_t> moved;  // by byte of the old text
  std::uint32_t begin = 0;
  for (StoryRun& run : paragraph->runs) {
    const std::string family(family_of(run));
    const bool symbols = is_symbols(run);
    for (std::uint32_t at = begin; at < run.end;) {
      std::uint32_t next = at + 1;
      while (next < run.end && (static_cast<unsigned char>(old[next]) & 0xC0) == 0x80) ++next;
      const std::string_view one = std::string_view(old).substr(at, next - at);
      moved.insert(moved.end(), next - at, SizeOf(paragraph->text));
      paragraph->text += symbols ? SymbolText(family, one) : std::string(one);
      at = next;
    }
    begin = run.end;
    run.end = SizeOf(paragraph->text);
  }
  moved.push_back(SizeOf(paragraph->text));
  const auto move = [&](auto* at) { *at = moved[std::min<std::size_t>(*at, moved.size() - 1)]; };
  std::uint32_t number_end = static_cast<std::uint32_t>(paragraph->number_length);
  move(&number_end);
  paragraph->number_length = number_end;
  for (StoryObject& object : paragraph->objects) move(&object.at);
  for (StoryPlace& place : paragraph->places) move(&place.at);
  for (auto& [start, item] : paragraph->item_starts) move(&start);
  for (StoryLink& link : paragraph->links) {
    move(&link.begin);
    move(&link.end);
  }
}

// The number stands before the text or behind it, in a character format of its own; a footnote has the number
// of the note there.
void StoryReader::PutNumber(StoryParagraph* paragraph) {
  const ParagraphFormat& format = setting_.formats.Paragraph(paragraph->state);
  const std::uint32_t note = std::exchange(note_, 0);
  std::string number;
  if (note != 0) {
    const NoteStyle& style = depth_ > 1 ? setting_.table_notes : setting_.notes;
    number = std::string(kReplacement) + style.number_suffix;
  } else if (paragraph->paragraph < setting_.numbers.size() &&
             setting_.numbers[paragraph->paragraph].numbered) {
    AppendLine(setting_.numbers[paragraph->paragraph].text, &number);
  }
  if (number.empty()) return;
  StoryRun run;
  run.paragraph_state = paragraph->state;
  if (!format.number_font.empty()) run.format = std::string(format.number_font);
  if (format.number_at_end && note == 0) {
    paragraph->text += number;
    run.end = SizeOf(paragraph->text);
    paragraph->runs.push_back(std::move(run));
    return;
  }
  const std::uint32_t shift = SizeOf(number);
  paragraph->number_length = shift;
  paragraph->text.insert(0, number);
  run.end = shift;
  for (StoryRun& other : paragraph->runs) other.end += shift;
  for (StoryObject& object : paragraph->objects) object.at += shift;
  for (StoryPlace& place : paragraph->places) place.at += shift;
  for (auto& [begin, item] : paragraph->item_starts) begin += shift;
  // What is active from the text's beginning is so with its number.
  for (StoryLink& link : paragraph->links) {
    if (link.begin != 0) link.begin += shift;
    link.end += shift;
  }
  paragraph->runs.insert(paragraph->runs.begin(), std::move(run));
  if (note == 0) return;
  paragraph->objects.insert(paragraph->objects.begin(), {0, StoryObject::Kind::kNoteNumber, note, 0});
}

}  // namespace qelm::embedded::render
