#include <algorithm>
#include <map>
#include <set>

#include "embedded/mif/reader.h"
#include "embedded/model/files.h"
#include "embedded/model/metadata.h"
#include "embedded/model/text_access.h"
#include "embedded/model/xml_builder.h"
#include "embedded/model/xml_marks.h"
#include "embedded/model/xmp_packet.h"
#include "embedded/xml/encoding.h"
#include "embedded/xml/names.h"
#include "embedded/xml/reader.h"
#include "embedded/xml/write.h"

namespace qelm::embedded::model {
namespace {

bool IsListType(std::uint8_t type) { return type == 1 || type == 4 || type == 6 || type == 9; }

bool IsBlank(std::string_view text) { return text.find_first_not_of(" \t\r\n") == std::string_view::npos; }

bool IsAnchored(ElementKind kind) { return kind == ElementKind::kTable || kind == ElementKind::kFootnote; }

// Parts of a table have no state of their own: it belongs to the text in them.
bool IsNeutral(ElementKind kind) {
  return kind == ElementKind::kTableHeading || kind == ElementKind::kTableBody ||
         kind == ElementKind::kTableFooting || kind == ElementKind::kTableRow ||
         kind == ElementKind::kTableCell || kind == ElementKind::kTableTitle;
}

// Names and numbers are ASCII; a byte that is not is damage, which XML has no way to write.
void AppendAscii(std::string_view text, std::string* out) {
  for (const char c : text) out->push_back(static_cast<unsigned char>(c) < 0x80 ? c : '?');
}

// A statement on one line and in UTF-8, without what belongs to the element and to the file it stood in.
std::string Transcoded(std::string_view statement, mif::Encoding encoding) {
  std::string result;
  mif::Reader reader(statement);
  while (reader.Next()) {
    const std::string_view name = reader.name();
    if (name == "Element" || name == "Unique" || name == "MCurrPage") {
      if (reader.kind() == mif::Piece::kGroup) reader.Skip();
      continue;
    }
    if (reader.kind() == mif::Piece::kGroupEnd) {
      result.push_back('>');
      continue;
    }
    if (!result.empty()) result.push_back(' ');
    result.push_back('<');
    AppendAscii(name, &result);
    if (reader.kind() == mif::Piece::kGroup) continue;
    result.push_back(' ');
    if (mif::IsString(reader.data())) {
      const std::string text = mif::DecodeString(reader.data(), encoding);
      result.append("`").append(mif::Encode(text, mif::Encoding::kUtf8)).append("'");
    } else {
      AppendAscii(reader.data(), &result);
    }
    result.push_back('>');
  }
  return result;
}

// How an element's attribute is used in the document.
struct Usage {
  bool has_list = false;   // some element has no value, or several
  bool has_blank = false;  // some value has a blank in it, or is empty
};

// Writes the structure of a document's main flow. The layout puts each element on a line of its own where its
// parent has no text.
class Writer {
 public:
  explicit Writer(const Document& document) : document_(document) {}
  std::string Run();

 private:
  struct Scope {
    std::uint16_t conditions = 0;
    std::uint32_t font = 0;
  };
  struct Open {
    Id element;
    bool has_text;   // no layout inside
    bool has_solid;  // some text that is not white space
    bool has_child = false;
  };

  Id FindFlow() const;
  void Survey(const Flow& flow);
  void Prolog(const Flow& flow);
  void DocumentType(const Flow& flow);
  std::string AttributeDeclaration(Id definition, const AttributeDefinition& attribute) const;
  bool IsList(Id definition, std::uint32_t name) const;
  void Variables(const Flow& flow);
  void Content(const Flow& flow);
  void OpenElement(Id id);
  void CloseElement();
  void StrayElements(const Element& element);
  void Attributes(const Element& element);
  void Put(std::uint32_t index);
  void PutText(std::string_view as_it_is);
  void PutObject(const Item& item);
  void Move(std::uint16_t conditions, std::uint32_t font, bool new_line);
  void FinishTag();
  void NewLine(std::size_t depth);
  bool HasSolidText(const Element& element) const;
  const std::string& ElementName(Id definition);

