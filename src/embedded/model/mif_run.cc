#include "embedded/model/mif_run.h"

#include <algorithm>

#include "embedded/model/mif_attributes.h"

namespace qelm::embedded::model {
namespace {

// Characters that FrameMaker writes by name and not in a string (MIF reference, "Char").
struct NamedCharacter {
  std::string_view text;
  std::string_view name;
};
constexpr NamedCharacter kNamed[] = {
    {"\t", "Tab"},
    {"\n", "HardReturn"},
    {"\xC2\xAD", "DiscHyphen"},
    {"\xE2\x80\x8D", "NoHyphen"},
    {"\xC2\xA0", "HardSpace"},
    {"\xE2\x80\x89", "ThinSpace"},
    {"\xE2\x80\x82", "EnSpace"},
    {"\xE2\x80\x83", "EmSpace"},
    {"\xE2\x80\x91", "HardHyphen"},
    {"\xE2\x80\x87", "NumberSpace"},
};

const NamedCharacter* NamedAt(std::string_view text) {
  for (const NamedCharacter& named : kNamed) {
    if (text.starts_with(named.text)) return &named;
  }
  return nullptr;
}

// How much of the text stands in one string: up to a character with a name, and about a line.
std::size_t StringLength(std::string_view text) {
  constexpr std::size_t kLongest = 200;
  std::size_t length = 0;
  while (length < text.size() && NamedAt(text.substr(length)) == nullptr) {
    const bool starts = (static_cast<unsigned char>(text[length]) & 0xC0) != 0x80;
    if (length >= kLongest && starts) break;
    ++length;
  }
  return length;
}

// The numbers of the marker types that have one (MIF reference, "Marker"); all others are told by their name.
struct MarkerType {
  std::string_view name;
  int number;
};
constexpr MarkerType kMarkerTypes[] = {
    {"Header/Footer $1", 0}, {"Header/Footer $2", 1}, {"Index", 2},    {"Comment", 3},   {"Subject", 4},
    {"Author", 5},           {"Glossary", 6},         {"Equation", 7}, {"Hypertext", 8}, {"Cross-Ref", 9},
};
constexpr int kOtherMarker = 11;

std::string ParagraphFormatStatement(const Document& document, const MifLayout& layout,
                                     const std::string& format) {
  const std::string tag = "<PgfTag " + layout.Quoted(format) + ">";
  const bool in_catalog = document.paragraph_formats.contains(format);
  return in_catalog ? tag : "<Pgf \n " + tag + "\n> # end of Pgf";
}

}  // namespace

bool MifRun::IsMixed(Id id) const {
  for (Id child = document_.elements[id].first_child; child != 0; child = document_.elements[child].next) {
    const bool is_text = document_.elements[child].kind == ElementKind::kText;
    if (is_text && !document_.additions.Of(child).is_paragraph) return true;
  }
  return false;
}

bool MifRun::IsBlock(Id id) const {
  const Element& element = document_.elements[id];
  if (element.kind == ElementKind::kText) return document_.additions.Of(id).is_paragraph;
  const auto known = formattings_.find(document_.definitions[element.definition].name);
  return known == formattings_.end() || !known->second.is_text_range;
}

// The format of the paragraph that begins with the element: of the innermost new element that begins there.
std::string MifRun::FormatOf(Id id) const {
  std::string format;
  while (id != 0 && document_.elements[id].kind != ElementKind::kText && IsBlock(id)) {
    const auto known = formattings_.find(document_.definitions[document_.elements[id].definition].name);
    if (known != formattings_.end() && !known->second.paragraph_format.empty()) {
      format = known->second.paragraph_format;
    }
    if (IsMixed(id)) break;
    id = document_.elements[id].first_child;
  }
  return format;
}

void MifRun::Line(std::string_view text, std::size_t outdent) {
  lines_.append(start_.indentation - std::min(outdent, start_.indentation), ' ');
  lines_.append(text).append(layout_.LineEnd());
}

void MifRun::Break(const std::string& format) {
  Line("> # end of ParaLine", 1);
  Line("> # end of Para", 2);
  Line("<Para ", 2);
  std::vector<std::string> head;
  std::string unique = numbers_.Statement();
  if (!unique.empty()) head.push_back(std::move(unique));
  other_format_ = !format.empty();
  if (other_format_) {
    head.push_back(ParagraphFormatStatement(document_, layout_, format));
  } else {
    head.insert(head.end(), start_.format.begin(), start_.format.end());
  }
  lines_ += layout_.Lines(head, start_.indentation - std::min<std::size_t>(1, start_.indentation));
  Line("<ParaLine ", 1);
  broke_ = true;
  holds_ = false;
  font_ = 0;
}

void MifRun::BreakBefore() { Break({}); }

void MifRun::Restore(std::uint32_t font) {
  if (font_ == font) return;
  Statement(FontStatement(document_, font));
  font_ = font;
}

void MifRun::RestoreConditions(std::uint16_t conditions) {
  if (conditions_ == conditions) return;
  Statement(ConditionalStatement(document_, conditions));
  conditions_ = conditions;
}

void MifRun::Require() {
  Restore(broke_ ? 0 : start_.wanted_font);
  RestoreConditions(start_.wanted_conditions);
}

void MifRun::Text(std::string_view text) {
  while (!text.empty()) {
    const std::size_t length = StringLength(text);
    if (length > 0) {
      Statement("<String " + layout_.Quoted(text.substr(0, length)) + ">");
      text.remove_prefix(length);
      continue;
    }
    const NamedCharacter& named = *NamedAt(text);
    Statement("<Char " + std::string(named.name) + ">");
    text.remove_prefix(named.text.size());
    if (named.name != "HardReturn" || text.empty()) continue;
    // A forced line end is the last thing in its line.
    Line("> # end of ParaLine", 1);
    Line("<ParaLine ", 1);
  }
}

void MifRun::Marker(std::string_view type, std::string_view text) {
  int number = kOtherMarker;
  for (const MarkerType& known : kMarkerTypes) {
    if (known.name == type) number = known.number;
  }
  std::string statement = "<Marker \n <MType " + std::to_string(number) + ">\n <MTypeName " +
                          layout_.Quoted(type) + ">\n <MText " + layout_.Quoted(text) + ">\n";
  const std::string unique = numbers_.Statement();
  if (!unique.empty()) statement += " " + unique + "\n";
  Statement(statement + "> # end of Marker");
}

void MifRun::Paragraph(Id id) {
  const NewContent& content = document_.additions.Of(id);
  if (start_.may_break) Break(content.format);
  Require();
  if (!content.marker_type.empty()) Marker(content.marker_type, content.marker_text);
  if (!content.variable.empty()) {
    std::string statement = "<Variable \n <VariableName " + layout_.Quoted(content.variable) + ">\n";
    const std::string unique = numbers_.Statement();
    if (!unique.empty()) statement += " " + unique + "\n";
    Statement(statement + "> # end of Variable");
  }
  Text(content.text);
  holds_ = true;
}

void MifRun::Begin(Id id, bool block) {
  if (block && !start_.in_line) {
    if (holds_) {
      Break(FormatOf(id));
    } else if (!broke_ && first_format_.empty()) {
      first_format_ = FormatOf(id);
    }
  }
  RestoreConditions(start_.wanted_conditions);
  const Element& element = document_.elements[id];
  const std::int64_t unique = document_.additions.Of(id).unique;
  std::string statement = "<ElementBegin \n";
  if (unique != 0) statement += " <Unique " + std::to_string(unique) + ">\n";
  statement += " <ETag " + layout_.Quoted(document_.definitions[element.definition].name) + ">\n";
  statement.push_back(' ');
  for (const char c : AttributesStatement(document_, layout_, element)) {
    statement.push_back(c);
    if (c == '\n') statement.push_back(' ');
  }
  statement.push_back('\n');
  statement += " <Collapsed No>\n <SpecialCase No>\n";
  // Statements that came with level 11.
  if (document_.level >= 11) statement += " <BannerTextProcessed No>\n <ElementHasAttrContent No>\n";
  Statement(statement + " <AttributeDisplay None>\n> # end of ElementBegin");
}

void MifRun::End(Id id) {
  const Element& element = document_.elements[id];
  Statement("<ElementEnd " + layout_.Quoted(document_.definitions[element.definition].name) + ">");
  holds_ = true;
}

void MifRun::Add(Id top, bool own_paragraph) {
  std::vector<Open> open;
  const auto enter = [&](Id id, bool block_allowed) {
    if (document_.elements[id].kind == ElementKind::kText) {
      const NewContent& content = document_.additions.Of(id);
      if (content.is_paragraph) {
        Paragraph(id);
      } else {
        Require();
        Text(content.text);
        holds_ = true;
      }
      return;
    }
    const bool block = block_allowed && IsBlock(id);
    Begin(id, block);
    open.push_back({id, document_.elements[id].first_child, block && !IsMixed(id)});
  };
  enter(top, own_paragraph);
  while (!open.empty()) {
    Open& innermost = open.back();
    if (innermost.next_child == 0) {
      End(innermost.element);
      open.pop_back();
      continue;
    }
    const Id child = innermost.next_child;
    innermost.next_child = document_.elements[child].next;
    enter(child, innermost.holds_blocks);
  }
}

}  // namespace qelm::embedded::model
