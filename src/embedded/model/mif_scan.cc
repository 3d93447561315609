#include "embedded/model/mif_scan.h"

#include <algorithm>
#include <charconv>

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

class Scanner {
 public:
  Scanner(Document* document, Scan* scan) : document_(*document), scan_(*scan), reader_(document->source) {}

  bool Run(std::string* error);

 private:
  void Reserve();
  void TopLevel();
  void ReadDocumentSettings();
  void ReadFrames();
  void ReadFrame();
  void ReadPage();
  void ReadTextFrame(std::int32_t page, std::uint32_t frame);
  void ReadTables();
  void ReadTable();
  void ReadTitle(std::uint32_t part);
  void ReadRows(std::uint32_t part);
  void ReadRow(std::uint32_t part);
  void ReadCell(std::uint32_t part);
  void ReadNotes();
  void ReadStory();
  void ReadFlow();
  void ReadLooseParagraph();
  void EndLooseFlow();
  void ReadParagraph();
  void ReadParagraphState(Paragraph* paragraph);
  void ReadLine();
  void ReadLineItem();
  void ReadMarker();
  std::uint32_t ReadInlineObject();
  void ReadConditional();
  void ReadFont();
  std::uint32_t ReadElement();
  void ReadAttributes(RawElement* element);

  std::uint32_t OpenPart(ElementKind kind, std::uint32_t parent);
  void ClosePart(std::uint32_t part);
  std::uint16_t ReadConditionSet();
  void Warn(std::uint32_t offset, std::string text);
  Item& Add(ItemKind kind, std::uint32_t ref);
  void Finish(std::uint32_t item) { scan_.items[item].end = reader_.end(); }
  void OpenElement();
  void CloseElement();
  void MarkPrefix();

  Document& document_;
  Scan& scan_;
  mif::Reader reader_;

  // Running state, in the order of the file.
  std::uint16_t conditions_ = 0;
  std::uint32_t font_ = 0;
  std::uint32_t paragraph_state_ = 0;

  // Within the story being read: where its open elements began, and how many had begun their suffix.
  std::vector<std::uint32_t> open_elements_;
  std::vector<std::size_t> suffixes_;
  std::uint32_t top_elements_ = 0;
  std::uint32_t first_text_frame_ = 0;
  std::uint32_t loose_flow_ = kNoIndex;
  std::uint32_t last_prefixed_ = kNoIndex;
  std::int32_t body_pages_ = 0;

  std::unordered_map<std::string_view, std::uint32_t> font_index_;
  std::unordered_map<std::string_view, std::uint32_t> catalog_states_;
  std::string_view last_tag_;
  Id last_definition_ = 0;
};

void Scanner::Warn(std::uint32_t offset, std::string text) {
  constexpr std::size_t kMostWarnings = 100;
  if (document_.warnings.size() >= kMostWarnings) return;
  const mif::Place place = mif::PlaceOf(document_.source, offset);
  document_.warnings.push_back({"line " + std::to_string(place.line) + ": " + std::move(text)});
}

Item& Scanner::Add(ItemKind kind, std::uint32_t ref) {
  Item item;
  item.begin = reader_.begin();
  item.end = reader_.end();
  item.ref = ref;
  item.font = font_;
  item.conditions = conditions_;
  item.kind = kind;
  if (!suffixes_.empty()) item.flags |= kGenerated;
  return scan_.items.emplace_back(item);
}

// Room for as much as files of this size hold at most, as a rule: what is not filled is never touched, but an
// array that outgrows its room is copied.
void Scanner::Reserve() {
  const std::size_t size = document_.source.size();
  scan_.items.reserve(size / 48);
  scan_.elements.reserve(size / 256);
  scan_.part_items.reserve(size / 512);
  scan_.part_elements.reserve(size / 512);
  document_.parts.reserve(size / 512);
  document_.paragraphs.reserve(size / 256);
  document_.attributes.reserve(size / 256);
  document_.values.reserve(size / 256);
}

bool Scanner::Run(std::string* error) {
  Reserve();
  while (reader_.Next()) TopLevel();
  if (reader_.Failed()) {
    *error = mif::Describe(document_.source, reader_.error());
    return false;
  }
  EndLooseFlow();
  return true;
}