  const Document& document_;
  std::string out_;
  std::vector<Open> open_;
  std::vector<Scope> scopes_{1};
  bool tag_open_ = false;  // the `>` of a start tag is still to be written
  bool last_was_text_ = false;
  bool paragraph_ended_ = false;
  std::vector<std::string> element_names_;
  std::vector<Id> sorted_;          // the definitions by their names
  std::vector<ElementKind> kinds_;  // of definitions, as their elements are
  std::vector<bool> is_used_;
  std::map<std::pair<Id, std::uint32_t>, Usage> usage_;
  std::set<Id> conditions_;  // that are applied
};

// The main flow, or the first one that has elements.
Id Writer::FindFlow() const {
  if (document_.main_flow != 0 && document_.flows[document_.main_flow].root != 0) return document_.main_flow;
  for (Id id = 1; id < document_.flows.size(); ++id) {
    if (document_.flows[id].root != 0) return id;
  }
  return document_.main_flow;
}

std::string Writer::Run() {
  const Id flow_id = FindFlow();
  static const Flow kNoFlow;
  const Flow& flow = flow_id == 0 ? kNoFlow : document_.flows[flow_id];
  element_names_.resize(document_.definitions.size());
  Survey(flow);
  Prolog(flow);
  if (flow.root != 0) {
    Content(flow);
  } else {
    // A flow without elements: its text, as much of it as there is.
    out_.append("<NoName");
    tag_open_ = true;
    open_.push_back({0, true, true});
    Content(flow);
    Move(0, 0, false);
    out_.append(tag_open_ ? "/>" : "</NoName>");
  }
  out_.append("\n");
  return std::move(out_);
}

void Writer::Survey(const Flow& flow) {
  kinds_.resize(document_.definitions.size(), ElementKind::kContainer);
  is_used_.resize(document_.definitions.size());
  for (Id id = 1; id < document_.definitions.size(); ++id) kinds_[id] = document_.definitions[id].kind;
  for (Id id = 1; id < document_.definitions.size(); ++id) sorted_.push_back(id);
  std::sort(sorted_.begin(), sorted_.end(),
            [&](Id a, Id b) { return document_.definitions[a].name < document_.definitions[b].name; });
  std::vector<bool> is_known(document_.definitions.size());
  for (Id id = flow.root; id != 0 && id < document_.elements.size(); ++id) {
    const Element& element = document_.elements[id];
    if (element.first_item >= flow.end_item) break;
    if (element.deleted || element.definition == 0) continue;
    is_used_[element.definition] = true;
    if (!is_known[element.definition] || kinds_[element.definition] == ElementKind::kContainer) {
      kinds_[element.definition] = element.kind;
      is_known[element.definition] = true;
    }
    for (std::uint32_t i = 0; i < element.attribute_count; ++i) {
      const Attribute& attribute = document_.attributes[element.first_attribute + i];
      Usage& usage = usage_[{element.definition, attribute.name}];
      if (attribute.value_count != 1) usage.has_list = true;
      for (std::uint32_t v = 0; v < attribute.value_count; ++v) {
        const std::string_view value = document_.values[attribute.first_value + v];
        if (value.empty() || value.find_first_of(" \t\r\n") != std::string_view::npos) usage.has_blank = true;
      }
    }
  }
  std::set<std::uint16_t> sets;
  for (std::uint32_t i = flow.first_item; i < flow.end_item; ++i) sets.insert(document_.items[i].conditions);
  for (const Part& part : document_.parts) sets.insert(part.conditions);
  for (const std::uint16_t set : sets) {
    conditions_.insert(document_.condition_sets[set].begin(), document_.condition_sets[set].end());
  }
}

void Writer::Prolog(const Flow& flow) {
  out_.append("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n");
  DocumentType(flow);
  const auto line = [&](const std::string& mark) { out_.append(mark).append("\n"); };
  for (const Id id : sorted_) {
    if (!is_used_[id] && !document_.definitions[id].declared) continue;
    // A container whose name would make it part of a table has to say that it is none.
    const bool has_role = XmlRoleOfName(ElementName(id)) != XmlRole::kNone;
    if (kinds_[id] != ElementKind::kContainer || has_role) line(KindMark(ElementName(id), kinds_[id]));
  }
  bool has_hidden = false;
  for (Id id = 1; id < document_.conditions.size(); ++id) {
    const Condition& condition = document_.conditions[id];
    // FrameMaker brings its own tags into every document.
    const bool is_system = condition.name.starts_with("FM8_") && !conditions_.contains(id);
    if (!condition.declared || is_system) continue;
    line(ConditionStateMark(condition.name, condition.shown, false));
    has_hidden = has_hidden || !condition.shown;
  }
  if (document_.show_all && has_hidden) line(std::string(kShowAllMark));
  for (const Color& color : document_.colors) {
    if (!color.name.empty() && !IsReservedColor(color.name)) line(ColorMark(color));
  }
  Variables(flow);
  // What FrameMaker itself notes in every document is nothing to carry along.
  const std::string packet = MetadataPacket(document_);
  if (!PacketFields(packet).empty()) line(MetadataMark(packet));
}

// The definitions of the variables that occur come along, so that they are variables again on the way back.
void Writer::Variables(const Flow& flow) {
  std::set<std::string> names;
  for (std::uint32_t i = flow.first_item; i < flow.end_item; ++i) {
    const Item& item = document_.items[i];
    if (item.kind == ItemKind::kVariable && !item.Is(kDeleted)) {
      names.insert(Substatement(document_, item, "VariableName"));
    }
  }
  for (const std::string& name : names) {
    const auto found = document_.variables.find(name);
    if (found == document_.variables.end()) continue;
    const std::string statement = "<VariableFormat <VariableName `" +
                                  mif::Encode(name, mif::Encoding::kUtf8) + "'> <VariableDef `" +
                                  mif::Encode(found->second, mif::Encoding::kUtf8) + "'>>";
    out_.append(ObjectMark(statement)).append("\n");
  }
}

bool Writer::IsList(Id definition, std::uint32_t name) const {
  const auto usage = usage_.find({definition, name});
  if (usage != usage_.end() && usage->second.has_list) return true;
  for (const AttributeDefinition& attribute : document_.definitions[definition].attributes) {
    if (attribute.name == name) return IsListType(attribute.type) || attribute.defaults.size() > 1;
  }
  return false;
}

std::string Writer::AttributeDeclaration(Id definition, const AttributeDefinition& attribute) const {
  constexpr std::string_view kTypes[] = {"CDATA", "NMTOKENS", "CDATA", "CDATA", "NMTOKENS",
                                         "CDATA", "NMTOKENS", "ID",    "IDREF", "IDREFS"};
  const auto usage = usage_.find({definition, attribute.name});
  const bool has_blank = usage != usage_.end() && usage->second.has_blank;
  const bool is_list = IsList(definition, attribute.name);
  std::string text(kTypes[attribute.type < std::size(kTypes) ? attribute.type : 0]);
  if (is_list && !IsListType(attribute.type)) text = "NMTOKENS";
  if (!is_list && has_blank) text = "CDATA";
  bool is_choice = attribute.type == 2 && !is_list && !has_blank && !attribute.choices.empty();
  for (const std::string_view choice : attribute.choices) is_choice = is_choice && xml::IsNameToken(choice);
  if (is_choice) {
    text.clear();
    for (const std::string_view choice : attribute.choices)
      text.append(text.empty() ? "(" : "|").append(choice);
    text.append(")");
  }
  if (attribute.defaults.empty() || text == "ID")
    return text + (attribute.required ? " #REQUIRED" : " #IMPLIED");
  text.append(attribute.read_only ? " #FIXED \"" : " \"");
  for (std::size_t i = 0; i < attribute.defaults.size(); ++i) {
    if (i > 0) text.push_back(' ');
    const std::string_view value = attribute.defaults[i];
    xml::AppendValue(is_list ? xml::ToToken(value) : xml::ToContent(value), '"', &text);
  }
  return text + "\"";
}

// Types and defaults of attributes, and a list type for those that have several values without being declared
// so.
void Writer::DocumentType(const Flow& flow) {
  std::string declarations;
  for (const Id id : sorted_) {
    const Definition& definition = document_.definitions[id];
    std::set<std::uint32_t> declared;
    const auto declare = [&](std::uint32_t name, const std::string& text) {
      declarations.append("<!ATTLIST ").append(ElementName(id)).append(" ");
      declarations.append(xml::ToName(document_.names[name])).append(" ").append(text).append(">\n");
    };
    for (const AttributeDefinition& attribute : definition.attributes) {
      if (!declared.insert(attribute.name).second) continue;
      declare(attribute.name, AttributeDeclaration(id, attribute));
    }
    for (auto usage = usage_.lower_bound({id, 0}); usage != usage_.end() && usage->first.first == id;
         ++usage) {
      if (!usage->second.has_list || declared.contains(usage->first.second)) continue;
      declare(usage->first.second, "NMTOKENS #IMPLIED");
    }
  }
  if (declarations.empty()) return;
  const std::string root = flow.root == 0 ? "NoName" : ElementName(document_.elements[flow.root].definition);
  out_.append("<!DOCTYPE ").append(root).append(" [\n").append(declarations).append("]>\n");
}

const std::string& Writer::ElementName(Id definition) {
  std::string& name = element_names_[definition];
  if (name.empty()) name = xml::ToName(document_.definitions[definition].name);
  return name;
}

// ---------------------------------------------------------------------------------------------------------------
// The content. Elements begin and end where their ranges of items do; they are numbered in that order.

void Writer::Content(const Flow& flow) {
  Id next = flow.root == 0 ? static_cast<Id>(document_.elements.size()) : flow.root;
  const std::uint32_t first = flow.root == 0 ? flow.first_item : document_.elements[flow.root].first_item;
  const std::uint32_t end = flow.root == 0 ? flow.end_item : document_.elements[flow.root].end_item;
  for (std::uint32_t i = first; i < end; ++i) {
    for (; next < document_.elements.size() && document_.elements[next].first_item == i; ++next) {
      const Element& element = document_.elements[next];
      if (!element.deleted && element.definition != 0) OpenElement(next);
    }
    Put(i);
    while (!open_.empty() && open_.back().element != 0 &&
           document_.elements[open_.back().element].end_item == i + 1) {
      CloseElement();
    }
  }
}

bool Writer::HasSolidText(const Element& element) const {
  std::string text;
  for (Id child = element.first_child; child != 0; child = document_.elements[child].next) {
    const Element& node = document_.elements[child];
    if (node.definition != 0) continue;
    for (std::uint32_t i = node.first_item; i < node.end_item; ++i) {
      text.clear();
      AppendItemText(document_, document_.items[i], &text);
      if (!document_.items[i].Is(kDeleted) && !IsBlank(text)) return true;
    }
  }
  return false;
}

void Writer::OpenElement(Id id) {
  const Element& element = document_.elements[id];
  const Item& first = document_.items[element.first_item];
  if (IsNeutral(element.kind)) {
    Move(scopes_.back().conditions, 0, true);
  } else {
    Move(first.conditions, 0, true);
  }
  out_.append("<").append(ElementName(element.definition));
  Attributes(element);
  tag_open_ = true;
  bool has_text = false;
  for (Id child = element.first_child; child != 0 && !has_text; child = document_.elements[child].next) {
    has_text = document_.elements[child].definition == 0;
  }
  if (!open_.empty()) open_.back().has_child = true;
  open_.push_back({id, has_text, has_text && HasSolidText(element)});
  if (IsAnchored(element.kind) || HoldsStory(element.kind)) scopes_.emplace_back();
  if (element.kind == ElementKind::kTable) StrayElements(element);
  if (element.kind == ElementKind::kTableRow) {
    const auto& set = document_.condition_sets[document_.parts[document_.PartOf(element)].conditions];
    if (!set.empty()) FinishTag();
    for (const Id condition : set) out_.append(ConditionStartMark(document_.conditions[condition].name));
  }
  last_was_text_ = false;
}

// What a table from XML held besides its parts; MIF has no place for it but the element's client data.
void Writer::StrayElements(const Element& element) {
  mif::Reader reader(std::string_view(document_.source).substr(element.source));
  std::string data;
  while (reader.Next() && (reader.depth() > 0 || reader.kind() == mif::Piece::kGroup) && data.empty()) {
    if (reader.name() == "UserString") data = mif::DecodeString(reader.data(), document_.encoding);
  }
  if (!data.starts_with(kStrayElements)) return;
  data.erase(0, kStrayElements.size());
  xml::Error error;
  xml::Handler nothing;
  if (!xml::Read("<a>" + data + "</a>", &nothing, &error)) return;
  FinishTag();
  out_.append(data);
  open_.back().has_child = true;
}

void Writer::Attributes(const Element& element) {
  const auto attributes = document_.attributes.Run(element.first_attribute, element.attribute_count);
  for (std::size_t i = 0; i < attributes.size(); ++i) {
    const Attribute& attribute = attributes[i];
    // XML does not allow an attribute twice; the first is the one that counts.
    const auto before = attributes.first(i);
    const bool is_again = std::any_of(before.begin(), before.end(),
                                      [&](const Attribute& other) { return other.name == attribute.name; });
    if (is_again) continue;
    const bool is_list = IsList(element.definition, attribute.name);
    out_.append(" ").append(xml::ToName(document_.names[attribute.name])).append("=\"");
    for (std::uint32_t v = 0; v < attribute.value_count; ++v) {
      const std::string_view value = document_.values[attribute.first_value + v];
      if (v > 0) out_.push_back(' ');
      xml::AppendValue(is_list ? xml::ToToken(value) : xml::ToContent(value), '"', &out_);
    }
    out_.append("\"");
  }
}

void Writer::CloseElement() {
  const Open top = open_.back();
  const Element& element = document_.elements[top.element];
  const bool has_scope = IsAnchored(element.kind) || HoldsStory(element.kind);
  const Item& last = document_.items[element.end_item - 1];
  const std::uint16_t conditions = has_scope || IsNeutral(element.kind)
                                       ? (has_scope ? std::uint16_t{0} : scopes_.back().conditions)
                                       : last.conditions;
  Move(conditions, 0, false);
  open_.pop_back();
  const bool is_layout = top.has_child && !top.has_text && !tag_open_;
  if (is_layout) NewLine(open_.size());
  if (element.kind == ElementKind::kTableRow) {
    const auto& set = document_.condition_sets[document_.parts[document_.PartOf(element)].conditions];
    for (auto id = set.rbegin(); id != set.rend(); ++id) {
      out_.append(ConditionEndMark(document_.conditions[*id].name));
    }
  }
  if (tag_open_) {
    out_.append("/>");
  } else {
    out_.append("</").append(ElementName(element.definition)).append(">");
  }
  tag_open_ = false;
  if (has_scope) scopes_.pop_back();
  last_was_text_ = false;
  paragraph_ended_ = false;
}

void Writer::FinishTag() {
  if (tag_open_) out_.push_back('>');
  tag_open_ = false;
}

// Deep documents would be more indentation than content.
void Writer::NewLine(std::size_t depth) {
  constexpr std::size_t kDeepest = 20;
  out_.append("\n").append(2 * std::min(depth, kDeepest), ' ');
}

// Goes over to other conditions and another font: what ends is written here, what begins behind the new line.
void Writer::Move(std::uint16_t conditions, std::uint32_t font, bool new_line) {
  Scope& scope = scopes_.back();
  if (font != scope.font && scope.font != 0) {
    FinishTag();
    out_.append(kTextEndMark);
  }
  const auto& before = document_.condition_sets[scope.conditions];
  const auto& after = document_.condition_sets[conditions];
  const auto has = [](const std::vector<Id>& set, Id id) {
    return std::find(set.begin(), set.end(), id) != set.end();
  };
  for (auto id = before.rbegin(); id != before.rend() && conditions != scope.conditions; ++id) {
    if (has(after, *id)) continue;
    FinishTag();
    out_.append(ConditionEndMark(document_.conditions[*id].name));
  }
  if (new_line && !open_.empty()) {
    FinishTag();
    if (!open_.back().has_text) NewLine(open_.size());
  }
  if (conditions != scope.conditions) {
    for (const Id id : after) {
      if (has(before, id)) continue;
      FinishTag();
      out_.append(ConditionStartMark(document_.conditions[id].name));
    }
  }
  if (font != scope.font && font != 0) {
    FinishTag();
    out_.append(TextMark(document_, document_.fonts[font]));
  }
  scope.conditions = conditions;
  scope.font = font;
}

// An item that is no tag: text and objects.
void Writer::Put(std::uint32_t index) {
  const Item& item = document_.items[index];
  if (item.Is(kDeleted) || item.Is(kGenerated)) return;
  if (item.kind == ItemKind::kParagraphEnd) paragraph_ended_ = true;
  if (!IsContent(item.kind) || item.kind == ItemKind::kTableAnchor || item.kind == ItemKind::kNoteAnchor)
    return;
  if (open_.empty()) return;
  if (item.kind == ItemKind::kString || item.kind == ItemKind::kCharacter) {
    std::string text;
    AppendItemText(document_, item, &text);
    if (text.empty()) return;
    Move(item.conditions, item.font, false);
    FinishTag();
    if (paragraph_ended_ && last_was_text_) out_.append(kParagraphMark);
    PutText(text);
  } else {
    Move(item.conditions, item.kind == ItemKind::kVariable ? item.font : 0, false);
    PutObject(item);
  }
  paragraph_ended_ = false;
  last_was_text_ = true;
}

// A line end inside a text is written as a reference: as it stands it would be white space that may be
// folded.
void Writer::PutText(std::string_view as_it_is) {
  const std::string text = xml::ToContent(as_it_is);
  const bool all = !open_.back().has_solid && IsBlank(text);
  std::size_t plain = 0;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const char c = text[at];
    if (c != '\n' && !all) continue;
    xml::AppendText(std::string_view(text).substr(plain, at - plain), &out_);
    out_.append("&#").append(std::to_string(static_cast<int>(c))).append(";");
    plain = at + 1;
  }
  xml::AppendText(std::string_view(text).substr(plain), &out_);
}

void Writer::PutObject(const Item& item) {
  const bool is_frame = item.kind == ItemKind::kFrameAnchor;
  // The end of a cross-reference that is an element is the end of the element; a frame that imports nothing
  // has nothing to be said of it.
  if (item.kind == ItemKind::kReferenceEnd && item.ref != 0) return;
  if (is_frame && document_.frames[item.ref].file.empty()) return;
  FinishTag();
  if (paragraph_ended_ && last_was_text_) out_.append(kParagraphMark);
  out_.append(is_frame ? GraphicMark(document_.frames[item.ref].file)
                       : ObjectMark(Transcoded(document_.At(item), document_.encoding)));
  if (item.kind != ItemKind::kVariable) return;
  std::string text;
  AppendItemText(document_, item, &text);
  PutText(text);
  out_.append(kObjectEndMark);
}

}  // namespace

std::string ConvertToXml(const Document& document) {
  if (document.format == Format::kXml) return SaveXml(document);
  return Writer(document).Run();
}

}  // namespace qelm::embedded::model
