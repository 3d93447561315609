#include <algorithm>
#include <charconv>

#include "embedded/model/mif_scanner.h"

namespace qelm::embedded::model {

using mif::Piece;
using mif::Token;

namespace {

// Stands for an FTag that is not there, which is not the same as an empty one.
constexpr std::string_view kNoTag = "(none)";

// Puts the changes of `state` on top of the state before it.
void ChangeFont(const FontState& before, FontState* state) {
  FontState merged = before;
  for (const FontState::Override& change : state->overrides) {
    const auto same = std::find_if(merged.overrides.begin(), merged.overrides.end(),
                                   [&](const auto& old) { return old.name == change.name; });
    if (same != merged.overrides.end()) {
      *same = change;
    } else {
      merged.overrides.push_back(change);
    }
  }
  merged.properties.Take(state->properties);
  *state = std::move(merged);
}

}  // namespace

// The text of a cell or title: notes, then paragraphs. Conditions begin and end with it.
void MifScanner::ReadStory() {
  open_elements_.clear();
  suffixes_.clear();
  Children(&reader_, [&] {
    if (reader_.kind() != Piece::kGroup) return;
    if (reader_.token() == Token::kNotes) ReadNotes();
    if (reader_.token() == Token::kPara) ReadParagraph();
  });
  open_elements_.clear();
  suffixes_.clear();
  conditions_ = 0;
}

void MifScanner::ReadFlow() {
  RawFlow raw;
  raw.flow.span.begin = reader_.begin();
  open_elements_.clear();
  suffixes_.clear();
  top_elements_ = 0;
  conditions_ = 0;
  first_text_frame_ = 0;
  raw.items.begin = static_cast<std::uint32_t>(scan_.items.size());
  Children(&reader_, [&] {
    switch (reader_.token()) {
      case Token::kTFTag:
        raw.flow.name = StringData(reader_, &document_);
        break;
      case Token::kTFAutoConnect:
        raw.flow.auto_connect = reader_.data() == "Yes";
        break;
      case Token::kNotes:
        if (reader_.kind() == Piece::kGroup) ReadNotes();
        break;
      case Token::kPara:
        if (reader_.kind() == Piece::kGroup) ReadParagraph();
        break;
      default:
        break;
    }
  });
  raw.items.end = static_cast<std::uint32_t>(scan_.items.size());
  raw.flow.span.end = reader_.end();
  raw.flow.text_frame = first_text_frame_;
  raw.top_elements = top_elements_;
  conditions_ = 0;
  scan_.flows.push_back(raw);
}

// A minimal file has its paragraphs at the top level (MIF reference, "Using MIF statements").
void MifScanner::ReadLooseParagraph() {
  if (loose_flow_ == kNoIndex) {
    loose_flow_ = static_cast<std::uint32_t>(scan_.flows.size());
    open_elements_.clear();
    suffixes_.clear();
    top_elements_ = 0;
    conditions_ = 0;
    first_text_frame_ = 0;
    RawFlow raw;
    raw.flow.auto_connect = true;
    raw.items.begin = static_cast<std::uint32_t>(scan_.items.size());
    scan_.flows.push_back(raw);
  }
  ReadParagraph();
}

void MifScanner::ReadParagraph() {
  const auto index = static_cast<std::uint32_t>(document_.paragraphs.size());
  Paragraph paragraph;
  paragraph.begin = reader_.begin();
  paragraphs_room_.Need(document_.paragraphs.Own());
  document_.paragraphs.push_back(paragraph);
  const std::uint32_t opener_end = reader_.end();
  font_ = 0;
  const Passing passing(&reader_, true);
  bool began = false;
  std::uint32_t last_line_end = 0;
  const auto begin_text = [&] {
    if (began) return;
    began = true;
    paragraph.body = reader_.begin();
    paragraph.state = paragraph_state_;
    Item& item = Add(ItemKind::kParagraphBegin, index);
    item.begin = paragraph.begin;
    item.end = opener_end;
  };
  Children(&reader_, [&] {
    switch (reader_.token()) {
      case Token::kPgfTag:
      case Token::kPgf:
        ReadParagraphState(&paragraph);
        break;
      case Token::kPgfEndCond:
        paragraph.ends_block = reader_.data() == "Yes";
        break;
      case Token::kPgfCondFullPgf:
        paragraph.hidden_mark = reader_.data() == "Yes";
        break;
      case Token::kParaLine: {
        begin_text();
        const auto line = static_cast<std::uint32_t>(scan_.items.size());
        Add(ItemKind::kLine, index);
        if (reader_.kind() == Piece::kGroup) ReadLine();
        Finish(line);
        last_line_end = reader_.end() - 1;
        break;
      }
      default:
        break;
    }
  });
  if (!began) begin_text();
  paragraph.close = reader_.begin();
  paragraph.end = reader_.end();
  paragraph.last_line_end = last_line_end == 0 ? paragraph.close : last_line_end;
  document_.paragraphs.Own()[index] = paragraph;
  Add(ItemKind::kParagraphEnd, index);
  RestBehind();
}

// The model has from the source what edits ask for; the text is looked at again when it is written.
void MifScanner::RestBehind() {
  constexpr std::uint32_t kStep = 1U << 23U;
  if (reader_.end() - rested_ < kStep) return;
  document_.source.Rest(rested_, reader_.end());
  rested_ = reader_.end();
}

// The state that a PgfTag sets. Cells and list items follow others of the same format.
std::uint32_t MifScanner::CatalogState(std::string_view tag, Span statement) {
  if (last_catalog_state_ != 0 && document_.paragraph_states[last_catalog_state_].tag == tag) {
    return last_catalog_state_;
  }
  const auto [found, is_new] =
      catalog_states_.try_emplace(tag, static_cast<std::uint32_t>(document_.paragraph_states.size()));
  if (is_new) {
    ParagraphState state;
    state.tag = tag;
    state.tag_statement = statement;
    const auto format = document_.paragraph_formats.find(tag);
    if (format != document_.paragraph_formats.end()) state.font = format->second;
    document_.paragraph_states.push_back(state);
  }
  last_catalog_state_ = found->second;
  return found->second;
}

// PgfTag names a catalog format and forgets what was before; Pgf changes the format in force, which may be
// that of the paragraph before.
void MifScanner::ReadParagraphState(Paragraph* paragraph) {
  const std::uint32_t begin = reader_.begin();
  paragraph->sets_state = true;
  if (reader_.token() == Token::kPgfTag) {
    paragraph_state_ = CatalogState(StringData(reader_, &document_), {begin, reader_.end()});
    paragraph->absolute = true;
    return;
  }
  if (reader_.kind() != Piece::kGroup) return;
  const Passing passing(&reader_, false);
  ParagraphState state = document_.paragraph_states[paragraph_state_];
  state.tag_statement = {};
  state.before = paragraph_state_;
  Children(&reader_, [&] {
    if (reader_.token() == Token::kPgfTag) state.tag = StringData(reader_, &document_);
    if (reader_.token() == Token::kPgfFont && reader_.kind() == Piece::kGroup) {
      ScanFont(&reader_, &document_, &state.font, nullptr, nullptr);
    }
  });
  state.override_statement = {begin, reader_.end()};
  paragraph_state_ = static_cast<std::uint32_t>(document_.paragraph_states.size());
  document_.paragraph_states.push_back(state);
}

void MifScanner::ReadLine() {
  const Passing passing(&reader_, false);
  Children(&reader_, [&] { ReadLineItem(); });
}

void MifScanner::OpenElement() {
  if (open_elements_.empty()) ++top_elements_;
  open_elements_.push_back(static_cast<std::uint32_t>(scan_.items.size()) - 1);
}

void MifScanner::CloseElement() {
  if (open_elements_.empty()) return;
  open_elements_.pop_back();
  while (!suffixes_.empty() && suffixes_.back() > open_elements_.size()) suffixes_.pop_back();
}

// Everything between the innermost open element's begin and here is generated.
void MifScanner::MarkPrefix() {
  if (open_elements_.empty() || open_elements_.back() == last_prefixed_) return;
  last_prefixed_ = open_elements_.back();  // an element has one prefix
  for (std::size_t i = open_elements_.back() + 1; i < scan_.items.size(); ++i) {
    scan_.items[i].flags |= kGenerated;
  }
}

void MifScanner::ReadLineItem() {
  const bool group = reader_.kind() == Piece::kGroup;
  const auto index = static_cast<std::uint32_t>(scan_.items.size());
  switch (reader_.token()) {
    case Token::kString: {
      Item& item = Add(ItemKind::kString, 0);
      if (reader_.data().find('\\') != std::string_view::npos) item.flags |= kEscaped;
      break;
    }
    case Token::kChar:
      Add(ItemKind::kCharacter, 0);
      break;
    case Token::kElementBegin: {
      Add(ItemKind::kElementBegin, 0);
      OpenElement();
      const std::uint32_t element = ReadElement();
      scan_.items[index].ref = element;
      Finish(index);
      break;
    }
    case Token::kElementEnd:
      CloseElement();
      Add(ItemKind::kElementEnd, 0);
      break;
    case Token::kFont:
      Add(ItemKind::kFont, 0);
      if (group) ReadFont();
      scan_.items[index].font = font_;
      Finish(index);
      break;
    case Token::kConditional:
      Add(ItemKind::kConditional, 0);
      ReadConditional();
      scan_.items[index].conditions = conditions_;
      Finish(index);
      break;
    case Token::kUnconditional:
      conditions_ = 0;
      Add(ItemKind::kConditional, 0);
      break;
    case Token::kATbl:
      Add(ItemKind::kTableAnchor, NumberData(reader_));
      break;
    case Token::kAFrame:
      Add(ItemKind::kFrameAnchor, NumberData(reader_));
      break;
    case Token::kFNote:
      Add(ItemKind::kNoteAnchor, NumberData(reader_));
      break;
    case Token::kMarker:
      Add(ItemKind::kMarker, 0);
      if (group) ReadMarker();
      Finish(index);
      break;
    case Token::kVariable:
      Add(ItemKind::kVariable, 0);
      if (group) scan_.items[index].ref = ReadInlineObject();
      Finish(index);
      break;
    case Token::kXRef:
      Add(ItemKind::kReferenceBegin, 0);
      if (group) scan_.items[index].ref = ReadInlineObject();
      Finish(index);
      break;
    case Token::kXRefEnd:
      Add(ItemKind::kReferenceEnd, 0);
      break;
    case Token::kTextInset:
      Add(ItemKind::kInsetBegin, 0);
      if (group) reader_.Skip();
      Finish(index);
      break;
    case Token::kTextInsetEnd:
      Add(ItemKind::kInsetEnd, 0);
      break;
    case Token::kPrefixEnd:
      MarkPrefix();
      Add(ItemKind::kPrefixEnd, 0);
      break;
    case Token::kSuffixBegin:
      Add(ItemKind::kSuffixBegin, 0);
      if (!open_elements_.empty()) suffixes_.push_back(open_elements_.size());
      break;
    case Token::kTextRectID: {
      const std::uint32_t number = NumberData(reader_);
      if (first_text_frame_ == 0) first_text_frame_ = number;
      Add(ItemKind::kTextFrame, number);
      break;
    }
    default:
      Add(ItemKind::kOther, 0);
      if (group) reader_.Skip();
      Finish(index);
      break;
  }
}

// A marker of the type "Conditional Text" is the machinery of hidden text: +N where it belongs, -N and =N
// around it.
void MifScanner::ReadMarker() {
  const std::size_t index = scan_.items.size() - 1;
  std::string_view type;
  std::string_view text;
  std::uint32_t element = 0;
  Children(&reader_, [&] {
    if (reader_.token() == Token::kMTypeName) type = StringData(reader_, &document_);
    if (reader_.token() == Token::kMText) text = StringData(reader_, &document_);
    if (reader_.token() == Token::kElement && reader_.kind() == Piece::kGroup) element = ReadElement();
  });
  Item& item = scan_.items[index];
  item.ref = element;
  if (type != "Conditional Text" || text.size() < 2) return;
  std::uint32_t number = 0;
  const auto read = std::from_chars(text.data() + 1, text.data() + text.size(), number);
  if (read.ec != std::errc()) return;
  const ItemKind kind = text[0] == '+'   ? ItemKind::kHiddenPlace
                        : text[0] == '-' ? ItemKind::kHiddenBegin
                        : text[0] == '=' ? ItemKind::kHiddenEnd
                                         : ItemKind::kMarker;
  if (kind == ItemKind::kMarker) return;
  item.kind = kind;
  item.ref = number;
}

std::uint32_t MifScanner::ReadInlineObject() {
  std::uint32_t element = 0;
  Children(&reader_, [&] {
    if (reader_.token() == Token::kElement && reader_.kind() == Piece::kGroup) element = ReadElement();
  });
  return element;
}

std::uint16_t MifScanner::ReadConditionSet() {
  if (reader_.kind() != Piece::kGroup) return 0;
  std::vector<Id> set;
  Children(&reader_, [&] {
    if (reader_.token() != Token::kInCondition) return;
    set.push_back(document_.InternCondition(StringData(reader_, &document_)));
  });
  return document_.InternConditions(set);
}

// A Conditional replaces the set in force; it does not add to it.
void MifScanner::ReadConditional() { conditions_ = ReadConditionSet(); }

// Written by FrameMaker a Font begins with FTag and is absolute; without it the running state is changed.
void MifScanner::ReadFont() {
  const std::uint32_t begin = reader_.begin();
  const mif::Reader::Mark mark = reader_.MarkGroup();
  if (!reader_.Skip()) return;
  const std::string_view whole = document_.At(Span{begin, reader_.end()});
  const auto known = font_index_.find(whole);
  if (known != font_index_.end()) {
    font_ = known->second;
    return;
  }
  reader_.ReturnTo(mark);
  FontState state;
  std::string_view tag = kNoTag;
  ScanFont(&reader_, &document_, &state.properties, &tag, &state.overrides);
  const bool tagged = tag.data() != kNoTag.data();
  state.tag = tagged ? tag : std::string_view();
  if (!tagged) ChangeFont(document_.fonts[font_], &state);
  if (state.tag.empty() && state.overrides.empty()) {
    font_ = 0;
  } else {
    font_ = static_cast<std::uint32_t>(document_.fonts.size());
    document_.fonts.push_back(std::move(state));
  }
  if (tagged) font_index_.emplace(whole, font_);
}

std::uint32_t MifScanner::ReadElement() {
  RawElement element;
  element.source = reader_.begin();
  element.first_attribute = static_cast<std::uint32_t>(document_.attributes.size());
  std::string_view tag;
  if (reader_.kind() == Piece::kGroup) tag = ReadElementContent(&element);
  if (tag.empty()) {
    Warn(element.source, "an element has no ETag; it is called NoName");
    tag = "NoName";
  }
  if (tag != last_tag_) {
    last_tag_ = tag;
    last_definition_ = document_.InternDefinition(tag);
  }
  element.definition = last_definition_;
  elements_room_.Need(scan_.elements);
  scan_.elements.push_back(element);
  return static_cast<std::uint32_t>(scan_.elements.size()) - 1;
}

// The element's tag. Most elements are alike behind it, to the byte.
std::string_view MifScanner::ReadElementContent(RawElement* element) {
  const Passing passing(&reader_, true);
  std::string_view tag;
  std::size_t rest = 0;  // behind the tag
  bool alike = true;     // nothing behind it means anything
  const auto kept = [&]() -> std::string_view& {
    const std::string_view ahead = std::string_view(document_.source).substr(rest, rests_.size() - 1);
    return rests_[std::min(ahead.find('<'), rests_.size() - 1)];
  };
  const std::size_t inside = reader_.depth();
  while (reader_.Next()) {
    if (reader_.kind() == Piece::kGroupEnd) {
      if (reader_.depth() < inside) break;
      continue;
    }
    const bool group = reader_.kind() == Piece::kGroup;
    if (reader_.token() == Token::kETag) {
      tag = StringData(reader_, &document_);
      rest = group ? 0 : reader_.Position();
      if (!group && reader_.PassRest(kept())) return tag;
    } else if (reader_.token() == Token::kAttributes && group) {
      ReadAttributes(element);
      alike = false;
    }
    while (reader_.depth() > inside && reader_.Next()) {
    }
  }
  if (rest != 0 && alike && !reader_.Failed() && reader_.depth() < inside) {
    kept() = std::string_view(document_.source).substr(rest, reader_.end() - rest);
  }
  return tag;
}

void MifScanner::ReadAttributes(RawElement* element) {
  Children(&reader_, [&] {
    if (reader_.token() != Token::kAttribute || reader_.kind() != Piece::kGroup) return;
    Attribute attribute{};
    attribute.first_value = static_cast<std::uint32_t>(document_.values.size());
    Children(&reader_, [&] {
      if (reader_.token() == Token::kAttrName) {
        attribute.name = document_.InternName(StringData(reader_, &document_));
      } else if (reader_.token() == Token::kAttrValue) {
        document_.values.push_back(document_.KeepBeside(StringData(reader_, &document_)));
        ++attribute.value_count;
      }
    });
    document_.attributes.push_back(attribute);
    ++element->attribute_count;
  });
}

}  // namespace qelm::embedded::model
