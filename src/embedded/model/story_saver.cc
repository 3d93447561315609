#include "embedded/model/story_saver.h"

#include "embedded/mif/reader.h"
#include "embedded/model/mif_attributes.h"
#include "embedded/model/paragraph_format.h"

namespace qelm::embedded::model {
namespace {

bool IsBoundary(ItemKind kind) { return kind == ItemKind::kElementBegin || kind == ItemKind::kElementEnd; }

bool IsStateStatement(ItemKind kind) { return kind == ItemKind::kFont || kind == ItemKind::kConditional; }

// Parts of the file's frame, which are neither text nor state.
bool IsFrame(ItemKind kind) {
  return kind == ItemKind::kParagraphBegin || kind == ItemKind::kLine || kind == ItemKind::kTextFrame;
}

bool NeedsConditions(const StoryItem& item) { return HasConditions(item.kind); }

bool NeedsFont(const StoryItem& item) { return IsContent(item.kind); }

}  // namespace

void StorySaver::Begin() {
  items_.clear();
  complete_ = false;
  last_ = Kept();
  any_kept_ = false;
  last_removed_ = 0;
  source_conditions_ = 0;
  out_conditions_ = 0;
  carried_.clear();
  frames_.clear();
}

void StorySaver::Add(const StoryItem& item) {
  if (complete_) SaveParagraph(false);
  items_.push_back(item);
  complete_ = item.kind == ItemKind::kParagraphEnd && !item.brought;
}

void StorySaver::End() {
  if (complete_) SaveParagraph(true);
  items_.clear();
  if (!any_kept_ && last_removed_ != 0) WriteEmptyParagraph();
  if (!any_kept_) return;
  std::vector<std::string> statements;
  for (const StoryItem& item : carried_) statements.push_back(StatementOf(item));
  // Conditions never cross the end of a story.
  if (out_conditions_ != source_conditions_) {
    statements.push_back(ConditionalStatement(document_, source_conditions_));
  }
  if (last_.paragraph != 0) {
    layout_.InsertAtEnd(document_.paragraphs[last_.paragraph].last_line_end, statements, &splice_);
  }
}

bool StorySaver::IsChanged() const {
  for (const StoryItem& item : items_) {
    if (item.deleted || item.brought || item.conditions != item.source_conditions ||
        item.font != item.source_font) {
      return true;
    }
  }
  return false;
}

// The statement of an item, to be written in another place, with what changed in it.
std::string StorySaver::StatementOf(const StoryItem& item) {
  std::string statement = layout_.Statement(item.begin, item.end);
  const auto link = document_.replacements.find(item.begin);
  if (link != document_.replacements.end()) {
    const std::string_view old = document_.At(link->second.place);
    const std::size_t at = statement.find(old);
    if (at != std::string::npos) statement.replace(at, old.size(), link->second.text);
  }
  const bool has_element = item.kind == ItemKind::kElementBegin || item.kind == ItemKind::kMarker ||
                           item.kind == ItemKind::kVariable || item.kind == ItemKind::kReferenceBegin;
  if (!has_element || item.ref == 0 || !document_.elements[item.ref].attributes_changed) return statement;
  moved_.insert(item.ref);
  return WithAttributes(document_, layout_, document_.elements[item.ref], std::move(statement));
}

bool StorySaver::Pass(std::uint32_t paragraph, std::uint16_t conditions) {
  if (complete_) SaveParagraph(false);
  if (!items_.empty() || !InStep()) return false;
  KeepAsItIs(paragraph, conditions);
  return true;
}

void StorySaver::KeepAsItIs(std::uint32_t paragraph, std::uint16_t conditions) {
  last_ = Kept();
  any_kept_ = true;
  last_.paragraph = paragraph;
  source_conditions_ = out_conditions_ = conditions;
}

void StorySaver::SaveParagraph(bool is_last) {
  complete_ = false;
  StoryItem& mark = items_.back();
  if (is_last) mark.conditions = mark.source_conditions;
  if (InStep() && !IsChanged()) {
    KeepAsItIs(mark.ref, mark.source_conditions);
  } else if (IsEmptied() && !HoldsWholeElement()) {
    RemoveParagraph();
  } else {
    KeepParagraph();
  }
  items_.clear();
}

// Something went, and nothing that a reader sees is left.
bool StorySaver::IsEmptied() const {
  bool lost = false;
  for (const StoryItem& item : items_) {
    lost = lost || item.deleted;
    const bool stays = IsContent(item.kind) || item.kind == ItemKind::kOther ||
                       item.kind == ItemKind::kHiddenPlace || item.kind == ItemKind::kHiddenBegin ||
                       item.kind == ItemKind::kHiddenEnd;
    if (stays && !item.deleted) return false;
  }
  return lost;
}

// Whether an element that is left begins and ends in what the paragraph would hand to its neighbours: then it
// has no other place.
bool StorySaver::HoldsWholeElement() const {
  bool begun = !carried_.empty();
  for (const StoryItem& item : items_) {
    if (item.deleted || !IsBoundary(item.kind)) continue;
    if (item.kind == ItemKind::kElementBegin) begun = true;
    if (item.kind == ItemKind::kElementEnd && begun) return true;
  }
  return false;
}

void StorySaver::RemoveParagraph() {
  const StoryItem mark = items_.back();
  const Paragraph& paragraph = document_.paragraphs[mark.ref];
  std::vector<std::string> ends;
  for (const StoryItem& item : items_) {
    if (item.kind == ItemKind::kTextFrame && !item.brought) frames_.push_back(item.ref);
    if (item.deleted || !IsBoundary(item.kind)) continue;
    if (item.kind == ItemKind::kElementEnd && any_kept_) {
      ends.push_back(StatementOf(item));
      if (last_.mark_deleted) last_.items.push_back(item);
    } else {
      carried_.push_back(item);
    }
  }
  if (any_kept_) {
    layout_.InsertAtEnd(document_.paragraphs[last_.paragraph].last_line_end, ends, &splice_);
    // The mark that is left here ends the text before.
    if (!mark.deleted) last_.mark_deleted = false;
  }
  const Span gone = layout_.Removal(paragraph.begin, paragraph.end);
  splice_.Remove(gone.begin, gone.end);
  removed_[mark.ref] = true;
  last_removed_ = mark.ref;
  source_conditions_ = mark.source_conditions;
}

void StorySaver::KeepParagraph() {
  const std::uint32_t paragraph = items_.back().ref;
  const bool mark_deleted = items_.back().deleted;
  bool rewrite = false;
  for (const StoryItem& item : items_) rewrite = rewrite || (item.brought && !item.deleted);
  Kept kept;
  kept.paragraph = paragraph;
  kept.mark_deleted = mark_deleted;
  std::uint32_t first = paragraph;
  std::vector<StoryItem> joined;
  if (any_kept_ && last_.mark_deleted) {
    // The mark between the two is gone: what was written for the first is taken back, and both are one.
    splice_.ReturnTo(last_.splice_mark);
    source_conditions_ = last_.source_before;
    out_conditions_ = last_.out_before;
    first = last_.first;
    removed_[last_.paragraph] = true;
    frames_.insert(frames_.begin(), last_.frames.begin(), last_.frames.end());
    joined = std::move(last_.items);
    joined.insert(joined.end(), carried_.begin(), carried_.end());
    carried_.clear();
    rewrite = true;
  }
  kept.first = first;
  kept.splice_mark = splice_.Mark();
  kept.source_before = source_conditions_;
  kept.out_before = out_conditions_;
  if (mark_deleted) kept.frames = frames_;
  if (rewrite) {
    joined.insert(joined.end(), carried_.begin(), carried_.end());
    carried_.clear();
    joined.insert(joined.end(), items_.begin(), items_.end());
    Rewrite(joined, first, paragraph);
    if (mark_deleted) kept.items = std::move(joined);
  } else {
    if (mark_deleted) {
      kept.items = carried_;
      kept.items.insert(kept.items.end(), items_.begin(), items_.end());
    }
    EditParagraph();
  }
  source_conditions_ = items_.back().source_conditions;
  any_kept_ = true;
  last_ = std::move(kept);
}

// What removed paragraphs left: frames as a line of their own before the first one, element boundaries before
// the first item.
void StorySaver::WriteCarried() {
  const Paragraph& paragraph = document_.paragraphs[items_.back().ref];
  std::vector<std::string> lines;
  for (const std::uint32_t frame : frames_) {
    lines.push_back("<ParaLine \n <TextRectID " + std::to_string(frame) + ">\n> # end of ParaLine");
  }
  layout_.InsertBefore(paragraph.body, lines, &splice_);
  frames_.clear();
  if (carried_.empty()) return;
  std::vector<std::string> statements;
  for (const StoryItem& item : carried_) statements.push_back(StatementOf(item));
  carried_.clear();
  for (const StoryItem& item : items_) {
    if (IsFrame(item.kind)) continue;
    if (item.kind == ItemKind::kParagraphEnd) break;
    layout_.InsertBefore(item.begin, statements, &splice_);
    return;
  }
  layout_.InsertAtEnd(paragraph.last_line_end, statements, &splice_);
}

void StorySaver::FindNeeds() {
  const std::size_t count = items_.size();
  font_needs_.assign(count, {count, count});
  condition_needs_.assign(count, {count, count});
  for (std::size_t i = count - 1; i-- > 0;) {
    const StoryItem& next = items_[i + 1];
    font_needs_[i] = font_needs_[i + 1];
    condition_needs_[i] = condition_needs_[i + 1];
    if (NeedsFont(next)) {
      font_needs_[i].any = i + 1;
      if (!next.deleted) font_needs_[i].surviving = i + 1;
    }
    if (NeedsConditions(next)) {
      condition_needs_[i].any = i + 1;
      if (!next.deleted) condition_needs_[i].surviving = i + 1;
    }
  }
}

// Whether a statement of the source that sets a state is still wanted. Where nothing changed around it, it
// stays as it is, also where it says again what holds already; elsewhere it stays when what follows needs
// what it sets, unless only a change made it a repetition.
bool StorySaver::KeepsStatement(std::size_t index) const {
  const StoryItem& statement = items_[index];
  const bool font = statement.kind == ItemKind::kFont;
  const Needs& needs = font ? font_needs_[index] : condition_needs_[index];
  const std::uint32_t sets = font ? statement.source_font : statement.source_conditions;
  const std::uint32_t before = font ? source_font_ : source_conditions_;
  const std::uint32_t out = font ? out_font_ : out_conditions_;
  const auto unchanged = [&](const StoryItem& item) {
    return !item.deleted &&
           (font ? item.font == item.source_font : item.conditions == item.source_conditions);
  };
  if (out == before && (needs.any == items_.size() || unchanged(items_[needs.any]))) return true;
  // A font that no text of the source followed says nothing of any text, and ends with the paragraph.
  if (font && needs.any == items_.size()) return true;
  if (needs.surviving == items_.size()) return false;
  const StoryItem& next = items_[needs.surviving];
  const std::uint32_t needed = font ? next.font : next.conditions;
  return sets == needed && !(out == sets && before != sets);
}

void StorySaver::SaveStateStatement(std::size_t index) {
  const StoryItem& statement = items_[index];
  const bool keep = KeepsStatement(index);
  if (statement.kind == ItemKind::kFont) {
    source_font_ = statement.source_font;
    if (keep) out_font_ = statement.source_font;
  } else {
    source_conditions_ = statement.source_conditions;
    if (keep) out_conditions_ = statement.source_conditions;
  }
  if (keep) {
    line_keeps_ = true;
  } else {
    RemoveStatement(statement);
  }
}

// The statements that an item needs before it: Font, then Conditional.
void StorySaver::Require(const StoryItem& item, std::vector<std::string>* statements) {
  if (NeedsFont(item) && out_font_ != item.font) {
    statements->push_back(FontStatement(document_, item.font));
    out_font_ = item.font;
  }
  if (out_conditions_ != item.conditions) {
    statements->push_back(ConditionalStatement(document_, item.conditions));
    out_conditions_ = item.conditions;
  }
}

// Puts the font before an item that needs nothing else, in a line of its own. Colored text of one color takes
// the same lines again and again. False where there is more to it.
bool StorySaver::PutFontAlone(const StoryItem& item) {
  if (!NeedsFont(item) || out_font_ == item.font || out_conditions_ != item.conditions) return false;
  const MifLayout::LinePlace place = layout_.PlaceOf(item.begin);
  if (!place.own_line) return false;
  const std::size_t indentation = item.begin - place.line_begin;
  std::string_view& lines = font_lines_[{item.font, indentation}];
  if (lines.empty()) lines = splice_.Keep(layout_.Lines({FontStatement(document_, item.font)}, indentation));
  splice_.InsertKept(place.line_begin, lines);
  out_font_ = item.font;
  return true;
}

void StorySaver::RemoveStatement(const StoryItem& item) {
  const Span gone = layout_.Removal(item.begin, item.end);
  splice_.Remove(gone.begin, gone.end);
  line_lost_ = true;
}

void StorySaver::BeginLine(const StoryItem& line) {
  EndLine();
  line_ = {line.begin, line.end};
  line_mark_ = splice_.Mark();
  line_keeps_ = line_lost_ = false;
}

// A layout line in which nothing is left goes as a whole. The last one stays: it is where later text is
// added.
void StorySaver::EndLine() {
  if (!line_lost_ || line_keeps_) return;
  splice_.ReturnTo(line_mark_);
  const Span gone = layout_.Removal(line_.begin, line_.end);
  splice_.Remove(gone.begin, gone.end);
}

void StorySaver::EditParagraph() {
  const bool takes_carried = !carried_.empty();
  WriteCarried();
  FindNeeds();
  source_font_ = out_font_ = 0;
  line_keeps_ = true;
  line_lost_ = false;
  bool first_line = true;
  for (std::size_t i = 0; i < items_.size(); ++i) {
    const StoryItem& item = items_[i];
    switch (item.kind) {
      case ItemKind::kParagraphBegin:
        break;
      case ItemKind::kLine:
        BeginLine(item);
        line_keeps_ = first_line && takes_carried;
        first_line = false;
        break;
      case ItemKind::kTextFrame:
        line_keeps_ = true;
        break;
      case ItemKind::kFont:
      case ItemKind::kConditional:
        SaveStateStatement(i);
        break;
      default: {
        const bool is_mark = item.kind == ItemKind::kParagraphEnd;
        if (item.deleted) {
          if (!is_mark) RemoveStatement(item);
          break;
        }
        line_keeps_ = true;
        if (!is_mark && PutFontAlone(item)) break;
        std::vector<std::string> statements;
        Require(item, &statements);
        if (is_mark) {
          layout_.InsertAtEnd(document_.paragraphs[item.ref].last_line_end, statements, &splice_);
        } else {
          layout_.InsertBefore(item.begin, statements, &splice_);
        }
      }
    }
  }
  line_lost_ = false;
}

namespace {

// The statement Unique of a paragraph's head, empty when it has none.
std::string UniqueOf(const Document& document, const Paragraph& paragraph) {
  mif::Reader reader(
      std::string_view(document.source).substr(paragraph.begin, paragraph.end - paragraph.begin));
  reader.Next();
  while (reader.Next() && reader.token() != mif::Token::kParaLine) {
    if (reader.kind() == mif::Piece::kGroup && !reader.Skip()) break;
    if (reader.token() == mif::Token::kUnique && reader.kind() == mif::Piece::kLeaf) {
      return "<Unique " + std::string(reader.data()) + ">";
    }
  }
  return {};
}

void AppendIndented(const std::string& statement, std::size_t depth, std::string* text) {
  const std::string blanks(depth, ' ');
  text->append(blanks);
  for (const char c : statement) {
    text->push_back(c);
    if (c == '\n') text->append(blanks);
  }
  text->push_back('\n');
}

// A paragraph: its head, and one layout line, before which every text frame has a line of its own. The ends
// of line and paragraph are kParagraphEnd.
std::string ParagraphStatement(const std::vector<std::string>& head, const std::vector<std::uint32_t>& frames,
                               const std::vector<std::string>& items) {
  std::string text = "<Para \n";
  for (const std::string& statement : head) AppendIndented(statement, 1, &text);
  for (const std::uint32_t frame : frames) {
    AppendIndented("<ParaLine \n <TextRectID " + std::to_string(frame) + ">\n> # end of ParaLine", 1, &text);
  }
  AppendIndented("<ParaLine ", 1, &text);
  for (const std::string& statement : items) AppendIndented(statement, 2, &text);
  text.pop_back();
  return text;
}
constexpr const char* kParagraphEnd = "\n > # end of ParaLine\n> # end of Para";

}  // namespace

// Writes the paragraphs from `first` to `last` anew from what is left of their items, with every format
// written out. A paragraph mark that came from a hidden block ends a paragraph with the block's format.
void StorySaver::Rewrite(const std::vector<StoryItem>& items, std::uint32_t first, std::uint32_t last) {
  std::vector<std::string> paragraphs;
  std::vector<std::string> statements;
  std::vector<std::uint32_t> frames = std::move(frames_);
  frames_.clear();
  const auto finish = [&](const Paragraph& paragraph, bool own) {
    std::vector<std::string> head;
    std::string unique = own ? UniqueOf(document_, paragraph) : std::string();
    if (!unique.empty()) head.push_back(std::move(unique));
    for (std::string& statement : formats_.Statements(paragraph.state)) {
      head.push_back(std::move(statement));
    }
    paragraphs.push_back(ParagraphStatement(head, frames, statements));
    statements.clear();
    frames.clear();
    out_font_ = 0;
  };
  out_font_ = 0;
  for (const StoryItem& item : items) {
    if (item.kind == ItemKind::kTextFrame && !item.brought) frames.push_back(item.ref);
    const bool machinery = item.kind == ItemKind::kHiddenBegin || item.kind == ItemKind::kHiddenEnd;
    const bool foreign = item.brought && machinery;
    if (item.deleted || foreign || IsFrame(item.kind) || IsStateStatement(item.kind)) continue;
    Require(item, &statements);
    if (item.kind == ItemKind::kParagraphEnd) {
      finish(document_.paragraphs[item.ref], !item.brought);
    } else {
      statements.push_back(StatementOf(item));
    }
  }
  // The last mark was deleted, and what follows is not known yet.
  if (!statements.empty() || !frames.empty() || paragraphs.empty()) finish(document_.paragraphs[last], true);
  // The last paragraph ends with the source's own brackets, so that what is added at its end later finds its
  // place.
  const Paragraph& from = document_.paragraphs[first];
  const Paragraph& to = document_.paragraphs[last];
  for (std::size_t i = 0; i + 1 < paragraphs.size(); ++i) paragraphs[i] += kParagraphEnd;
  const bool has_line = to.last_line_end != to.close;
  if (!has_line) paragraphs.back() += kParagraphEnd;
  const std::uint32_t end =
      has_line ? layout_.LineBegin(to.last_line_end) : layout_.Removal(to.begin, to.end).end;
  splice_.Replace(layout_.Removal(from.begin, from.end).begin, end,
                  layout_.Lines(paragraphs, layout_.Indentation(from.begin)));
  written_[last] = true;
}

// A story has at least one paragraph: what nothing was left of becomes an empty one.
void StorySaver::WriteEmptyParagraph() {
  const Paragraph& paragraph = document_.paragraphs[last_removed_];
  std::vector<std::string> head;
  std::string unique = UniqueOf(document_, paragraph);
  if (!unique.empty()) head.push_back(std::move(unique));
  for (std::string& statement : formats_.Statements(paragraph.state)) {
    head.push_back(std::move(statement));
  }
  std::vector<std::string> statements;
  for (const StoryItem& item : carried_) statements.push_back(StatementOf(item));
  if (out_conditions_ != source_conditions_) {
    statements.push_back(ConditionalStatement(document_, source_conditions_));
  }
  layout_.InsertBefore(paragraph.begin, {ParagraphStatement(head, frames_, statements) + kParagraphEnd},
                       &splice_);
  removed_[last_removed_] = false;
  written_[last_removed_] = true;
}

}  // namespace qelm::embedded::model
