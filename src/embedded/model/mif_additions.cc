#include "embedded/model/mif_additions.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include "embedded/mif/reader.h"
#include "embedded/model/mif_run.h"
#include "embedded/model/mif_scan.h"
#include "embedded/model/text_access.h"

namespace qelm::embedded::model {
namespace {

// A place between two items.
struct Place {
  std::uint32_t before = kNoIndex;  // the item behind whose statement it is; none: at the end of `line_of`
  std::uint32_t tail = 0;           // the first item behind it
  std::uint32_t line_of = 0;        // paragraph
};

// The text that an element has of its own.
struct OwnText {
  bool mixed = false;      // there is some
  std::uint32_t font = 0;  // of the first that the source has
};

class AdditionsWriter {
 public:
  AdditionsWriter(const Document& document, const MifLayout& layout, ParagraphFormats* formats,
                  const ParagraphChanges& changes, Splice* splice)
      : document_(document),
        additions_(document.additions),
        layout_(layout),
        formats_(*formats),
        changes_(changes),
        splice_(*splice),
        numbers_(document.next_unique) {}

  void Run();

 private:
  void ReadFormattings(Span catalog);
  Span FindCatalog() const;
  void SaveDefinitions(Span catalog);
  void ChangeDefinition(Span statement, const DefinitionChange& change);
  std::string NewDefinition(const DefinitionChange& change) const;
  void SaveParent(Id parent);
  void SaveRun(Id parent, Id last_before, Id first, const OwnText& own_text);
  Place PlaceIn(Id parent, Id last_before) const;
  Place PlaceAtBegin(Id parent) const;
  Span ContentOf(Id element, std::uint32_t* tail) const;
  void EmptyElement(Id element, Place* place);
  bool HeadHolds(std::uint32_t item) const;
  bool TailHolds(std::uint32_t item) const;
  std::uint32_t FontNeeded(std::uint32_t tail, std::uint32_t source_font, std::uint32_t font) const;
  bool ConditionsNeeded(std::uint32_t tail) const;
  OwnText OwnTextOf(Id parent) const;
  std::uint32_t ParagraphAt(std::uint32_t item);
  void Put(const Place& place, const std::string& lines);
  void PutBefore(std::uint32_t at, const std::string& lines);
  void PutAtEnd(const Paragraph& paragraph, std::size_t indentation, const std::string& lines);
  std::size_t IndentationAt(const Place& place) const;
  void GiveFormat(std::uint32_t paragraph, const std::string& format);
  void SaveInsertion(const Insertion& insertion);
  void Rename(Id element);
  void RaiseNextUnique();

