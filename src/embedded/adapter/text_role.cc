#include <algorithm>

#include "embedded/adapter/element_properties.h"
#include "embedded/adapter/roles.h"
#include "embedded/model/character_edit.h"
#include "embedded/model/edit.h"
#include "embedded/model/text_access.h"

namespace qelm::embedded::adapter {
namespace {

using host::TextLocation;
using host::TextRange;
using model::ItemKind;

static_assert(static_cast<int>(model::Underlining::kNone) == static_cast<int>(host::Underlining::kNoLine));
static_assert(static_cast<int>(model::Underlining::kSingle) == static_cast<int>(host::Underlining::kSingle));
static_assert(static_cast<int>(model::Underlining::kNumeric) ==
              static_cast<int>(host::Underlining::kNumeric));

// The character properties of the interface have the model's bits, and conditions one of their own.
constexpr bool SameBit(model::TextPropertyBit ours, host::TextPropertyMask theirs) {
  return static_cast<std::uint32_t>(ours) == static_cast<std::uint32_t>(theirs);
}
static_assert(SameBit(model::kColorBit, host::kColorProperty));
static_assert(SameBit(model::kUnderliningBit, host::kUnderliningProperty));
static_assert(SameBit(model::kOverlineBit, host::kOverlineProperty));
static_assert(SameBit(model::kStrikethroughBit, host::kStrikethroughProperty));
static_assert(SameBit(model::kChangeBarBit, host::kChangeBarProperty));
static_assert(SameBit(model::kBackgroundBit, host::kBackgroundProperty));
constexpr std::uint32_t kCharacterProperties = host::kAllTextProperties & ~host::kConditionsProperty;

// The element that begins with the item, 0 when none does.
Id ElementBeginningAt(const model::Document& document, std::uint32_t index) {
  const model::Item& item = document.items[index];
  switch (item.kind) {
    case ItemKind::kElementBegin:
    case ItemKind::kMarker:
    case ItemKind::kVariable:
    case ItemKind::kReferenceBegin:
      return item.ref;
    case ItemKind::kTableAnchor:
    case ItemKind::kNoteAnchor:
    case ItemKind::kPartBegin:
      return document.parts[item.ref].element;
    case ItemKind::kFrameAnchor:
      return document.frames[item.ref].element;
    default:
      return host::kNone;
  }
}

// The row whose conditions are those of the range beginning here: a row, or the first one of a part of a
// table that consists of rows. 0 where text is meant.
std::uint32_t RowAt(const model::Document& document, std::uint32_t index) {
  for (; index < document.items.size() && document.items[index].kind == ItemKind::kPartBegin; ++index) {
    const model::Part& part = document.parts[document.items[index].ref];
    if (part.kind == model::ElementKind::kTableRow) return document.items[index].ref;
    if (part.kind == model::ElementKind::kTableCell || part.kind == model::ElementKind::kTableTitle) break;
  }
  return 0;
}

class TextRole : public host::Text {
 public:
  explicit TextRole(Workspace& workspace) : workspace_(workspace) {}

  TextRange ElementRange(Id document, Id element) override {
    const model::Document* model = workspace_.Document(document);
    const model::Element* found = workspace_.Element(document, element);
    if (model == nullptr || found == nullptr) return {};
    const Id flow = model::FlowOf(*model, found->first_item);
    if (flow == host::kNone) return {};
    return {{flow, found->first_item}, {flow, found->end_item}};
  }

  TextRange AnchoredRange(Id document, Id element) override;
  bool HasOwnText(Id document, Id element) override {
    if (workspace_.IsDocument(document)) workspace_.Document(document);
    return workspace_.Element(document, element) != nullptr &&
           model::HasOwnText(*workspace_.Tree(document), element);
  }

