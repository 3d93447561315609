#include <algorithm>
#include <iterator>
#include <unordered_map>
#include <unordered_set>

#include "embedded/model/files.h"
#include "embedded/model/xml_additions.h"
#include "embedded/model/xml_marks.h"
#include "embedded/model/xml_saver_plan.h"
#include "embedded/model/xml_tags.h"
#include "embedded/xml/encoding.h"
#include "embedded/xml/write.h"

namespace qelm::embedded::model {
namespace {

// Conditions and character properties at a place: as the source has them, or as they were written so far.
// Text marks nest, so fonts are a stack.
struct State {
  std::uint16_t conditions = 0;
  std::vector<std::uint32_t> fonts;
  std::uint32_t Font() const { return fonts.empty() ? 0 : fonts.back(); }
  friend bool operator==(const State&, const State&) = default;
};

// The text of a flow, a cell, a title or a footnote; or the parts of a table, which have no state of their
// own.
struct Story {
  State source;
  State written;
  std::uint32_t gap = 0;               // the first item behind the last stop
  std::uint32_t layout_of = kNoIndex;  // the gap of which is known, up to an item, whether it is layout
  std::uint32_t layout_end = 0;
  bool is_layout = true;
  std::uint32_t gap_offset = 0;  // where the bytes behind that stop begin
  bool is_table = false;
  std::uint32_t table = 0;  // the part
  std::uint32_t row = 0;    // the part of the open row
};

// The state that a stop has in the source, and the one that it is to have.
struct Target {
  std::uint16_t source_conditions = 0;
  std::uint16_t conditions = 0;
  std::uint32_t source_font = 0;
  std::uint32_t font = 0;
};

// Writes the source in one pass over the items; what is not touched is copied in long pieces.
//
// A stop is an item that has conditions and a font of its own: text, a tag, an anchor. Between two stops lies
// a gap: white space, comments, marks, what was deleted. Where the states on both sides of a gap are those of
// the source, its marks stay. Elsewhere marks that still say something right stay and the others go; ends
// that are missing are written where the gap begins, directly behind the stop before it, and beginnings where
// it ends, directly before the next stop. So taking a condition away again takes away the very bytes that
// putting it there brought.
class Saver {
 public:
  explicit Saver(const Document& document)
      : document_(document),
        items_(document.items),
        source_(document.source),
        encoding_(xml::DetectEncoding(document.source)) {}
  Pieces Run();

 private:
  // What the marks of a gap do, and what is to become of them.
  struct GapMarks {
    State source_after;
    bool lost_conditions = false;  // a mark goes with what was deleted
    bool lost_fonts = false;
    std::vector<std::uint32_t> conditions;  // the items of those that could stay
  };

  bool PassUnchanged();
  bool HadInSource(std::uint32_t index, std::uint16_t conditions) const;
  void Visit();
  void VisitDeleted();
  void VisitTablePart();
  void VisitStructure();
  void Stop();
  void EndStory();
  void OpenStory(bool is_table);
  void CloseStory();
  Target TargetOf(std::uint32_t index) const;
  GapMarks ReadGap(std::uint32_t end) const;
  bool GapIsLayout(Story* story) const;
  bool IsLayout(std::uint32_t begin, std::uint32_t end) const;
  void Gap(std::uint32_t end, std::uint32_t offset, const Target* target);
  void GapItems(std::uint32_t end, bool keep_conditions, bool keep_fonts, std::vector<Id>* to_open,
                std::vector<Id>* to_close);
  std::uint32_t EndOfDeleted(std::uint32_t index) const;
  void Tag(std::uint32_t index, Id element);
  bool VisitEntity();
  bool IsOneStop(std::uint32_t begin, std::uint32_t end) const;
  void Put(std::uint32_t index);

