#include "embedded/model/inset_content.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <unordered_map>
#include <unordered_set>

#include "embedded/mif/reader.h"
#include "embedded/model/book.h"
#include "embedded/model/link_statements.h"
#include "embedded/model/mif_layout.h"
#include "embedded/model/mif_run.h"
#include "embedded/model/mif_scan.h"
#include "embedded/model/paragraph_format.h"
#include "embedded/model/text_access.h"

namespace qelm::embedded::model {
namespace {

using mif::Piece;
using mif::Token;

// Where a line of image data ends that begins there; `at` itself for any other line.
std::size_t EndOfData(std::string_view text, std::size_t at) {
  const bool begins_line = at != 0 && text[at - 1] == '\n';
  if (!begins_line || at >= text.size() || (text[at] != '=' && text[at] != '&')) return at;
  return std::min(text.find('\n', at), text.size());
}

// The statement with its strings in another encoding. Image data is no text.
std::string InEncoding(const std::string& statement, mif::Encoding from, mif::Encoding to) {
  if (from == to) return statement;
  std::string result;
  for (std::size_t at = 0; at < statement.size();) {
    if (const std::size_t end = EndOfData(statement, at); end != at) {
      result.append(statement, at, end - at);
      at = end;
      continue;
    }
    const std::size_t close = statement[at] == '`' ? statement.find('\'', at) : std::string::npos;
    if (close == std::string::npos) {
      result.push_back(statement[at++]);
      continue;
    }
    const std::string_view quoted = std::string_view(statement).substr(at, close + 1 - at);
    result += "`" + mif::Encode(mif::DecodeString(quoted, from), to) + "'";
    at = close + 1;
  }
  return result;
}

// What a number names: tables have numbers of their own, all other objects share theirs.
enum class NumberKind : unsigned char { kTable, kObject };
struct NumberToken {
  Token token;
  NumberKind kind;
};
constexpr NumberToken kNumberTokens[] = {
    {Token::kTblID, NumberKind::kTable},  {Token::kATbl, NumberKind::kTable},
    {Token::kID, NumberKind::kObject},    {Token::kAFrame, NumberKind::kObject},
    {Token::kFNote, NumberKind::kObject}, {Token::kTextRectID, NumberKind::kObject},
};

class FlowContent {
 public:
  FlowContent(const Document& source, const InsetSettings& settings, const Document& target,
              const std::vector<std::string>& enclosing,
              const std::function<std::string(const std::string&)>& moved, ObjectNumbers* numbers,
              InsetContent* content)
      : source_(source),
        settings_(settings),
        target_(target),
        enclosing_(enclosing),
        moved_(moved),
        numbers_(*numbers),
        content_(*content),
        layout_(source),
        target_layout_(target),
        formats_(source),
        structured_(target.main_flow != 0 && target.flows[target.main_flow].root != 0) {}

  void Read(Id flow);

 private:
  void Visit(const Item& item);
  void Begin(const Item& item);
  std::vector<std::string> Format(const Paragraph& paragraph);
  const std::string* SourceFormat(std::string_view tag);
  void States(const Item& item);
  void CopyFrame(std::uint32_t frame);
  void EnqueueAnchors(std::uint32_t begin, std::uint32_t end);
  void Put(const Item& item) { Add(Brought(layout_.Statement(item.begin, item.end))); }
  void Add(std::string statement) { content_.paragraphs.back().lines.back().push_back(std::move(statement)); }
  std::string Brought(std::string_view statement);
  std::string Object(Span span) { return Brought(source_.At(span)); }
  std::string Moved(std::string_view statement);
  std::string Renumbered(std::string_view statement);
  void CopyObjects();

