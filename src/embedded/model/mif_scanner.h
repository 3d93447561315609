// The reader behind ScanMif: one object over one file. Its members are spread over three sources: the order
// of the file, frames and pages (mif_scan.cc), tables and notes (mif_scan_tables.cc), text
// (mif_scan_text.cc).
//
// Each Read function is called just after its statement was entered, and reads to its end.
#pragma once

#include "embedded/model/mif_scan.h"

namespace qelm::embedded::model {

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
  Item& Add(ItemKind kind, std::uint32_t ref) {
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

}  // namespace qelm::embedded::model
