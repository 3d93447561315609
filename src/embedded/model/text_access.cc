#include "embedded/model/text_access.h"

#include <algorithm>

#include "embedded/mif/reader.h"

namespace qelm::embedded::model {
namespace {

// The name and data of a leaf statement `<Name data>` as it stands in the source.
std::string_view LeafData(std::string_view statement) {
  const std::size_t name_end = statement.find_first_of(" \t\r\n`");
  if (name_end == std::string_view::npos || statement.empty()) return {};
  std::string_view data = statement.substr(name_end, statement.size() - name_end - 1);
  while (!data.empty() && static_cast<unsigned char>(data.front()) <= ' ') data.remove_prefix(1);
  while (!data.empty() && static_cast<unsigned char>(data.back()) <= ' ') data.remove_suffix(1);
  return data;
}

// A variable's text as far as it is plain: building blocks are computed by the page and are left out, and so
// are switches of the character format.
void AppendVariable(const Document& document, const Item& item, std::string* text) {
  const std::string name = Substatement(document, item, "VariableName");
  const auto found = document.variables.find(name);
  if (found == document.variables.end()) {
    text->append(name);
    return;
  }
  const std::string_view definition = found->second;
  bool computed = false;
  std::string plain;
  for (std::size_t at = 0; at < definition.size(); ++at) {
    if (definition[at] == '<') {
      const std::size_t end = definition.find('>', at);
      if (end != std::string_view::npos) {
        computed = computed || definition[at + 1] == '$';
        at = end;
        continue;
      }
    }
    plain.push_back(definition[at]);
  }
  text->append(computed && plain.find_first_not_of(' ') == std::string::npos ? name : plain);
}

// Counts characters and cuts behind the last one that fits. False when the text was full already.
bool CutAt(std::size_t max_characters, std::size_t* count, std::size_t from, std::string* text) {
  for (std::size_t at = from; at < text->size(); ++at) {
    if ((static_cast<unsigned char>((*text)[at]) & 0xC0) == 0x80) continue;
    if (*count == max_characters) {
      text->resize(at);
      return false;
    }
    ++*count;
  }
  return true;
}

std::size_t CutView(std::string_view text, std::size_t max_characters) {
  if (text.size() <= max_characters) return text.size();
  std::size_t count = 0;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if ((static_cast<unsigned char>(text[at]) & 0xC0) == 0x80) continue;
    if (count++ == max_characters) return at;
  }
  return text.size();
}

}  // namespace

bool CountsAsText(const Item& item) {
  const bool is_text =
      item.kind == ItemKind::kString || item.kind == ItemKind::kCharacter || item.kind == ItemKind::kVariable;
  return is_text && !item.Is(kDeleted) && !item.Is(kGenerated);
}

std::string_view PlainText(const Document& document, const Item& item) {
  if (document.format == Format::kXml) {
    return item.Is(kEscaped) ? document.values[item.ref] : document.At(item);
  }
  const std::string_view data = LeafData(document.At(item));
  if (mif::IsString(data)) return mif::Inside(data);
  // Written by hand: blanks before the name, or a comment before the string.
  mif::Reader reader(document.At(item));
  return reader.Next() ? mif::Inside(reader.data()) : std::string_view();
}

void AppendItemText(const Document& document, const Item& item, std::string* text) {
  switch (item.kind) {
    case ItemKind::kString:
      if (document.format == Format::kMif && item.Is(kEscaped)) {
        mif::AppendDecoded(PlainText(document, item), document.encoding, text);
      } else {
        text->append(PlainText(document, item));
      }
      break;
    case ItemKind::kCharacter:
      text->append(mif::CharNamed(LeafData(document.At(item))));
      break;
    case ItemKind::kVariable:
      AppendVariable(document, item, text);
      break;
    default:
      break;
  }
}

