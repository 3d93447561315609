#include "embedded/model/convert_to_mif.h"

#include <algorithm>
#include <charconv>

#include "embedded/mif/reader.h"
#include "embedded/model/files.h"
#include "embedded/model/metadata.h"
#include "embedded/model/text_access.h"
#include "embedded/model/xml_marks.h"
#include "embedded/model/xml_tags.h"
#include "embedded/xml/encoding.h"
#include "embedded/xml/names.h"

namespace qelm::embedded::model {
namespace {

// Numbers of the text frames of the pages; what is anchored is numbered after them.
constexpr std::uint32_t kMasterFrame = 1;
constexpr std::uint32_t kBodyFrame = 2;

constexpr std::string_view kPages =
    "<Page \n <PageType RightMasterPage>\n <PageTag `Right'>\n <PageSize  8.5\" 11.0\">\n"
    " <PageOrientation Portrait>\n <PageAngle  0.0>\n"
    " <TextRect \n  <ID 1>\n  <ShapeRect  1.0\" 1.0\" 6.5\" 9.0\">\n  <TRNumColumns 1>\n  <TRNext 0>\n"
    " > # end of TextRect\n> # end of Page\n"
    "<Page \n <PageType BodyPage>\n <PageNum `1'>\n <PageTag `'>\n <PageSize  8.5\" 11.0\">\n"
    " <PageOrientation Portrait>\n <PageAngle  0.0>\n <PageBackground `Default'>\n"
    " <TextRect \n  <ID 2>\n  <ShapeRect  1.0\" 1.0\" 6.5\" 9.0\">\n  <TRNumColumns 1>\n  <TRNext 0>\n"
    " > # end of TextRect\n> # end of Page\n";

// Whether the line ends of a text, in their order, are written as references: those are forced, the others
// are white space.
std::vector<bool> ForcedLineEnds(std::string_view raw) {
  std::vector<bool> forced;
  if (raw.starts_with("<![CDATA[")) return forced;
  for (std::size_t at = 0; at < raw.size(); ++at) {
    if (raw[at] == '\n' || raw[at] == '\r') {
      if (raw[at] == '\r' && at + 1 < raw.size() && raw[at + 1] == '\n') ++at;
      forced.push_back(false);
    } else if (raw.substr(at, 2) == "&#") {
      const std::size_t end = std::min(raw.find(';', at), raw.size());
      const bool is_hex = raw.substr(at + 2, 1) == "x";
      const char* digits = raw.data() + at + (is_hex ? 3 : 2);
      std::uint32_t code = 0;
      std::from_chars(digits, raw.data() + end, code, is_hex ? 16 : 10);
      if (code == '\n') forced.push_back(true);
      at = end;
    }
  }
  return forced;
}

// The name of a statement that is complete and nothing else; empty when it is not.
std::string_view WholeStatement(std::string_view statement) {
  mif::Reader reader(statement);
  if (!reader.Next() || reader.begin() != 0) return {};
  const std::string_view name = reader.name();
  if (reader.kind() == mif::Piece::kGroup && !reader.Skip()) return {};
  return reader.end() == statement.size() ? name : std::string_view();
}

std::string Finished(MifStory* story) {
  story->Finish();
  return story->Whole();
}

class Converter {
 public:
  explicit Converter(const Document& document)
      : document_(document), encoding_(xml::DetectEncoding(document.source)) {}
  std::string Run();

 private:
  struct Table {
    std::uint32_t number = 0;
    std::uint32_t columns = 1;
    Id element = 0;
    std::string strays;  // children that are no parts, as XML
    std::string title;
    std::string rows[3];  // heading, body, footing
    std::uint32_t row_cells = 0;
  };
  struct Open {
    Id element;
    ElementKind kind;  // as it is written: what does not fit its place is a container
    bool has_text;     // its children stand in its line
    bool preserves_space;
    std::uint32_t number = 0;  // of a footnote
  };