  bool IsExpanded(std::uint32_t index) const { return index >= expanded_begin_ && index < expanded_end_; }
  const std::vector<Id>& Set(std::uint16_t index) const { return document_.condition_sets[index]; }
  std::string_view ConditionName(Id id) const { return document_.conditions[id].name; }
  // What was replaced goes with what is copied: an instruction, never in parts.
  void CopyTo(std::uint32_t offset) {
    while (next_replacement_ != document_.replacements.end()) {
      const Replacement& edit = next_replacement_->second;
      if (edit.place.begin >= offset) break;
      ++next_replacement_;
      if (edit.place.begin < copied_) continue;
      out_.Refer(source_.substr(copied_, edit.place.begin - copied_));
      copied_ = edit.place.end;
      Emit(edit.text);
    }
    if (offset <= copied_) return;
    out_.Refer(source_.substr(copied_, offset - copied_));
    copied_ = offset;
  }
  void SkipTo(std::uint32_t offset) { copied_ = std::max(copied_, offset); }
  // Marks of fonts are kept: colored text of one color takes the same ones again and again.
  void EmitFontMark(std::uint32_t font) {
    std::string_view& mark = font_marks_[font];
    if (mark.empty()) mark = out_.Keep(Encoded(TextMark(document_, document_.fonts[font])));
    out_.Refer(mark);
  }
  void EmitTextEnd() {
    if (text_end_.empty()) text_end_ = out_.Keep(Encoded(kTextEndMark));
    out_.Refer(text_end_);
  }
  const std::string& Encoded(std::string_view text, xml::Missing missing = xml::Missing::kEscape) {
    encoded_.clear();
    xml::AppendEncoded(text, encoding_, missing, &encoded_);
    return encoded_;
  }
  void Emit(std::string_view text, xml::Missing missing = xml::Missing::kEscape) {
    out_.Copy(Encoded(text, missing));
  }

