// Saving MIF: the source with the statements replaced that the edits call for.

#include <algorithm>
#include <span>
#include <unordered_set>

#include "embedded/mif/reader.h"
#include "embedded/model/files.h"
#include "embedded/model/mif_additions.h"
#include "embedded/model/mif_attributes.h"
#include "embedded/model/mif_layout.h"
#include "embedded/model/paragraph_format.h"
#include "embedded/model/splice.h"
#include "embedded/model/story_saver.h"
#include "embedded/model/text_access.h"

namespace qelm::embedded::model {
namespace {

class MifSaver {
 public:
  explicit MifSaver(const Document& document)
      : document_(document),
        layout_(document),
        formats_(document),
        removed_(document.paragraphs.size(), false),
        written_(document.paragraphs.size(), false),
        followed_by_other_(document.paragraphs.size(), false),
        moves_(document.blocks.size(), false),
        removed_flows_(document.flows.size(), false) {}

  Pieces Run();

 private:
  void SaveCatalogs();
  void SaveSwitch(std::string_view name, bool on, bool source_on, Span statement);
  void SaveParts();
  void SaveRow(const Part& row);
  void SaveFrames();
  void ChooseMovingBlocks();
  bool BlockMoves(const HiddenBlock& block) const;
  void SaveStories();
  void SaveStory(StorySaver* saver, std::uint32_t begin, std::uint32_t end);
  void RestBehind(std::uint32_t at);
  std::uint32_t UnchangedMark(std::uint32_t begin, std::uint32_t end) const;
  void SaveHiddenFlow(StorySaver* saver);
  StoryItem Seen(std::uint32_t index) const;
  void RemoveParagraphsIn(Span span);
  void RepairParagraphStates();
  void WriteFormat(const Paragraph& paragraph);
  void SaveAttributes();
  void Remove(Span span);

