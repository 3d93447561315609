#include "embedded/model/text_inset.h"

#include <algorithm>

#include "embedded/mif/reader.h"
#include "embedded/model/edit.h"
#include "embedded/model/mif_layout.h"
#include "embedded/model/mif_scan.h"
#include "embedded/model/paragraph_format.h"
#include "embedded/model/text_access.h"

namespace qelm::embedded::model {
namespace {

using mif::Piece;
using mif::Token;

constexpr std::string_view kUnconditional = "<Unconditional >";

// What statements say, without what differs from one saving to the next: numbers of objects, layout lines,
// where a string is broken in two.
void AppendMeaning(std::string_view bytes, std::string* meaning) {
  bool in_string = false;
  mif::Reader reader(bytes);
  while (reader.Next()) {
    const Token token = reader.token();
    const bool passed = token == Token::kUnique || token == Token::kTextRectID || token == Token::kParaLine;
    if (passed) continue;
    if (reader.kind() == Piece::kLeaf && token == Token::kString) {
      if (!in_string) meaning->push_back('`');
      meaning->append(mif::Inside(reader.data()));
      in_string = true;
      continue;
    }
    in_string = false;
    meaning->append(reader.kind() == Piece::kGroupEnd ? ">" : "<").append(reader.name());
    const bool is_number = token == Token::kATbl || token == Token::kAFrame || token == Token::kFNote ||
                           token == Token::kTblID || token == Token::kID;
    if (reader.kind() == Piece::kLeaf && !is_number) meaning->append(" ").append(reader.data());
  }
}

// Text that goes in at a place, behind what goes in there already.
void InsertText(Document* document, std::uint32_t at, const std::string& text) {
  document->replacements.try_emplace(at, Replacement{{at, at}, {}}).first->second.text += text;
}

class InsetWriter {
 public:
  InsetWriter(Document* document, std::uint32_t begin, const InsetContent& content)
      : document_(*document),
        layout_(*document),
        content_(content),
        begin_(begin),
        end_(document->insets[document->items[begin].ref].end_item - 1) {}

  bool Write(std::string* problem);

 private:
  bool CanWrite(std::string* problem);
  std::string Text();
  std::string Line(std::string_view text, std::size_t outdent) const {
    return std::string(indentation_ - std::min(indentation_, outdent), ' ') + std::string(text) +
           std::string(layout_.LineEnd());
  }
  std::string Objects(const std::vector<std::string>& objects) const;
  std::string Break(const std::vector<std::string>& format) const;
  std::string Statements(const std::vector<std::string>& line);
  std::string LastParagraph();
  std::string EndState(bool own_paragraph) const;
  std::vector<Span> OldObjects() const;
  bool IsSame(const std::string& text) const;
  void PutObjects();
  void PutFlows();
  void PutInGroup(Token token, std::string_view name, const std::vector<std::string>& statements);
  bool PutNotes(std::string* problem);