void Scanner::EndLooseFlow() {
  if (loose_flow_ == kNoIndex) return;
  RawFlow& loose = scan_.flows[loose_flow_];
  loose.items.end = static_cast<std::uint32_t>(scan_.items.size());
  loose.top_elements = top_elements_;
  loose_flow_ = kNoIndex;
}

void Scanner::TopLevel() {
  const Span opened{reader_.begin(), reader_.end()};
  if (reader_.token() == Token::kMIFFile) {
    const std::string_view data = reader_.data();
    std::from_chars(data.data(), data.data() + data.size(), document_.level);
    document_.encoding = document_.level >= 8 ? mif::Encoding::kUtf8 : mif::Encoding::kFrameRoman;
    document_.first_statement_end = reader_.end();
    return;
  }
  if (reader_.kind() != Piece::kGroup) {
    if (reader_.token() == Token::kConditionCatalog) document_.condition_catalog = opened;
    if (reader_.token() == Token::kColorCatalog) document_.color_catalog = opened;
    return;
  }
  if (reader_.token() != Token::kPara) EndLooseFlow();
  switch (reader_.token()) {
    case Token::kAFrames:
    case Token::kTbls:
    case Token::kPage:
    case Token::kTextFlow:
    case Token::kPara:
      if (document_.content_begin == 0) document_.content_begin = opened.begin;
      break;
    default:
      break;
  }
  switch (reader_.token()) {
    case Token::kColorCatalog:
      ScanColors(&reader_, &document_);
      document_.color_catalog = {opened.begin, reader_.end()};
      break;
    case Token::kConditionCatalog:
      ScanConditions(&reader_, &document_);
      document_.condition_catalog = {opened.begin, reader_.end()};
      break;
    case Token::kElementDefCatalog:
      ScanElementDefinitions(&reader_, &document_);
      break;
    case Token::kFontCatalog:
      ScanCharacterFormats(&reader_, &document_);
      break;
    case Token::kPgfCatalog:
      ScanParagraphFormats(&reader_, &document_);
      break;
    case Token::kVariableFormats:
      ScanVariables(&reader_, &document_);
      break;
    case Token::kDocument:
      ReadDocumentSettings();
      document_.document_statement = {opened.begin, reader_.end()};
      break;
    case Token::kAFrames:
      ReadFrames();
      break;
    case Token::kTbls:
      ReadTables();
      break;
    case Token::kPage:
      ReadPage();
      break;
    case Token::kTextFlow:
      ReadFlow();
      break;
    case Token::kPara:
      ReadLooseParagraph();
      break;
    default:
      reader_.Skip();
      break;
  }
}

void Scanner::ReadDocumentSettings() {
  Children(&reader_, [&] {
    if (reader_.token() != Token::kDShowAllConditions) return;
    const auto end = static_cast<std::uint32_t>(reader_.data().data() - document_.source.data() +
                                                static_cast<std::ptrdiff_t>(reader_.data().size()));
    document_.show_all_statement = {end - static_cast<std::uint32_t>(reader_.data().size()), end};
    document_.show_all = reader_.data() == "Yes";
    document_.source_show_all = document_.show_all;
  });
}

void Scanner::ReadFrames() {
  Children(&reader_, [&] {
    if (reader_.token() == Token::kFrame && reader_.kind() == Piece::kGroup) ReadFrame();
  });
}

// What is imported into an anchored frame may lie in frames and groups inside it; its element and its number
// are its own.
void Scanner::ReadFrame() {
  const auto index = static_cast<std::uint32_t>(document_.frames.size());
  AnchoredFrame frame;
  std::uint32_t element = 0;
  frame.span.begin = reader_.begin();
  const std::size_t inside = reader_.depth();
  while (reader_.Next()) {
    if (reader_.kind() == Piece::kGroupEnd) {
      if (reader_.depth() < inside) break;
      continue;
    }
    const bool group = reader_.kind() == Piece::kGroup;
    const bool own = reader_.depth() == inside + (group ? 1U : 0U);
    switch (reader_.token()) {
      case Token::kID:
        if (own) frame.number = NumberData(reader_);
        break;
      case Token::kElement:
        if (own && group) element = ReadElement();
        break;
      case Token::kImportObFileDI:
        frame.file = StringData(reader_, &document_);
        break;
      case Token::kImportObFile:
        if (frame.file.empty()) frame.file = StringData(reader_, &document_);
        break;
      case Token::kMath:
        frame.kind = ElementKind::kEquation;
        break;
      case Token::kTextRect:
        if (group) ReadTextFrame(-1, index);
        break;
      default:
        break;
    }
  }
  frame.span.end = reader_.end();
  scan_.frames[frame.number] = index;
  scan_.frame_elements.push_back(element);
  document_.frames.push_back(frame);
}