  std::string_view ElementText(Id document, Id element, std::size_t max_characters,
                               std::string* buffer) override {
    if (workspace_.IsDocument(document)) workspace_.Document(document);
    if (workspace_.Element(document, element) == nullptr) return {};
    return model::ElementText(*workspace_.Tree(document), element, max_characters, buffer);
  }

  bool ReadElementProperty(Id document, Id element, host::ElementProperty property,
                           std::string* value) override {
    value->clear();
    if (workspace_.IsDocument(document)) workspace_.Document(document);
    if (workspace_.Element(document, element) == nullptr) return false;
    return adapter::ReadElementProperty(workspace_, workspace_.File(document), element, property, value);
  }

  host::TextProperties ReadProperties(Id document, const TextRange& range, std::uint32_t mask) override;
  bool WriteProperties(Id document, const TextRange& range, const host::TextProperties& properties) override;

  TextLocation FlowStart(Id document, Id flow) override {
    const model::Flow* found = Flow(document, flow);
    if (found == nullptr || found->first_item >= found->end_item) return {};
    return {flow, found->first_item};
  }

  FindResult FindCondition(Id document, const TextLocation& from, Id condition, TextRange* found) override;

  Id SelectedElement(Id document) override {
    const OpenFile* file = workspace_.DocumentFile(document);
    if (file == nullptr || workspace_.Element(document, file->selected_element) == nullptr)
      return host::kNone;
    return file->selected_element;
  }
  bool SelectElement(Id document, Id element) override {
    const TextRange range = ElementRange(document, element);
    if (range.Empty()) return workspace_.FailId(document);
    OpenFile* file = workspace_.DocumentFile(document);
    file->selection = range;
    file->selected_element = element;
    return true;
  }
  TextRange Selection(Id document) override {
    const OpenFile* file = workspace_.DocumentFile(document);
    return file == nullptr ? TextRange() : file->selection;
  }
  bool SetSelection(Id document, const TextRange& range) override {
    OpenFile* file = workspace_.DocumentFile(document);
    if (file == nullptr || (!range.Empty() && !IsRange(document, range))) return FailRange(document);
    file->selection = range;
    file->selected_element = SelectedBy(*file->document, range);
    return true;
  }
  void ScrollTo(Id, const TextRange&) override {}  // there is no screen

 private:
  const model::Flow* Flow(Id document, Id flow) {
    const model::Document* model = workspace_.Document(document);
    return model != nullptr && flow != host::kNone && flow < model->flows.size() ? &model->flows[flow]
                                                                                 : nullptr;
  }
  bool IsRange(Id document, const TextRange& range) {
    const model::Flow* flow = Flow(document, range.begin.object);
    return flow != nullptr && range.end.object == range.begin.object &&
           flow->first_item <= range.begin.offset && range.begin.offset <= range.end.offset &&
           range.end.offset <= flow->end_item;
  }
  bool FailRange(Id document) {
    const OpenFile* file = workspace_.DocumentFile(document);
    if (file == nullptr) return workspace_.FailId(document);
    return workspace_.Fail(Error::kInvalidArgument, file->path + ": the document has no such range of text.");
  }
  bool IdsExist(const model::Document& document, const host::TextProperties& properties) const;
  void NoteBackgrounds(OpenFile* file);
  static Id SelectedBy(const model::Document& document, const TextRange& range);
  static const std::vector<bool>& SetsWith(OpenFile* file, Id condition);

