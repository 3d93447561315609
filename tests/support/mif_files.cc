#include "support/mif_files.h"

#include <algorithm>
#include <map>
#include <stdexcept>
#include <utility>

#include "support/mif_parts.h"

namespace qelm::testing {
namespace {

const std::map<std::string, std::string> kFontStatements = {
    {"Underline", "<FUnderlining FSingle>"},
    {"DoubleUnderline", "<FUnderlining FDouble>"},
    {"NumericUnderline", "<FUnderlining FNumeric>"},
    {"Overline", "<FOverline Yes>"},
    {"Strikethrough", "<FStrike Yes>"},
    {"ChangeBar", "<FChangeBar Yes>"},
};

// What a tag's element is, and the name of its statement where it has one that holds others.
struct Object {
  std::string definition;
  std::string statement;
};
const std::map<std::string, Object> kObjects = {
    {"Table", {"EDTable", "Tbl"}},
    {"TableTitle", {"EDTblTitle", "TblTitle"}},
    {"TableHeading", {"EDTblHeading", "TblH"}},
    {"TableBody", {"EDTblBody", "TblBody"}},
    {"TableFooting", {"EDTblFooting", "TblF"}},
    {"Row", {"EDTblRow", "Row"}},
    {"Cell", {"EDTblCell", "Cell"}},
    {"Footnote", {"EDFootNote", "FNote"}},
    {"XRef", {"EDXRef", "XRef"}},
    {"Marker", {"EDMarker", "Marker"}},
    {"Variable", {"EDSystemVariable", "Variable"}},
    {"Graphic", {"EDGraphic", "Frame"}},
    {"Inset", {"", ""}},
    {"Page", {"", ""}},
    {"PrefixEnd", {"", ""}},
    {"SuffixBegin", {"", ""}},
};

struct Attribute {
  std::string name;
  std::vector<std::string> values;
};

struct Tag {
  std::string name;
  bool has_element = true;
  bool ends = false;
  bool empty = false;
  std::vector<Attribute> attributes;
  std::map<std::string, std::string> data;  // what stands with a dot before its name
  std::vector<std::string> style;
};

// Where text is being written: a flow, a cell, a title or a footnote.
struct Story {
  std::string done;  // paragraphs that are complete
  std::string notes;
  std::string paragraph;  // items of the paragraph under way
  std::string format = "Body";
  std::string next_format;
  std::string pending;  // beginnings of elements that wait for a paragraph
  bool open = false;
  bool line_ended = true;
  std::vector<std::string> style;       // asked for
  std::vector<std::string> conditions;  // in force
  std::string font;                     // in force in the paragraph
  bool in_block = false;
  std::string block;  // the hidden block's items
};

class Writer {
 public:
  explicit Writer(const MifFile& file) : file_(file) {}
  std::string Run();

 private:
  struct Level {
    Tag tag;
    std::string out;  // what the level's statement holds
    int cells = 0;
    int number = 0;
  };

  void WriteFlow(const MifFlow& flow);
  void Notation(std::string_view text);
  Tag ReadTag();
  std::string Word(std::string_view ends);
  std::string Until(char end);
  void Begin(const Tag& tag);
  void End(const Tag& tag);
  void BeginObject(const Tag& tag);
  void EndObject(Level level);
  void Anchor(const std::string& statement) { Content("   " + statement + "\n"); }
  void Text(const std::string& text);
  void Content(const std::string& item);
  void SetStyle(std::vector<std::string> style);
  void EndLine();
  void NeedParagraph();
  void ApplyStyle();
  void CloseParagraph(Story* story);
  std::string Finish(Story* story);
  void EndBlock(Story* story);
  std::string Element(const std::string& statement, const Tag& tag, int depth);
  std::string Conditional(const std::vector<std::string>& conditions, int depth);
  std::string Unique() { return "<Unique " + std::to_string(next_unique_++) + ">"; }
  std::string HiddenFlow() const;
  bool IsHidden(const std::vector<std::string>& conditions) const;
  void Require(bool good, const std::string& what) const {
    if (!good) throw std::invalid_argument(what + " before \"" + std::string(rest_.substr(0, 40)) + "\"");
  }
  Story& story() { return stories_.back(); }
  std::vector<std::string> Conditions(const std::vector<std::string>& style);
  static std::string Font(const std::vector<std::string>& style);