  const Document& source_;
  const InsetSettings& settings_;
  const Document& target_;
  const std::vector<std::string>& enclosing_;
  const std::function<std::string(const std::string&)>& moved_;
  ObjectNumbers& numbers_;
  InsetContent& content_;
  MifLayout layout_;
  MifLayout target_layout_;
  ParagraphFormats formats_;
  bool structured_;
  std::uint32_t font_ = 0;
  std::uint16_t conditions_ = 0;
  std::map<std::pair<NumberKind, std::uint32_t>, std::uint32_t> new_numbers_;
  std::unordered_set<Id> seen_conditions_;
  std::vector<std::uint32_t> objects_;  // items that anchor what is still to be copied
  std::optional<std::unordered_map<std::string, std::string>> source_formats_;
};

void FlowContent::Read(Id id) {
  const Flow& flow = source_.flows[id];
  for (std::uint32_t i = flow.first_item; i < flow.end_item; ++i) {
    const Item& item = source_.items[i];
    // What is anchored here, and text in cells, comes with the object as a whole.
    const bool is_anchor = item.kind == ItemKind::kTableAnchor || item.kind == ItemKind::kNoteAnchor ||
                           item.kind == ItemKind::kFrameAnchor;
    if (is_anchor) objects_.push_back(i);
    Visit(item);
    i = EndOfItem(source_, i) - 1;
  }
  if (content_.paragraphs.empty()) content_.paragraphs.push_back({{}, {{}}});
  if (conditions_ != 0) Add(ConditionalStatement(source_, 0));
  CopyObjects();
}

void FlowContent::Visit(const Item& item) {
  switch (item.kind) {
    case ItemKind::kParagraphBegin:
      Begin(item);
      break;
    case ItemKind::kLine:
      if (!content_.paragraphs.back().lines.back().empty()) content_.paragraphs.back().lines.emplace_back();
      break;
    // Text that lies apart because it is hidden comes here in its place, under its conditions.
    case ItemKind::kHiddenPlace:
    case ItemKind::kTextFrame:
    case ItemKind::kFont:
    case ItemKind::kConditional:
    case ItemKind::kHiddenBegin:
    case ItemKind::kHiddenEnd:
    case ItemKind::kPartBegin:
    case ItemKind::kPartEnd:
      break;
    case ItemKind::kElementBegin:
    case ItemKind::kElementEnd:
    case ItemKind::kPrefixEnd:
    case ItemKind::kSuffixBegin:
      if (structured_) Put(item);
      break;
    case ItemKind::kParagraphEnd:
      States(item);
      break;
    default:
      States(item);
      Put(item);
      break;
  }
}

void FlowContent::Begin(const Item& item) {
  font_ = 0;
  InsetParagraph paragraph;
  paragraph.lines.emplace_back();
  if (settings_.formatting != InsetFormatting::kPlainText) {
    paragraph.format = Format(source_.paragraphs[item.ref]);
  }
  content_.paragraphs.push_back(std::move(paragraph));
}

// The formats of the source's catalog as overrides.
const std::string* FlowContent::SourceFormat(std::string_view tag) {
  if (!source_formats_) {
    source_formats_.emplace();
    mif::Reader reader(source_.source);
    while (reader.Next()) {
      if (reader.kind() != Piece::kGroup) continue;
      const bool is_entry = reader.token() == Token::kPgf && reader.depth() == 2;
      if (reader.token() == Token::kPgfCatalog) continue;
      const std::uint32_t begin = reader.begin();
      if (!reader.Skip()) break;
      if (reader.token() == Token::kTextFlow || !is_entry) continue;
      mif::Reader entry(source_.At(Span{begin, reader.end()}));
      while (entry.Next() && entry.token() != Token::kPgfTag) {
      }
      std::string name = mif::DecodeString(entry.data(), source_.encoding);
      source_formats_->emplace(std::move(name), Brought(layout_.Statement(begin, reader.end())));
    }
  }
  const auto found = source_formats_->find(std::string(tag));
  return found == source_formats_->end() ? nullptr : &found->second;
}

std::vector<std::string> FlowContent::Format(const Paragraph& paragraph) {
  const std::string_view tag = source_.paragraph_states[paragraph.state].tag;
  const bool known = target_.paragraph_formats.contains(tag);
  std::vector<std::string> format;
  if (known) {
    format.push_back("<PgfTag " + target_layout_.Quoted(tag) + ">");
  } else {
    format = enclosing_;
  }
  const std::string* own = settings_.formatting == InsetFormatting::kSource ? SourceFormat(tag) : nullptr;
  if (own != nullptr) format.push_back(*own);
  const std::string named = "<Pgf \n <PgfTag " + target_layout_.Quoted(tag) + ">\n> # end of Pgf";
  if (own == nullptr && !known) format.push_back(named);
  if (settings_.removes_overrides) return format;
  for (const std::string& statement : formats_.Statements(paragraph.state)) {
    if (statement.starts_with("<Pgf ")) {
      format.push_back(InEncoding(statement, source_.encoding, target_.encoding));
    }
  }
  return format;
}

// Text without conditions of its own stands under those around the inset, which are in force where it begins.
void FlowContent::States(const Item& item) {
  if (item.conditions != conditions_) {
    conditions_ = item.conditions;
    Add(InEncoding(ConditionalStatement(source_, conditions_), source_.encoding, target_.encoding));
    for (const Id condition : source_.condition_sets[conditions_]) {
      if (!seen_conditions_.insert(condition).second) continue;
      const Condition& known = source_.conditions[condition];
      content_.conditions.emplace_back(known.name, known.shown);
    }
  }
  const bool formatted = settings_.formatting != InsetFormatting::kPlainText;
  if (!formatted || item.font == font_) return;
  font_ = item.font;
  if (!settings_.removes_overrides) {
    Add(InEncoding(FontStatement(source_, font_), source_.encoding, target_.encoding));
    return;
  }
  Add("<Font \n <FTag " + target_layout_.Quoted(source_.fonts[font_].tag) +
      ">\n <FLocked No>\n> # end of Font");
}

// A statement of the source as it stands in the target: its paths lead where they led, and numbers are new.
std::string FlowContent::Brought(std::string_view statement) {
  return InEncoding(Renumbered(Moved(statement)), source_.encoding, target_.encoding);
}

std::string FlowContent::Moved(std::string_view statement) {
  std::string result(statement);
  if (!moved_) return result;
  // From behind, so that what comes before stays where it is.
  std::vector<std::pair<LinkKind, std::uint32_t>> links = LinkStatements(statement);
  for (auto link = links.rbegin(); link != links.rend(); ++link) {
    const std::string_view bytes = std::string_view(result).substr(link->second);
    const std::string file = FileOfLink(link->first, bytes, source_.encoding);
    const bool absolute = file.starts_with('/') || (file.size() > 1 && file[1] == ':');
    if (file.empty() || absolute) continue;
    const auto edit = LinkEdit(link->first, bytes, source_.encoding, moved_(file));
    if (!edit) continue;
    result.replace(link->second + edit->place.begin, edit->place.end - edit->place.begin, edit->text);
  }
  return result;
}

// Objects get numbers of the target; their unique numbers go, and whoever reads the file gives new ones.
std::string FlowContent::Renumbered(std::string_view statement) {
  std::string result;
  std::size_t copied = 0;
  mif::Reader reader(statement);
  while (reader.Next()) {
    if (reader.kind() != Piece::kLeaf) continue;
    if (reader.token() == Token::kUnique) {
      std::size_t begin = reader.begin();
      while (begin > copied && statement[begin - 1] == ' ') --begin;
      if (begin > copied && statement[begin - 1] == '\n') --begin;
      result.append(statement.substr(copied, begin - copied));
      copied = reader.end();
      continue;
    }
    const auto* const numbered =
        std::find_if(std::begin(kNumberTokens), std::end(kNumberTokens),
                     [&](const NumberToken& known) { return known.token == reader.token(); });
    if (numbered == std::end(kNumberTokens)) continue;
    const auto [known, is_new] = new_numbers_.try_emplace({numbered->kind, NumberData(reader)}, 0);
    if (is_new) known->second = numbers_.Next();
    const auto at = static_cast<std::size_t>(reader.data().data() - statement.data());
    result.append(statement.substr(copied, at - copied)).append(std::to_string(known->second));
    copied = at + reader.data().size();
  }
  return result.append(statement.substr(copied));
}

// What is anchored in text that is copied as a whole. The footnotes of a cell lie in the cell and come with
// it.
void FlowContent::EnqueueAnchors(std::uint32_t begin, std::uint32_t end) {
  for (std::uint32_t i = begin; i < end; ++i) {
    const ItemKind kind = source_.items[i].kind;
    if (kind == ItemKind::kTableAnchor || kind == ItemKind::kFrameAnchor) objects_.push_back(i);
    if (kind == ItemKind::kTableAnchor) i = EndOfItem(source_, i) - 1;
  }
}

// The text in a frame is a flow of its own.
void FlowContent::CopyFrame(std::uint32_t frame) {
  content_.frames.push_back(Object(source_.frames[frame].span));
  const auto [first, last] = source_.frame_flows.equal_range(frame);
  std::vector<Id> flows;
  for (auto at = first; at != last; ++at) flows.push_back(at->second);
  std::sort(flows.begin(), flows.end());
  for (const Id id : flows) {
    const Flow& flow = source_.flows[id];
    content_.flows.push_back(Object(flow.span));
    EnqueueAnchors(flow.first_item, flow.end_item);
  }
}

void FlowContent::CopyObjects() {
  // Objects in cells are found on the way, and come up in turn.
  for (std::size_t next = 0; next < objects_.size(); ++next) {
    const Item& item = source_.items[objects_[next]];
    if (item.ref == 0) continue;
    if (item.kind == ItemKind::kFrameAnchor) {
      CopyFrame(item.ref);
      continue;
    }
    const Part& part = source_.parts[item.ref];
    (item.kind == ItemKind::kTableAnchor ? content_.tables : content_.notes).push_back(Object(part.span));
    EnqueueAnchors(part.first_item, part.end_item);
  }
}

// The flow that an inset names; 0 for none.
Id FlowFor(const Document& source, const InsetSettings& settings) {
  if (settings.flow.empty()) return source.main_flow;
  const FlowKind wanted = settings.on_reference_page ? FlowKind::kReference : FlowKind::kBody;
  for (Id id = 1; id < source.flows.size(); ++id) {
    if (source.flows[id].kind == wanted && source.flows[id].name == settings.flow) return id;
  }
  return 0;
}

}  // namespace

InsetSettings ReadInset(const Document& document, std::uint32_t item) {
  InsetSettings settings;
  const auto text = [&](const mif::Reader& reader) {
    return mif::DecodeString(reader.data(), document.encoding);
  };
  mif::Reader reader(document.At(document.items[item]));
  while (reader.Next()) {
    const std::string_view name = reader.name();
    if (reader.kind() == Piece::kGroup && reader.depth() == 2) {
      settings.type = name;
      settings.kind = name == "TiFlow"   ? InsetSettings::Kind::kFlow
                      : name == "TiText" ? InsetSettings::Kind::kText
                                         : InsetSettings::Kind::kOther;
    }
    if (reader.kind() != Piece::kLeaf) continue;
    if (name == "TiSrcFile") settings.file = PlatformPath(text(reader));
    if (name == "TiFlowName") settings.flow = text(reader);
    if (name == "TiPageSpace") settings.on_reference_page = reader.data() == "ReferencePage";
    if (name == "TiFormatRemoveOverrides") settings.removes_overrides = reader.data() == "Yes";
    if (name == "TiEOLisEOP") settings.line_ends_paragraph = reader.data() == "Yes";
    if (name != "TiFormatting") continue;
    if (reader.data() == "TiSource") settings.formatting = InsetFormatting::kSource;
    if (reader.data() == "TiPlainText") settings.formatting = InsetFormatting::kPlainText;
  }
  return settings;
}

ObjectNumbers::ObjectNumbers(const Document& document) {
  mif::Reader reader(document.source);
  while (reader.Next()) {
    const bool numbers =
        reader.kind() == Piece::kLeaf && (reader.token() == Token::kID || reader.token() == Token::kTblID);
    if (numbers) last_ = std::max(last_, NumberData(reader));
  }
}

bool ReadFlowContent(const Document& source, const InsetSettings& settings, const Document& target,
                     const std::vector<std::string>& enclosing_format,
                     const std::function<std::string(const std::string&)>& moved, ObjectNumbers* numbers,
                     InsetContent* content, std::string* problem) {
  const Id flow = FlowFor(source, settings);
  if (flow == 0) {
    *problem = settings.flow.empty() ? "its source has no text" : "its source has no flow " + settings.flow;
    return false;
  }
  FlowContent(source, settings, target, enclosing_format, moved, numbers, content).Read(flow);
  return true;
}

InsetContent ReadTextContent(std::string_view text, const InsetSettings& settings, const Document& target) {
  const MifLayout layout(target);
  const Formattings none;
  Numbers no_numbers(0);
  InsetContent content;
  std::string paragraph;
  const auto end = [&] {
    MifRun run(target, layout, none, &no_numbers, {});
    run.Text(paragraph);
    std::vector<std::string> statements;
    std::string_view lines = run.lines();
    while (!lines.empty()) {
      const std::size_t length = lines.find(layout.LineEnd());
      statements.emplace_back(lines.substr(0, length));
      lines.remove_prefix(length + layout.LineEnd().size());
    }
    content.paragraphs.push_back({{}, {std::move(statements)}});
    paragraph.clear();
  };
  if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
  bool any = false;
  while (!text.empty()) {
    const std::size_t length = std::min(text.find('\n'), text.size());
    std::string_view line = text.substr(0, length);
    text.remove_prefix(std::min(length + 1, text.size()));
    if (line.ends_with('\r')) line.remove_suffix(1);
    if (settings.line_ends_paragraph || (line.empty() && any)) {
      paragraph += line;
      if (settings.line_ends_paragraph || any) end();
      any = false;
      continue;
    }
    if (any && !line.empty()) paragraph += ' ';
    paragraph += line;
    any = any || !line.empty();
  }
  if (any || content.paragraphs.empty()) end();
  return content;
}

}  // namespace qelm::embedded::model
