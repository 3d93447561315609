#include "embedded/model/xml_builder.h"

#include <algorithm>
#include <array>
#include <unordered_set>

#include "embedded/model/files.h"
#include "embedded/model/xml_marks.h"
#include "embedded/xml/reader.h"
#include "embedded/xml/write.h"

namespace qelm::embedded::model {
namespace {

using xml::Event;
using xml::EventKind;

struct RoleName {
  std::string_view name;
  XmlRole role;
};
// Element names of CALS and HTML tables, compared without regard to case.
constexpr RoleName kRoleNames[] = {
    {"table", XmlRole::kTable}, {"tgroup", XmlRole::kTable},  {"thead", XmlRole::kHeading},
    {"tbody", XmlRole::kBody},  {"tfoot", XmlRole::kFooting}, {"row", XmlRole::kRow},
    {"tr", XmlRole::kRow},      {"entry", XmlRole::kCell},    {"td", XmlRole::kCell},
    {"th", XmlRole::kCell},
};

struct TypeName {
  std::string_view name;
  std::uint8_t type;  // as the model numbers them
  bool is_list;       // several values, with blanks between them
};
constexpr TypeName kTypes[] = {
    {"CDATA", 0, false},  {"ID", 7, false},      {"IDREF", 8, false},   {"IDREFS", 9, true},
    {"ENTITY", 0, false}, {"ENTITIES", 1, true}, {"NMTOKEN", 0, false}, {"NMTOKENS", 1, true},
};
constexpr std::uint8_t kChoice = 2;

XmlRole RoleOfKind(ElementKind kind) {
  switch (kind) {
    case ElementKind::kTable:
      return XmlRole::kTable;
    case ElementKind::kTableHeading:
      return XmlRole::kHeading;
    case ElementKind::kTableBody:
      return XmlRole::kBody;
    case ElementKind::kTableFooting:
      return XmlRole::kFooting;
    case ElementKind::kTableRow:
      return XmlRole::kRow;
    case ElementKind::kTableCell:
      return XmlRole::kCell;
    default:
      return XmlRole::kNone;
  }
}

// Of what is text in XML: no other control characters are.
bool IsBlank(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) <= ' '; });
}

class Gatherer : public xml::Handler {
 public:
  Gatherer(Document* document, XmlDraft* draft)
      : document_(*document),
        draft_(*draft),
        encoding_(xml::DetectEncoding(document->source)),
        before_{*document} {
    Begin();
  }

  void OnEvent(const Event& event) override;
  void OnEndTag(std::uint32_t begin, std::uint32_t end, std::string_view name) override;
  void OnPlainText(std::uint32_t begin, std::uint32_t end, std::string_view text, bool is_blank) override;
  bool Restart() override;
  void OnAttributeDeclaration(const xml::AttributeDeclaration& declaration) override;
  void OnElementDeclaration(std::string_view name, bool mixed) override;
  void OnWarning(std::uint32_t offset, std::string text) override;

  // Called when all was read.
  void InsertLateBlanks();

 private:
  // White space of which it is not known yet that it is text, and the index of the item behind it.
  struct Blank {
    std::uint32_t place;
    std::uint32_t begin;
    std::uint32_t end;
  };
  struct Open {
    std::uint32_t item;
    bool preserve;
    bool has_text;
    std::size_t first_blank;
  };

  Item& Add(std::uint32_t begin, std::uint32_t end, ItemKind kind, std::uint32_t ref = 0) {
    Item& item = document_.items.emplace_back();
    item.begin = begin;
    item.end = end;
    item.kind = kind;
    item.ref = ref;
    return item;
  }
  Item& Add(const Event& event, ItemKind kind, std::uint32_t ref = 0) {
    return Add(event.begin, event.end, kind, ref);
  }
  Id DefinitionNamed(std::string_view name);
  Id NewDefinition(std::string_view name);
  void StartTag(const Event& event);
  std::uint16_t ReadAttributes(const Event& event, Id definition, bool* preserve);
  void AddAttribute(const xml::Attribute& from, std::string_view in_source, Id definition);
  std::string_view Lasting(std::string_view text, std::string_view in_source);
  void Text(const Event& event);
  void HasText();
  void AddBlank(std::uint32_t begin, std::uint32_t end);
  void Other(const Event& event);
  void Instruction(const Event& event);
  bool Prolog(const Event& event, const Mark& mark);
  void DeclareKind(const Mark& mark);
  std::uint32_t KeepValue(std::string_view text);
  std::uint64_t ListKey(Id definition, std::uint32_t name) const {
    return (static_cast<std::uint64_t>(definition) << 32U) | name;
  }

