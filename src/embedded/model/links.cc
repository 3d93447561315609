#include "embedded/model/links.h"

#include <algorithm>
#include <optional>

#include "embedded/mif/reader.h"
#include "embedded/model/book.h"
#include "embedded/model/hypertext.h"
#include "embedded/model/text_access.h"
#include "embedded/model/xml_external.h"
#include "embedded/model/xml_marks.h"
#include "embedded/xml/encoding.h"

namespace qelm::embedded::model {
namespace {

// Attribute types as in host::AttributeType.
constexpr std::uint8_t kUniqueIdType = 7;
constexpr std::uint8_t kReferenceType = 8;
constexpr std::uint8_t kReferencesType = 9;

constexpr std::string_view kReferenceMarker = "Cross-Ref";

// What an instruction of our own says.
model::Mark OwnMark(std::string_view instruction) {
  constexpr std::string_view kOpen = "<?qelm ";
  if (!instruction.starts_with(kOpen) || !instruction.ends_with("?>")) return {};
  instruction.remove_prefix(kOpen.size());
  return ReadMark("qelm", instruction.substr(0, instruction.size() - 2));
}

// Goes over a document once, and gathers its links, or what links may name.
class Walk {
 public:
  Walk(const Document& document, std::vector<Link>* links, std::vector<LinkTarget>* targets)
      : document_(document),
        xml_encoding_(document.format == Format::kXml ? xml::DetectEncoding(document.source)
                                                      : xml::Encoding::kUtf8),
        links_(links),
        targets_(targets) {}
  void Run();

 private:
  // A part of the document with text of its own in which everything is hidden when it is.
  struct Open {
    Id element;
    bool hidden;
  };

  void Prepare();
  void WalkFlow(Id flow);
  void Visit(const Item& item);
  void BeginPart(const Item& item);
  void Enter(Id element) { around_.push_back({element, Hidden()}); }
  void Leave() {
    if (around_.size() > floor_) around_.pop_back();
  }
  std::string_view Statement(std::uint32_t begin, std::uint32_t end);
  std::string_view Statement(const Item& item) { return Statement(item.begin, item.end); }
  void Mark(const Item& item);
  void Object(std::string_view statement, const Item& item, mif::Encoding encoding);
  void Reference(std::string_view statement, const Item& item, mif::Encoding encoding);
  void Marker(std::string_view statement, const Item& item, mif::Encoding encoding);
  void Inset(std::string_view statement, const Item& item, mif::Encoding encoding);
  void Frame(const Item& item);
  // The graphics in a frame or on a page, as links like the one there.
  void Graphics(Span span, const Link& like);
  void NoteElement(Id element, const Item& item);
  void References(Id id, const Attribute& attribute, const Item& item);
  void AddTarget(LinkKind kind, std::string name, const Item& item, Id element);
  void AddFlowName(const Flow& flow, std::uint32_t frame);
  // Where the link is that an attribute of the element around makes: an object in it says the same, and more.
  std::optional<std::size_t> OwnLink() const;
  // A link whose statement the item is.
  Link LinkAt(const Item& item, LinkKind kind) const;

  Id Element() const { return around_.empty() ? 0 : around_.back().element; }
  bool Hidden() const { return !around_.empty() && around_.back().hidden; }
  std::uint32_t IndexOf(const Item& item) const {
    return static_cast<std::uint32_t>(&item - document_.items.data());
  }
  bool IsHidden(const Item& item) const {
    return Hidden() || (HasConditions(item.kind) && hidden_sets_[item.conditions]);
  }