  const Document& document_;
  MifLayout layout_;
  Splice splice_;
  ParagraphFormats formats_;
  std::vector<bool> removed_;            // by paragraph
  std::vector<bool> written_;            // by paragraph: written anew, with its whole format
  std::vector<bool> followed_by_other_;  // by paragraph: what was added behind it has another format
  std::unordered_set<Id> moved_;         // elements whose statement is written in another place
  std::vector<bool> moves_;              // by hidden block: its text goes where it belongs, or it was deleted
  std::vector<bool> removed_flows_;
  std::uint32_t rested_ = 0;
};

Pieces MifSaver::Run() {
  ChooseMovingBlocks();
  SaveCatalogs();
  SaveSwitch("DShowAllConditions", document_.show_all, document_.source_show_all,
             document_.show_all_statement);
  SaveSwitch("DElementBordersOn", document_.boundaries, document_.source_boundaries,
             document_.boundaries_statement);
  SaveParts();
  SaveFrames();
  SaveStories();
  // Where something is added there are no other changes to the text.
  if (document_.additions.Pending()) {
    WriteAdditions(document_, layout_, &formats_, {&removed_, &followed_by_other_}, &splice_);
  }
  RepairParagraphStates();
  SaveAttributes();
  for (const auto& [statement, edit] : document_.replacements) {
    splice_.ReplaceWhatStays(edit.place.begin, edit.place.end, edit.text);
  }
  return splice_.Apply(document_.source);
}

void MifSaver::Remove(Span span) {
  const Span gone = layout_.Removal(span.begin, span.end);
  splice_.Remove(gone.begin, gone.end);
}

void MifSaver::SaveCatalogs() {
  std::vector<std::string> added;
  for (const Condition& condition : document_.conditions) {
    const char* const state = condition.shown ? "<CState CShown>" : "<CState CHidden>";
    if (condition.created) {
      added.push_back("<Condition \n <CTag " + layout_.Quoted(condition.name) + ">\n " + state +
                      "\n <CStyle CAsIs>\n> # end of Condition");
    } else if (condition.declared && condition.shown != condition.source_shown) {
      const bool missing = condition.state.Empty();
      splice_.Replace(condition.state.begin, condition.state.end, missing ? " " + std::string(state) : state);
    }
  }
  AddToCatalog(document_, layout_, document_.condition_catalog, "ConditionCatalog", added, &splice_);
  added.clear();
  for (const Color& color : document_.colors) {
    if (!color.created) continue;
    added.push_back("<Color \n <ColorTag " + layout_.Quoted(color.name) + ">\n <ColorCyan " +
                    std::to_string(color.cyan) + ">\n <ColorMagenta " + std::to_string(color.magenta) +
                    ">\n <ColorYellow " + std::to_string(color.yellow) + ">\n <ColorBlack " +
                    std::to_string(color.black) + ">\n> # end of Color");
  }
  AddToCatalog(document_, layout_, document_.color_catalog, "ColorCatalog", added, &splice_);
}

// A switch of the Document statement that is not what the source says.
void MifSaver::SaveSwitch(std::string_view name, bool on, bool source_on, Span statement) {
  if (on == source_on) return;
  const std::string value = on ? "Yes" : "No";
  const std::string whole = "<" + std::string(name) + " " + value + ">";
  if (!statement.Empty()) {
    splice_.Replace(statement.begin, statement.end, value);
  } else if (document_.document_statement.Empty() && document_.content_begin != 0) {
    // It follows the catalogs and comes before everything else.
    layout_.InsertBefore(document_.content_begin, {"<Document \n " + whole + "\n> # end of Document"},
                         &splice_);
  } else {
    AddToCatalog(document_, layout_, document_.document_statement, "Document", {whole}, &splice_);
  }
}

void MifSaver::SaveParts() {
  for (std::size_t i = 1; i < document_.parts.size(); ++i) {
    const Part& part = document_.parts[i];
    if (part.deleted) {
      const bool outermost = part.parent == 0 || !document_.parts[part.parent].deleted;
      if (!outermost) continue;
      Remove(part.span);
      RemoveParagraphsIn(part.span);
    } else if (part.kind == ElementKind::kTableRow && part.conditions != part.source_conditions) {
      SaveRow(part);
    }
  }
}

// A row's condition is its first child (MIF reference, "Row"); there is no Unconditional.
void MifSaver::SaveRow(const Part& row) {
  if (!row.condition_statement.Empty()) Remove(row.condition_statement);
  if (row.conditions == 0) return;
  const std::string statement = ConditionalStatement(document_, row.conditions);
  mif::Reader reader(document_.At(row.span));
  reader.Next();
  if (reader.kind() == mif::Piece::kGroup && reader.Next() && reader.kind() != mif::Piece::kGroupEnd) {
    layout_.InsertBefore(row.span.begin + reader.begin(), {statement}, &splice_);
  }
}

// A frame goes with its anchor, and the flows that run through it go with it.
void MifSaver::SaveFrames() {
  std::vector<bool> gone(document_.frames.size(), false);
  for (std::size_t i = 1; i < document_.frames.size(); ++i) {
    const AnchoredFrame& frame = document_.frames[i];
    if (frame.anchor == kNoIndex || !document_.items[frame.anchor].Is(kDeleted)) continue;
    gone[i] = true;
    Remove(frame.span);
  }
  for (const auto& [frame, flow] : document_.frame_flows) {
    if (!gone[frame]) continue;
    removed_flows_[flow] = true;
    Remove(document_.flows[flow].span);
    RemoveParagraphsIn(document_.flows[flow].span);
  }
}

void MifSaver::RemoveParagraphsIn(Span span) {
  // Copies have none of their own, so that all are one run.
  const std::span<const Paragraph> paragraphs = document_.paragraphs.Run(1, document_.paragraphs.size() - 1);
  auto at = std::lower_bound(
      paragraphs.begin(), paragraphs.end(), span.begin,
      [](const Paragraph& paragraph, std::uint32_t offset) { return paragraph.begin < offset; });
  for (; at != paragraphs.end() && at->begin < span.end; ++at) {
    removed_[static_cast<std::size_t>(at - paragraphs.begin()) + 1] = true;
  }
}

// A block stays where it is, byte for byte, unless its text or its state changed, or it is to be seen now.
bool MifSaver::BlockMoves(const HiddenBlock& block) const {
  for (std::uint32_t i = block.first_item; i < block.end_item; ++i) {
    const Item& item = document_.items[i];
    if (item.Is(kDeleted)) return true;
    if (!document_.source_conditions.empty() && document_.source_conditions[i] != item.conditions)
      return true;
    if (!document_.source_fonts.empty() && document_.source_fonts[i] != item.font) return true;
  }
  for (std::uint32_t i = block.first_item; i < block.end_item; ++i) {
    const Item& item = document_.items[i];
    if (IsContent(item.kind)) {
      return IsShown(document_, item.conditions) && !IsShown(document_, item.conditions, true);
    }
  }
  return false;
}

void MifSaver::ChooseMovingBlocks() {
  for (std::size_t i = 1; i < document_.blocks.size(); ++i) {
    const HiddenBlock& block = document_.blocks[i];
    moves_[i] = block.place != kNoIndex && BlockMoves(block);
  }
}

StoryItem MifSaver::Seen(std::uint32_t index) const {
  const Item& item = document_.items[index];
  StoryItem seen;
  seen.begin = item.begin;
  seen.end = item.end;
  seen.ref = item.ref;
  seen.kind = item.kind;
  seen.deleted = item.Is(kDeleted);
  seen.conditions = item.conditions;
  seen.source_conditions =
      document_.source_conditions.empty() ? item.conditions : document_.source_conditions[index];
  seen.font = item.font;
  seen.source_font = document_.source_fonts.empty() ? item.font : document_.source_fonts[index];
  return seen;
}

// The mark of the paragraph that begins here, where nothing in it changed; kNoIndex where something did or
// hidden text belongs in it.
std::uint32_t MifSaver::UnchangedMark(std::uint32_t begin, std::uint32_t end) const {
  const auto& conditions = document_.source_conditions;
  const auto& fonts = document_.source_fonts;
  for (std::uint32_t i = begin; i < end;) {
    const Item& item = document_.items[i];
    const bool changed = item.Is(kDeleted) || item.Is(kInBlock) || item.kind == ItemKind::kHiddenPlace ||
                         (!conditions.empty() && conditions[i] != item.conditions) ||
                         (!fonts.empty() && fonts[i] != item.font);
    if (changed) return kNoIndex;
    if (item.kind == ItemKind::kParagraphEnd) return i;
    const bool is_anchor = item.kind == ItemKind::kTableAnchor || item.kind == ItemKind::kNoteAnchor;
    i = is_anchor ? EndOfItem(document_, i) : i + 1;
  }
  return kNoIndex;
}

// What surrounds the statements that go is looked at, here and there in all of the source.
void MifSaver::RestBehind(std::uint32_t at) {
  constexpr std::uint32_t kStep = 1U << 25U;
  if (at - rested_ < kStep) return;
  document_.source.Rest(0, document_.source.size());
  rested_ = at;
}

void MifSaver::SaveStory(StorySaver* saver, std::uint32_t begin, std::uint32_t end) {
  saver->Begin();
  for (std::uint32_t i = begin; i < end;) {
    const Item& item = document_.items[i];
    if (item.kind == ItemKind::kParagraphBegin) {
      RestBehind(item.begin);
      const std::uint32_t mark = UnchangedMark(i, end);
      if (mark != kNoIndex && saver->Pass(document_.items[mark].ref, document_.items[mark].conditions)) {
        i = mark + 1;
        continue;
      }
    }
    StoryItem seen = Seen(i);
    if (item.Is(kInBlock)) seen.brought = true;
    if (item.kind == ItemKind::kHiddenPlace) {
      const HiddenBlock& block = document_.blocks[item.ref];
      if (moves_[item.ref]) {
        seen.deleted = true;
      } else if (block.first_item != kNoIndex) {
        saver->Add(seen);
        i = block.end_item;
        continue;
      }
    }
    saver->Add(seen);
    i = EndOfItem(document_, i);
  }
  saver->End();
}

void MifSaver::SaveHiddenFlow(StorySaver* saver) {
  const auto& stored = document_.hidden_items;
  std::vector<bool> leaves(stored.size(), false);
  bool any = false;
  for (std::size_t i = 1; i < document_.blocks.size(); ++i) {
    if (!moves_[i]) continue;
    any = true;
    const HiddenBlock& block = document_.blocks[i];
    std::fill(leaves.begin() + block.first_stored, leaves.begin() + block.end_stored, true);
  }
  if (!any) return;
  saver->Begin();
  for (std::size_t i = 0; i < stored.size(); ++i) {
    const Item& item = stored[i];
    StoryItem seen;
    seen.begin = item.begin;
    seen.end = item.end;
    seen.ref = item.ref;
    seen.kind = item.kind;
    seen.conditions = seen.source_conditions = item.conditions;
    seen.font = seen.source_font = item.font;
    const bool is_statement = item.kind == ItemKind::kFont || item.kind == ItemKind::kConditional;
    seen.deleted = leaves[i] && !is_statement && item.kind != ItemKind::kParagraphEnd;
    saver->Add(seen);
  }
  saver->End();
}

void MifSaver::SaveStories() {
  StorySaver saver(document_, layout_, &splice_, &formats_, &removed_, &written_, &moved_);
  for (std::size_t i = 1; i < document_.flows.size(); ++i) {
    const Flow& flow = document_.flows[i];
    if (removed_flows_[i]) continue;
    SaveStory(&saver, flow.first_item, flow.end_item);
  }
  for (const Part& part : document_.parts) {
    const bool has_text = part.kind == ElementKind::kTableCell || part.kind == ElementKind::kTableTitle ||
                          part.kind == ElementKind::kFootnote;
    if (!has_text || part.deleted || part.end_item <= part.first_item + 2) continue;
    SaveStory(&saver, part.first_item + 1, part.end_item - 1);
  }
  SaveHiddenFlow(&saver);
}

// A paragraph without a catalog format takes the one of the paragraph before it in the file. Where that one
// went, the paragraph gets its format written out.
void MifSaver::RepairParagraphStates() {
  std::uint32_t out = 0;
  for (std::size_t i = 1; i < document_.paragraphs.size(); ++i) {
    if (removed_[i]) continue;
    const Paragraph& paragraph = document_.paragraphs[i];
    const std::uint32_t relies_on =
        paragraph.sets_state ? document_.paragraph_states[paragraph.state].before : paragraph.state;
    if (!written_[i] && !paragraph.absolute && out != relies_on) WriteFormat(paragraph);
    out = followed_by_other_[i] ? kNoIndex : paragraph.state;
  }
}

void MifSaver::WriteFormat(const Paragraph& paragraph) {
  const std::vector<std::string> statements = formats_.Statements(paragraph.state);
  if (statements.empty()) return;
  if (paragraph.sets_state) {
    const Span own = document_.paragraph_states[paragraph.state].override_statement;
    const Span lines = layout_.Removal(own.begin, own.end);
    splice_.Replace(lines.begin, lines.end, layout_.Lines(statements, layout_.Indentation(own.begin)));
    return;
  }
  // Behind Unique, which is the first child where there is one.
  mif::Reader reader(
      std::string_view(document_.source).substr(paragraph.begin, paragraph.end - paragraph.begin));
  reader.Next();
  while (reader.Next() && reader.token() == mif::Token::kUnique) {
  }
  if (reader.Failed()) return;
  layout_.InsertBefore(paragraph.begin + reader.begin(), statements, &splice_);
}

void MifSaver::SaveAttributes() {
  for (Id id = 1; id < document_.elements.size(); ++id) {
    const Element& element = document_.elements[id];
    // A new element is written with its attributes.
    if (document_.additions.IsNew(id)) break;
    if (!element.attributes_changed || element.deleted || moved_.contains(id)) continue;
    SaveElementAttributes(document_, layout_, element, &splice_);
  }
}

}  // namespace

Pieces MifPieces(const Document& document) { return MifSaver(document).Run(); }

}  // namespace qelm::embedded::model