  void Begin();

  // What of a document reading adds to.
  struct Before {
    explicit Before(const Document& document)
        : warnings(document.warnings),
          definitions(document.definitions),
          conditions(document.conditions),
          colors(document.colors),
          names(document.names),
          name_index(document.name_index),
          definition_index(document.definition_index),
          condition_index(document.condition_index),
          color_index(document.color_index),
          show_all(document.show_all) {}
    std::vector<Warning> warnings;
    std::vector<Definition> definitions;
    std::vector<model::Condition> conditions;
    std::vector<Color> colors;
    std::vector<std::string_view> names;
    std::unordered_map<std::string_view, std::uint32_t> name_index;
    std::unordered_map<std::string_view, Id> definition_index;
    std::unordered_map<std::string_view, Id> condition_index;
    std::unordered_map<std::string_view, Id> color_index;
    bool show_all;
  };

  Document& document_;
  XmlDraft& draft_;
  xml::Encoding encoding_;
  const Before before_;
  struct Known {
    std::string_view name;
    Id id = 0;
  };
  std::array<Known, 64> known_;  // definitions by name
  bool in_prolog_ = true;
  std::vector<Open> open_;
  std::vector<Blank> blanks_;  // of the open elements that have no text so far, outermost first
  std::vector<Blank> late_;    // of those that had some after all
  int open_marks_ = 0;         // of conditions and character properties
  std::vector<xml::TagAttribute> tag_attributes_;
  std::unordered_set<std::uint64_t> lists_;  // attributes that hold several values
  std::unordered_set<Id> with_text_;         // definitions whose elements are declared to hold text
};

void Gatherer::OnWarning(std::uint32_t offset, std::string text) {
  constexpr std::size_t kMostWarnings = 100;
  if (document_.warnings.size() >= kMostWarnings) return;
  const auto line = 1 + std::count(document_.source.begin(), document_.source.begin() + offset, '\n');
  document_.warnings.push_back({"line " + std::to_string(line) + ": " + std::move(text)});
}

void Gatherer::OnEvent(const Event& event) {
  switch (event.kind) {
    case EventKind::kStartTag:
      StartTag(event);
      break;
    case EventKind::kEndTag:
      OnEndTag(event.begin, event.end, event.name);
      break;
    case EventKind::kText:
    case EventKind::kCData:
      Text(event);
      break;
    case EventKind::kInstruction:
      Instruction(event);
      break;
    case EventKind::kReference:
      if (!open_.empty()) HasText();
      Other(event);
      break;
    case EventKind::kComment:
      Other(event);
      break;
  }
}

void Gatherer::OnEndTag(std::uint32_t begin, std::uint32_t end, std::string_view /*name*/) {
  blanks_.erase(blanks_.begin() + static_cast<std::ptrdiff_t>(open_.back().first_blank), blanks_.end());
  open_.pop_back();
  Add(begin, end, ItemKind::kElementEnd);
}

void Gatherer::OnPlainText(std::uint32_t begin, std::uint32_t end, std::string_view /*text*/, bool is_blank) {
  if (is_blank) {
    AddBlank(begin, end);
  } else {
    HasText();
    Add(begin, end, ItemKind::kString);
  }
}

// White space before this in the element was text, too.
void Gatherer::HasText() {
  Open& open = open_.back();
  if (open.has_text) return;
  open.has_text = true;
  document_.items[open.item].flags |= kHoldsText;
  const auto first = blanks_.begin() + static_cast<std::ptrdiff_t>(open.first_blank);
  late_.insert(late_.end(), first, blanks_.end());
  blanks_.erase(first, blanks_.end());
}