void Scanner::ReadTextFrame(std::int32_t page, std::uint32_t frame) {
  TextFrame text_frame;
  text_frame.page = page;
  text_frame.frame = frame;
  Children(&reader_, [&] {
    if (reader_.token() == Token::kID) text_frame.number = NumberData(reader_);
  });
  document_.text_frame_index[text_frame.number] = static_cast<std::uint32_t>(document_.text_frames.size());
  document_.text_frames.push_back(text_frame);
}

void Scanner::ReadPage() {
  struct PageType {
    std::string_view name;
    FlowKind kind;
  };
  constexpr PageType kTypes[] = {
      {"LeftMasterPage", FlowKind::kMaster},  {"RightMasterPage", FlowKind::kMaster},
      {"OtherMasterPage", FlowKind::kMaster}, {"ReferencePage", FlowKind::kReference},
      {"BodyPage", FlowKind::kBody},          {"HiddenPage", FlowKind::kHidden},
  };
  const auto index = static_cast<std::int32_t>(document_.pages.size());
  Page page;
  page.span.begin = reader_.begin();
  std::string_view tag;
  const std::size_t inside = reader_.depth();
  while (reader_.Next()) {
    if (reader_.kind() == Piece::kGroupEnd) {
      if (reader_.depth() < inside) break;
      continue;
    }
    switch (reader_.token()) {
      case Token::kPageType:
        for (const PageType& type : kTypes) {
          if (type.name == reader_.data()) page.kind = type.kind;
        }
        break;
      case Token::kPageNum:
        page.number = StringData(reader_, &document_);
        break;
      case Token::kPageTag:
        tag = StringData(reader_, &document_);
        break;
      case Token::kTextRect:
        if (reader_.kind() == Piece::kGroup) ReadTextFrame(index, 0);
        break;
      case Token::kImportObject:
        page.imports = true;
        break;
      default:
        break;
    }
  }
  page.span.end = reader_.end();
  if (page.kind == FlowKind::kBody) page.ordinal = ++body_pages_;
  if (page.number.empty()) page.number = tag;
  document_.pages.push_back(page);
}

std::uint32_t Scanner::OpenPart(ElementKind kind, std::uint32_t parent) {
  const auto index = static_cast<std::uint32_t>(document_.parts.size());
  Part part;
  part.kind = kind;
  part.parent = parent;
  part.span.begin = reader_.begin();
  document_.parts.push_back(part);
  scan_.part_items.push_back({static_cast<std::uint32_t>(scan_.items.size()), 0});
  scan_.part_elements.push_back(0);
  conditions_ = 0;
  font_ = 0;
  Add(ItemKind::kPartBegin, index);
  return index;
}

void Scanner::ClosePart(std::uint32_t part) {
  conditions_ = 0;
  font_ = 0;
  Add(ItemKind::kPartEnd, part);
  document_.parts[part].span.end = reader_.end();
  scan_.part_items[part].end = static_cast<std::uint32_t>(scan_.items.size());
}

void Scanner::ReadTables() {
  Children(&reader_, [&] {
    if (reader_.token() == Token::kTbl && reader_.kind() == Piece::kGroup) ReadTable();
  });
}

void Scanner::ReadTable() {
  const std::uint32_t part = OpenPart(ElementKind::kTable, 0);
  Children(&reader_, [&] {
    const bool group = reader_.kind() == Piece::kGroup;
    switch (reader_.token()) {
      case Token::kTblID:
        document_.parts[part].number = NumberData(reader_);
        break;
      case Token::kTblTag:
        document_.parts[part].tag = StringData(reader_, &document_);
        break;
      case Token::kTblFormat:
        if (!group) break;
        Children(&reader_, [&] {
          if (reader_.token() == Token::kTblTag) document_.parts[part].tag = StringData(reader_, &document_);
        });
        break;
      case Token::kElement:
        if (group) scan_.part_elements[part] = ReadElement();
        break;
      case Token::kTblTitle:
        if (group) ReadTitle(part);
        break;
      case Token::kTblH:
      case Token::kTblBody:
      case Token::kTblF:
        if (group) ReadRows(part);
        break;
      default:
        break;
    }
  });
  ClosePart(part);
  scan_.tables[document_.parts[part].number] = part;
}

