#include "embedded/model/mif_scan.h"

#include <charconv>

#include "embedded/model/mif_scanner.h"

namespace qelm::embedded::model {

using mif::Piece;
using mif::Token;

void MifScanner::Warn(std::uint32_t offset, std::string text) {
  constexpr std::size_t kMostWarnings = 100;
  if (document_.warnings.size() >= kMostWarnings) return;
  const mif::Place place = mif::PlaceOf(document_.source, offset);
  document_.warnings.push_back({"line " + std::to_string(place.line) + ": " + std::move(text)});
}

// Room for as much as files of this size hold at most, as a rule: what is not filled is never touched, but an
// array that outgrows its room is copied.
void MifScanner::Reserve() {
  const std::size_t size = document_.source.size();
  scan_.items.reserve(size / 48);
  scan_.elements.reserve(size / 256);
  scan_.part_items.reserve(size / 512);
  scan_.part_elements.reserve(size / 512);
  document_.parts.reserve(size / 512);
  document_.paragraphs.Own().reserve(size / 256);
  document_.attributes.Own().reserve(size / 256);
  document_.values.Own().reserve(size / 256);
}

bool MifScanner::Run(std::string* error) {
  Reserve();
  while (reader_.Next()) TopLevel();
  if (reader_.Failed()) {
    *error = mif::Describe(document_.source, reader_.error());
    return false;
  }
  EndLooseFlow();
  return true;
}

void MifScanner::EndLooseFlow() {
  if (loose_flow_ == kNoIndex) return;
  RawFlow& loose = scan_.flows[loose_flow_];
  loose.items.end = static_cast<std::uint32_t>(scan_.items.size());
  loose.top_elements = top_elements_;
  loose_flow_ = kNoIndex;
}

void MifScanner::TopLevel() {
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

void MifScanner::ReadDocumentSettings() {
  Children(&reader_, [&] {
    const bool boundaries = reader_.name() == "DElementBordersOn";
    if (!boundaries && reader_.token() != Token::kDShowAllConditions) return;
    const auto end = static_cast<std::uint32_t>(reader_.data().data() - document_.source.data() +
                                                static_cast<std::ptrdiff_t>(reader_.data().size()));
    const Span value = {end - static_cast<std::uint32_t>(reader_.data().size()), end};
    const bool on = reader_.data() == "Yes";
    if (boundaries) {
      document_.boundaries_statement = value;
      document_.boundaries = document_.source_boundaries = on;
    } else {
      document_.show_all_statement = value;
      document_.show_all = document_.source_show_all = on;
    }
  });
}

void MifScanner::ReadFrames() {
  Children(&reader_, [&] {
    if (reader_.token() == Token::kFrame && reader_.kind() == Piece::kGroup) ReadFrame();
  });
}

// What is imported into an anchored frame may lie in frames and groups inside it; its element and its number
// are its own.
void MifScanner::ReadFrame() {
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

void MifScanner::ReadTextFrame(std::int32_t page, std::uint32_t frame) {
  TextFrame text_frame;
  text_frame.page = page;
  text_frame.frame = frame;
  Children(&reader_, [&] {
    if (reader_.token() == Token::kID) text_frame.number = NumberData(reader_);
  });
  document_.text_frame_index[text_frame.number] = static_cast<std::uint32_t>(document_.text_frames.size());
  document_.text_frames.push_back(text_frame);
}

void MifScanner::ReadPage() {
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

bool ScanMif(Document* document, Scan* scan, std::string* error) {
  return MifScanner(document, scan).Run(error);
}

}  // namespace qelm::embedded::model