void Gatherer::AddBlank(std::uint32_t begin, std::uint32_t end) {
  if (open_.back().has_text || open_marks_ > 0) {
    Add(begin, end, ItemKind::kOther).flags |= kTouched;
  } else {
    blanks_.push_back({static_cast<std::uint32_t>(document_.items.size()), begin, end});
  }
}

void Gatherer::InsertLateBlanks() {
  std::sort(late_.begin(), late_.end(), [](const Blank& a, const Blank& b) { return a.begin < b.begin; });
  SharedArray<Item>& items = document_.items;
  std::size_t from = items.size();
  items.resize(from + late_.size());
  // From behind: each item moves once, by as many places as blanks come before it.
  for (std::size_t left = late_.size(); left > 0; --left) {
    const Blank& blank = late_[left - 1];
    while (from > blank.place) {
      --from;
      items[from + left] = items[from];
    }
    Item item{};
    item.begin = blank.begin;
    item.end = blank.end;
    item.flags = kTouched;
    items[from + left - 1] = item;
  }
}

// Nothing was read yet but names, if any; what they mean is what reading may have said.
bool Gatherer::Restart() {
  document_.items.clear();
  document_.attributes.Own().clear();
  document_.values.Own().clear();
  document_.warnings = before_.warnings;
  document_.definitions = before_.definitions;
  document_.definition_index = before_.definition_index;
  document_.conditions = before_.conditions;
  document_.condition_index = before_.condition_index;
  document_.colors = before_.colors;
  document_.color_index = before_.color_index;
  document_.names = before_.names;
  document_.name_index = before_.name_index;
  document_.show_all = document_.source_show_all = before_.show_all;
  document_.show_all_statement = {};
  draft_.tags = 0;
  draft_.roles.clear();
  draft_.declared_kinds.clear();
  lists_.clear();
  with_text_.clear();
  in_prolog_ = true;
  open_.clear();
  blanks_.clear();
  late_.clear();
  open_marks_ = 0;
  known_.fill({});
  Begin();
  return true;
}

void Gatherer::Begin() {
  draft_.roles.resize(1);
  for (std::size_t id = 1; id < document_.definitions.size(); ++id) {
    draft_.roles.push_back(XmlRoleOfName(document_.definitions[id].name));
  }
  draft_.declared_kinds.resize(draft_.roles.size());
}

// There are few names, and most elements have the name of one that came shortly before.
Id Gatherer::DefinitionNamed(std::string_view name) {
  if (name.empty()) return NewDefinition(name);
  const auto ends = static_cast<unsigned char>(name.front()) * 5U + static_cast<unsigned char>(name.back());
  Known& known = known_[(ends + name.size()) % known_.size()];
  if (known.name != name) {
    const Id id = NewDefinition(name);
    known = {document_.definitions[id].name, id};
  }
  return known.id;
}

Id Gatherer::NewDefinition(std::string_view name) {
  const auto found = document_.definition_index.find(name);
  if (found != document_.definition_index.end()) return found->second;
  const Id id = document_.InternDefinition(document_.Keep(std::string(name)));
  draft_.roles.push_back(XmlRoleOfName(name));
  draft_.declared_kinds.push_back(false);
  return id;
}

void Gatherer::StartTag(const Event& event) {
  ++draft_.tags;
  in_prolog_ = false;
  const Id definition = DefinitionNamed(event.name);
  const XmlRole role = draft_.roles[definition];
  bool preserve = false;
  if (!open_.empty()) {
    preserve = open_.back().preserve;
    if (role == XmlRole::kBody) document_.items[open_.back().item].flags |= kHoldsBody;
  }
  const std::uint16_t attributes =
      event.attributes.empty() ? std::uint16_t{0} : ReadAttributes(event, definition, &preserve);
  const bool has_text = preserve || (!with_text_.empty() && with_text_.contains(definition));
  if (role == XmlRole::kTable || document_.definitions[definition].kind == ElementKind::kFootnote) {
    Add(event.begin, event.begin, ItemKind::kOther);
  }
  open_.push_back({static_cast<std::uint32_t>(document_.items.size()), preserve, has_text, blanks_.size()});
  Item& item = Add(event, ItemKind::kElementBegin, definition);
  item.conditions = attributes;
  if (has_text) item.flags |= kHoldsText;
}