  Workspace& workspace_;
};

TextRange TextRole::AnchoredRange(Id document, Id element) {
  const TextRange whole = ElementRange(document, element);
  if (whole.Empty()) return {};
  const model::Document& model = *workspace_.Document(document);
  const model::Item& anchor = model.items[whole.begin.offset];
  if (anchor.kind != ItemKind::kNoteAnchor || anchor.ref == 0) return {};
  const model::Part& note = model.parts[anchor.ref];
  std::uint32_t end = note.end_item - 1;
  while (end > note.first_item + 1 && model.items[end].kind != ItemKind::kParagraphEnd) --end;
  return {{whole.begin.object, note.first_item + 1}, {whole.begin.object, end}};
}

// The first element that lies wholly in the range, when the range begins with it.
Id TextRole::SelectedBy(const model::Document& document, const TextRange& range) {
  if (range.Empty() || range.begin.offset >= range.end.offset) return host::kNone;
  const Id element = ElementBeginningAt(document, range.begin.offset);
  return element != host::kNone && document.elements[element].end_item <= range.end.offset ? element
                                                                                           : host::kNone;
}

host::TextProperties TextRole::ReadProperties(Id document, const TextRange& range, std::uint32_t mask) {
  host::TextProperties result;
  result.mask = mask;
  if (range.Empty() || !IsRange(document, range) || range.begin.offset == range.end.offset) return result;
  OpenFile* file = workspace_.DocumentFile(document);
  const model::Document& model = *file->document;
  const std::uint32_t content = FirstContent(file, range.begin.offset, range.end.offset);
  const std::uint32_t at = content < range.end.offset ? content : range.begin.offset;
  if ((mask & host::kConditionsProperty) != 0) {
    const std::uint32_t row = RowAt(model, range.begin.offset);
    const std::uint16_t set = row != 0 ? model.parts[row].conditions : model.items[at].conditions;
    result.conditions = model.condition_sets[set];
  }
  if ((mask & kCharacterProperties) == 0) return result;
  const model::CharacterProperties properties = PropertiesAt(file, at);
  const auto asked = [&](host::TextPropertyMask bit) { return (mask & bit) != 0; };
  if (asked(host::kColorProperty)) result.color = properties.color;
  // In XML text that nothing colors is black.
  if (asked(host::kColorProperty) && properties.color == host::kNone && model.format == model::Format::kXml) {
    const auto black = model.color_index.find("Black");
    if (black != model.color_index.end()) result.color = black->second;
  }
  if (asked(host::kBackgroundProperty)) result.background = properties.background;
  if (asked(host::kUnderliningProperty)) {
    result.underlining = static_cast<host::Underlining>(properties.underlining);
  }
  result.overline = asked(host::kOverlineProperty) && properties.overline;
  result.strikethrough = asked(host::kStrikethroughProperty) && properties.strikethrough;
  result.change_bar = asked(host::kChangeBarProperty) && properties.change_bar;
  return result;
}

bool TextRole::IdsExist(const model::Document& document, const host::TextProperties& properties) const {
  const auto asked = [&](host::TextPropertyMask bit) { return (properties.mask & bit) != 0; };
  const auto is_color = [&](Id id) { return id != host::kNone && id < document.colors.size(); };
  if (asked(host::kColorProperty) && !is_color(properties.color)) return false;
  if (asked(host::kBackgroundProperty) && properties.background != host::kNone &&
      !is_color(properties.background)) {
    return false;
  }
  return !asked(host::kConditionsProperty) ||
         std::all_of(properties.conditions.begin(), properties.conditions.end(),
                     [&](Id id) { return id != host::kNone && id < document.conditions.size(); });
}

// Says once a document that background colors are left out.
void TextRole::NoteBackgrounds(OpenFile* file) {
  if (file->derived.backgrounds_noted || model::HasBackgrounds(*file->document)) return;
  file->derived.backgrounds_noted = true;
  workspace_.Notice(file->path +
                    ": the file is MIF of a version before 10, which has no background colors for text; they "
                    "are left out.");
}

bool TextRole::WriteProperties(Id document, const TextRange& range, const host::TextProperties& properties) {
  if (range.Empty() || !IsRange(document, range)) return FailRange(document);
  OpenFile* file = workspace_.DocumentFile(document);
  model::Document* model = file->document.get();
  if (!IdsExist(*model, properties)) return workspace_.FailId(document);
  if (InLockedInset(file, range.begin.offset)) {
    return workspace_.Fail(Error::kRefused,
                           file->path + ": the text belongs to a text inset that is locked.");
  }
  const std::uint32_t begin = range.begin.offset;
  const std::uint32_t end = range.end.offset;
  if ((properties.mask & kCharacterProperties) != 0) {
    model::CharacterProperties wanted;
    wanted.known = static_cast<std::uint8_t>(properties.mask & kCharacterProperties);
    wanted.color = properties.color;
    wanted.background = properties.background;
    wanted.underlining = static_cast<model::Underlining>(properties.underlining);
    wanted.overline = properties.overline;
    wanted.strikethrough = properties.strikethrough;
    wanted.change_bar = properties.change_bar;
    if ((properties.mask & host::kBackgroundProperty) != 0 && properties.background != host::kNone) {
      NoteBackgrounds(file);
    }
    const bool written = model::SetCharacterProperties(model, begin, end, wanted, Paragraphs(file));
    if (!written && (properties.mask & host::kConditionsProperty) == 0) return true;
  }
  if ((properties.mask & host::kConditionsProperty) != 0) {
    DeclareConditions(model, properties.conditions);
    model::SetConditions(model, begin, end, model->InternConditions(properties.conditions));
  }
  const bool conditions = (properties.mask & host::kConditionsProperty) != 0;
  MarkEdited(file, conditions ? EditOf::kVisibility : EditOf::kLooks);
  return true;
}

// Whether each set of conditions contains the condition. Kept between calls, as a search goes on from match
// to match.
const std::vector<bool>& TextRole::SetsWith(OpenFile* file, Id condition) {
  const std::vector<std::vector<Id>>& sets = file->document->condition_sets;
  DerivedData& derived = file->derived;
  if (derived.condition != condition) derived.sets_with_condition.clear();
  derived.condition = condition;
  while (derived.sets_with_condition.size() < sets.size()) {
    const std::vector<Id>& set = sets[derived.sets_with_condition.size()];
    derived.sets_with_condition.push_back(std::find(set.begin(), set.end(), condition) != set.end());
  }
  return derived.sets_with_condition;
}

// A run ends before the parts of a table or footnote that follow its anchor: what is in them is found by
// itself, whether or not the search goes on behind the run. So a search from match to match looks at each
// item once.
host::Text::FindResult TextRole::FindCondition(Id document, const TextLocation& from, Id condition,
                                               TextRange* found) {
  *found = {};
  OpenFile* file = workspace_.DocumentFile(document);
  if (file == nullptr || !IsRange(document, {from, from})) {
    FailRange(document);
    return FindResult::kFailed;
  }
  const model::Document& model = *file->document;
  if (condition == host::kNone || condition >= model.conditions.size()) {
    workspace_.FailId(document);
    return FindResult::kFailed;
  }
  const std::vector<bool>& wanted = SetsWith(file, condition);
  const std::uint32_t limit = model.flows[from.object].end_item;
  const auto counts = [&](const model::Item& item) {
    return model::HasConditions(item.kind) && !item.Is(model::kDeleted);
  };
  std::uint32_t begin = from.offset;
  while (begin < limit && !(counts(model.items[begin]) && wanted[model.items[begin].conditions])) ++begin;
  if (begin == limit) return FindResult::kNotFound;
  const std::uint16_t set = model.items[begin].conditions;
  std::uint32_t end = begin + 1;
  for (std::uint32_t i = begin + 1; i < limit; ++i) {
    const model::Item& item = model.items[i];
    if (item.kind == ItemKind::kPartBegin || item.kind == ItemKind::kPartEnd) break;
    if (!counts(item)) continue;
    if (item.conditions != set) break;
    end = i + 1;
  }
  *found = {{from.object, begin}, {from.object, end}};
  return FindResult::kFound;
}

}  // namespace

std::unique_ptr<host::Text> MakeText(Workspace& workspace) { return std::make_unique<TextRole>(workspace); }

}  // namespace qelm::embedded::adapter