  const Document& document_;
  const SharedArray<Item>& items_;
  std::string_view source_;
  xml::Encoding encoding_;
  Pieces out_;
  std::string encoded_;
  std::unordered_map<std::uint32_t, std::string_view> font_marks_;  // those that were written, by font
  std::string_view text_end_;
  std::uint32_t copied_ = 0;  // the source up to here is written or left out
  std::uint32_t at_ = 0;      // the item
  std::map<std::uint32_t, Replacement>::const_iterator next_replacement_ = document_.replacements.begin();
  std::vector<Story> stories_;
  std::vector<XmlEdit> edits_;  // of what stands before the root, in order
  std::size_t next_edit_ = 0;
  std::size_t prolog_edits_ = 0;
  std::unordered_set<std::uint32_t> dirty_;  // parts: rows whose marks are written anew, tables whose marks
                                             // around rows go
  std::uint32_t expanded_begin_ = 0;         // items that are written from the model, because an entity that
  std::uint32_t expanded_end_ = 0;           // they come from cannot stay
};

bool Contains(const std::vector<Id>& set, Id id) {
  return std::find(set.begin(), set.end(), id) != set.end();
}

// What is in `a` and not in `b`.
std::vector<Id> Without(const std::vector<Id>& a, const std::vector<Id>& b) {
  std::vector<Id> rest;
  for (const Id id : a) {
    if (!Contains(b, id)) rest.push_back(id);
  }
  return rest;
}

bool Take(std::vector<Id>* set, Id id) {
  const auto found = std::find(set->begin(), set->end(), id);
  if (found == set->end()) return false;
  set->erase(found);
  return true;
}

Pieces Saver::Run() {
  // Marks may stand around every other item. What is not needed of the room costs nothing, as nobody touches
  // it.
  if (document_.marked) out_.Reserve(items_.size() / 2);
  edits_ = PrologEdits(document_, encoding_);
  prolog_edits_ = edits_.size();
  if (document_.additions.Pending()) {
    // What is before the root comes before what was added inside.
    std::vector<XmlEdit> added = AdditionEdits(document_, encoding_);
    std::move(added.begin(), added.end(), std::back_inserter(edits_));
  }
  dirty_ = DirtyRows(document_);
  stories_.emplace_back();
  while (at_ < items_.size()) {
    while (next_edit_ < edits_.size() && edits_[next_edit_].begin <= items_[at_].begin) {
      const XmlEdit& edit = edits_[next_edit_++];
      CopyTo(edit.begin);
      // Marks cannot have references, and text and tags can.
      Emit(edit.text, next_edit_ <= prolog_edits_ ? xml::Missing::kEscape : xml::Missing::kReference);
      SkipTo(edit.end);
    }
    if (!PassUnchanged()) Visit();
  }
  EndStory();
  CopyTo(static_cast<std::uint32_t>(source_.size()));
  return std::move(out_);
}

// ---------------------------------------------------------------------------------------------------------------
// The items.

// Whether a stop had the conditions that are in force in the source too, and no font.
bool Saver::HadInSource(std::uint32_t index, std::uint16_t conditions) const {
  return (document_.source_conditions.empty() || document_.source_conditions[index] == conditions) &&
         (document_.source_fonts.empty() || document_.source_fonts[index] == 0);
}

// Passes over items as Visit would, for as long as they are text, tags and layout of which nothing changed
// and that are not out of entities: most of a document. False where there is none.
bool Saver::PassUnchanged() {
  Story& story = stories_.back();
  const std::uint16_t conditions = story.source.conditions;
  const bool in_step = !story.is_table && story.written.conditions == conditions &&
                       story.written.fonts.empty() && story.source.fonts.empty() && expanded_end_ <= at_;
  if (!in_step || !GapIsLayout(&story)) return false;
  const auto end = static_cast<std::uint32_t>(items_.size()) - 1;
  const std::uint32_t limit = next_edit_ < edits_.size() ? edits_[next_edit_].begin : kNoIndex;
  const bool all_as_read = document_.source_conditions.empty() && document_.source_fonts.empty();
  const bool has_new_tags = document_.attributes_changed;
  std::uint32_t stop = kNoIndex;
  std::uint32_t i = at_;
  for (const Item* item = items_.data() + i; i < end; ++i, ++item) {
    const bool is_alone = item->begin < item->end && item->end <= item[1].begin && item->begin < limit;
    if (!is_alone || item->Is(kDeleted)) break;
    if (item->kind == ItemKind::kOther) continue;
    const bool begins = item->kind == ItemKind::kElementBegin;
    if (!begins && item->kind != ItemKind::kString && item->kind != ItemKind::kElementEnd) break;
    if (begins && has_new_tags && document_.elements[item->ref].attributes_changed) break;
    if (item->conditions != conditions || item->font != 0 || (!all_as_read && !HadInSource(i, conditions)))
      break;
    stop = i;
  }
  if (stop != kNoIndex) {
    story.gap = stop + 1;
    story.gap_offset = items_[stop].end;
  }
  if (i == at_) return false;
  at_ = i;
  return true;
}

void Saver::Visit() {
  if (VisitEntity()) return;
  const Item& item = items_[at_];
  if (item.Is(kDeleted)) {
    VisitDeleted();
    return;
  }
  if (item.kind == ItemKind::kPartBegin || item.kind == ItemKind::kPartEnd) {
    VisitTablePart();
  } else if (stories_.back().is_table) {
    VisitStructure();
  } else {
    const bool is_tag = item.kind == ItemKind::kElementBegin || item.kind == ItemKind::kElementEnd;
    const bool is_stop = is_tag ? item.begin != item.end
                                : item.kind == ItemKind::kString || item.kind == ItemKind::kTableAnchor ||
                                      item.kind == ItemKind::kNoteAnchor;
    if (is_stop) Stop();
  }
  ++at_;
}

std::uint32_t Saver::EndOfDeleted(std::uint32_t index) const {
  const Item& item = items_[index];
  if (item.kind == ItemKind::kElementBegin) return document_.elements[item.ref].end_item;
  if (item.kind == ItemKind::kPartBegin) return document_.parts[item.ref].end_item;
  return index + 1;
}

// In text, what is deleted belongs to the gap and goes when that is written. A table's parts are written as
// they come.
void Saver::VisitDeleted() {
  const std::uint32_t end = EndOfDeleted(at_);
  if (stories_.back().is_table) {
    CopyTo(items_[at_].begin);
    SkipTo(items_[end - 1].end);
  }
  at_ = end;
}

void Saver::OpenStory(bool is_table) {
  Story story;
  story.gap = at_ + 1;
  story.gap_offset = items_[at_].end;
  story.is_table = is_table;
  story.table = items_[at_].ref;
  stories_.push_back(std::move(story));
}

// Goes back to the story around; what was closed counts as a stop there.
void Saver::CloseStory() {
  stories_.pop_back();
  stories_.back().gap = at_ + 1;
  stories_.back().gap_offset = items_[at_].end;
}

void Saver::VisitTablePart() {
  const Item& item = items_[at_];
  const Part& part = document_.parts[item.ref];
  const bool begins = item.kind == ItemKind::kPartBegin;
  const bool is_table = part.kind == ElementKind::kTable;
  if (!begins && HoldsStory(part.kind)) EndStory();
  if (begins) Tag(at_, part.element);
  if (!begins && dirty_.contains(item.ref) && !is_table && item.begin != item.end) {
    CopyTo(item.begin);
    const std::vector<Id>& set = Set(part.conditions);
    for (auto id = set.rbegin(); id != set.rend(); ++id) Emit(ConditionEndMark(ConditionName(*id)));
  }
  if (!begins && IsExpanded(at_)) Put(at_);
  if (part.kind == ElementKind::kTableRow) stories_.back().row = begins ? item.ref : 0;
  if (begins && dirty_.contains(item.ref) && !is_table &&
      items_[part.end_item - 1].begin != items_[part.end_item - 1].end) {
    CopyTo(item.end);
    for (const Id id : Set(part.conditions)) Emit(ConditionStartMark(ConditionName(id)));
  }
  if (!is_table && !HoldsStory(part.kind)) return;
  if (begins) {
    OpenStory(is_table);
  } else {
    CloseStory();
  }
}

// Between the parts of a table.
void Saver::VisitStructure() {
  const Item& item = items_[at_];
  const Story& story = stories_.back();
  if (item.kind == ItemKind::kElementBegin) {
    Tag(at_, item.ref);
    return;
  }
  if (item.kind == ItemKind::kConditional && dirty_.contains(story.row != 0 ? story.row : story.table)) {
    CopyTo(item.begin);
    SkipTo(item.end);
    return;
  }
  if (IsExpanded(at_)) Put(at_);
}

// A start tag whose attributes changed.
void Saver::Tag(std::uint32_t index, Id id) {
  const Item& item = items_[index];
  if (IsExpanded(index)) {
    Put(index);
    return;
  }
  const Element& element = document_.elements[id];
  if (!element.attributes_changed || copied_ >= item.end) return;
  CopyTo(item.begin);
  const std::string tag = xml::ToUtf8(document_.At(item), encoding_);
  Emit(RewrittenTag(document_, element, tag), xml::Missing::kReference);
  SkipTo(item.end);
}

Target Saver::TargetOf(std::uint32_t index) const {
  Target target;
  target.conditions = target.source_conditions = items_[index].conditions;
  target.font = target.source_font = items_[index].font;
  if (!document_.source_conditions.empty()) target.source_conditions = document_.source_conditions[index];
  if (!document_.source_fonts.empty()) target.source_font = document_.source_fonts[index];
  return target;
}

void Saver::Stop() {
  const Item& item = items_[at_];
  const Target target = TargetOf(at_);
  Gap(at_, item.begin, &target);
  if (item.kind == ItemKind::kElementBegin) {
    Tag(at_, item.ref);
  } else if (IsExpanded(at_)) {
    Put(at_);
  }
  stories_.back().gap = at_ + 1;
  stories_.back().gap_offset = item.end;
}

// The end of a story: of a part, at its end tag, or of the flow.
void Saver::EndStory() {
  const auto offset = at_ < items_.size() ? items_[at_].begin : static_cast<std::uint32_t>(source_.size());
  Gap(at_, offset, nullptr);
}

Saver::GapMarks Saver::ReadGap(std::uint32_t end) const {
  const Story& story = stories_.back();
  GapMarks marks;
  marks.source_after = story.source;
  std::uint32_t deleted_end = 0;
  for (std::uint32_t i = story.gap; i < end; ++i) {
    const Item& item = items_[i];
    if (item.Is(kDeleted)) deleted_end = std::max(deleted_end, EndOfDeleted(i));
    const bool is_lost = i < deleted_end || IsExpanded(i);
    if (item.kind == ItemKind::kPartBegin) {
      // A deleted table or footnote; the marks in it are its own.
      i = document_.parts[item.ref].end_item - 1;
    } else if (item.kind == ItemKind::kConditional) {
      marks.source_after.conditions = item.conditions;
      if (is_lost) {
        marks.lost_conditions = true;
      } else {
        marks.conditions.push_back(i);
      }
    } else if (item.kind == ItemKind::kFont) {
      marks.lost_fonts = marks.lost_fonts || is_lost;
      std::vector<std::uint32_t>& fonts = marks.source_after.fonts;
      if (item.ref != 0) {
        fonts.push_back(item.font);
      } else if (!fonts.empty()) {
        fonts.pop_back();
      }
    }
  }
  return marks;
}

// The same of the gap up to where the saver is, which looks at no item twice.
bool Saver::GapIsLayout(Story* story) const {
  if (story->layout_of != story->gap) {
    story->layout_of = story->layout_end = story->gap;
    story->is_layout = true;
  }
  story->is_layout = story->is_layout && IsLayout(story->layout_end, at_);
  story->layout_end = at_;
  return story->is_layout;
}

// Whether the items are white space, comments and the like, and stay as they are.
bool Saver::IsLayout(std::uint32_t begin, std::uint32_t end) const {
  for (std::uint32_t i = begin; i < end; ++i) {
    if (items_[i].kind != ItemKind::kOther || items_[i].Is(kDeleted) || IsExpanded(i)) return false;
  }
  return true;
}

// Writes the gap from the last stop up to the item `end`, whose bytes begin at `offset`. `target` is the
// state of that item; null at the end of a story, where what the source left open stays open, and what edits
// brought ends.
void Saver::Gap(std::uint32_t end, std::uint32_t offset, const Target* target) {
  Story& story = stories_.back();
  if (target != nullptr && IsLayout(story.gap, end) && story.written == story.source) {
    // The common case: no marks between two stops, and nothing changed.
    const bool stays = target->conditions == story.written.conditions &&
                       target->font == story.written.Font() &&
                       target->source_conditions == target->conditions && target->source_font == target->font;
    if (stays) return;
  }
  GapMarks marks = ReadGap(end);
  Target at_end;
  if (target == nullptr) {
    at_end.source_conditions = marks.source_after.conditions;
    at_end.source_font = marks.source_after.Font();
    const bool conditions_same = story.written.conditions == story.source.conditions;
    at_end.conditions = conditions_same ? at_end.source_conditions : std::uint16_t{0};
    at_end.font = story.written.fonts == story.source.fonts ? at_end.source_font : 0;
    target = &at_end;
  }
  const bool keep_conditions = story.written.conditions == story.source.conditions &&
                               !marks.lost_conditions && target->conditions == target->source_conditions;
  const bool keep_fonts =
      story.written.fonts == story.source.fonts && !marks.lost_fonts && target->font == target->source_font;
  std::vector<Id> to_close;
  std::vector<Id> to_open;
  if (!keep_conditions) {
    to_close = Without(Set(story.written.conditions), Set(target->conditions));
    to_open = Without(Set(target->conditions), Set(story.written.conditions));
  }
  // An end that the gap has already need not be written at its beginning.
  std::vector<Id> ends = to_close;
  for (const std::uint32_t mark : marks.conditions) {
    if ((items_[mark].ref & kMarkEnds) != 0) Take(&ends, items_[mark].ref & kMarkCondition);
  }
  const bool font_changes = !keep_fonts && story.written.Font() != target->font;
  if (!ends.empty() || (font_changes && !story.written.fonts.empty())) {
    CopyTo(story.gap_offset);
    if (font_changes) {
      for (std::size_t i = 0; i < story.written.fonts.size(); ++i) EmitTextEnd();
    }
    for (auto id = ends.rbegin(); id != ends.rend(); ++id) Emit(ConditionEndMark(ConditionName(*id)));
  }
  GapItems(end, keep_conditions, keep_fonts, &to_open, &to_close);
  if (font_changes) story.written.fonts.clear();
  if (!to_open.empty() || (font_changes && target->font != 0)) {
    CopyTo(offset);
    for (const Id id : to_open) Emit(ConditionStartMark(ConditionName(id)));
    if (font_changes && target->font != 0) {
      EmitFontMark(target->font);
      story.written.fonts.push_back(target->font);
    }
  }
  story.written.conditions = target->conditions;
  story.source.conditions = target->source_conditions;
  story.source.fonts = std::move(marks.source_after.fonts);
  if (keep_fonts) story.written.fonts = story.source.fonts;
}

// What of the gap goes: deleted items, and marks that say nothing right any more.
void Saver::GapItems(std::uint32_t end, bool keep_conditions, bool keep_fonts, std::vector<Id>* to_open,
                     std::vector<Id>* to_close) {
  for (std::uint32_t i = stories_.back().gap; i < end; ++i) {
    const Item& item = items_[i];
    bool stays = true;
    if (item.Is(kDeleted)) {
      const std::uint32_t last = EndOfDeleted(i) - 1;
      CopyTo(item.begin);
      SkipTo(items_[last].end);
      i = last;
      continue;
    }
    if (item.kind == ItemKind::kConditional) {
      const Id id = item.ref & kMarkCondition;
      stays =
          keep_conditions || (!IsExpanded(i) && Take((item.ref & kMarkEnds) != 0 ? to_close : to_open, id));
    } else if (item.kind == ItemKind::kFont) {
      stays = keep_fonts;
    }
    if (!stays) {
      CopyTo(item.begin);
      SkipTo(item.end);
    } else if (IsExpanded(i)) {
      Put(i);
    }
  }
}

// ---------------------------------------------------------------------------------------------------------------
// Entities.

// Whether items out of one entity can stay the reference that they are: nothing in them changed, or all of
// them take the same conditions and font, which then stand around the reference.
bool Saver::IsOneStop(std::uint32_t begin, std::uint32_t end) const {
  const Target first = TargetOf(begin);
  bool unchanged = true;
  bool uniform = true;
  for (std::uint32_t i = begin; i < end; ++i) {
    const Item& item = items_[i];
    if (item.Is(kDeleted)) return false;
    const bool begins = item.kind == ItemKind::kElementBegin || item.kind == ItemKind::kPartBegin;
    const bool is_part = item.kind == ItemKind::kPartBegin || item.kind == ItemKind::kPartEnd;
    const Id element = is_part ? document_.parts[item.ref].element : item.ref;
    if (begins && document_.elements[element].attributes_changed) return false;
    if (is_part && dirty_.contains(item.ref)) return false;
    const Target target = TargetOf(i);
    if (target.conditions != target.source_conditions || target.font != target.source_font) unchanged = false;
    const bool is_mark = item.kind == ItemKind::kConditional || item.kind == ItemKind::kFont;
    const bool is_neutral = item.kind == ItemKind::kOther;
    if (is_mark || is_part ||
        (!is_neutral && (target.conditions != first.conditions || target.font != first.font))) {
      uniform = false;
    }
  }
  return uniform || (unchanged && stories_.back().written == stories_.back().source);
}

// Several items out of one entity have the range of its reference.
bool Saver::VisitEntity() {
  if (IsExpanded(at_)) return false;
  const Item& first = items_[at_];
  std::uint32_t begin = at_;
  const bool is_place = first.kind == ItemKind::kTableAnchor || first.kind == ItemKind::kNoteAnchor ||
                        first.kind == ItemKind::kOther;
  if (is_place && first.begin == first.end && at_ + 1 < items_.size()) ++begin;
  if (begin + 1 >= items_.size() || items_[begin].begin == items_[begin].end) return false;
  const Item& item = items_[begin];
  if (items_[begin + 1].begin >= item.end || xml::AsciiAt(source_, item.begin, encoding_) != '&')
    return false;
  std::uint32_t end = begin + 1;
  while (end < items_.size() && items_[end].begin < item.end) ++end;
  if (!IsOneStop(at_, end)) {
    expanded_begin_ = at_;
    expanded_end_ = end;
    return false;
  }
  if (stories_.back().is_table) {
    at_ = end;
    return true;
  }
  const Target target = TargetOf(at_);
  Gap(at_, item.begin, &target);
  Story& story = stories_.back();
  story.gap = at_;
  const State after = ReadGap(end).source_after;
  const bool was_same = story.written == story.source;
  story.source = after;
  if (was_same) story.written = after;
  story.gap = end;
  story.gap_offset = item.end;
  at_ = end;
  return true;
}

// Writes an item from the model in place of the reference that it came out of.
void Saver::Put(std::uint32_t index) {
  const Item& item = items_[index];
  CopyTo(item.begin);
  SkipTo(item.end);
  const bool is_part = item.kind == ItemKind::kPartBegin || item.kind == ItemKind::kPartEnd;
  const Id element = is_part ? document_.parts[item.ref].element : item.ref;
  switch (item.kind) {
    case ItemKind::kElementBegin:
    case ItemKind::kPartBegin:
      Emit(StartTag(document_, document_.elements[element]), xml::Missing::kReference);
      break;
    case ItemKind::kElementEnd:
    case ItemKind::kPartEnd: {
      std::string tag = "</";
      tag.append(document_.definitions[document_.elements[element].definition].name).append(">");
      Emit(tag);
      break;
    }
    case ItemKind::kString: {
      std::string text;
      xml::AppendText(item.Is(kEscaped) ? document_.values[item.ref] : document_.At(item), &text);
      Emit(text, xml::Missing::kReference);
      break;
    }
    case ItemKind::kOther:
      if (item.Is(kEscaped)) Emit(document_.values[item.ref]);
      break;
    default:
      break;
  }
}

}  // namespace

Pieces XmlPieces(const Document& document) { return Saver(document).Run(); }

}  // namespace qelm::embedded::model