// A text for as long as the document lives: the source's own bytes where they read the same.
std::string_view Gatherer::Lasting(std::string_view text, std::string_view in_source) {
  return text == in_source ? in_source : document_.Keep(std::string(text));
}

// Returns how many there are.
std::uint16_t Gatherer::ReadAttributes(const Event& event, Id definition, bool* preserve) {
  const std::string_view source = document_.source;
  std::string_view tag;
  tag_attributes_.clear();
  const auto is_plain = [](const xml::Attribute& attribute) { return attribute.plain; };
  const bool all_plain = std::all_of(event.attributes.begin(), event.attributes.end(), is_plain);
  if (!all_plain && !event.in_entity && xml::UnitSize(encoding_) == 1) {
    tag = source.substr(event.begin, event.end - event.begin);
    std::size_t tail = 0;
    xml::SplitTag(tag, &tag_attributes_, &tail);
  }
  const std::size_t first_attribute = document_.attributes.size();
  std::size_t index = 0;
  for (const xml::Attribute& attribute : event.attributes) {
    std::string_view in_source = attribute.plain ? attribute.value : std::string_view();
    if (index < tag_attributes_.size()) {
      const xml::TagAttribute& place = tag_attributes_[index];
      in_source = tag.substr(place.value_begin, place.value_end - place.value_begin);
    }
    ++index;
    if (attribute.name == "xml:space") *preserve = attribute.value == "preserve";
    // A default comes from the definition, where the document looks for it.
    if (!attribute.specified) continue;
    if (document_.attributes.size() - first_attribute == 0xFFFF) {
      OnWarning(event.begin,
                "the element has more than 65535 attributes; the others are carried as they stand");
      break;
    }
    AddAttribute(attribute, in_source, definition);
  }
  return static_cast<std::uint16_t>(document_.attributes.size() - first_attribute);
}

void Gatherer::AddAttribute(const xml::Attribute& from, std::string_view in_source, Id definition) {
  Attribute attribute{};
  const auto known = document_.name_index.find(from.name);
  attribute.name = known != document_.name_index.end()
                       ? known->second
                       : document_.InternName(document_.Keep(std::string(from.name)));
  attribute.first_value = static_cast<std::uint32_t>(document_.values.size());
  std::string_view value = document_.KeepBeside(Lasting(from.value, in_source));
  if (lists_.empty() || !lists_.contains(ListKey(definition, attribute.name))) {
    document_.values.push_back(value);
  } else {
    // The reader leaves one blank between the values of such an attribute, and none around them.
    while (!value.empty()) {
      const std::size_t end = std::min(value.find(' '), value.size());
      document_.values.push_back(value.substr(0, end));
      value.remove_prefix(std::min(end + 1, value.size()));
    }
  }
  attribute.value_count = static_cast<std::uint32_t>(document_.values.size()) - attribute.first_value;
  document_.attributes.push_back(attribute);
}

std::uint32_t Gatherer::KeepValue(std::string_view text) {
  document_.values.push_back(document_.Keep(std::string(text)));
  return static_cast<std::uint32_t>(document_.values.size()) - 1;
}

void Gatherer::Text(const Event& event) {
  const bool is_layout = event.kind == EventKind::kText && !event.referenced && IsBlank(event.text);
  if (is_layout && !event.in_entity) {
    AddBlank(event.begin, event.end);
    return;
  }
  if (!is_layout) HasText();
  Item& item = Add(event, is_layout ? ItemKind::kOther : ItemKind::kString);
  if (is_layout) item.flags |= kTouched;
  if (event.plain && event.kind == EventKind::kText) return;
  item.flags |= kEscaped;
  if (event.plain) {
    item.ref = static_cast<std::uint32_t>(document_.values.size());
    document_.values.push_back(event.text);
  } else {
    item.ref = KeepValue(event.text);
  }
}