  const MifFile& file_;
  std::string_view rest_;
  std::vector<Story> stories_;
  std::vector<Level> levels_;
  std::string flows_, tables_, frames_, hidden_;
  std::vector<std::string> conditions_;             // that occur, in order
  std::map<std::string, std::string> definitions_;  // tag to kind
  std::vector<MifPage> pages_;
  int hidden_frame_ = 0;
  MifFlow::Place place_ = MifFlow::Place::kBody;
  int next_unique_ = 1001;
  int next_id_ = 1;
  int next_block_ = 400001;
};

std::vector<std::string> Writer::Conditions(const std::vector<std::string>& style) {
  std::vector<std::string> conditions;
  for (const std::string& name : style) {
    if (IsColor(name) || kFontStatements.contains(name) || name.starts_with("Background=")) continue;
    conditions.push_back(name);
    if (std::find(conditions_.begin(), conditions_.end(), name) == conditions_.end())
      conditions_.push_back(name);
  }
  return conditions;
}

std::string Writer::Font(const std::vector<std::string>& style) {
  std::string overrides;
  for (const std::string& name : style) {
    if (const auto found = kFontStatements.find(name); found != kFontStatements.end()) {
      overrides += "    " + found->second + "\n";
    } else if (name.starts_with("Background=")) {
      overrides += "    <FBackgroundColor " + Quoted(name.substr(11)) + ">\n";
    } else if (IsColor(name)) {
      overrides += "    <FColor " + Quoted(name) + ">\n";
    }
  }
  return overrides;
}

bool Writer::IsHidden(const std::vector<std::string>& conditions) const {
  return !conditions.empty() &&
         std::all_of(conditions.begin(), conditions.end(), [&](const std::string& name) {
           return std::find(file_.hidden.begin(), file_.hidden.end(), name) != file_.hidden.end();
         });
}

std::string Writer::Conditional(const std::vector<std::string>& conditions, int depth) {
  Lines lines;
  if (conditions.empty()) {
    lines.Add(depth, "<Unconditional >");
    return lines.text;
  }
  lines.Open(depth, "Conditional");
  for (const std::string& name : conditions) lines.Add(depth + 1, "<InCondition " + Quoted(name) + ">");
  lines.Close(depth, "Conditional");
  return lines.text;
}

std::string Writer::Element(const std::string& statement, const Tag& tag, int depth) {
  Lines lines;
  lines.Open(depth, statement);
  lines.Add(depth + 1, Unique());
  lines.Add(depth + 1, "<ETag " + Quoted(tag.name) + ">");
  lines.Open(depth + 1, "Attributes");
  for (const Attribute& attribute : tag.attributes) {
    lines.Open(depth + 2, "Attribute");
    lines.Add(depth + 3, "<AttrName " + Quoted(attribute.name) + ">");
    for (const std::string& value : attribute.values)
      lines.Add(depth + 3, "<AttrValue " + Quoted(value) + ">");
    lines.Close(depth + 2, "Attribute");
  }
  lines.Close(depth + 1, "Attributes");
  lines.Add(depth + 1, "<Collapsed No>");
  lines.Add(depth + 1, "<SpecialCase No>");
  lines.Add(depth + 1, "<AttributeDisplay None>");
  lines.Close(depth, statement);
  const auto object = kObjects.find(tag.name);
  definitions_[tag.name] = object == kObjects.end() ? "EDContainer" : object->second.definition;
  return lines.text;
}

void Writer::CloseParagraph(Story* story) {
  if (!story->open) return;
  Lines lines;
  lines.Open(1, "Para");
  lines.Add(2, Unique());
  if (story->format != "+") lines.Add(2, "<PgfTag " + Quoted(story->format) + ">");
  lines.Open(2, "ParaLine");
  lines.text += story->paragraph;
  lines.Close(2, "ParaLine");
  lines.Close(1, "Para");
  story->done += lines.text;
  story->paragraph.clear();
  story->font.clear();
  story->open = false;
}

// Begins a paragraph where none is under way, with the elements that wait for one.
void Writer::NeedParagraph() {
  Story& to = story();
  if (to.line_ended && !to.in_block) {
    CloseParagraph(&to);
    to.open = true;
    to.line_ended = false;
    to.format = to.next_format.empty() ? "Body" : to.next_format;
    to.next_format.clear();
  }
  to.paragraph += to.pending;
  to.pending.clear();
}

void Writer::ApplyStyle() {
  Story& to = story();
  const std::vector<std::string> conditions = Conditions(to.style);
  if (file_.hidden_flow && IsHidden(conditions) && !to.in_block) {
    to.in_block = true;
    to.block = Conditional(conditions, 3);
    return;
  }
  if (to.in_block) return;
  if (const std::string font = Font(to.style); font != to.font) {
    to.paragraph += "   <Font \n    <FTag `'>\n    <FLocked No>\n" + font + "   > # end of Font\n";
    to.font = font;
  }
  if (conditions != to.conditions) {
    to.paragraph += Conditional(conditions, 3);
    to.conditions = conditions;
  }
}

void Writer::Content(const std::string& item) {
  NeedParagraph();
  ApplyStyle();
  Story& to = story();
  (to.in_block ? to.block : to.paragraph) += item;
}

void Writer::Text(const std::string& text) { Anchor("<String " + Quoted(text) + ">"); }

void Writer::SetStyle(std::vector<std::string> style) {
  Story& to = story();
  if (to.in_block) EndBlock(&to);
  to.style = std::move(style);
  // What ends, ends here and not with the next text, as the paragraph's mark may lie between.
  if (to.open && to.style.empty()) ApplyStyle();
}

// A block's lines are paragraphs of the hidden flow. When a line ended last, its mark is hidden as well.
void Writer::EndBlock(Story* story) {
  const std::string number = std::to_string(next_block_++);
  const auto marker = [&](const char* sign) {
    return "   <Marker \n    <MType 10>\n    <MTypeName `Conditional Text'>\n    <MText `" + (sign + number) +
           "'>\n    <MCurrPage `1'>\n   > # end of Marker\n";
  };
  constexpr std::string_view kLineEnd = "\n\n";
  std::string items = story->block;
  const bool full = items.ends_with(kLineEnd);
  if (full) items.resize(items.size() - kLineEnd.size() + 1);
  // The conditions come first, then the block's own mark.
  const std::size_t mark = items.find("> # end of Conditional\n") + 23;
  items.insert(mark, marker("-"));
  items += marker("=");
  if (hidden_frame_ == 0) {
    hidden_frame_ = next_id_++;
    items.insert(0, "   <TextRectID " + std::to_string(hidden_frame_) + ">\n");
  }
  for (std::size_t at = 0; at != std::string::npos;) {
    const std::size_t end = items.find(kLineEnd, at);
    const bool last = end == std::string::npos;
    hidden_ += " <Para \n  " + Unique() + "\n  <PgfTag `Body'>\n";
    if (last) hidden_ += "  <PgfEndCond Yes>\n";
    if (last && full) hidden_ += "  <PgfCondFullPgf Yes>\n";
    hidden_ += "  <ParaLine \n" + (last ? items.substr(at) : items.substr(at, end - at + 1)) +
               "  > # end of ParaLine\n > # end of Para\n";
    at = last ? end : end + kLineEnd.size();
  }
  story->in_block = false;
  story->block.clear();
  story->paragraph += marker("+");
}

void Writer::EndLine() {
  constexpr const char* kWithoutText[] = {"Table", "TableHeading", "TableBody", "TableFooting", "Row"};
  const bool in_table = !levels_.empty() && std::find(std::begin(kWithoutText), std::end(kWithoutText),
                                                      levels_.back().tag.name) != std::end(kWithoutText);
  if (in_table) return;
  Story& to = story();
  if (to.in_block) {
    to.block += "\n";
  } else {
    to.line_ended = true;
  }
}

std::string Writer::Word(std::string_view ends) {
  const std::size_t end = std::min(rest_.find_first_of(ends), rest_.size());
  std::string word(rest_.substr(0, end));
  rest_.remove_prefix(end);
  return word;
}

std::string Writer::Until(char end) {
  std::string text = Word(std::string_view(&end, 1));
  Require(!rest_.empty(), std::string("no ") + end);
  rest_.remove_prefix(1);
  return text;
}

Tag Writer::ReadTag() {
  Tag tag;
  rest_.remove_prefix(1);
  const auto take = [&](char c) {
    if (rest_.empty() || rest_.front() != c) return false;
    rest_.remove_prefix(1);
    return true;
  };
  tag.ends = take('/');
  tag.has_element = !take('!');
  tag.name = Word(" />");
  while (!take('>')) {
    Require(!rest_.empty(), "an open tag");
    if (take(' ')) continue;
    if (take('/')) {
      tag.empty = true;
    } else if (take('{')) {
      tag.style = Split(Until('}'), ',');
    } else {
      const std::string name = Word("= />");
      const bool has_value = take('=');
      if (has_value) Until('"');
      const std::string value = has_value ? Until('"') : "";
      if (name.starts_with('.')) {
        tag.data[name.substr(1)] = value;
      } else {
        tag.attributes.push_back({name, has_value ? Split(value, '|') : std::vector<std::string>()});
      }
    }
  }
  return tag;
}

void Writer::Begin(const Tag& tag) {
  if (kObjects.contains(tag.name)) {
    BeginObject(tag);
  } else {
    Require(tag.has_element && !story().in_block, "an element in a hidden block");
    story().pending += Element("ElementBegin", tag, 3);
    levels_.push_back({tag, {}, 0, 0});
  }
  if (tag.empty) {
    Tag end = tag;
    End(end);
  }
}

void Writer::End(const Tag& tag) {
  Require(!levels_.empty() && levels_.back().tag.name == tag.name &&
              levels_.back().tag.has_element == tag.has_element,
          "an end that fits no beginning");
  Level level = std::move(levels_.back());
  levels_.pop_back();
  if (kObjects.contains(tag.name)) {
    EndObject(std::move(level));
    return;
  }
  Story& to = story();
  if (!to.pending.empty() || !to.open) NeedParagraph();
  to.paragraph += "   <ElementEnd " + Quoted(tag.name) + ">\n";
}

void Writer::BeginObject(const Tag& tag) {
  Level level{tag, {}, 0, 0};
  const std::vector<std::string> style = stories_.empty() ? std::vector<std::string>() : story().style;
  const auto anchor = [&](const std::string& statement) {
    if (!tag.style.empty()) story().style = tag.style;
    level.number = next_id_++;
    Anchor("<" + statement + " " + std::to_string(level.number) + ">");
    if (!tag.style.empty()) SetStyle(style);
  };
  if (tag.name == "Table") {
    anchor("ATbl");
  } else if (tag.name == "Footnote") {
    anchor("FNote");
    stories_.emplace_back();
  } else if (tag.name == "Graphic") {
    anchor("AFrame");
  } else if (tag.name == "TableTitle" || tag.name == "Cell") {
    stories_.emplace_back();
  } else if (tag.name == "XRef") {
    const auto data = [&](const char* name) { return tag.data.contains(name) ? tag.data.at(name) : ""; };
    Content("   <XRef \n    <XRefName " + Quoted(data("format")) + ">\n    <XRefSrcText " +
            Quoted(data("source")) + ">\n    <XRefSrcIsElem Yes>\n    <XRefSrcFile " + Quoted(data("file")) +
            ">\n    " + Unique() + "\n" + (tag.has_element ? Element("Element", tag, 4) : "") +
            "   > # end of XRef\n");
  } else if (tag.name == "Marker") {
    const auto data = [&](const char* name) { return tag.data.contains(name) ? tag.data.at(name) : ""; };
    Content("   <Marker \n    <MType 2>\n    <MTypeName " + Quoted(data("type")) + ">\n    <MText " +
            Quoted(data("text")) + ">\n    <MCurrPage `1'>\n    " + Unique() + "\n" +
            (tag.has_element ? Element("Element", tag, 4) : "") + "   > # end of Marker\n");
  } else if (tag.name == "Variable") {
    Content("   <Variable \n    <VariableName " +
            Quoted(tag.data.contains("name") ? tag.data.at("name") : "") + ">\n    " + Unique() + "\n" +
            (tag.has_element ? Element("Element", tag, 4) : "") + "   > # end of Variable\n");
  } else if (tag.name == "Inset") {
    Content("   <TextInset \n    " + Unique() + "\n    <TiSrcFile " +
            Quoted(tag.data.contains("file") ? tag.data.at("file") : "") +
            ">\n    <TextInsetLocked No>\n   > # end of TextInset\n");
  } else if (tag.name == "Page") {
    pages_.push_back({place_, next_id_});
    Anchor("<TextRectID " + std::to_string(next_id_++) + ">");
  } else if (tag.name == "PrefixEnd" || tag.name == "SuffixBegin") {
    Anchor("<" + tag.name + " >");
  }
  levels_.push_back(std::move(level));
}

void Writer::EndObject(Level level) {
  const Tag& tag = level.tag;
  const std::string name = tag.name;
  const std::string element = tag.has_element && name != "XRef" && name != "Marker" && name != "Variable"
                                  ? Element("Element", tag, 4)
                                  : std::string();
  const auto wrap = [](const std::string& statement, const std::string& content) {
    return "<" + statement + " \n" + content + "> # end of " + statement + "\n";
  };
  const auto above = [&]() -> Level& {
    Require(!levels_.empty(), name + " outside a table");
    return levels_.back();
  };
  if (name == "Cell" || name == "TableTitle") {
    const std::string content = Finish(&story());
    stories_.pop_back();
    const bool is_cell = name == "Cell";
    above().out += wrap(is_cell ? "Cell" : "TblTitle",
                        element + wrap(is_cell ? "CellContent" : "TblTitleContent", content));
    if (is_cell) ++above().cells;
  } else if (name == "Row") {
    const std::vector<std::string> conditions = Conditions(tag.style);
    above().out += wrap("Row", (conditions.empty() ? "" : Conditional(conditions, 1)) +
                                   " <RowHeight  0.3\">\n" + element + level.out);
    above().cells = std::max(above().cells, level.cells);
  } else if (name == "TableHeading" || name == "TableBody" || name == "TableFooting") {
    above().out += wrap(kObjects.at(name).statement, element + level.out);
    above().cells = std::max(above().cells, level.cells);
  } else if (name == "Table") {
    std::string head = " <TblID " + std::to_string(level.number) + ">\n <TblTag " +
                       Quoted(tag.data.contains("format") ? tag.data.at("format") : "Grid") +
                       ">\n <TblNumColumns " + std::to_string(level.cells) + ">\n " + Unique() + "\n";
    for (int i = 0; i < level.cells; ++i) head += " <TblColumnWidth  1.0\">\n";
    tables_ += wrap("Tbl", head + element + level.out);
  } else if (name == "Footnote") {
    const std::string content = Finish(&story());
    stories_.pop_back();
    // The Notes group that every story begins with is not a footnote's own.
    story().notes += wrap("FNote", " <ID " + std::to_string(level.number) + ">\n" + element +
                                       content.substr(content.find('\n') + 1));
  } else if (name == "Graphic") {
    frames_ += wrap(
        "Frame",
        " <ID " + std::to_string(level.number) + ">\n " + Unique() + "\n <FrameType Inline>\n" + element +
            wrap("ImportObject", "  <ImportObFileDI " +
                                     Quoted(tag.data.contains("file") ? tag.data.at("file") : "") + ">\n"));
  } else if (name == "XRef") {
    Anchor("<XRefEnd >");
  } else if (name == "Inset") {
    Anchor("<TextInsetEnd >");
  }
}

// The story's paragraphs behind its notes.
std::string Writer::Finish(Story* story) {
  if (story->in_block) EndBlock(story);
  if (!story->open && story->done.empty()) story->open = true;
  if (!story->conditions.empty()) story->paragraph += Conditional({}, 3);
  CloseParagraph(story);
  const std::string notes =
      story->notes.empty() ? " <Notes >\n" : " <Notes \n" + story->notes + " > # end of Notes\n";
  return notes + story->done;
}

void Writer::Notation(std::string_view text) {
  rest_ = text;
  std::string run;
  bool line_start = true;
  const auto end_run = [&] {
    if (!run.empty()) Text(run);
    run.clear();
  };
  while (!rest_.empty()) {
    const char c = rest_.front();
    if (line_start && (c == ' ' || c == '\n')) {
      rest_.remove_prefix(1);
      continue;
    }
    const bool at_start = std::exchange(line_start, false);
    if (at_start && c == '[' && !stories_.empty()) {
      rest_.remove_prefix(1);
      story().next_format = Until(']');
    } else if (c == '\n') {
      end_run();
      rest_.remove_prefix(1);
      EndLine();
      line_start = true;
    } else if (c == '{') {
      end_run();
      rest_.remove_prefix(1);
      const std::string style = Until('}');
      SetStyle(style.empty() ? std::vector<std::string>() : Split(style, ','));
    } else if (c == '<') {
      end_run();
      const Tag tag = ReadTag();
      if (tag.ends) {
        End(tag);
      } else {
        Begin(tag);
      }
    } else {
      if (c == '\\') rest_.remove_prefix(1);
      run += rest_.front();
      rest_.remove_prefix(1);
    }
  }
  end_run();
  Require(levels_.empty(), "an element without an end");
}

void Writer::WriteFlow(const MifFlow& flow) {
  place_ = flow.place;
  stories_.assign(1, {});
  const int frame = next_id_++;
  pages_.push_back({flow.place, frame});
  story().pending = "   <TextRectID " + std::to_string(frame) + ">\n";
  Notation(flow.text);
  if (!story().pending.empty()) NeedParagraph();
  flows_ += "<TextFlow \n";
  if (!flow.tag.empty()) flows_ += " <TFTag " + Quoted(flow.tag) + ">\n <TFAutoConnect Yes>\n";
  flows_ += Finish(&story()) + "> # end of TextFlow\n";
}

std::string Writer::HiddenFlow() const {
  return "<TextFlow \n <TFTag `HIDDEN'>\n <Notes >\n" + hidden_ +
         " <Para \n  <PgfTag `Body'>\n  <ParaLine \n   <Unconditional >\n  > # end of ParaLine\n > # end of "
         "Para\n"
         "> # end of TextFlow\n";
}

std::string Writer::Run() {
  for (const std::string& name : file_.hidden) Conditions({name});
  for (const MifFlow& flow : file_.flows) WriteFlow(flow);
  std::vector<MifCondition> conditions;
  for (const std::string& name : conditions_) conditions.push_back({name, IsHidden({name})});
  const auto group = [](const char* name, const std::string& content) {
    return content.empty() ? "" : std::string("<") + name + " \n" + content + "> # end of " + name + "\n";
  };
  return "<MIFFile " + file_.level + "> # a test's document\n<Units Uin>\n" +
         MifCatalogs(conditions, definitions_, file_) + "<Document \n <DNextUnique " +
         std::to_string(next_unique_) + ">\n <DShowAllConditions " + (file_.show_all ? "Yes" : "No") +
         ">\n> # end of Document\n" + group("AFrames", frames_) + group("Tbls", tables_) +
         MifPages(pages_, hidden_frame_) + flows_ + (hidden_.empty() ? "" : HiddenFlow()) +
         "# End of MIFFile\n";
}

}  // namespace

std::string Mif(const MifFile& file) { return Writer(file).Run(); }

std::string Mif(std::string_view text) {
  MifFile file;
  file.flows.push_back({std::string(text), MifFlow::Place::kBody, "A"});
  return Mif(file);
}

}  // namespace qelm::testing