  const Document& document_;
  const Additions& additions_;
  const MifLayout& layout_;
  ParagraphFormats& formats_;
  const ParagraphChanges& changes_;
  Splice& splice_;
  Numbers numbers_;
  Formattings formattings_;
  std::vector<bool> is_emptied_;
  std::vector<std::uint32_t> paragraphs_;  // by item, when they were asked for
};

void AdditionsWriter::Run() {
  const Span catalog = FindCatalog();
  ReadFormattings(catalog);
  SaveDefinitions(catalog);
  std::vector<Id> emptied = additions_.emptied;
  std::sort(emptied.begin(), emptied.end());
  is_emptied_.assign(document_.elements.size(), false);
  for (const Id id : emptied) is_emptied_[id] = true;
  // In the order of their places, so that of two runs in one paragraph the earlier one is written first.
  std::vector<Id> parents = additions_.parents;
  const auto first_item = [&](Id id) { return document_.elements[id].first_item; };
  std::sort(parents.begin(), parents.end(), [&](Id a, Id b) {
    return first_item(a) != first_item(b) ? first_item(a) < first_item(b) : a < b;
  });
  parents.erase(std::unique(parents.begin(), parents.end()), parents.end());
  for (const Id parent : parents) {
    if (!document_.elements[parent].deleted) SaveParent(parent);
  }
  for (const Insertion& insertion : additions_.insertions) SaveInsertion(insertion);
  std::vector<Id> renamed = additions_.renamed;
  std::sort(renamed.begin(), renamed.end());
  renamed.erase(std::unique(renamed.begin(), renamed.end()), renamed.end());
  for (const Id id : renamed) Rename(id);
  RaiseNextUnique();
}

// ---------------------------------------------------------------------------------------------------------------
// Element definitions.

// The catalog stands before everything that has text.
Span AdditionsWriter::FindCatalog() const {
  mif::Reader reader(document_.source);
  while (reader.Next()) {
    if (reader.begin() >= document_.content_begin && document_.content_begin != 0) break;
    const std::uint32_t begin = reader.begin();
    const bool wanted = reader.name() == "ElementDefCatalog";
    if (reader.kind() == mif::Piece::kGroup && !reader.Skip()) break;
    if (wanted) return {begin, reader.end()};
  }
  return {};
}

void AdditionsWriter::ReadFormattings(Span catalog) {
  mif::Reader reader(document_.At(catalog));
  std::string_view name;
  Formatting formatting;
  const auto text = [&] { return mif::DecodeString(reader.data(), document_.encoding); };
  while (reader.Next()) {
    if (reader.kind() == mif::Piece::kGroupEnd) {
      if (reader.name() == "ElementDef" && !name.empty()) formattings_[name] = std::exchange(formatting, {});
    } else if (reader.token() == mif::Token::kEDTag) {
      const auto known = document_.definition_index.find(text());
      name = known == document_.definition_index.end() ? std::string_view() : known->first;
    } else if (reader.name() == "EDPgfFormat") {
      formatting.paragraph_format = text();
    } else if (reader.name() == "IsTextRange") {
      formatting.is_text_range = formatting.is_text_range || reader.data() == "Yes";
    }
  }
  for (const DefinitionChange& change : additions_.definitions) {
    formattings_[document_.definitions[change.definition].name].paragraph_format = change.paragraph_format;
  }
}

std::string AdditionsWriter::NewDefinition(const DefinitionChange& change) const {
  return "<ElementDef \n <EDTag " + layout_.Quoted(document_.definitions[change.definition].name) +
         ">\n <EDObject EDContainer>\n <EDValidHighestLevel No>\n <EDGeneralRule " +
         layout_.Quoted(change.content_rule) +
         ">\n <EDExclusions >\n <EDInclusions >\n <EDAlsoInsert >\n <EDAttrDefinitions >\n <EDPgfFormat " +
         layout_.Quoted(change.paragraph_format) +
         ">\n <EDTextFormatRules >\n <EDObjectFormatRules None>\n <EDPrefixRules >\n <EDSuffixRules >\n "
         "<EDStartElementRules >\n <EDEndElementRules >\n <EDComments `'>\n> # end of ElementDef";
}

void AdditionsWriter::ChangeDefinition(Span statement, const DefinitionChange& change) {
  struct Wanted {
    std::string_view name;
    const std::string& value;
    bool found = false;
  };
  Wanted wanted[] = {{"EDGeneralRule", change.content_rule}, {"EDPgfFormat", change.paragraph_format}};
  mif::Reader reader(document_.At(statement));
  reader.Next();
  const std::size_t inside = reader.depth();
  while (reader.Next() && reader.depth() >= inside) {
    if (reader.kind() == mif::Piece::kGroup) {
      if (!reader.Skip()) return;
      continue;
    }
    for (Wanted& one : wanted) {
      if (reader.name() != one.name || one.found) continue;
      one.found = true;
      if (mif::DecodeString(reader.data(), document_.encoding) == one.value) continue;
      splice_.Replace(statement.begin + reader.begin(), statement.begin + reader.end(),
                      "<" + std::string(one.name) + " " + layout_.Quoted(one.value) + ">");
    }
  }
  std::vector<std::string> missing;
  for (const Wanted& one : wanted) {
    if (!one.found && !one.value.empty())
      missing.push_back("<" + std::string(one.name) + " " + layout_.Quoted(one.value) + ">");
  }
  layout_.InsertAtEnd(statement.end - 1, missing, &splice_);
}

// The last change of a definition counts. One that the catalog has is changed, others are added.
void AdditionsWriter::SaveDefinitions(Span catalog) {
  if (additions_.definitions.empty()) return;
  std::unordered_map<Id, const DefinitionChange*> last;
  for (const DefinitionChange& change : additions_.definitions) last[change.definition] = &change;
  mif::Reader reader(document_.At(catalog));
  Id id = 0;
  while (reader.Next()) {
    if (reader.token() == mif::Token::kEDTag) {
      const auto known =
          document_.definition_index.find(mif::DecodeString(reader.data(), document_.encoding));
      id = known == document_.definition_index.end() ? 0 : known->second;
    }
    if (reader.kind() != mif::Piece::kGroupEnd || reader.name() != "ElementDef") continue;
    if (const auto change = last.find(id); change != last.end()) {
      ChangeDefinition({catalog.begin + reader.group_begin(), catalog.begin + reader.end()}, *change->second);
      last.erase(change);
    }
  }
  std::vector<std::string> added;
  for (const DefinitionChange& change : additions_.definitions) {
    const auto wanted = last.find(change.definition);
    if (wanted == last.end()) continue;
    added.push_back(NewDefinition(*wanted->second));
    last.erase(wanted);
  }
  AddToCatalog(document_, layout_, catalog, "ElementDefCatalog", added, &splice_);
}

// ---------------------------------------------------------------------------------------------------------------
// Where new content goes.

Place AdditionsWriter::PlaceAtBegin(Id parent) const {
  const Element& element = document_.elements[parent];
  Place place;
  std::uint32_t at = element.first_item;
  if (HasPart(element.kind)) {
    // In a cell, title or footnote: the beginning of its first line.
    const Part& part = document_.parts[document_.PartOf(element)];
    at = part.first_item + 1;
    while (at < part.end_item && document_.items[at].kind != ItemKind::kParagraphBegin) ++at;
    place.line_of = document_.items[at].ref;
    for (++at; at < part.end_item; ++at) {
      const ItemKind kind = document_.items[at].kind;
      if (kind == ItemKind::kTextFrame) place.before = at;
      if (kind != ItemKind::kLine && kind != ItemKind::kTextFrame) break;
    }
    place.tail = at;
    return place;
  }
  place.before = at;
  // Behind the text that the definition generates.
  while (at + 1 < element.end_item && document_.items[at + 1].Is(kGenerated)) ++at;
  if (at + 1 < element.end_item && document_.items[at + 1].kind == ItemKind::kPrefixEnd)
    place.before = at + 1;
  place.tail = place.before + 1;
  return place;
}

Place AdditionsWriter::PlaceIn(Id parent, Id last_before) const {
  if (last_before == 0) return PlaceAtBegin(parent);
  const Element& element = document_.elements[last_before];
  Place place;
  place.tail = element.end_item;
  place.before = element.end_item - 1;
  if (element.kind == ElementKind::kTable || element.kind == ElementKind::kFootnote) {
    place.before = element.first_item;
  } else if (element.kind == ElementKind::kText) {
    // What is anchored last in a text follows it.
    place.tail = EndOfItem(document_, place.before);
  }
  return place;
}

std::size_t AdditionsWriter::IndentationAt(const Place& place) const {
  if (place.before != kNoIndex) return layout_.Indentation(document_.items[place.before].begin);
  return layout_.Indentation(document_.paragraphs[place.line_of].begin) + 2;
}

// Whether a line goes behind the line of a statement or into it.
void AdditionsWriter::Put(const Place& place, const std::string& lines) {
  if (lines.empty()) return;
  if (place.before != kNoIndex) {
    const Item& before = document_.items[place.before];
    const Span whole = layout_.Removal(before.begin, before.end);
    const bool own_line = whole.end > before.end && document_.source[whole.end - 1] == '\n';
    if (own_line) {
      splice_.Insert(whole.end, lines);
    } else {
      splice_.Insert(before.end, std::string(layout_.LineEnd()) + lines);
    }
    return;
  }
  const Item& tail = document_.items[place.tail];
  if (tail.kind == ItemKind::kParagraphEnd) {
    PutAtEnd(document_.paragraphs[tail.ref], IndentationAt(place), lines);
  } else {
    PutBefore(tail.begin, lines);
  }
}

void AdditionsWriter::PutBefore(std::uint32_t at, const std::string& lines) {
  const std::uint32_t line = layout_.LineBegin(at);
  splice_.Insert(line, line == at ? std::string(layout_.LineEnd()) + lines : lines);
}

// Text stands in a line, and a paragraph that holds nothing need not have one.
void AdditionsWriter::PutAtEnd(const Paragraph& paragraph, std::size_t indentation,
                               const std::string& lines) {
  const bool has_line = paragraph.last_line_end != paragraph.close;
  const std::size_t outer = indentation > 0 ? indentation - 1 : 0;
  PutBefore(paragraph.last_line_end, has_line ? lines
                                              : layout_.Lines({"<ParaLine "}, outer) + lines +
                                                    layout_.Lines({"> # end of ParaLine"}, outer));
}

// Whether the paragraph has content, or an element that is complete, before the item.
bool AdditionsWriter::HeadHolds(std::uint32_t item) const {
  while (item-- > 0) {
    const Item& before = document_.items[item];
    if (before.kind == ItemKind::kParagraphBegin || before.kind == ItemKind::kPartBegin) return false;
    if (before.kind == ItemKind::kElementEnd || before.kind == ItemKind::kPartEnd) return true;
    if (IsContent(before.kind) && !before.Is(kGenerated)) return true;
  }
  return false;
}

// Whether it has content or the beginning of an element from the item on.
bool AdditionsWriter::TailHolds(std::uint32_t item) const {
  for (; item < document_.items.size(); ++item) {
    const Item& after = document_.items[item];
    if (after.kind == ItemKind::kParagraphEnd || after.kind == ItemKind::kPartEnd) return false;
    if (after.kind == ItemKind::kElementBegin) return true;
    if (IsContent(after.kind) && !after.Is(kGenerated)) return true;
  }
  return false;
}

// The font state that has to hold behind a run, where `font` holds and the source has `source_font`: the one
// that the next content relies on.
std::uint32_t AdditionsWriter::FontNeeded(std::uint32_t tail, std::uint32_t source_font,
                                          std::uint32_t font) const {
  if (font == source_font) return font;
  for (; tail < document_.items.size(); ++tail) {
    const Item& after = document_.items[tail];
    if (after.kind == ItemKind::kFont || after.kind == ItemKind::kParagraphEnd) return font;
    if (IsContent(after.kind)) return source_font;
  }
  return font;
}

// Whether something behind a run relies on the conditions before it.
bool AdditionsWriter::ConditionsNeeded(std::uint32_t tail) const {
  for (; tail < document_.items.size(); ++tail) {
    const Item& after = document_.items[tail];
    if (after.kind == ItemKind::kConditional) return false;
    if (after.kind == ItemKind::kPartEnd || HasConditions(after.kind)) return true;
  }
  return true;
}

OwnText AdditionsWriter::OwnTextOf(Id parent) const {
  OwnText text;
  bool has_font = false;
  for (Id child = document_.elements[parent].first_child; child != 0;
       child = document_.elements[child].next) {
    const Element& element = document_.elements[child];
    if (element.kind != ElementKind::kText) continue;
    const bool is_new = additions_.IsNew(child);
    text.mixed = text.mixed || !is_new || !additions_.Of(child).is_paragraph;
    if (!is_new && !std::exchange(has_font, true)) text.font = document_.items[element.first_item].font;
  }
  return text;
}

std::uint32_t AdditionsWriter::ParagraphAt(std::uint32_t item) {
  if (paragraphs_.empty()) paragraphs_ = ParagraphsOfItems(document_);
  return item < paragraphs_.size() ? paragraphs_[item] : 0;
}

// ---------------------------------------------------------------------------------------------------------------
// Content that goes.

// The bytes of what an element of the source holds, and the first item behind.
Span AdditionsWriter::ContentOf(Id id, std::uint32_t* tail) const {
  const Element& element = document_.elements[id];
  const Place begin = PlaceAtBegin(id);
  std::uint32_t end = element.end_item - 1;
  if (HasPart(element.kind)) {
    // Up to the end of the last paragraph.
    while (end > begin.tail && document_.items[end].kind != ItemKind::kParagraphEnd) --end;
  } else {
    for (std::uint32_t i = end; i > begin.tail; --i) {
      if (document_.items[i - 1].kind == ItemKind::kSuffixBegin) end = i - 1;
    }
  }
  *tail = end;
  if (end <= begin.tail) return {};
  const auto behind = [&](std::uint32_t at, std::uint32_t statement_begin) {
    const Span whole = layout_.Removal(statement_begin, at);
    return whole.end > at && document_.source[whole.end - 1] == '\n' ? whole.end : at;
  };
  const auto before = [&](std::uint32_t item) {
    const Item& at = document_.items[item];
    return layout_.LineBegin(at.kind == ItemKind::kParagraphEnd ? document_.paragraphs[at.ref].last_line_end
                                                                : at.begin);
  };
  const std::uint32_t from = begin.before != kNoIndex ? behind(document_.items[begin.before].end,
                                                               document_.items[begin.before].begin)
                                                      : before(begin.tail);
  const std::uint32_t to = before(end);
  return from < to ? Span{from, to} : Span{};
}

// Takes out what the element holds. Where that runs over several paragraphs they become one; the text frames
// that are entered in between stay.
void AdditionsWriter::EmptyElement(Id id, Place* place) {
  std::uint32_t tail = 0;
  const Span content = ContentOf(id, &tail);
  std::string frames;
  std::uint32_t first_paragraph = 0;
  const std::size_t indentation = IndentationAt(*place);
  for (std::uint32_t i = place->tail; i < tail; ++i) {
    const Item& item = document_.items[i];
    if (item.kind == ItemKind::kParagraphEnd && first_paragraph == 0) first_paragraph = item.ref;
    if (item.kind == ItemKind::kParagraphBegin) (*changes_.removed)[item.ref] = true;
    if (item.kind == ItemKind::kTextFrame) {
      frames += layout_.Lines({"> # end of ParaLine", "<ParaLine "}, indentation > 0 ? indentation - 1 : 0);
      frames += layout_.Lines({"<TextRectID " + std::to_string(item.ref) + ">"}, indentation);
    }
  }
  if (!content.Empty()) splice_.Replace(content.begin, content.end, frames);
  place->tail = tail;
}

// ---------------------------------------------------------------------------------------------------------------
// Runs.

void AdditionsWriter::SaveParent(Id parent) {
  const OwnText own_text = OwnTextOf(parent);
  if (is_emptied_[parent]) {
    SaveRun(parent, 0, document_.elements[parent].first_child, own_text);
    return;
  }
  ForEachNewRun(document_.elements, additions_, parent,
                [&](Id last_before, Id first) { SaveRun(parent, last_before, first, own_text); });
}

// Writes the new children from `first` on that stand behind `last_before`.
void AdditionsWriter::SaveRun(Id parent, Id last_before, Id first, const OwnText& own_text) {
  Place place = PlaceIn(parent, last_before);
  std::uint32_t source_state = place.before != kNoIndex ? place.before : place.tail;
  MifRun::Start start;
  start.indentation = IndentationAt(place);
  const Item& own = document_.items[document_.elements[parent].first_item];
  const bool in_part = HasPart(document_.elements[parent].kind);
  const Item& before = document_.items[source_state];
  start.font = before.font;
  start.conditions = place.before == kNoIndex ? std::uint16_t{0} : before.conditions;
  start.wanted_font = own_text.font;
  start.wanted_conditions = in_part ? std::uint16_t{0} : own.conditions;
  std::uint32_t source_font = before.font;
  std::uint16_t source_conditions = start.conditions;
  if (is_emptied_[parent]) {
    EmptyElement(parent, &place);
    if (place.tail > source_state + 1) {
      source_font = document_.items[place.tail - 1].font;
      source_conditions = document_.items[place.tail - 1].conditions;
    }
  }
  const bool in_block = before.Is(kInBlock);
  start.holds_content = last_before != 0 || (!in_part && HeadHolds(document_.elements[parent].first_item));
  start.in_line = in_block || own_text.mixed;
  if (last_before != 0) {
    const Element& sibling = document_.elements[last_before];
    start.in_line = start.in_line || HeadHolds(sibling.first_item) || TailHolds(place.tail);
  } else if (!in_part) {
    start.in_line = start.in_line || HeadHolds(document_.elements[parent].first_item);
  }
  start.may_break = !in_block;
  const std::uint32_t paragraph = ParagraphAt(place.tail);
  if (paragraph != 0) start.format = formats_.Statements(document_.paragraphs[paragraph].state);
  const bool in_line = start.in_line;
  MifRun run(document_, layout_, formattings_, &numbers_, std::move(start));
  bool last_is_block = false;
  for (Id child = first; child != 0 && additions_.IsNew(child); child = document_.elements[child].next) {
    run.Add(child, !in_line);
    last_is_block = run.IsBlock(child) && (!in_line || additions_.Of(child).is_paragraph);
  }
  // Also where nothing is written: with what went, statements may have gone that the rest relies on.
  const bool leaves_tail = last_is_block && !in_block && TailHolds(place.tail);
  const bool ends_with_other = run.other_format() && !leaves_tail;
  if (leaves_tail) run.BreakBefore();
  run.Restore(FontNeeded(place.tail, source_font, run.font()));
  if (ConditionsNeeded(place.tail)) run.RestoreConditions(source_conditions);
  Put(place, run.lines());
  if (!run.first_format().empty() && paragraph != 0) GiveFormat(paragraph, run.first_format());
  const bool other = ends_with_other || (!run.first_format().empty() && !run.broke());
  if (other && paragraph != 0) (*changes_.followed_by_other)[paragraph] = true;
}

// Gives the paragraph another format: instead of what its head says of it, and of the number that it had.
void AdditionsWriter::GiveFormat(std::uint32_t index, const std::string& format) {
  const Paragraph& paragraph = document_.paragraphs[index];
  if (document_.paragraph_states[paragraph.state].tag == format) return;
  mif::Reader reader(
      std::string_view(document_.source).substr(paragraph.begin, paragraph.end - paragraph.begin));
  reader.Next();
  std::uint32_t place = 0;
  while (reader.Next() && reader.token() != mif::Token::kParaLine) {
    const std::uint32_t begin = reader.begin();
    if (reader.kind() == mif::Piece::kGroup && !reader.Skip()) return;
    const bool goes = reader.name() == "PgfTag" || reader.name() == "Pgf" || reader.name() == "PgfNumString";
    if (place == 0 && reader.token() != mif::Token::kUnique) place = paragraph.begin + begin;
    if (!goes) continue;
    const Span gone = layout_.Removal(paragraph.begin + begin, paragraph.begin + reader.end());
    splice_.Remove(gone.begin, gone.end);
  }
  if (reader.Failed()) return;
  const std::string tag = "<PgfTag " + layout_.Quoted(format) + ">";
  const std::string statement =
      document_.paragraph_formats.contains(format) ? tag : "<Pgf \n " + tag + "\n> # end of Pgf";
  if (place == 0) place = paragraph.begin + reader.begin();
  layout_.InsertBefore(place, {statement}, &splice_);
}

void AdditionsWriter::SaveInsertion(const Insertion& insertion) {
  const Item& item = document_.items[insertion.item];
  MifRun::Start start;
  const bool at_end = item.kind == ItemKind::kParagraphEnd;
  start.indentation = at_end ? layout_.Indentation(document_.paragraphs[item.ref].begin) + 2
                             : layout_.Indentation(item.begin);
  const std::size_t indentation = start.indentation;
  MifRun run(document_, layout_, formattings_, &numbers_, std::move(start));
  if (insertion.marker_type.empty()) {
    run.Text(insertion.text);
  } else {
    run.Marker(insertion.marker_type, insertion.text);
  }
  if (at_end) {
    PutAtEnd(document_.paragraphs[item.ref], indentation, run.lines());
  } else {
    PutBefore(item.begin, run.lines());
  }
}

// ---------------------------------------------------------------------------------------------------------------
// Other tags, and the number that the document counts from.

void AdditionsWriter::Rename(Id id) {
  const Element& element = document_.elements[id];
  if (element.deleted) return;
  const std::string name = layout_.Quoted(document_.definitions[element.definition].name);
  mif::Reader reader(std::string_view(document_.source).substr(element.source));
  reader.Next();
  const std::size_t inside = reader.depth();
  while (inside > 0 && reader.Next() && reader.depth() >= inside) {
    if (reader.kind() == mif::Piece::kGroup && !reader.Skip()) break;
    if (reader.token() != mif::Token::kETag) continue;
    splice_.Replace(element.source + reader.begin(), element.source + reader.end(), "<ETag " + name + ">");
    break;
  }
  const Item& end = document_.items[element.end_item - 1];
  if (end.kind == ItemKind::kElementEnd && end.ref == id && end.begin != end.end) {
    splice_.Replace(end.begin, end.end, "<ElementEnd " + name + ">");
  }
}

void AdditionsWriter::RaiseNextUnique() {
  if (numbers_.next() <= 0 || document_.document_statement.Empty()) return;
  mif::Reader reader(document_.At(document_.document_statement));
  while (reader.Next()) {
    if (reader.name() != "DNextUnique" || reader.kind() != mif::Piece::kLeaf) continue;
    std::int64_t known = 0;
    const std::string_view data = reader.data();
    std::from_chars(data.data(), data.data() + data.size(), known);
    if (known >= numbers_.next()) return;
    splice_.Replace(document_.document_statement.begin + reader.begin(),
                    document_.document_statement.begin + reader.end(),
                    "<DNextUnique " + std::to_string(numbers_.next()) + ">");
    return;
  }
}

}  // namespace

void WriteAdditions(const Document& document, const MifLayout& layout, ParagraphFormats* formats,
                    const ParagraphChanges& changes, Splice* splice) {
  AdditionsWriter(document, layout, formats, changes, splice).Run();
}

}  // namespace qelm::embedded::model