  const Document& document_;
  const xml::Encoding xml_encoding_;
  std::vector<Link>* links_;
  std::vector<LinkTarget>* targets_;
  std::vector<bool> hidden_sets_;
  // By definition: the attributes that hold an id, and those that refer to one; by name otherwise.
  struct Named {
    std::vector<std::uint32_t> ids;
    std::vector<std::uint32_t> references;
    bool matters = false;  // one of them is looked for
  };
  std::vector<Named> attributes_;
  std::vector<std::uint32_t> undeclared_ids_;  // names that hold ids where nothing is declared
  std::vector<Open> around_;
  std::size_t floor_ = 0;
  std::size_t first_link_ = 0;  // of the flow
  std::string edited_;          // the statement at hand, where it is not the source's
  std::vector<bool> hidden_frames_;
  std::uint32_t looked_ = 0;  // statements
};

void Walk::Prepare() {
  for (std::size_t set = 0; set < document_.condition_sets.size(); ++set) {
    hidden_sets_.push_back(!IsShown(document_, static_cast<std::uint16_t>(set)));
  }
  hidden_frames_.assign(document_.frames.size(), false);
  attributes_.resize(document_.definitions.size());
  for (std::size_t i = 1; i < document_.definitions.size(); ++i) {
    for (const AttributeDefinition& attribute : document_.definitions[i].attributes) {
      if (attribute.type == kUniqueIdType) attributes_[i].ids.push_back(attribute.name);
      const bool refers = attribute.type == kReferenceType || attribute.type == kReferencesType;
      if (refers) attributes_[i].references.push_back(attribute.name);
    }
  }
  for (const std::string_view name : {"id", "Id", "ID", "xml:id"}) {
    const auto found = document_.name_index.find(name);
    if (found != document_.name_index.end()) undeclared_ids_.push_back(found->second);
  }
  for (std::size_t i = 0; i < attributes_.size(); ++i) {
    Named& named = attributes_[i];
    const auto& ids = document_.definitions[i].declared ? named.ids : undeclared_ids_;
    const bool refers = links_ != nullptr && document_.format == Format::kXml && !named.references.empty();
    named.matters = (targets_ != nullptr && !ids.empty()) || refers;
  }
}

// A statement as it will be saved.
std::string_view Walk::Statement(std::uint32_t begin, std::uint32_t end) {
  // Statements here and there bring all of the source to memory.
  constexpr std::uint32_t kMany = 512;
  if (++looked_ % kMany == 0) document_.source.Rest(0, document_.source.size());
  const std::string_view statement = document_.At(Span{begin, end});
  const auto edit = document_.replacements.find(begin);
  if (edit == document_.replacements.end()) return statement;
  edited_ = statement;
  const Span place = edit->second.place;
  edited_.replace(place.begin - begin, place.end - place.begin, edit->second.text);
  return edited_;
}

// Text in anchored frames is as hidden as the frame is, so it comes after the flows with the anchors.
void Walk::Run() {
  Prepare();
  std::vector<std::uint32_t> frame_of(document_.flows.size(), 0);
  for (const auto& [frame, flow] : document_.frame_flows) frame_of[flow] = frame;
  for (const bool in_frames : {false, true}) {
    for (Id flow = 1; flow < document_.flows.size(); ++flow) {
      const std::uint32_t frame = frame_of[flow];
      if ((frame != 0) != in_frames) continue;
      around_.assign(1, {0, hidden_frames_[frame]});
      AddFlowName(document_.flows[flow], frame);
      WalkFlow(flow);
    }
  }
  document_.source.Rest(0, document_.source.size());
  if (links_ == nullptr) return;
  for (ExternalFile& external : ExternalFiles(document_)) {
    Link link;
    link.kind = external.is_unparsed ? LinkKind::kGraphic : LinkKind::kTextInset;
    link.statement = external.literal.begin;
    link.file = std::move(external.file);
    links_->push_back(std::move(link));
  }
  Link on_page;
  on_page.kind = LinkKind::kGraphic;
  for (const Page& page : document_.pages) {
    if (page.imports) Graphics(page.span, on_page);
  }
}

void Walk::WalkFlow(Id id) {
  const Flow& flow = document_.flows[id];
  floor_ = around_.size();
  first_link_ = links_ == nullptr ? 0 : links_->size();
  for (std::uint32_t i = flow.first_item; i < flow.end_item; ++i) {
    const Item& item = document_.items[i];
    // Most items are one of these.
    switch (item.kind) {
      case ItemKind::kString:
      case ItemKind::kParagraphBegin:
      case ItemKind::kParagraphEnd:
      case ItemKind::kLine:
        break;
      case ItemKind::kElementBegin:
        if (document_.elements[item.ref].attribute_count != 0) NoteElement(item.ref, item);
        Enter(item.ref);
        break;
      case ItemKind::kElementEnd:
        Leave();
        break;
      default:
        Visit(item);
    }
  }
  if (links_ == nullptr) return;
  std::stable_partition(links_->begin() + static_cast<std::ptrdiff_t>(first_link_), links_->end(),
                        [](const Link& link) { return link.element != 0; });
}

void Walk::AddFlowName(const Flow& flow, std::uint32_t frame) {
  if (targets_ == nullptr || flow.name.empty()) return;
  const std::uint32_t anchor = frame == 0 ? kNoIndex : document_.frames[frame].anchor;
  const bool gone = IsDeletedAt(document_, anchor);
  targets_->push_back({LinkKind::kTextInset, std::string(flow.name), 0,
                       gone ? TargetState::kDeleted : TargetState::kShown, anchor});
}

Link Walk::LinkAt(const Item& item, LinkKind kind) const {
  Link link;
  link.kind = kind;
  link.statement = item.begin;
  link.element = Element();
  link.hidden = IsHidden(item);
  link.item = IndexOf(item);
  return link;
}

void Walk::Visit(const Item& item) {
  const mif::Encoding encoding = document_.encoding;
  switch (item.kind) {
    case ItemKind::kPartBegin:
      BeginPart(item);
      break;
    case ItemKind::kPartEnd:
      Leave();
      break;
    case ItemKind::kFrameAnchor:
      Frame(item);
      break;
    case ItemKind::kReferenceBegin:
      if (item.ref != 0) NoteElement(item.ref, item);
      Reference(Statement(item), item, encoding);
      if (item.ref != 0) Enter(item.ref);
      break;
    case ItemKind::kReferenceEnd:
      if (item.ref != 0) Leave();
      break;
    case ItemKind::kVariable:
      if (item.ref != 0) NoteElement(item.ref, item);
      break;
    case ItemKind::kMarker:
      if (item.ref != 0) NoteElement(item.ref, item);
      Marker(Statement(item), item, encoding);
      break;
    case ItemKind::kInsetBegin:
      Inset(Statement(item), item, encoding);
      break;
    case ItemKind::kOther:
      if (document_.format == Format::kXml) Mark(item);
      break;
    default:
      break;
  }
}

// Text in a table or footnote has conditions of its own and is hidden with the anchor, or the row, as well.
void Walk::BeginPart(const Item& item) {
  const Part& part = document_.parts[item.ref];
  bool hidden = Hidden();
  if (part.anchor != kNoIndex) hidden = IsHidden(document_.items[part.anchor]);
  if (part.kind == ElementKind::kTableRow) hidden = hidden || hidden_sets_[part.conditions];
  around_.push_back({part.element != 0 ? part.element : Element(), hidden});
  if (part.element != 0) NoteElement(part.element, item);
}

// An XML document keeps objects that it has no words for in instructions.
void Walk::Mark(const Item& item) {
  // Most of what is no text is the white space between elements.
  if (item.ref != kInstructionItem) return;
  const std::string_view bytes = document_.At(item);
  if (xml::AsciiAt(bytes, xml::UnitSize(xml_encoding_), xml_encoding_) != '?') return;
  const auto edit = document_.replacements.find(item.begin);
  const model::Mark mark =
      OwnMark(edit != document_.replacements.end() ? edit->second.text : xml::ToUtf8(bytes, xml_encoding_));
  if (mark.kind == MarkKind::kObject) Object(mark.name, item, mif::Encoding::kUtf8);
  if (mark.kind != MarkKind::kGraphic || links_ == nullptr || item.Is(kDeleted)) return;
  Link link = LinkAt(item, LinkKind::kGraphic);
  link.file = PlatformPath(mark.name);
  links_->push_back(std::move(link));
}

void Walk::Object(std::string_view statement, const Item& item, mif::Encoding encoding) {
  mif::Reader reader(statement);
  if (!reader.Next()) return;
  if (reader.name() == "XRef") {
    const std::optional<std::size_t> own = OwnLink();
    const std::size_t before = links_ == nullptr ? 0 : links_->size();
    Reference(statement, item, encoding);
    if (!own || links_->size() == before) return;
    links_->back().item = (*links_)[*own].item;
    (*links_)[*own] = std::move(links_->back());
    links_->pop_back();
  } else if (reader.name() == "Marker") {
    Marker(statement, item, encoding);
  } else if (reader.name() == "TextInset") {
    Inset(statement, item, encoding);
  }
}

// Links come in the order of their items.
std::optional<std::size_t> Walk::OwnLink() const {
  if (links_ == nullptr || Element() == 0) return std::nullopt;
  const std::uint32_t begin = document_.elements[Element()].first_item;
  const auto first = links_->begin() + static_cast<std::ptrdiff_t>(first_link_);
  const auto behind = std::upper_bound(first, links_->end(), begin,
                                       [](std::uint32_t at, const Link& link) { return at < link.item; });
  if (behind == first) return std::nullopt;
  const Link& link = behind[-1];
  const bool is_own =
      link.item == begin && link.element == Element() && link.kind == LinkKind::kCrossReference;
  return is_own ? std::optional(static_cast<std::size_t>(behind - links_->begin()) - 1) : std::nullopt;
}

void Walk::Reference(std::string_view statement, const Item& item, mif::Encoding encoding) {
  if (links_ == nullptr || item.Is(kDeleted)) return;
  const auto [text, is_element, file] = ReferenceLeaves(statement);
  Link link = LinkAt(item, LinkKind::kCrossReference);
  if (item.kind == ItemKind::kReferenceBegin && item.ref != 0) link.element = item.ref;
  link.file = PlatformPath(mif::DecodeString(file.data, encoding));
  const std::string source = mif::DecodeString(text.data, encoding);
  link.target = TargetOfSourceText(source, is_element.data == "Yes");
  links_->push_back(std::move(link));
}

void Walk::Marker(std::string_view statement, const Item& item, mif::Encoding encoding) {
  const bool hypertext = statement.find(kHypertextMarker) != std::string_view::npos;
  const bool names_place = targets_ != nullptr && statement.find(kReferenceMarker) != std::string_view::npos;
  if (!hypertext && !names_place) return;
  const auto [type, text] = MarkerLeaves(statement);
  const std::string content = mif::DecodeString(text.data, encoding);
  const Id element = item.kind == ItemKind::kMarker && item.ref != 0 ? item.ref : Element();
  if (mif::Inside(type.data) == kReferenceMarker && !content.empty()) {
    AddTarget(LinkKind::kCrossReference, content, item, element);
  }
  if (mif::Inside(type.data) != kHypertextMarker) return;
  const Hypertext command = ReadHypertext(content);
  if (command.kind == Hypertext::Kind::kNone) return;
  if (command.kind == Hypertext::Kind::kPlace) {
    AddTarget(LinkKind::kHypertext, std::string(command.target), item, element);
    return;
  }
  if (links_ == nullptr || item.Is(kDeleted)) return;
  Link link = LinkAt(item, LinkKind::kHypertext);
  link.element = element;
  link.file = PlatformPath(command.file);
  link.target = command.target;
  link.command = command.command;
  links_->push_back(std::move(link));
}

void Walk::Inset(std::string_view statement, const Item& item, mif::Encoding encoding) {
  if (links_ == nullptr || item.Is(kDeleted)) return;
  const auto [file, flow] = InsetLeaves(statement);
  if (mif::Inside(file.data).empty()) return;
  Link link = LinkAt(item, LinkKind::kTextInset);
  link.file = PlatformPath(mif::DecodeString(file.data, encoding));
  link.target = mif::DecodeString(flow.data, encoding);
  links_->push_back(std::move(link));
}

void Walk::Frame(const Item& item) {
  if (item.ref == 0) return;
  const AnchoredFrame& frame = document_.frames[item.ref];
  hidden_frames_[item.ref] = IsHidden(item);
  if (frame.element != 0) NoteElement(frame.element, item);
  if (links_ == nullptr || item.Is(kDeleted) || frame.file.empty()) return;
  Link link = LinkAt(item, LinkKind::kGraphic);
  if (frame.element != 0) link.element = frame.element;
  Graphics(frame.span, link);
}

// Frames and groups may hold several graphics.
void Walk::Graphics(Span span, const Link& like) {
  mif::Reader reader(document_.At(span));
  while (reader.Next()) {
    if (reader.kind() != mif::Piece::kGroup || reader.token() != mif::Token::kImportObject) continue;
    const std::uint32_t begin = span.begin + reader.begin();
    if (!reader.Skip()) return;
    const auto leaves = GraphicLeaves(Statement(begin, span.begin + reader.end()));
    const LinkLeaf* file = GraphicFile(leaves);
    if (file == nullptr) continue;
    Link link = like;
    link.statement = begin;
    link.file = PlatformPath(mif::DecodeString(file->data, document_.encoding));
    links_->push_back(std::move(link));
  }
}

void Walk::NoteElement(Id id, const Item& item) {
  const model::Element& element = document_.elements[id];
  if (element.attribute_count == 0) return;
  const Named& named = attributes_[element.definition];
  if (!named.matters) return;
  const bool declared = document_.definitions[element.definition].declared;
  const std::vector<std::uint32_t>& ids = declared ? named.ids : undeclared_ids_;
  const bool refers = links_ != nullptr && document_.format == Format::kXml && !named.references.empty();
  for (std::uint32_t i = 0; i < element.attribute_count; ++i) {
    const Attribute& attribute = document_.attributes[element.first_attribute + i];
    const auto is_one = [&](const std::vector<std::uint32_t>& names) {
      return std::find(names.begin(), names.end(), attribute.name) != names.end();
    };
    if (refers && is_one(named.references)) References(id, attribute, item);
    if (targets_ == nullptr || attribute.value_count == 0 || !is_one(ids)) continue;
    AddTarget(LinkKind::kCrossReference, std::string(document_.values[attribute.first_value]), item, id);
  }
}

// In MIF the cross-reference itself says what it points to; in XML the attribute may be all there is.
void Walk::References(Id id, const Attribute& attribute, const Item& item) {
  if (item.Is(kDeleted)) return;
  for (std::uint32_t i = 0; i < attribute.value_count; ++i) {
    Link link = LinkAt(item, LinkKind::kCrossReference);
    link.statement = document_.elements[id].source;
    link.element = id;
    link.target = document_.values[attribute.first_value + i];
    links_->push_back(std::move(link));
  }
}

void Walk::AddTarget(LinkKind kind, std::string name, const Item& item, Id element) {
  if (targets_ == nullptr || name.empty()) return;
  const bool gone =
      item.Is(kDeleted) || (item.kind == ItemKind::kPartBegin && document_.parts[item.ref].deleted);
  const TargetState state = gone             ? TargetState::kDeleted
                            : IsHidden(item) ? TargetState::kHidden
                                             : TargetState::kShown;
  targets_->push_back({kind, std::move(name), element, state, IndexOf(item)});
}

}  // namespace

std::vector<Link> ReadLinks(const Document& document) {
  std::vector<Link> links;
  Walk(document, &links, nullptr).Run();
  return links;
}

std::vector<LinkTarget> ReadTargets(const Document& document) {
  std::vector<LinkTarget> targets;
  Walk(document, nullptr, &targets).Run();
  return targets;
}

LinksAndTargets ReadLinksAndTargets(const Document& document) {
  LinksAndTargets all;
  Walk(document, &all.links, &all.targets).Run();
  return all;
}

namespace {

std::optional<Replacement> MifEdit(const Document& document, LinkKind kind, std::uint32_t statement,
                                   std::string_view path) {
  const std::string_view bytes = std::string_view(document.source).substr(statement);
  if (!IsStatementOf(kind, bytes)) return std::nullopt;
  std::optional<Replacement> edit = LinkEdit(kind, bytes, document.encoding, path);
  if (edit) edit->place = {edit->place.begin + statement, edit->place.end + statement};
  return edit;
}

// The instruction that begins there.
Span InstructionAt(const Document& document, std::uint32_t begin, xml::Encoding encoding) {
  const std::uint32_t unit = xml::UnitSize(encoding);
  std::uint32_t at = begin;
  for (; at + 2 * unit <= document.source.size(); at += unit) {
    const bool ends = xml::AsciiAt(document.source, at, encoding) == '?' &&
                      xml::AsciiAt(document.source, at + unit, encoding) == '>';
    if (ends) return {begin, at + 2 * unit};
  }
  return {begin, begin};
}

// The whole instruction is written anew, in UTF-8, which the saver puts into the file's own encoding.
std::optional<Replacement> XmlEdit(const Document& document, LinkKind kind, std::uint32_t instruction,
                                   std::string_view path) {
  const xml::Encoding encoding = xml::DetectEncoding(document.source);
  if (xml::AsciiAt(document.source, instruction, encoding) != '<') {
    for (const ExternalFile& external : ExternalFiles(document)) {
      if (external.literal.begin == instruction) return Replacement{external.literal, ExternalLiteral(path)};
    }
    return std::nullopt;
  }
  const Span place = InstructionAt(document, instruction, encoding);
  const model::Mark mark = OwnMark(xml::ToUtf8(document.At(place), encoding));
  if (mark.kind == MarkKind::kGraphic && kind == LinkKind::kGraphic) {
    const bool independent = mark.name.starts_with('<');
    return Replacement{place, GraphicMark(independent ? DeviceIndependentPath(path) : std::string(path))};
  }
  if (mark.kind != MarkKind::kObject || !IsStatementOf(kind, mark.name)) return std::nullopt;
  const std::optional<Replacement> edit = LinkEdit(kind, mark.name, mif::Encoding::kUtf8, path);
  if (!edit) return std::nullopt;
  std::string statement = mark.name;
  statement.replace(edit->place.begin, edit->place.end - edit->place.begin, edit->text);
  return Replacement{place, ObjectMark(statement)};
}

}  // namespace

bool SetLinkFile(Document* document, LinkKind kind, std::uint32_t statement, std::string_view path) {
  if (statement >= document->source.size()) return false;
  const bool is_xml = document->format == Format::kXml;
  std::optional<Replacement> edit =
      is_xml ? XmlEdit(*document, kind, statement, path) : MifEdit(*document, kind, statement, path);
  if (!edit) return false;
  if (edit->text == document->At(edit->place)) {
    document->replacements.erase(statement);
  } else {
    document->replacements.insert_or_assign(statement, std::move(*edit));
  }
  return true;
}

}  // namespace qelm::embedded::model