void Scanner::ReadTitle(std::uint32_t parent) {
  const std::uint32_t part = OpenPart(ElementKind::kTableTitle, parent);
  Children(&reader_, [&] {
    if (reader_.kind() != Piece::kGroup) return;
    if (reader_.token() == Token::kElement) scan_.part_elements[part] = ReadElement();
    if (reader_.token() == Token::kTblTitleContent) ReadStory();
  });
  ClosePart(part);
}

void Scanner::ReadRows(std::uint32_t parent) {
  const Token token = reader_.token();
  const ElementKind kind = token == Token::kTblH   ? ElementKind::kTableHeading
                           : token == Token::kTblF ? ElementKind::kTableFooting
                                                   : ElementKind::kTableBody;
  const std::uint32_t part = OpenPart(kind, parent);
  Children(&reader_, [&] {
    if (reader_.kind() != Piece::kGroup) return;
    if (reader_.token() == Token::kElement) scan_.part_elements[part] = ReadElement();
    if (reader_.token() == Token::kRow) ReadRow(part);
  });
  ClosePart(part);
}

void Scanner::ReadRow(std::uint32_t parent) {
  const std::uint32_t part = OpenPart(ElementKind::kTableRow, parent);
  Children(&reader_, [&] {
    const std::uint32_t begin = reader_.begin();
    if (reader_.kind() != Piece::kGroup) return;
    if (reader_.token() == Token::kConditional) {
      const std::uint16_t set = ReadConditionSet();
      Part& row = document_.parts[part];
      row.conditions = row.source_conditions = set;
      row.condition_statement = {begin, reader_.end()};
    } else if (reader_.token() == Token::kElement) {
      scan_.part_elements[part] = ReadElement();
    } else if (reader_.token() == Token::kCell) {
      ReadCell(part);
    }
  });
  ClosePart(part);
}

void Scanner::ReadCell(std::uint32_t parent) {
  const std::uint32_t part = OpenPart(ElementKind::kTableCell, parent);
  Children(&reader_, [&] {
    if (reader_.kind() != Piece::kGroup) return;
    if (reader_.token() == Token::kElement) scan_.part_elements[part] = ReadElement();
    if (reader_.token() == Token::kCellContent) ReadStory();
  });
  ClosePart(part);
}

// Footnotes stand before the text that anchors them.
void Scanner::ReadNotes() {
  const std::uint32_t outside = top_elements_;
  Children(&reader_, [&] {
    if (reader_.token() != Token::kFNote || reader_.kind() != Piece::kGroup) return;
    const std::uint32_t part = OpenPart(ElementKind::kFootnote, 0);
    Children(&reader_, [&] {
      if (reader_.token() == Token::kID) document_.parts[part].number = NumberData(reader_);
      if (reader_.kind() != Piece::kGroup) return;
      if (reader_.token() == Token::kElement) scan_.part_elements[part] = ReadElement();
      if (reader_.token() == Token::kPara) ReadParagraph();
    });
    ClosePart(part);
    scan_.notes[document_.parts[part].number] = part;
  });
  top_elements_ = outside;
  open_elements_.clear();
}

