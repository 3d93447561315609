#include "embedded/model/generated_list.h"

#include <algorithm>
#include <iterator>

#include "embedded/mif/reader.h"
#include "embedded/model/mif_layout.h"
#include "embedded/model/mif_run.h"
#include "embedded/model/sort_key.h"
#include "embedded/model/text_access.h"

namespace qelm::embedded::model {
namespace {

constexpr std::string_view kPlainEntry = "<$paratext>\t<$pagenum>";
constexpr std::string_view kMarkerText = "<$markertext>";
constexpr std::string_view kPlainMarkerEntry = "<$markertext>\t<$pagenum>";

// The types of generated files, as a book names them.
struct ListType {
  std::string_view name;
  ListKind kind;
  bool sorted = false;
  std::string_view tag = {};  // what it lists where the book does not say
};
constexpr ListType kTypes[] = {
    {"TOC", ListKind::kParagraphs},
    {"LOF", ListKind::kParagraphs},
    {"LOT", ListKind::kParagraphs},
    {"LOP", ListKind::kParagraphs},
    {"APL", ListKind::kParagraphs, true},
    {"LOM", ListKind::kMarkers},
    {"AML", ListKind::kMarkers, true},
    {"IDX", ListKind::kIndex, true, "Index"},
    {"IOA", ListKind::kIndex, true, "Author"},
    {"IOS", ListKind::kIndex, true, "Subject"},
    {"IOM", ListKind::kIndex, true},
};

const ListType* TypeOf(const ListSettings& settings) {
  const auto* const found = std::find_if(std::begin(kTypes), std::end(kTypes),
                                         [&](const ListType& type) { return type.name == settings.type; });
  return found == std::end(kTypes) ? nullptr : found;
}

std::string_view TagOf(const Document& document, std::uint32_t paragraph) {
  return document.paragraph_states[document.paragraphs[paragraph].state].tag;
}

// A paragraph's text from its begin, what is anchored in it left out.
std::string TextFrom(const Document& document, std::uint32_t begin) {
  std::string text;
  for (std::uint32_t i = begin + 1; i < document.items.size(); i = EndOfItem(document, i)) {
    const Item& item = document.items[i];
    if (item.kind == ItemKind::kParagraphEnd || item.kind == ItemKind::kParagraphBegin) break;
    AppendItemText(document, item, &text);
  }
  return text;
}

// The number of the element in which a paragraph begins, as the file records it; empty outside of elements.
std::string ElementNumber(const Document& document, std::uint32_t begin, Id element) {
  // An element that begins with the paragraph is the one meant.
  for (std::uint32_t i = begin + 1; i < document.items.size(); ++i) {
    const Item& item = document.items[i];
    if (item.kind == ItemKind::kElementBegin) element = item.ref;
    if (IsContent(item.kind) || item.kind == ItemKind::kParagraphEnd) break;
  }
  if (element == 0 || document.elements[element].source == 0) return {};
  mif::Reader reader(std::string_view(document.source).substr(document.elements[element].source));
  while (reader.Next() && reader.depth() == 1) {
    if (reader.kind() == mif::Piece::kLeaf && reader.token() == mif::Token::kUnique) {
      return std::string(reader.data());
    }
  }
  return {};
}

// The entries as they stand in the list's own text: the first of its paragraphs, and how many come before it.
struct OwnText {
  std::vector<std::uint32_t> paragraphs;
  std::vector<std::uint32_t> begins;
  std::size_t first_entry = 0;  // of paragraphs; all of them when there is no entry
  std::size_t end_entries = 0;  // what stands behind it was put there by hand
  bool has_more = false;        // elements or anchors, which no entry has
};

bool IsEntryTag(const ListSettings& settings, std::string_view tag) {
  if (KindOf(settings) == ListKind::kIndex) {
    if (!tag.ends_with(settings.suffix)) return false;
    tag.remove_suffix(settings.suffix.size());
    constexpr std::string_view kLevel = "Level";
    return tag == "GroupTitles" ||
           (tag.starts_with(kLevel) && tag.find_first_not_of("0123456789", kLevel.size()) == tag.npos);
  }
  return std::any_of(settings.tags.begin(), settings.tags.end(),
                     [&](const std::string& listed) { return tag == listed + settings.suffix; });
}

OwnText ReadOwnText(const Document& list, const ListSettings& settings) {
  OwnText text;
  const Flow& flow = list.flows[list.main_flow];
  for (std::uint32_t i = flow.first_item; i < flow.end_item; ++i) {
    const Item& item = list.items[i];
    switch (item.kind) {
      case ItemKind::kParagraphBegin:
        text.paragraphs.push_back(item.ref);
        text.begins.push_back(i);
        break;
      case ItemKind::kElementBegin:
      case ItemKind::kTableAnchor:
      case ItemKind::kFrameAnchor:
      case ItemKind::kNoteAnchor:
      case ItemKind::kHiddenPlace:
        text.has_more = true;
        break;
      default:
        break;
    }
  }
  const auto first =
      std::find_if(text.paragraphs.begin(), text.paragraphs.end(),
                   [&](std::uint32_t paragraph) { return IsEntryTag(settings, TagOf(list, paragraph)); });
  text.first_entry = static_cast<std::size_t>(first - text.paragraphs.begin());
  const auto last =
      std::find_if(text.paragraphs.rbegin(), text.paragraphs.rend(),
                   [&](std::uint32_t paragraph) { return IsEntryTag(settings, TagOf(list, paragraph)); });
  const auto behind = static_cast<std::size_t>(last - text.paragraphs.rbegin());
  text.end_entries = text.paragraphs.size() - (last == text.paragraphs.rend() ? 0 : behind);
  return text;
}

std::string Plain(const ListEntry& entry) {
  std::string text;
  for (const StyledRun& run : entry.runs) text += run.text;
  return text;
}

bool IsSame(const Document& list, const OwnText& own, const std::vector<ListEntry>& entries) {
  if (own.end_entries - own.first_entry != entries.size()) return false;
  for (std::size_t i = 0; i < entries.size(); ++i) {
    const std::size_t place = own.first_entry + i;
    if (TagOf(list, own.paragraphs[place]) != entries[i].format ||
        TextFrom(list, own.begins[place]) != Plain(entries[i])) {
      return false;
    }
  }
  return true;
}

// One entry as a paragraph with one line, which enters the text frame where it is the first.
std::string EntryParagraph(const Document& list, const MifLayout& layout, const ListEntry& entry,
                           std::uint32_t text_frame) {
  Numbers no_numbers(0);
  const Formattings formattings;
  MifRun::Start start;
  start.indentation = 3;
  MifRun run(list, layout, formattings, &no_numbers, start);
  if (text_frame != 0) run.Statement("<TextRectID " + std::to_string(text_frame) + ">");
  if (!entry.link.empty()) run.Marker("Hypertext", entry.link);
  std::string format;
  auto link = entry.run_links.begin();
  for (std::size_t i = 0; i < entry.runs.size(); ++i) {
    const StyledRun& part = entry.runs[i];
    for (; link != entry.run_links.end() && link->first == i; ++link) run.Marker("Hypertext", link->second);
    if (part.format && *part.format != format) {
      format = *part.format;
      run.Statement("<Font \n <FTag " + layout.Quoted(*part.format) + ">\n <FLocked No>\n> # end of Font");
    }
    run.Text(part.text);
  }
  return layout.Lines({"<Para "}, 1) +
         layout.Lines({"<PgfTag " + layout.Quoted(entry.format) + ">", "<ParaLine "}, 2) + run.lines() +
         layout.Lines({"> # end of ParaLine"}, 2) + layout.Lines({"> # end of Para"}, 1);
}

}  // namespace

ListSettings ReadListSettings(std::string_view component, mif::Encoding encoding) {
  ListSettings settings;
  mif::Reader reader(component);
  while (reader.Next()) {
    if (reader.kind() != mif::Piece::kLeaf || reader.depth() != 1) continue;
    if (reader.name() == "DeriveType") settings.type = reader.data();
    if (reader.name() == "DeriveTag") settings.tags.push_back(mif::DecodeString(reader.data(), encoding));
    if (reader.name() == "DeriveLinks") settings.links = reader.data() == "Yes";
    if (reader.name() == "FileNameSuffix") settings.suffix = mif::DecodeString(reader.data(), encoding);
  }
  if (settings.suffix.empty()) settings.suffix = settings.type;
  const ListType* type = TypeOf(settings);
  if (type != nullptr && settings.tags.empty() && !type->tag.empty()) settings.tags.emplace_back(type->tag);
  return settings;
}

ListKind KindOf(const ListSettings& settings) {
  const ListType* type = TypeOf(settings);
  return type == nullptr ? ListKind::kUnknown : type->kind;
}

void ForEachFormatParagraph(const Document& list, std::string_view suffix,
                            const std::function<void(const std::string&, std::string)>& found) {
  for (std::size_t i = 1; i < list.flows.size(); ++i) {
    const Flow& flow = list.flows[i];
    if (flow.kind != FlowKind::kReference || flow.name != suffix) continue;
    for (std::uint32_t item = flow.first_item; item < flow.end_item; ++item) {
      if (list.items[item].kind != ItemKind::kParagraphBegin) continue;
      const std::string_view tag = TagOf(list, list.items[item].ref);
      if (!tag.ends_with(suffix)) continue;
      found(std::string(tag.substr(0, tag.size() - suffix.size())), TextFrom(list, item));
    }
  }
}

std::unordered_map<std::string, std::string> EntryFormats(const Document& list,
                                                          const ListSettings& settings) {
  std::unordered_map<std::string, std::string> formats;
  const bool of_markers = KindOf(settings) == ListKind::kMarkers;
  for (const std::string& tag : settings.tags) {
    formats.emplace(tag, of_markers ? kPlainMarkerEntry : kPlainEntry);
  }
  ForEachFormatParagraph(list, settings.suffix, [&](const std::string& name, std::string text) {
    const auto format = formats.find(name);
    if (format != formats.end() && !text.empty()) format->second = std::move(text);
  });
  return formats;
}

std::string LinkToElement(const Document& document, const std::string& file, std::uint32_t item, Id element) {
  const std::string number = ElementNumber(document, item, element);
  return number.empty() ? std::string() : "openObjectId " + file + ":5 " + number;
}

namespace {

// The items of the text that is on body pages, with the element in which each stands.
template <typename Visit>
void ForEachBodyItem(const Document& document, const Visit& visit) {
  std::vector<Id> around;
  for (std::size_t i = 1; i < document.flows.size(); ++i) {
    const Flow& flow = document.flows[i];
    if (flow.kind != FlowKind::kBody) continue;
    around.clear();
    for (std::uint32_t at = flow.first_item; at < flow.end_item; ++at) {
      const Item& item = document.items[at];
      if (item.kind == ItemKind::kElementBegin) around.push_back(item.ref);
      if (item.kind == ItemKind::kElementEnd && !around.empty()) around.pop_back();
      visit(at, around.empty() ? Id{0} : around.back());
    }
  }
}

void CollectParagraphs(const Document& document, ReferenceTargets* targets, const ListSettings& settings,
                       const std::unordered_map<std::string, std::string>& formats, const std::string& file,
                       std::vector<ListEntry>* entries) {
  std::vector<bool> shown(document.paragraphs.size(), false);
  for (const Item& item : document.items) {
    if (item.kind != ItemKind::kParagraphEnd || item.Is(kDeleted)) continue;
    shown[item.ref] = IsShown(document, item.conditions);
  }
  ForEachBodyItem(document, [&](std::uint32_t at, Id around) {
    const Item& item = document.items[at];
    if (item.kind != ItemKind::kParagraphBegin || !shown[item.ref]) return;
    const auto format = formats.find(std::string(TagOf(document, item.ref)));
    if (format == formats.end()) return;
    ListEntry entry;
    entry.format = format->first + settings.suffix;
    entry.runs = targets->ExpandParagraph(format->second, item.ref).runs;
    if (settings.links) entry.link = LinkToElement(document, file, at, around);
    if (!entry.runs.empty()) entries->push_back(std::move(entry));
  });
}

// The text of the marker is no format: what it holds stands as it is.
std::vector<StyledRun> MarkerRuns(std::string_view format, const ListedMarker& marker,
                                  ReferenceTargets* targets) {
  std::vector<StyledRun> runs;
  while (true) {
    const std::size_t at = std::min(format.find(kMarkerText), format.size());
    std::vector<StyledRun> part = targets->ExpandAtItem(format.substr(0, at), marker.item).runs;
    std::move(part.begin(), part.end(), std::back_inserter(runs));
    if (at == format.size()) return runs;
    runs.push_back({marker.text, std::nullopt});
    format.remove_prefix(at + kMarkerText.size());
  }
}

void CollectMarkers(const Document& document, ReferenceTargets* targets, const ListSettings& settings,
                    const std::unordered_map<std::string, std::string>& formats, const std::string& file,
                    std::vector<ListEntry>* entries) {
  ForEachMarker(document, [&](const ListedMarker& marker) {
    const auto format = formats.find(marker.type);
    if (format == formats.end()) return;
    ListEntry entry;
    entry.format = format->first + settings.suffix;
    entry.runs = MarkerRuns(format->second, marker, targets);
    if (settings.links) entry.link = LinkToElement(document, file, marker.item, marker.element);
    entries->push_back(std::move(entry));
  });
}

}  // namespace

void ForEachMarker(const Document& document, const std::function<void(const ListedMarker&)>& found) {
  ForEachBodyItem(document, [&](std::uint32_t at, Id around) {
    const Item& item = document.items[at];
    if (item.kind != ItemKind::kMarker || item.Is(kDeleted) || !IsShown(document, item.conditions)) return;
    found({Substatement(document, item, "MTypeName"), Substatement(document, item, "MText"), at, around});
  });
}

void CollectEntries(const Document& document, ReferenceTargets* targets, const ListSettings& settings,
                    const std::unordered_map<std::string, std::string>& formats, const std::string& file,
                    std::vector<ListEntry>* entries) {
  const bool of_markers = KindOf(settings) == ListKind::kMarkers;
  (of_markers ? CollectMarkers : CollectParagraphs)(document, targets, settings, formats, file, entries);
}

void SortEntries(const ListSettings& settings, std::vector<ListEntry>* entries) {
  const ListType* type = TypeOf(settings);
  if (type == nullptr || !type->sorted) return;
  const SortOrder order;
  std::vector<std::pair<std::string, ListEntry>> keyed;
  keyed.reserve(entries->size());
  for (ListEntry& entry : *entries) {
    std::string key = order.Key(Plain(entry));
    keyed.emplace_back(std::move(key), std::move(entry));
  }
  std::stable_sort(keyed.begin(), keyed.end(),
                   [](const auto& a, const auto& b) { return a.first < b.first; });
  for (std::size_t i = 0; i < keyed.size(); ++i) (*entries)[i] = std::move(keyed[i].second);
}

bool SetEntries(Document* list, const ListSettings& settings, const std::vector<ListEntry>& entries,
                std::string* problem) {
  problem->clear();
  if (list->format != Format::kMif || list->main_flow == 0) {
    *problem = "the file has no text flow in MIF";
    return false;
  }
  const OwnText own = ReadOwnText(*list, settings);
  if (own.has_more || own.paragraphs.empty()) {
    *problem = "its text holds elements, tables, frames, footnotes or hidden text, or nothing at all";
    return false;
  }
  if (IsSame(*list, own, entries)) return false;
  const MifLayout layout(*list);
  const auto place = [&](std::size_t i) { return list->paragraphs[own.paragraphs[i]]; };
  const bool keeps_title = own.first_entry != 0;
  const bool keeps_end = own.end_entries < own.paragraphs.size();
  if (keeps_end && !place(own.end_entries).absolute) {
    *problem = "the paragraph behind its last entry has its format from that entry; give it one of its own";
    return false;
  }
  // Without entries a text still has a paragraph.
  if (entries.empty() && !keeps_title && !keeps_end) {
    *problem = "there is nothing to list";
    return false;
  }
  const std::uint32_t text_frame = keeps_title ? 0 : list->flows[list->main_flow].text_frame;
  std::string text;
  for (const ListEntry& entry : entries) {
    text += EntryParagraph(*list, layout, entry, &entry == &entries.front() ? text_frame : 0);
  }
  const Paragraph last = place(own.end_entries - 1);
  const std::uint32_t end = layout.Removal(last.begin, last.end).end;
  const bool has_entries = own.first_entry < own.paragraphs.size();
  const std::uint32_t begin = has_entries ? layout.LineBegin(place(own.first_entry).begin) : end;
  list->replacements.insert_or_assign(begin, Replacement{{begin, end}, std::move(text)});
  list->modified = true;
  return true;
}

}  // namespace qelm::embedded::model