// What the model does not look into. Out of an entity it has no bytes of its own, so its text is kept for the
// case that the entity has to be written out.
void Gatherer::Other(const Event& event) {
  if (open_.empty()) return;
  Add(event, ItemKind::kOther, event.kind == EventKind::kInstruction ? kInstructionItem : 0);
  if (!event.in_entity) return;
  std::string text;
  switch (event.kind) {
    case EventKind::kComment:
      text.append("<!--").append(event.text).append("-->");
      break;
    case EventKind::kReference:
      text.append("&").append(event.name).append(";");
      break;
    default:
      text.append("<?")
          .append(event.name)
          .append(event.text.empty() ? "" : " ")
          .append(event.text)
          .append("?>");
      break;
  }
  document_.items.back().flags |= kEscaped;
  document_.items.back().ref = KeepValue(text);
}

void Gatherer::Instruction(const Event& event) {
  const Mark mark = ReadMark(event.name, event.text);
  switch (mark.kind) {
    case MarkKind::kConditionStart:
    case MarkKind::kConditionEnd: {
      const auto known = document_.condition_index.find(mark.name);
      const Id id = known != document_.condition_index.end()
                        ? known->second
                        : document_.InternCondition(document_.Keep(mark.name));
      document_.conditions[id].declared = true;
      const bool ends = mark.kind == MarkKind::kConditionEnd;
      open_marks_ = std::max(open_marks_ + (ends ? -1 : 1), 0);
      Add(event, ItemKind::kConditional, id | (ends ? kMarkEnds : 0));
      break;
    }
    case MarkKind::kText: {
      // The second pass reads the data again, on top of what is in force.
      ++open_marks_;
      Item& item = Add(event, ItemKind::kFont, 1);
      item.font = KeepValue(mark.name);
      break;
    }
    case MarkKind::kTextEnd:
      open_marks_ = std::max(open_marks_ - 1, 0);
      Add(event, ItemKind::kFont, 0);
      break;
    default:
      if (in_prolog_ && Prolog(event, mark)) break;
      Other(event);
  }
}

// What is said of the whole document. It has an item, so that saving passes by it.
bool Gatherer::Prolog(const Event& event, const Mark& mark) {
  switch (mark.kind) {
    case MarkKind::kElementKind:
      DeclareKind(mark);
      return true;
    case MarkKind::kConditionState: {
      Condition& condition = document_.conditions[document_.InternCondition(document_.Keep(mark.name))];
      condition.declared = true;
      condition.shown = condition.source_shown = mark.on;
      condition.state = {event.begin, event.end};
      break;
    }
    case MarkKind::kShowAll:
      document_.show_all = document_.source_show_all = mark.on;
      document_.show_all_statement = {event.begin, event.end};
      break;
    case MarkKind::kColor: {
      Color& color = document_.colors[document_.InternColor(document_.Keep(mark.name))];
      color.cyan = mark.ink[0];
      color.magenta = mark.ink[1];
      color.yellow = mark.ink[2];
      color.black = mark.ink[3];
      color.declared = true;
      return true;
    }
    case MarkKind::kObject:
    case MarkKind::kMetadata:
      break;
    default:
      return false;
  }
  Add(event, ItemKind::kOther, kInstructionItem);
  return true;
}

void Gatherer::DeclareKind(const Mark& mark) {
  const Id id = DefinitionNamed(mark.name);
  document_.definitions[id].kind = mark.element_kind;
  draft_.roles[id] = RoleOfKind(mark.element_kind);
  draft_.declared_kinds[id] = true;
}

void Gatherer::OnElementDeclaration(std::string_view name, bool mixed) {
  const Id id = DefinitionNamed(name);
  document_.definitions[id].declared = true;
  if (mixed) with_text_.insert(id);
}