// The text of a cell or title: notes, then paragraphs. Conditions begin and end with it.
void Scanner::ReadStory() {
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

void Scanner::ReadFlow() {
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
void Scanner::ReadLooseParagraph() {
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

void Scanner::ReadParagraph() {
  const auto index = static_cast<std::uint32_t>(document_.paragraphs.size());
  Paragraph paragraph;
  paragraph.begin = reader_.begin();
  document_.paragraphs.push_back(paragraph);
  const std::uint32_t opener_end = reader_.end();
  font_ = 0;
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
  document_.paragraphs[index] = paragraph;
  Add(ItemKind::kParagraphEnd, index);
}

// PgfTag names a catalog format and forgets what was before; Pgf changes the format in force, which may be
// that of the paragraph before.
void Scanner::ReadParagraphState(Paragraph* paragraph) {
  const std::uint32_t begin = reader_.begin();
  paragraph->sets_state = true;
  if (reader_.token() == Token::kPgfTag) {
    const std::string_view tag = StringData(reader_, &document_);
    const auto [found, is_new] =
        catalog_states_.try_emplace(tag, static_cast<std::uint32_t>(document_.paragraph_states.size()));
    if (is_new) {
      ParagraphState state;
      state.tag = tag;
      state.tag_statement = {begin, reader_.end()};
      const auto format = document_.paragraph_formats.find(tag);
      if (format != document_.paragraph_formats.end()) state.font = format->second;
      document_.paragraph_states.push_back(state);
    }
    paragraph_state_ = found->second;
    paragraph->absolute = true;
    return;
  }
  if (reader_.kind() != Piece::kGroup) return;
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

void Scanner::ReadLine() {
  Children(&reader_, [&] { ReadLineItem(); });
}

void Scanner::OpenElement() {
  if (open_elements_.empty()) ++top_elements_;
  open_elements_.push_back(static_cast<std::uint32_t>(scan_.items.size()) - 1);
}

void Scanner::CloseElement() {
  if (open_elements_.empty()) return;
  open_elements_.pop_back();
  while (!suffixes_.empty() && suffixes_.back() > open_elements_.size()) suffixes_.pop_back();
}

// Everything between the innermost open element's begin and here is generated.
void Scanner::MarkPrefix() {
  if (open_elements_.empty() || open_elements_.back() == last_prefixed_) return;
  last_prefixed_ = open_elements_.back();  // an element has one prefix
  for (std::size_t i = open_elements_.back() + 1; i < scan_.items.size(); ++i) {
    scan_.items[i].flags |= kGenerated;
  }
}

void Scanner::ReadLineItem() {
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
void Scanner::ReadMarker() {
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

std::uint32_t Scanner::ReadInlineObject() {
  std::uint32_t element = 0;
  Children(&reader_, [&] {
    if (reader_.token() == Token::kElement && reader_.kind() == Piece::kGroup) element = ReadElement();
  });
  return element;
}

std::uint16_t Scanner::ReadConditionSet() {
  if (reader_.kind() != Piece::kGroup) return 0;
  std::vector<Id> set;
  Children(&reader_, [&] {
    if (reader_.token() != Token::kInCondition) return;
    set.push_back(document_.InternCondition(StringData(reader_, &document_)));
  });
  return document_.InternConditions(set);
}

// A Conditional replaces the set in force; it does not add to it.
void Scanner::ReadConditional() { conditions_ = ReadConditionSet(); }

// Written by FrameMaker a Font begins with FTag and is absolute; without it the running state is changed.
void Scanner::ReadFont() {
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

std::uint32_t Scanner::ReadElement() {
  RawElement element;
  element.source = reader_.begin();
  element.first_attribute = static_cast<std::uint32_t>(document_.attributes.size());
  std::string_view tag;
  if (reader_.kind() == Piece::kGroup) {
    Children(&reader_, [&] {
      if (reader_.token() == Token::kETag) tag = StringData(reader_, &document_);
      if (reader_.token() == Token::kAttributes && reader_.kind() == Piece::kGroup) ReadAttributes(&element);
    });
  }
  if (tag.empty()) {
    Warn(element.source, "an element has no ETag; it is called NoName");
    tag = "NoName";
  }
  if (tag != last_tag_) {
    last_tag_ = tag;
    last_definition_ = document_.InternDefinition(tag);
  }
  element.definition = last_definition_;
  scan_.elements.push_back(element);
  return static_cast<std::uint32_t>(scan_.elements.size()) - 1;
}

void Scanner::ReadAttributes(RawElement* element) {
  Children(&reader_, [&] {
    if (reader_.token() != Token::kAttribute || reader_.kind() != Piece::kGroup) return;
    Attribute attribute;
    attribute.first_value = static_cast<std::uint32_t>(document_.values.size());
    Children(&reader_, [&] {
      if (reader_.token() == Token::kAttrName) {
        attribute.name = document_.InternName(StringData(reader_, &document_));
      } else if (reader_.token() == Token::kAttrValue) {
        document_.values.push_back(StringData(reader_, &document_));
        ++attribute.value_count;
      }
    });
    document_.attributes.push_back(attribute);
    ++element->attribute_count;
  });
}

}  // namespace

bool ScanMif(Document* document, Scan* scan, std::string* error) {
  return Scanner(document, scan).Run(error);
}

}  // namespace qelm::embedded::model