std::string_view ElementText(const Document& document, Id id, std::size_t max_characters,
                             std::string* buffer) {
  const Element& element = document.elements[id];
  const Item* only = nullptr;
  buffer->clear();
  std::size_t count = 0;
  bool built = false;
  for (std::uint32_t i = element.first_item; i < element.end_item; ++i) {
    const Item& item = document.items[i];
    if (!CountsAsText(item)) continue;
    const bool plain =
        item.kind == ItemKind::kString && (document.format == Format::kXml || !item.Is(kEscaped));
    if (only == nullptr && !built && plain) {
      only = &item;
      continue;
    }
    if (only != nullptr) {
      AppendItemText(document, *only, buffer);
      only = nullptr;
      if (!CutAt(max_characters, &count, 0, buffer)) return *buffer;
    }
    built = true;
    const std::size_t from = buffer->size();
    AppendItemText(document, item, buffer);
    if (!CutAt(max_characters, &count, from, buffer)) return *buffer;
  }
  if (only == nullptr) return *buffer;
  const std::string_view text = PlainText(document, *only);
  return text.substr(0, CutView(text, max_characters));
}

bool IsShown(const Document& document, std::uint16_t set, bool as_read) {
  if (set == 0 || (as_read ? document.source_show_all : document.show_all)) return true;
  bool any = false;
  for (const Id id : document.condition_sets[set]) {
    const Condition& condition = document.conditions[id];
    // What only tracks a change hides nothing.
    if (condition.name.starts_with("FM8_TRACK_CHANGES")) continue;
    if (as_read ? condition.source_shown : condition.shown) return true;
    any = true;
  }
  return !any;
}

bool HasOwnText(const Document& document, Id id) {
  const Element& element = document.elements[id];
  Id child = element.first_child;
  for (std::uint32_t i = element.first_item; i < element.end_item; ++i) {
    // Children lie in the element's range in their order; a text node is the element's own text.
    while (child != 0 && document.elements[child].end_item <= i) child = document.elements[child].next;
    const Element* inner = child == 0 ? nullptr : &document.elements[child];
    if (inner != nullptr && inner->definition != 0 && inner->first_item <= i) {
      i = inner->end_item - 1;
      continue;
    }
    const Item& item = document.items[i];
    if (IsContent(item.kind) && !item.Is(kDeleted)) return true;
  }
  return false;
}

std::uint32_t ParagraphOf(const Document& document, std::uint32_t index) {
  if (document.format == Format::kXml) return 0;
  // The mark that ends the paragraph carries its format, so the search goes forward, over what is anchored.
  // Where the mark was deleted and nothing but another mark is left behind it, the text keeps the format that
  // it had.
  std::uint32_t deleted_mark = 0;
  bool joined = false;
  for (std::uint32_t i = index; i < document.items.size(); i = EndOfItem(document, i)) {
    const Item& item = document.items[i];
    if (item.kind == ItemKind::kParagraphEnd) {
      if (!item.Is(kDeleted)) return deleted_mark != 0 && !joined ? deleted_mark : item.ref;
      if (deleted_mark == 0) deleted_mark = item.ref;
    }
    joined = joined || (deleted_mark != 0 && IsContent(item.kind) && !item.Is(kDeleted));
    if (item.kind == ItemKind::kPartEnd) break;
    if (item.kind == ItemKind::kPartBegin) {
      // The start of a part: its first paragraph is the one meant.
      while (i < document.items.size() && document.items[i].kind != ItemKind::kParagraphBegin) ++i;
      return i < document.items.size() ? document.items[i].ref : 0;
    }
  }
  return deleted_mark;
}