  Document& document_;
  MifLayout layout_;
  const InsetContent& content_;
  std::uint32_t begin_;
  std::uint32_t end_;
  std::uint32_t first_paragraph_ = 0;
  std::uint32_t last_paragraph_ = 0;
  std::size_t indentation_ = 0;
  Span place_;
  bool has_fonts_ = false;
};

bool InsetWriter::CanWrite(std::string* problem) {
  const Item& begin = document_.items[begin_];
  const Item& end = document_.items[end_];
  first_paragraph_ = ParagraphOf(document_, begin_);
  last_paragraph_ = ParagraphOf(document_, end_);
  if (end.kind != ItemKind::kInsetEnd || first_paragraph_ == 0 || last_paragraph_ == 0 ||
      FlowOf(document_, begin_) != FlowOf(document_, end_)) {
    *problem = "it has no end";
  } else if (begin.Is(kInBlock) || end.Is(kInBlock)) {
    *problem = "it is hidden";
  }
  if (!problem->empty()) return false;
  place_ = {layout_.Removal(begin.begin, begin.end).end, layout_.LineBegin(end.begin)};
  for (std::uint32_t i = begin_; i < end_ && problem->empty(); ++i) {
    if (document_.items[i].kind == ItemKind::kHiddenPlace) *problem = "it holds hidden text";
  }
  if (place_.begin > place_.end) *problem = "its marks are out of order";
  indentation_ = layout_.Indentation(end.begin);
  return problem->empty();
}

std::string InsetWriter::Objects(const std::vector<std::string>& objects) const {
  std::string text;
  for (const std::string& object : objects) text.append(object).append(layout_.LineEnd());
  return text;
}

std::string InsetWriter::Break(const std::vector<std::string>& format) const {
  return Line("> # end of ParaLine", 1) + Line("> # end of Para", 2) + Line("<Para ", 2) +
         layout_.Lines(format, indentation_ - std::min<std::size_t>(indentation_, 1)) + Line("<ParaLine ", 1);
}

// Text without conditions of its own stands under those of the inset.
std::string InsetWriter::Statements(const std::vector<std::string>& line) {
  const std::uint16_t around = document_.items[begin_].conditions;
  std::string text;
  for (const std::string& statement : line) {
    has_fonts_ = has_fonts_ || statement.starts_with("<Font ");
    const bool ends = statement == kUnconditional && around != 0;
    text += layout_.Lines({ends ? ConditionalStatement(document_, around) : statement}, indentation_);
  }
  return text;
}

// The head of the paragraph in which the inset ends.
std::string InsetWriter::LastParagraph() {
  const Paragraph& last = document_.paragraphs[last_paragraph_];
  if (last_paragraph_ == first_paragraph_ || !last.absolute) {
    return Break(ParagraphFormats(document_).Statements(last.state));
  }
  const std::uint32_t begin = layout_.LineBegin(last.begin);
  const std::uint32_t body = layout_.LineBegin(last.body);
  return Line("> # end of ParaLine", 1) + Line("> # end of Para", 2) +
         std::string(document_.At(Span{begin, body})) + Line("<ParaLine ", 1);
}

// What the text behind the inset relies on.
std::string InsetWriter::EndState(bool own_paragraph) const {
  const Item& begin = document_.items[begin_];
  const Item& end = document_.items[end_];
  std::vector<std::string> statements;
  if (begin.conditions != end.conditions)
    statements.push_back(ConditionalStatement(document_, end.conditions));
  const bool font_differs = own_paragraph ? end.font != 0 : has_fonts_ || begin.font != end.font;
  if (font_differs) statements.push_back(FontStatement(document_, end.font));
  return layout_.Lines(statements, indentation_);
}

std::string InsetWriter::Text() {
  const std::vector<std::string> around = FormatAround(document_, begin_);
  std::string text;
  for (const InsetParagraph& paragraph : content_.paragraphs) {
    const bool first = &paragraph == &content_.paragraphs.front();
    if (!first) text += Break(paragraph.format.empty() ? around : paragraph.format);
    for (const std::vector<std::string>& line : paragraph.lines) {
      if (&line != &paragraph.lines.front()) {
        text += Line("> # end of ParaLine", 1) + Line("<ParaLine ", 1);
      }
      text += Statements(line);
    }
  }
  const bool own_paragraph = content_.paragraphs.size() > 1 || last_paragraph_ != first_paragraph_;
  if (own_paragraph) text += LastParagraph();
  return text + EndState(own_paragraph);
}

// The tables, frames and footnotes that are anchored in the inset, and in the text of such frames.
std::vector<Span> InsetWriter::OldObjects() const {
  std::vector<Span> objects;
  std::vector<Span> items{{begin_, end_}};
  for (std::size_t next = 0; next < items.size(); ++next) {
    const Span range = items[next];
    for (std::uint32_t i = range.begin; i < range.end; ++i) {
      const Item& item = document_.items[i];
      const bool is_part = item.kind == ItemKind::kTableAnchor || item.kind == ItemKind::kNoteAnchor;
      if (item.ref != 0 && is_part) objects.push_back(document_.parts[item.ref].span);
      if (item.ref == 0 || item.kind != ItemKind::kFrameAnchor) continue;
      objects.push_back(document_.frames[item.ref].span);
      const auto [first, last] = document_.frame_flows.equal_range(item.ref);
      for (auto at = first; at != last; ++at) {
        const Flow& flow = document_.flows[at->second];
        objects.push_back(flow.span);
        items.push_back({flow.first_item, flow.end_item});
      }
    }
  }
  // A footnote in a cell goes with the table that it lies in.
  std::sort(objects.begin(), objects.end(), [](Span a, Span b) { return a.begin < b.begin; });
  std::uint32_t end = 0;
  std::erase_if(objects, [&](Span span) {
    const bool inside = span.begin < end;
    end = std::max(end, span.end);
    return inside;
  });
  return objects;
}

bool InsetWriter::IsSame(const std::string& text) const {
  constexpr std::string_view kOpen = "<Para <ParaLine ";
  constexpr std::string_view kClose = ">>";
  std::string before;
  AppendMeaning(std::string(kOpen).append(document_.At(place_)).append(kClose), &before);
  std::string after;
  AppendMeaning(std::string(kOpen).append(text).append(kClose), &after);
  std::vector<std::string> old_objects;
  for (const Span span : OldObjects()) AppendMeaning(document_.At(span), &old_objects.emplace_back());
  std::vector<std::string> objects;
  for (const auto* const list : {&content_.tables, &content_.frames, &content_.notes, &content_.flows}) {
    for (const std::string& object : *list) AppendMeaning(object, &objects.emplace_back());
  }
  std::sort(old_objects.begin(), old_objects.end());
  std::sort(objects.begin(), objects.end());
  return before == after && old_objects == objects;
}

// At the end of the group of that name, or in one of its own before the pages and the text.
void InsetWriter::PutInGroup(Token token, std::string_view name, const std::vector<std::string>& statements) {
  if (statements.empty()) return;
  mif::Reader reader(document_.source);
  while (reader.Next()) {
    const bool is_group = reader.kind() == Piece::kGroup;
    if (is_group && reader.token() == token) {
      reader.Skip();
      const std::uint32_t close = reader.end() - 1;
      return InsertText(&document_, layout_.LineBegin(close), Objects(statements));
    }
    const bool is_behind = reader.token() == Token::kPage || reader.token() == Token::kTextFlow ||
                           reader.token() == Token::kPara;
    if (is_behind) break;
    if (is_group) reader.Skip();
  }
  const std::string text = layout_.Lines({"<" + std::string(name) + " "}, 0) + Objects(statements) +
                           layout_.Lines({"> # end of " + std::string(name)}, 0);
  InsertText(&document_, layout_.LineBegin(reader.begin()), text);
}

// Footnotes lie at the head of the flow.
bool InsetWriter::PutNotes(std::string* problem) {
  if (content_.notes.empty()) return true;
  if (PartOf(document_, begin_) != 0) {
    *problem = "its source has footnotes, and it stands in a table or footnote";
    return false;
  }
  const Span flow = document_.flows[FlowOf(document_, begin_)].span;
  mif::Reader reader(document_.At(flow));
  while (reader.Next()) {
    if (reader.depth() > 2 || reader.token() == Token::kPara) break;
    if (reader.token() != Token::kNotes) continue;
    const std::string notes = Objects(content_.notes);
    if (reader.kind() == Piece::kGroup) {
      reader.Skip();
      InsertText(&document_, layout_.LineBegin(flow.begin + reader.end() - 1), notes);
      return true;
    }
    const Span old{flow.begin + reader.begin(), flow.begin + reader.end()};
    const std::string text = "<Notes " + std::string(layout_.LineEnd()) + notes + " > # end of Notes";
    document_.replacements.insert_or_assign(old.begin, Replacement{old, text});
    return true;
  }
  *problem = "the flow has no place for footnotes";
  return false;
}

// Behind all flows of the file.
void InsetWriter::PutFlows() {
  std::uint32_t end = 0;
  for (const Flow& flow : document_.flows)
    end = std::max(end, layout_.Removal(flow.span.begin, flow.span.end).end);
  if (!content_.flows.empty()) InsertText(&document_, end, Objects(content_.flows));
}

void InsetWriter::PutObjects() {
  for (const Span span : OldObjects()) {
    const Span gone = layout_.Removal(span.begin, span.end);
    document_.replacements.insert_or_assign(span.begin, Replacement{gone, {}});
  }
  PutInGroup(Token::kAFrames, "AFrames", content_.frames);
  PutInGroup(Token::kTbls, "Tbls", content_.tables);
  PutFlows();
  for (const auto& [name, shown] : content_.conditions) {
    const auto known = document_.condition_index.find(name);
    if (known != document_.condition_index.end() && document_.conditions[known->second].declared) continue;
    SetConditionShown(&document_, CreateCondition(&document_, name), shown);
  }
}

bool InsetWriter::Write(std::string* problem) {
  if (!CanWrite(problem)) return false;
  std::string text = Text();
  if (IsSame(text) || !PutNotes(problem)) return false;
  PutObjects();
  document_.replacements.insert_or_assign(place_.begin, Replacement{place_, std::move(text)});
  document_.modified = true;
  return true;
}

}  // namespace

std::vector<std::uint32_t> OutermostInsets(const Document& document) {
  std::vector<std::uint32_t> insets;
  std::uint32_t end = 0;
  for (std::uint32_t i = 0; i < document.items.size(); ++i) {
    const Item& item = document.items[i];
    if (item.kind != ItemKind::kInsetBegin || item.Is(kDeleted) || i < end) continue;
    insets.push_back(i);
    end = document.insets[item.ref].end_item;
  }
  return insets;
}

std::vector<std::string> FormatAround(const Document& document, std::uint32_t inset) {
  const std::uint32_t paragraph = ParagraphOf(document, inset);
  return ParagraphFormats(document).Statements(document.paragraphs[paragraph].state);
}

bool SetInsetContent(Document* document, std::uint32_t inset, const InsetContent& content,
                     std::string* problem) {
  problem->clear();
  return InsetWriter(document, inset, content).Write(problem);
}

}  // namespace qelm::embedded::model
