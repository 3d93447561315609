// Saves the text of one story - a flow, a cell, a title, a footnote, or the hidden flow - paragraph by
// paragraph.
//
// A paragraph in which nothing changed is left alone. Elsewhere deleted statements go, and the statements
// that set conditions and character formats are kept, dropped or added so that what is left has the state
// that it should have; what later text relied on is written where it needs it. A paragraph whose text is gone
// goes as a whole: the element boundaries that are left in it move to its neighbours, and so does the text
// frame that the flow enters there. Two paragraphs become one only where the mark between them was deleted.
#pragma once

#include <map>
#include <unordered_set>
#include <vector>

#include "embedded/model/document.h"
#include "embedded/model/mif_layout.h"
#include "embedded/model/paragraph_format.h"
#include "embedded/model/splice.h"

namespace qelm::embedded::model {

// One item of a story as the saver sees it: its state in the source, and the one that it is to have.
struct StoryItem {
  std::uint32_t begin = 0;
  std::uint32_t end = 0;
  std::uint32_t ref = 0;
  std::uint32_t font = 0;
  std::uint32_t source_font = 0;
  std::uint16_t conditions = 0;
  std::uint16_t source_conditions = 0;
  ItemKind kind = ItemKind::kOther;
  bool deleted = false;
  bool brought = false;  // from a hidden block that moves here
};

class StorySaver {
 public:
  StorySaver(const Document& document, const MifLayout& layout, Splice* splice, ParagraphFormats* formats,
             std::vector<bool>* removed_paragraphs, std::vector<bool>* written_paragraphs,
             std::unordered_set<Id>* moved_elements)
      : document_(document),
        layout_(layout),
        splice_(*splice),
        formats_(*formats),
        removed_(*removed_paragraphs),
        written_(*written_paragraphs),
        moved_(*moved_elements) {}

  // Begins a story; then Add each of its items in order, and End.
  void Begin();
  void Add(const StoryItem& item);
  void End();
  // In place of adding the items of a paragraph in which nothing changed, up to its mark. False when what
  // came before it concerns it; then they are to be added.
  bool Pass(std::uint32_t paragraph, std::uint16_t conditions);

 private:
  // The last paragraph that stayed, as far as later ones may still change it.
  struct Kept {
    std::uint32_t first = 0;  // the first and the last paragraph that it was made of
    std::uint32_t paragraph = 0;
    bool mark_deleted = false;        // its end was deleted: the next text joins it
    std::size_t splice_mark = 0;      // the splice before it was saved
    std::uint16_t source_before = 0;  // the condition states before it
    std::uint16_t out_before = 0;
    // Kept only when the end was deleted: its items, and the text frames that were handed to it.
    std::vector<StoryItem> items;
    std::vector<std::uint32_t> frames;
  };

  void SaveParagraph(bool is_last);
  bool InStep() const {
    return source_conditions_ == out_conditions_ && carried_.empty() && frames_.empty() &&
           !(any_kept_ && last_.mark_deleted);
  }
  void KeepAsItIs(std::uint32_t paragraph, std::uint16_t conditions);
  bool IsChanged() const;
  bool IsEmptied() const;
  bool HoldsWholeElement() const;
  void RemoveParagraph();
  void KeepParagraph();
  void EditParagraph();
  void WriteCarried();
  void FindNeeds();
  bool KeepsStatement(std::size_t index) const;
  void SaveStateStatement(std::size_t index);
  void Require(const StoryItem& item, std::vector<std::string>* statements);
  bool PutFontAlone(const StoryItem& item);
  void BeginLine(const StoryItem& line);
  void EndLine();
  void RemoveStatement(const StoryItem& item);
  std::string StatementOf(const StoryItem& item);
  void Rewrite(const std::vector<StoryItem>& items, std::uint32_t first, std::uint32_t last);
  void WriteEmptyParagraph();

  const Document& document_;
  const MifLayout& layout_;
  Splice& splice_;
  ParagraphFormats& formats_;
  std::vector<bool>& removed_;
  std::vector<bool>& written_;
  std::unordered_set<Id>& moved_;

  std::vector<StoryItem> items_;  // of the paragraph being gathered
  bool complete_ = false;         // its end was added
  // By item, for fonts and for conditions: the next item that survives and needs the state, and the next one
  // that has it, deleted or not; the number of items when there is none.
  struct Needs {
    std::size_t surviving;
    std::size_t any;
  };
  std::vector<Needs> font_needs_;
  std::vector<Needs> condition_needs_;

  std::map<std::pair<std::uint32_t, std::size_t>, std::string_view> font_lines_;  // by font and indentation

  Kept last_;
  bool any_kept_ = false;
  std::uint32_t last_removed_ = 0;  // paragraph

  // The condition state that the source has here, and the one that what was written has. Fonts begin anew
  // with each paragraph.
  std::uint16_t source_conditions_ = 0;
  std::uint16_t out_conditions_ = 0;
  std::uint32_t source_font_ = 0;
  std::uint32_t out_font_ = 0;

  std::vector<StoryItem> carried_;     // element boundaries for the next paragraph that stays
  std::vector<std::uint32_t> frames_;  // text frames likewise, by number

  // The line being saved.
  Span line_;
  std::size_t line_mark_ = 0;
  bool line_keeps_ = true;
  bool line_lost_ = false;
};

}  // namespace qelm::embedded::model
