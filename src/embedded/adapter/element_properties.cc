#include "embedded/adapter/element_properties.h"

#include <algorithm>
#include <charconv>

#include "embedded/adapter/printing.h"
#include "embedded/model/text_access.h"

namespace qelm::embedded::adapter {
namespace {

using host::ElementProperty;
using model::ItemKind;

const NestedRanges& PartRanges(OpenFile* file) {
  std::optional<NestedRanges>& parts = file->derived.parts;
  if (!parts) {
    const model::Document& document = file->Tree();
    std::vector<NestedRanges::Range> ranges;
    for (std::uint32_t i = 1; i < document.parts.size(); ++i) {
      const model::Part& part = document.parts[i];
      ranges.push_back({.first_item = part.first_item, .end_item = part.end_item, .ref = i});
    }
    parts.emplace(std::move(ranges));
  }
  return *parts;
}

// The innermost table around an item; an anchor counts as inside its own table. 0 when there is none.
std::uint32_t TableAround(OpenFile* file, std::uint32_t item) {
  const model::Document& document = file->Tree();
  if (document.items[item].kind == ItemKind::kTableAnchor) return document.items[item].ref;
  const NestedRanges& parts = PartRanges(file);
  const NestedRanges::Range* range = parts.Find(item);
  while (range != nullptr && document.parts[range->ref].kind != model::ElementKind::kTable) {
    range = parts.Around(*range);
  }
  return range == nullptr ? 0 : range->ref;
}

bool ReadParagraphTag(OpenFile* file, std::uint32_t item, std::string* value) {
  const model::Document& document = file->Tree();
  const std::uint32_t paragraph = ParagraphAt(file, item);
  if (paragraph == 0) return false;
  *value = document.paragraph_states[document.paragraphs[paragraph].state].tag;
  return true;
}

bool ReadTableTag(OpenFile* file, std::uint32_t item, std::string* value) {
  const std::uint32_t table = TableAround(file, item);
  if (table != 0) *value = file->Tree().parts[table].tag;
  return true;
}

bool ReadChangeBar(OpenFile* file, const model::Element& element, std::string* value) {
  const std::uint32_t content = FirstContent(file, element.first_item, element.end_item);
  const std::uint32_t item = content < element.end_item ? content : element.first_item;
  *value = PropertiesAt(file, item).change_bar ? "true" : "false";
  return true;
}

bool ReadGraphicFile(const model::Document& document, const model::Item& item, std::string* value) {
  if (item.kind != ItemKind::kFrameAnchor || item.ref == 0) return false;
  const std::string_view file = document.frames[item.ref].file;
  if (file.empty()) return false;
  *value = model::PlatformPath(file);
  return true;
}

// A substatement of the object with which the element begins, when it is an object of that kind.
bool ReadObject(const model::Document& document, const model::Item& item, ItemKind kind,
                std::string_view name, std::string* value) {
  if (item.kind != kind) return false;
  *value = model::Substatement(document, item, name);
  return true;
}

std::int32_t PageAt(OpenFile* file, std::uint32_t item) {
  const model::Document& document = file->Tree();
  auto& starts = file->derived.page_starts;
  if (!starts) {
    starts.emplace();
    for (const model::Flow& flow : document.flows) {
      if (flow.first_item == flow.end_item) continue;
      starts->push_back({flow.first_item, flow.page});
      for (std::uint32_t i = flow.first_item; i < flow.end_item; ++i) {
        const model::Item& at = document.items[i];
        // The frame of hidden text is on no page that anybody sees.
        if (at.kind != ItemKind::kTextFrame || at.Is(model::kInBlock)) continue;
        starts->push_back({i, model::PageOf(document, i)});
      }
    }
  }
  const auto after =
      std::upper_bound(starts->begin(), starts->end(), item,
                       [](std::uint32_t at, const DerivedData::PageStart& start) { return at < start.item; });
  return after == starts->begin() ? -1 : (after - 1)->page;
}

const model::Page* BodyPage(OpenFile* file, std::uint32_t item) {
  const std::vector<model::Page>& pages = file->Tree().pages;
  const std::int32_t index = PageAt(file, item);
  if (index < 0 || static_cast<std::size_t>(index) >= pages.size()) return nullptr;
  const model::Page& page = pages[static_cast<std::size_t>(index)];
  return page.kind == model::FlowKind::kBody ? &page : nullptr;
}

// The number that the page shows when that is plain figures, else the count of pages up to it.
std::string PageInteger(const model::Page& page) {
  std::int32_t number = 0;
  const char* end = page.number.data() + page.number.size();
  const auto read = std::from_chars(page.number.data(), end, number);
  if (read.ec != std::errc() || read.ptr != end) number = page.ordinal;
  return std::to_string(number);
}

// The page on which an item stands when the document is laid out as it is now; null where it stands on none.
const render::PageAt* LaidPage(Workspace& workspace, OpenFile* file, std::uint32_t item) {
  const std::vector<render::PageAt>& starts = LaidPages(workspace, file).starts;
  const auto after =
      std::upper_bound(starts.begin(), starts.end(), item,
                       [](std::uint32_t at, const render::PageAt& page) { return at < page.item; });
  return after == starts.begin() || (after - 1)->ordinal == 0 ? nullptr : &*(after - 1);
}

// The document's own record of its pages holds until something moves.
bool ReadPageNumber(Workspace& workspace, OpenFile* file, std::uint32_t item, bool as_text,
                    std::string* value) {
  if (HasStalePages(file)) {
    const render::PageAt* laid = LaidPage(workspace, file, item);
    if (laid != nullptr) {
      *value = as_text ? laid->text : std::to_string(laid->number);
      return true;
    }
  }
  const model::Page* page = BodyPage(file, item);
  if (page == nullptr) return false;
  *value = as_text ? std::string(page->number) : PageInteger(*page);
  return true;
}

}  // namespace

bool ReadElementProperty(Workspace& workspace, OpenFile* file, Id id, ElementProperty property,
                         std::string* value) {
  value->clear();
  const model::Document& document = file->Tree();
  const model::Element& element = document.elements[id];
  if (element.first_item >= document.items.size()) return false;
  const model::Item& item = document.items[element.first_item];
  switch (property) {
    case ElementProperty::kImportedFile:
      return ReadGraphicFile(document, item, value);
    case ElementProperty::kParagraphTag:
      return ReadParagraphTag(file, element.first_item, value);
    case ElementProperty::kTableTag:
      return ReadTableTag(file, element.first_item, value);
    case ElementProperty::kChangeBar:
      return ReadChangeBar(file, element, value);
    case ElementProperty::kCrossReferenceFormat:
      return ReadObject(document, item, ItemKind::kReferenceBegin, "XRefName", value);
    case ElementProperty::kCrossReferenceSource:
      return ReadObject(document, item, ItemKind::kReferenceBegin, "XRefSrcText", value);
    case ElementProperty::kCrossReferenceFile:
      if (!ReadObject(document, item, ItemKind::kReferenceBegin, "XRefSrcFile", value)) return false;
      *value = model::PlatformPath(*value);
      return true;
    case ElementProperty::kMarkerType:
      return ReadObject(document, item, ItemKind::kMarker, "MTypeName", value);
    case ElementProperty::kMarkerText:
      return ReadObject(document, item, ItemKind::kMarker, "MText", value);
    case ElementProperty::kPageNumber:
    case ElementProperty::kPageNumberText:
      return ReadPageNumber(workspace, file, element.first_item, property == ElementProperty::kPageNumberText,
                            value);
  }
  return false;
}

std::uint32_t ParagraphAt(OpenFile* file, std::uint32_t item) {
  const std::vector<std::uint32_t>& paragraphs = Paragraphs(file);
  return item < paragraphs.size() ? paragraphs[item] : 0;
}

const std::vector<std::uint32_t>& Paragraphs(OpenFile* file) {
  std::vector<std::uint32_t>& paragraphs = file->derived.paragraphs;
  const bool has_some = file->Tree().format == model::Format::kMif;
  if (has_some && paragraphs.empty()) paragraphs = model::ParagraphsOfItems(file->Tree());
  return paragraphs;
}

void ApplyDefinedFormats(OpenFile* file, Id element) {
  model::Document* document = file->document.get();
  std::unique_ptr<model::FormatRules>& rules = file->derived.format_rules;
  if (!rules) rules = std::make_unique<model::FormatRules>(document);
  model::ApplyDefinedFormats(document, *rules, element, Paragraphs(file));
  MarkEdited(file, EditOf::kLooks);
}

model::CharacterProperties PropertiesAt(OpenFile* file, std::uint32_t item) {
  return model::PropertiesAt(file->Tree(), item, ParagraphAt(file, item));
}

std::uint32_t FirstContent(OpenFile* file, std::uint32_t begin, std::uint32_t end) {
  const model::SharedArray<model::Item>& items = file->Tree().items;
  const auto limit = std::min(end, static_cast<std::uint32_t>(items.size()));
  DerivedData& derived = file->derived;
  std::uint32_t from = begin;
  std::uint32_t at = begin;
  // What was found empty of content stays so: edits only take content away.
  if (derived.content_from <= begin && begin <= derived.content_at) {
    from = derived.content_from;
    at = derived.content_at;
  }
  while (at < limit && (!model::IsContent(items[at].kind) || items[at].Is(model::kDeleted))) ++at;
  derived.content_from = from;
  derived.content_at = at;
  return std::min(at, end);
}

}  // namespace qelm::embedded::adapter
