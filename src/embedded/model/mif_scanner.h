// The reader behind ScanMif: one object over one file. Its members are spread over three sources: the order
// of the file, frames and pages (mif_scan.cc), tables and notes (mif_scan_tables.cc), text
// (mif_scan_text.cc).
//
// Each Read function is called just after its statement was entered, and reads to its end.
#pragma once

#include <array>
#include <string_view>

#include "embedded/model/mif_scan.h"
#include "embedded/model/room_ahead.h"

namespace qelm::embedded::model {

// Where unknown leaves mean nothing: their pieces are spared, or not, until the end of the scope.
class Passing {
 public:
  Passing(mif::Reader* reader, bool passes) : reader_(*reader), before_(reader->PassesUnknown()) {
    reader_.SetPassesUnknown(passes);
  }
  ~Passing() { reader_.SetPassesUnknown(before_); }
  Passing(const Passing&) = delete;
  Passing& operator=(const Passing&) = delete;

 private:
  mif::Reader& reader_;
  bool before_;
};

class MifScanner {
 public:
  MifScanner(Document* document, Scan* scan)
      : document_(*document), scan_(*scan), reader_(document->source) {}

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
  void WarnOfStray(std::uint32_t table);
  void ReadRow(std::uint32_t part);
  void ReadCell(std::uint32_t part);
  void ReadNotes();
  void ReadStory();
  void ReadFlow();
  void ReadLooseParagraph();
  void EndLooseFlow();
  void RestBehind();
  void ReadParagraph();
  std::uint32_t CatalogState(std::string_view tag, Span statement);
  void ReadParagraphState(Paragraph* paragraph);
  void ReadLine();
  void ReadLineItem();
  void ReadMarker();
  std::uint32_t ReadInlineObject();
  void ReadConditional();
  void ReadFont();
  std::uint32_t ReadElement();
  std::string_view ReadElementContent(RawElement* element);
  void ReadAttributes(RawElement* element);

  std::uint32_t OpenPart(ElementKind kind, std::uint32_t parent);
  void ClosePart(std::uint32_t part);
  std::uint16_t ReadConditionSet();
  void Warn(std::uint32_t offset, std::string text);
  Item& Add(ItemKind kind, std::uint32_t ref) {
    Item& item = scan_.items.emplace_back();
    item.begin = reader_.begin();
    item.end = reader_.end();
    item.ref = ref;
    item.font = font_;
    item.conditions = conditions_;
    item.kind = kind;
    if (!suffixes_.empty()) item.flags |= kGenerated;
    return item;
  }
  void Finish(std::uint32_t item) { scan_.items[item].end = reader_.end(); }
  void OpenElement();
  void CloseElement();
  void MarkPrefix();

  Document& document_;
  Scan& scan_;
  mif::Reader reader_;
  RoomAhead elements_room_;
  RoomAhead parts_room_;
  RoomAhead paragraphs_room_;

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
  std::uint32_t rested_ = 0;  // the source up to here was read long ago

  std::unordered_map<std::string_view, std::uint32_t> font_index_;
  std::unordered_map<std::string_view, std::uint32_t> catalog_states_;
  std::uint32_t last_catalog_state_ = 0;
  // Behind the name of an element without attributes comes what came in others, by the length of the line end
  // and indentation before it.
  std::array<std::string_view, 32> rests_;
  std::string_view last_tag_;
  Id last_definition_ = 0;
};

}  // namespace qelm::embedded::model