void Gatherer::OnAttributeDeclaration(const xml::AttributeDeclaration& declaration) {
  const Id id = DefinitionNamed(declaration.element);
  Definition& definition = document_.definitions[id];
  definition.declared = true;
  const auto known = document_.name_index.find(declaration.name);
  AttributeDefinition attribute;
  attribute.name = known != document_.name_index.end()
                       ? known->second
                       : document_.InternName(document_.Keep(std::string(declaration.name)));
  const bool is_again =
      std::any_of(definition.attributes.begin(), definition.attributes.end(),
                  [&](const AttributeDefinition& other) { return other.name == attribute.name; });
  if (is_again) return;
  attribute.required = declaration.required && !declaration.has_default;
  attribute.read_only = declaration.required && declaration.has_default;
  bool is_list = false;
  attribute.type = kChoice;
  for (const TypeName& type : kTypes) {
    if (type.name != declaration.type) continue;
    attribute.type = type.type;
    is_list = type.is_list;
  }
  const auto split = [&](std::string_view text, char separator, std::vector<std::string_view>* parts) {
    std::string_view rest = document_.Keep(std::string(text));
    while (!rest.empty()) {
      const std::size_t end = std::min(rest.find(separator), rest.size());
      if (end > 0) parts->push_back(rest.substr(0, end));
      rest.remove_prefix(std::min(end + 1, rest.size()));
    }
  };
  if (attribute.type == kChoice) {
    const std::size_t begin = declaration.type.find('(');
    const std::size_t end = declaration.type.rfind(')');
    if (begin < end && end != std::string_view::npos) {
      split(declaration.type.substr(begin + 1, end - begin - 1), '|', &attribute.choices);
    }
  }
  if (is_list) lists_.insert(ListKey(id, attribute.name));
  if (declaration.has_default && is_list) {
    split(declaration.default_value, ' ', &attribute.defaults);
  } else if (declaration.has_default) {
    attribute.defaults.push_back(document_.Keep(std::string(declaration.default_value)));
  }
  definition.attributes.push_back(std::move(attribute));
}

}  // namespace

XmlRole XmlRoleOfName(std::string_view name) {
  for (const RoleName& known : kRoleNames) {
    const bool same = std::equal(
        name.begin(), name.end(), known.name.begin(), known.name.end(),
        [](char a, char b) { return (a >= 'A' && a <= 'Z' ? static_cast<char>(a - 'A' + 'a') : a) == b; });
    if (same) return known.role;
  }
  return XmlRole::kNone;
}

std::unique_ptr<Document> BuildXml(SourceBytes bytes, std::string* error) {
  auto document = std::make_unique<Document>();
  AddReservedColors(document.get());
  return ReadXml(std::move(bytes), document.get(), error) ? std::move(document) : nullptr;
}

bool ReadXml(SourceBytes bytes, Document* document, std::string* error) {
  document->format = Format::kXml;
  document->source = std::move(bytes);
  const std::string_view source = document->source;
  const xml::Encoding encoding = xml::DetectEncoding(source);
  const std::uint32_t unit = xml::UnitSize(encoding);
  for (std::uint32_t at = 0; at + unit <= source.size(); at += unit) {
    const char c = xml::AsciiAt(source, at, encoding);
    if (c != '\n') continue;
    document->crlf = at >= unit && xml::AsciiAt(source, at - unit, encoding) == '\r';
    break;
  }
  XmlDraft draft;
  // Room for as much as files of this size hold at most, as a rule: what is not filled is never touched, but
  // an array that outgrows its room is copied.
  constexpr std::size_t kBytesPerItem = 10;
  constexpr std::size_t kMostRoom = std::size_t{1}
                                    << 25U;  // where memory is only promised as far as there is some
  constexpr std::size_t kBytesPerAttribute = 128;
  const auto room = [&](std::size_t bytes_each) { return std::min(source.size() / bytes_each, kMostRoom); };
  document->items.reserve(room(kBytesPerItem));
  document->attributes.Own().reserve(room(kBytesPerAttribute));
  document->values.Own().reserve(room(kBytesPerAttribute));
  Gatherer gatherer(document, &draft);
  xml::Error problem;
  if (!xml::Read(document->source, &gatherer, &problem)) {
    *error = problem.Describe();
    return false;
  }
  gatherer.InsertLateBlanks();
  if (document->show_all_statement.Empty()) {
    // Where nothing is hidden everything is shown.
    const auto& conditions = document->conditions;
    document->show_all = document->source_show_all = std::all_of(
        conditions.begin(), conditions.end(), [](const Condition& condition) { return condition.shown; });
  }
  document->source.Rest(0, document->source.size());
  BuildXmlTree(document, draft);
  return true;
}

}  // namespace qelm::embedded::model