  void FindContainers();
  void CheckTable(Id table);
  std::uint32_t CheckRows(Id rows);
  void MakeContainers(Id table);
  void Prolog();
  void Content(Id root);
  void OpenElement(Id id);
  void CloseElement();
  void OpenTablePart(const Element& element, ElementKind kind);
  void CloseTablePart(const Element& element, ElementKind kind);
  void WriteTable();
  bool OpenObject(Id id, const Element& element);
  void WriteFrame(const Element* element, std::string_view file);
  void Put(std::uint32_t index);
  void PutText(const Item& item);
  void PutMark(const Item& item);
  Mark MarkOf(const Item& item) const;
  std::string ObjectStatement(const Element& element, std::string_view wanted) const;
  std::string GraphicFile(const Element& element) const;
  bool HasTextChild(const Element& element) const;
  std::string BodyOf(const Element& element) const { return MifElementBody(document_, element, {}); }
  std::string Group(const Element& element) const { return "<Element " + BodyOf(element) + ">"; }
  std::string NameOf(const Element& element) const {
    return xml::FromName(document_.definitions[element.definition].name);
  }

  const Document& document_;
  xml::Encoding encoding_;
  std::vector<bool> is_container_;  // by element: a part of a table that is written as a container
  std::vector<MifStory> stories_;
  std::vector<Table> tables_;
  std::vector<Open> open_;
  std::string tables_text_;
  std::string frames_text_;
  std::string variables_text_;
  std::uint32_t next_number_ = kBodyFrame + 1;
  std::uint32_t skip_to_ = 0;  // items before this are written already or not at all
  bool in_generated_ = false;  // between a variable and the end of its text
};

std::string Converter::Run() {
  FindContainers();
  stories_.emplace_back(document_, "Body", "<TextRectID " + std::to_string(kBodyFrame) + ">");
  const Id root = document_.main_flow == 0 ? 0 : document_.flows[document_.main_flow].root;
  Prolog();
  if (root != 0) Content(root);
  std::string out = "<MIFFile 8.00> # Generated by QELM\n<Units Uin>\n";
  out += MifColors(document_);
  out += MifConditions(document_);
  out += MifElementDefinitions(document_);
  out += MifCharacterFormats(document_);
  if (!variables_text_.empty())
    out += "<VariableFormats \n" + variables_text_ + "> # end of VariableFormats\n";
  out += "<Document \n <DPageSize  8.5\" 11.0\">\n <DShowAllConditions ";
  out += document_.show_all ? "Yes" : "No";
  out += ">\n" + MetadataStatements(MetadataPacket(document_)) + "> # end of Document\n";
  if (!frames_text_.empty()) out += "<AFrames \n" + frames_text_ + "> # end of AFrames\n";
  if (!tables_text_.empty()) out += "<Tbls \n" + tables_text_ + "> # end of Tbls\n";
  out += kPages;
  const auto flow = [&](const std::string& story) {
    out += "<TextFlow \n <TFTag `A'>\n <TFAutoConnect Yes>\n" + story + "> # end of TextFlow\n";
  };
  MifStory master(document_, "Body", "<TextRectID " + std::to_string(kMasterFrame) + ">");
  flow(Finished(&master));
  flow(Finished(&stories_.front()));
  out += "# End of MIFFile\n";
  return out;
}

// What instructions before the root say of variables.
void Converter::Prolog() {
  const Id root = document_.main_flow == 0 ? 0 : document_.flows[document_.main_flow].root;
  const std::uint32_t end = root == 0 ? 0 : document_.elements[root].first_item;
  for (std::uint32_t i = 0; i < end; ++i) {
    if (document_.items[i].kind != ItemKind::kOther) continue;
    const Mark mark = MarkOf(document_.items[i]);
    if (mark.kind == MarkKind::kObject && WholeStatement(mark.name) == "VariableFormat") {
      variables_text_ += " " + mark.name + "\n";
    }
  }
}

// ---------------------------------------------------------------------------------------------------------------
// Which tables can be tables: MIF has at most a title and a heading, one body and at most a footing, rows of
// cells, and no text between them.

void Converter::FindContainers() {
  is_container_.resize(document_.elements.size());
  for (Id id = 1; id < document_.elements.size(); ++id) {
    if (document_.elements[id].kind == ElementKind::kTable && !document_.elements[id].deleted) CheckTable(id);
  }
}

// How many cells the longest row has; 0 when something other than rows of cells is there.
std::uint32_t Converter::CheckRows(Id rows) {
  std::uint32_t columns = 0;
  const auto& elements = document_.elements;
  for (Id row = elements[rows].first_child; row != 0; row = elements[row].next) {
    if (elements[row].kind != ElementKind::kTableRow) return 0;
    std::uint32_t cells = 0;
    for (Id cell = elements[row].first_child; cell != 0; cell = elements[cell].next, ++cells) {
      if (elements[cell].kind != ElementKind::kTableCell) return 0;
    }
    columns = std::max(columns, cells);
  }
  return columns;
}

void Converter::CheckTable(Id table) {
  std::uint32_t counts[4] = {};  // title, heading, body, footing
  bool is_right = true;
  const auto& elements = document_.elements;
  for (Id child = elements[table].first_child; child != 0 && is_right; child = elements[child].next) {
    const ElementKind kind = elements[child].kind;
    const bool is_part = kind >= ElementKind::kTableTitle && kind <= ElementKind::kTableFooting;
    if (is_part) {
      const auto index = static_cast<std::size_t>(kind) - static_cast<std::size_t>(ElementKind::kTableTitle);
      is_right = ++counts[index] == 1 && (kind == ElementKind::kTableTitle || CheckRows(child) > 0);
    } else {
      is_right = kind != ElementKind::kText && kind != ElementKind::kTableRow;
    }
  }
  constexpr std::size_t kBody = 2;
  if (!is_right || counts[kBody] == 0) MakeContainers(table);
}

void Converter::MakeContainers(Id table) {
  const auto& elements = document_.elements;
  is_container_[table] = true;
  for (Id part = elements[table].first_child; part != 0; part = elements[part].next) {
    is_container_[part] = is_container_[part] || IsTablePart(elements[part].kind);
    for (Id row = elements[part].first_child; row != 0 && IsTablePart(elements[part].kind);
         row = elements[row].next) {
      is_container_[row] = is_container_[row] || IsTablePart(elements[row].kind);
      for (Id cell = elements[row].first_child; cell != 0 && IsTablePart(elements[row].kind);
           cell = elements[cell].next) {
        is_container_[cell] = is_container_[cell] || elements[cell].kind == ElementKind::kTableCell;
      }
    }
  }
}

// ---------------------------------------------------------------------------------------------------------------
// The content.

void Converter::Content(Id root) {
  Id next = root;
  const std::uint32_t end = document_.elements[root].end_item;
  for (std::uint32_t i = document_.elements[root].first_item; i < end; ++i) {
    for (; next < document_.elements.size() && document_.elements[next].first_item == i; ++next) {
      const Element& element = document_.elements[next];
      if (!element.deleted && element.definition != 0 && i >= skip_to_) OpenElement(next);
    }
    if (i >= skip_to_) Put(i);
    while (!open_.empty() && document_.elements[open_.back().element].end_item == i + 1) CloseElement();
  }
}

bool Converter::HasTextChild(const Element& element) const {
  for (Id child = element.first_child; child != 0; child = document_.elements[child].next) {
    if (document_.elements[child].definition == 0) return true;
  }
  return false;
}

void Converter::OpenElement(Id id) {
  const Element& element = document_.elements[id];
  Open open{id, is_container_[id] ? ElementKind::kContainer : element.kind, HasTextChild(element),
            !open_.empty() && open_.back().preserves_space};
  for (std::uint32_t i = 0; i < element.attribute_count; ++i) {
    const Attribute& attribute = document_.attributes[element.first_attribute + i];
    if (document_.names[attribute.name] != "xml:space" || attribute.value_count == 0) continue;
    open.preserves_space = document_.values[attribute.first_value] == "preserve";
  }
  const bool in_table = !open_.empty() && open_.back().kind == ElementKind::kTable;
  if (in_table && !IsTablePart(open.kind)) {
    tables_.back().strays += ElementAsXml(document_, id);
    skip_to_ = element.end_item;
    return;
  }
  const std::uint16_t conditions = document_.items[element.first_item].conditions;
  if (open.kind == ElementKind::kTable || IsTablePart(open.kind)) {
    if (open.kind == ElementKind::kTable) {
      Table table;
      table.number = next_number_++;
      table.element = id;
      for (Id part = element.first_child; part != 0; part = document_.elements[part].next) {
        if (IsTablePart(document_.elements[part].kind))
          table.columns = std::max(table.columns, CheckRows(part));
      }
      const std::string anchor = "<ATbl " + std::to_string(table.number) + ">";
      stories_.back().Object(anchor, conditions, 0, open_.empty() || !open_.back().has_text);
      tables_.push_back(std::move(table));
    } else {
      OpenTablePart(element, open.kind);
    }
  } else if (open.kind == ElementKind::kFootnote) {
    open.number = next_number_++;
    stories_.back().Object("<FNote " + std::to_string(open.number) + ">", conditions, 0);
    stories_.emplace_back(document_, "Footnote");
  } else if (open.kind == ElementKind::kContainer || !OpenObject(id, element)) {
    open.kind = ElementKind::kContainer;
    stories_.back().BeginElement(BodyOf(element), open_.empty() || !open_.back().has_text, conditions);
  }
  open_.push_back(open);
}

void Converter::CloseElement() {
  const Open open = open_.back();
  open_.pop_back();
  const Element& element = document_.elements[open.element];
  const std::uint16_t conditions = document_.items[element.end_item - 1].conditions;
  if (open.kind == ElementKind::kTable) {
    WriteTable();
  } else if (IsTablePart(open.kind)) {
    CloseTablePart(element, open.kind);
  } else if (open.kind == ElementKind::kFootnote) {
    stories_.back().Finish();
    const MifStory note = std::move(stories_.back());
    stories_.pop_back();
    // A note has no notes of its own; one inside it goes to the text around.
    stories_.back().AddNote(note.notes());
    stories_.back().AddNote("\n <FNote <ID " + std::to_string(open.number) + "> " + Group(element) + "\n" +
                            note.paragraphs() + " > # end of FNote\n");
  } else if (open.kind == ElementKind::kCrossReference) {
    stories_.back().Object("<XRefEnd >", conditions, 0);
  } else if (open.kind == ElementKind::kContainer) {
    stories_.back().EndElement(NameOf(element), open_.empty() || !open_.back().has_text, conditions);
  }
}

void Converter::OpenTablePart(const Element& element, ElementKind kind) {
  Table& table = tables_.back();
  if (kind == ElementKind::kTableCell) {
    stories_.emplace_back(document_, "CellBody");
    ++table.row_cells;
  } else if (kind == ElementKind::kTableTitle) {
    stories_.emplace_back(document_, "TableTitle");
  } else if (kind == ElementKind::kTableRow) {
    const auto parent = document_.elements[element.parent].kind;
    std::string& rows =
        table.rows[static_cast<std::size_t>(parent) - static_cast<std::size_t>(ElementKind::kTableHeading)];
    rows += "   <Row ";
    const auto& set = document_.condition_sets[document_.parts[document_.PartOf(element)].conditions];
    if (!set.empty()) {
      rows += "<Conditional ";
      for (const Id id : set) rows += "<InCondition " + MifString(document_.conditions[id].name) + ">";
      rows += "> ";
    }
    rows += "<RowMaxHeight  14.0\"> <RowHeight  0.25\"> " + Group(element) + "\n";
    table.row_cells = 0;
  }
}

void Converter::CloseTablePart(const Element& element, ElementKind kind) {
  Table& table = tables_.back();
  if (kind == ElementKind::kTableTitle) {
    table.title = "  <TblTitle " + Group(element) + " <TblTitleContent \n" + Finished(&stories_.back()) +
                  "  >> # end of TblTitle\n";
    stories_.pop_back();
    return;
  }
  if (kind != ElementKind::kTableCell && kind != ElementKind::kTableRow) return;
  const Element& row = kind == ElementKind::kTableRow ? element : document_.elements[element.parent];
  const auto part = document_.elements[row.parent].kind;
  std::string& rows =
      table.rows[static_cast<std::size_t>(part) - static_cast<std::size_t>(ElementKind::kTableHeading)];
  if (kind == ElementKind::kTableCell) {
    rows += "    <Cell " + Group(element) + " <CellContent \n" + Finished(&stories_.back()) +
            "    >> # end of Cell\n";
    stories_.pop_back();
    return;
  }
  // Every row has as many cells as the table has columns.
  for (; table.row_cells < table.columns; ++table.row_cells) {
    MifStory empty(document_, "CellBody");
    rows += "    <Cell <CellContent \n" + Finished(&empty) + "    >> # end of Cell\n";
  }
  rows += "   > # end of Row\n";
}

void Converter::WriteTable() {
  const Table table = std::move(tables_.back());
  tables_.pop_back();
  const Element& element = document_.elements[table.element];
  std::string& text = tables_text_;
  text += " <Tbl \n  <TblID " + std::to_string(table.number) + ">\n  <TblTag `Format A'>\n  <TblNumColumns " +
          std::to_string(table.columns) + ">\n";
  for (std::uint32_t i = 0; i < table.columns; ++i) text += "  <TblColumnWidth  1.0\">\n";
  const std::string strays = table.strays.empty() ? "" : std::string(kStrayElements) + table.strays;
  text += "  <Element " + MifElementBody(document_, element, strays) + ">\n" + table.title;
  constexpr std::string_view kNames[] = {"TblH", "TblBody", "TblF"};
  for (Id part = element.first_child; part != 0; part = document_.elements[part].next) {
    const ElementKind kind = document_.elements[part].kind;
    if (kind < ElementKind::kTableHeading || kind > ElementKind::kTableFooting) continue;
    const auto index = static_cast<std::size_t>(kind) - static_cast<std::size_t>(ElementKind::kTableHeading);
    text += "  <" + std::string(kNames[index]) + " " + Group(document_.elements[part]) + "\n" +
            table.rows[index] + "  > # end of " + std::string(kNames[index]) + "\n";
  }
  text += " > # end of Tbl\n";
}

// ---------------------------------------------------------------------------------------------------------------
// Objects.

Mark Converter::MarkOf(const Item& item) const {
  const std::string raw = xml::ToUtf8(document_.At(item), encoding_);
  std::string_view text = raw;
  if (!text.starts_with("<?") || !text.ends_with("?>")) return {};
  text = text.substr(2, text.size() - 4);
  const std::size_t blank = std::min(text.find(' '), text.size());
  const std::size_t data = std::min(text.find_first_not_of(' ', blank), text.size());
  return ReadMark(text.substr(0, blank), text.substr(data));
}

// The statement of the kind `wanted` that an instruction in the element carries; empty when there is none.
std::string Converter::ObjectStatement(const Element& element, std::string_view wanted) const {
  for (std::uint32_t i = element.first_item; i < element.end_item; ++i) {
    if (document_.items[i].kind != ItemKind::kOther) continue;
    Mark mark = MarkOf(document_.items[i]);
    if (mark.kind == MarkKind::kObject && WholeStatement(mark.name) == wanted) return std::move(mark.name);
  }
  return {};
}

std::string Converter::GraphicFile(const Element& element) const {
  for (std::uint32_t i = element.first_item; i < element.end_item; ++i) {
    if (document_.items[i].kind != ItemKind::kOther) continue;
    Mark mark = MarkOf(document_.items[i]);
    if (mark.kind == MarkKind::kGraphic) return std::move(mark.name);
  }
  return {};
}

void Converter::WriteFrame(const Element* element, std::string_view file) {
  frames_text_ += " <Frame \n  <ID " + std::to_string(next_number_) +
                  ">\n  <ShapeRect  0.0\" 0.0\" 2.0\" 2.0\">\n  <FrameType Inline>\n";
  if (element != nullptr) frames_text_ += "  " + Group(*element) + "\n";
  const bool is_equation = element != nullptr && element->kind == ElementKind::kEquation;
  if (is_equation) {
    frames_text_ += "  <Math <ShapeRect  0.0\" 0.0\" 2.0\" 2.0\"> <MathFullForm `char[x]'>>\n";
  } else if (!file.empty()) {
    frames_text_ +=
        "  <ImportObject <ImportObFileDI " + MifString(file) + "> <ShapeRect  0.0\" 0.0\" 2.0\" 2.0\">>\n";
  }
  frames_text_ += " > # end of Frame\n";
  ++next_number_;
}

// An element that is an object: what it holds is the object's. False when it holds elements, which no object
// does.
bool Converter::OpenObject(Id id, const Element& element) {
  for (Id child = element.first_child; child != 0; child = document_.elements[child].next) {
    if (document_.elements[child].definition != 0) return false;
  }
  const std::uint16_t conditions = document_.items[element.first_item].conditions;
  MifStory& story = stories_.back();
  std::string text;
  std::uint32_t font = 0;  // the one that is not the paragraph's own
  for (std::uint32_t i = element.first_item; i < element.end_item; ++i) {
    const Item& item = document_.items[i];
    if (!item.Is(kDeleted)) AppendItemText(document_, item, &text);
    font = std::max(font, item.font);
  }
  const auto with_element = [&](std::string_view name, const std::string& otherwise) {
    std::string statement = ObjectStatement(element, name);
    if (statement.empty()) statement = otherwise;
    statement.insert(statement.size() - 1, " " + Group(document_.elements[id]));
    return statement;
  };
  switch (element.kind) {
    case ElementKind::kCrossReference:
      story.Object(with_element("XRef", "<XRef <XRefName `'> <XRefSrcText `'> <XRefSrcFile `'>>"), conditions,
                   0);
      return true;
    case ElementKind::kGraphic:
    case ElementKind::kEquation:
      story.Object("<AFrame " + std::to_string(next_number_) + ">", conditions, 0);
      WriteFrame(&element, GraphicFile(element));
      break;
    case ElementKind::kMarker:
      story.Object(
          with_element("Marker", "<Marker <MType 2> <MTypeName `Index'> <MText " + MifString(text) + ">>"),
          conditions, 0);
      break;
    case ElementKind::kSystemVariable:
      if (ObjectStatement(element, "Variable").empty()) {
        variables_text_ += " <VariableFormat <VariableName " + MifString(text) + "> <VariableDef " +
                           MifString(text) + ">>\n";
      }
      story.Object(with_element("Variable", "<Variable <VariableName " + MifString(text) + ">>"), conditions,
                   font);
      break;
    default:
      return false;
  }
  // All of it is said; only the end of the element is still to come.
  skip_to_ = element.end_item;
  return true;
}

void Converter::Put(std::uint32_t index) {
  const Item& item = document_.items[index];
  if (item.Is(kDeleted)) return;
  if (item.kind == ItemKind::kOther) {
    PutMark(item);
  } else if (item.kind == ItemKind::kString && !in_generated_) {
    PutText(item);
  }
}

// Line ends in the source are white space: with the blanks around them they are one blank, and none at the
// edges of a paragraph.
void Converter::PutText(const Item& item) {
  const std::string_view text = PlainText(document_, item);
  MifStory& story = stories_.back();
  if (text.find('\n') == std::string_view::npos) {
    story.Text(text, item.conditions, item.font);
    return;
  }
  const bool preserves = !open_.empty() && open_.back().preserves_space;
  const std::vector<bool> forced = ForcedLineEnds(xml::ToUtf8(document_.At(item), encoding_));
  std::size_t line_end = 0;
  bool is_folding = false;
  for (std::string_view rest = text; !rest.empty();) {
    if (is_folding) rest.remove_prefix(std::min(rest.find_first_not_of(" \t"), rest.size()));
    const std::size_t end = std::min(rest.find('\n'), rest.size());
    std::string_view piece = rest.substr(0, end);
    const bool is_end = end < rest.size();
    const bool is_forced = is_end && (preserves || (line_end < forced.size() && forced[line_end]));
    if (is_end) ++line_end;
    is_folding = is_end && !is_forced;
    if (is_folding) piece = piece.substr(0, piece.find_last_not_of(" \t") + 1);
    if (!piece.empty()) story.Text(piece, item.conditions, item.font);
    if (is_forced) story.HardReturn(item.conditions, item.font);
    if (is_folding) story.FoldedLineEnd();
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
}

void Converter::PutMark(const Item& item) {
  const Mark mark = MarkOf(item);
  MifStory& story = stories_.back();
  switch (mark.kind) {
    case MarkKind::kParagraph:
      story.EndParagraph();
      break;
    case MarkKind::kObjectEnd:
      in_generated_ = false;
      break;
    case MarkKind::kGraphic:
      story.Object("<AFrame " + std::to_string(next_number_) + ">", item.conditions, 0);
      WriteFrame(nullptr, mark.name);
      break;
    case MarkKind::kObject: {
      constexpr std::string_view kInline[] = {"Marker",  "Variable",  "XRef",
                                              "XRefEnd", "TextInset", "TextInsetEnd"};
      // The statement of an element that is an object is written with the element.
      const bool is_own = !open_.empty() && open_.back().kind == ElementKind::kCrossReference;
      const std::string_view name = WholeStatement(mark.name);
      if (is_own || std::find(std::begin(kInline), std::end(kInline), name) == std::end(kInline)) break;
      story.Object(mark.name, item.conditions, item.font);
      in_generated_ = name == "Variable";
      break;
    }
    default:
      break;
  }
}

}  // namespace

std::string ConvertToMif(const Document& document) {
  if (document.format == Format::kMif) return SaveMif(document);
  return Converter(document).Run();
}

}  // namespace qelm::embedded::model