// From behind, as the mark that ends a paragraph says which it is; deleted marks count by the rule of
// ParagraphOf. The text of a cell or footnote stands inside the paragraph that holds the anchor and has its
// own.
std::vector<std::uint32_t> ParagraphsOfItems(const Document& document) {
  struct Behind {
    std::uint32_t paragraph = 0;  // of what stands directly before
    std::uint32_t surviving = 0;  // of the next mark that is left
    bool content = false;         // something is left before that mark
  };
  std::vector<std::uint32_t> paragraphs(document.items.size());
  std::vector<Behind> around;
  Behind behind;
  for (std::size_t i = document.items.size(); i-- > 0;) {
    const Item& item = document.items[i];
    if (item.kind == ItemKind::kPartEnd) {
      around.push_back(behind);
      behind = {};
    } else if (item.kind == ItemKind::kParagraphEnd && !item.Is(kDeleted)) {
      behind = {item.ref, item.ref, false};
    } else if (item.kind == ItemKind::kParagraphEnd) {
      behind.paragraph = behind.content && behind.surviving != 0 ? behind.surviving : item.ref;
    } else if (IsContent(item.kind) && !item.Is(kDeleted)) {
      behind.content = true;
    }
    paragraphs[i] = behind.paragraph;
    if (item.kind == ItemKind::kPartBegin && !around.empty()) {
      // Between a row's begin and its first cell there is no text; the cell's first paragraph is what comes
      // next.
      if (behind.paragraph == 0 && i + 1 < paragraphs.size()) paragraphs[i] = paragraphs[i + 1];
      behind = around.back();
      around.pop_back();
    }
  }
  return paragraphs;
}

Id FlowOf(const Document& document, std::uint32_t index) {
  const auto after =
      std::upper_bound(document.flows.begin() + 1, document.flows.end(), index,
                       [](std::uint32_t value, const Flow& flow) { return value < flow.first_item; });
  if (after == document.flows.begin() + 1) return 0;
  const auto flow = static_cast<Id>(after - document.flows.begin()) - 1;
  return index < document.flows[flow].end_item ? flow : 0;
}

std::uint32_t PartOf(const Document& document, std::uint32_t index) {
  for (std::uint32_t i = index; i > 0; --i) {
    const Item& item = document.items[i - 1];
    if (item.kind == ItemKind::kPartBegin) return item.ref;
    if (item.kind == ItemKind::kPartEnd) {
      // Everything in the part lies inside it; go on before its beginning.
      i = document.parts[item.ref].first_item + 1;
      continue;
    }
    if (item.kind == ItemKind::kParagraphBegin &&
        i - 1 == document.flows[FlowOf(document, i - 1)].first_item) {
      return 0;
    }
  }
  return 0;
}

std::int32_t PageOf(const Document& document, std::uint32_t index) {
  const Id flow_id = FlowOf(document, index);
  if (flow_id == 0) return -1;
  const Flow& flow = document.flows[flow_id];
  for (std::uint32_t i = index + 1; i > flow.first_item; --i) {
    const Item& item = document.items[i - 1];
    if (item.kind == ItemKind::kTextFrame && !item.Is(kInBlock)) {
      const auto found = document.text_frame_index.find(item.ref);
      if (found != document.text_frame_index.end()) return document.text_frames[found->second].page;
    }
  }
  return flow.page;
}

CharacterProperties PropertiesAt(const Document& document, std::uint32_t index) {
  return PropertiesAt(document, index, ParagraphOf(document, index));
}

CharacterProperties PropertiesAt(const Document& document, std::uint32_t index, std::uint32_t paragraph) {
  const std::uint32_t font = document.items[index].font;
  CharacterProperties result = FormatProperties(document, font, paragraph);
  result.Take(document.fonts[font].properties);
  return result;
}

CharacterProperties FormatProperties(const Document& document, std::uint32_t font, std::uint32_t paragraph) {
  // What lies on top is taken last.
  CharacterProperties result;
  if (paragraph != 0) result.Take(document.paragraph_states[document.paragraphs[paragraph].state].font);
  const std::string_view tag = document.fonts[font].tag;
  if (tag.empty()) return result;
  const auto format = document.character_formats.find(tag);
  if (format != document.character_formats.end()) result.Take(format->second);
  return result;
}

std::string Substatement(const Document& document, const Item& item, std::string_view name) {
  mif::Reader reader(document.At(item));
  while (reader.Next()) {
    if (reader.kind() == mif::Piece::kLeaf && reader.name() == name) {
      return mif::DecodeString(reader.data(), document.encoding);
    }
  }
  return {};
}

}  // namespace qelm::embedded::model
