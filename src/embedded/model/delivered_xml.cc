#include "embedded/model/delivered_xml.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <utility>

#include "embedded/mif/reader.h"
#include "embedded/mif/strings.h"
#include "embedded/model/book.h"
#include "embedded/model/files.h"
#include "embedded/model/link_statements.h"
#include "embedded/model/xml_builder.h"
#include "embedded/model/xml_marks.h"
#include "embedded/xml/encoding.h"
#include "embedded/xml/write.h"

namespace qelm::embedded::model {
namespace {

constexpr std::string_view kDeclaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
constexpr std::string_view kPathAttribute = "href";
constexpr std::string_view kBlanks = " \t\r\n";

bool IsBlank(std::string_view text) { return text.find_first_not_of(kBlanks) == std::string_view::npos; }

// Behind the document type that begins at `at`: the first `>` that is in no literal, comment or brackets.
std::size_t EndOfDocumentType(std::string_view text, std::size_t at) {
  int depth = 0;
  for (; at < text.size(); ++at) {
    const std::string_view rest = text.substr(at);
    if (rest.starts_with("<!--")) {
      at = std::min(text.find("-->", at + 4), text.size() - 1) + 2;
    } else if (rest.starts_with("<?")) {
      at = std::min(text.find("?>", at + 2), text.size() - 1) + 1;
    } else if (text[at] == '"' || text[at] == '\'') {
      at = std::min(text.find(text[at], at + 1), text.size() - 1);
    } else if (text[at] == '[') {
      ++depth;
    } else if (text[at] == ']') {
      --depth;
    } else if (text[at] == '>' && depth == 0) {
      return at + 1;
    } else if (text[at] == '<' && depth == 0) {
      continue;
    }
  }
  return text.size();
}

// Behind the start tag that begins at `at`: a value may hold `>`.
std::size_t EndOfTag(std::string_view text, std::size_t at) {
  for (char quote = 0; at < text.size(); ++at) {
    const char c = text[at];
    if (quote != 0) {
      if (c == quote) quote = 0;
    } else if (c == '"' || c == '\'') {
      quote = c;
    } else if (c == '>') {
      return at + 1;
    }
  }
  return text.size();
}

std::size_t Behind(std::string_view text, std::string_view end, std::size_t at) {
  const std::size_t found = text.find(end, at);
  return found == std::string_view::npos ? text.size() : found + end.size();
}

// The element kind that a name has in XML files when nothing else is said.
ElementKind KindOfName(const std::string& name) {
  switch (XmlRoleOfName(name)) {
    case XmlRole::kTable:
      return ElementKind::kTable;
    case XmlRole::kRow:
      return ElementKind::kTableRow;
    case XmlRole::kCell:
      return ElementKind::kTableCell;
    default:
      return ElementKind::kContainer;
  }
}

// A cross-reference's statement: the file and the name that it leads to.
std::string TargetOfReference(const std::string& statement, std::string* file) {
  std::string source_text;
  bool is_element = false;
  mif::Reader reader(statement);
  while (reader.Next()) {
    if (reader.name() == "XRefSrcIsElem") is_element = reader.data() == "Yes";
    if (!mif::IsString(reader.data())) continue;
    const std::string text = mif::DecodeString(reader.data(), mif::Encoding::kUtf8);
    if (reader.name() == "XRefSrcText") source_text = text;
    if (reader.name() == "XRefSrcFile") *file = PlatformPath(text);
  }
  return std::string(TargetOfSourceText(source_text, is_element));
}

class Pass {
 public:
  Pass(const Document& document, const Delivery& delivery, Declarations* declarations)
      : from_(std::filesystem::path(document.path).parent_path()),
        to_(std::filesystem::path(delivery.path).parent_path()),
        files_(delivery.files),
        declares_(document.format == Format::kMif),
        declarations_(declarations) {}

  DeliveredXml Run(std::string_view text);

 private:
  struct Open {
    std::size_t begin = 0;  // of what was written of it
    std::size_t tail = 0;   // of its start tag: where an attribute can be added
    ElementKind kind = ElementKind::kContainer;
    bool hidden = false;   // its start was
    bool goes = false;     // as a whole, whatever is in it
    bool visible = false;  // something in it is
    bool has_path = false;
    bool is_scope = false;  // conditions begin anew in it
  };
  struct Reference {
    std::size_t begin = 0;
    std::size_t depth = 0;
    std::string path;
  };

  std::size_t Piece(std::string_view text, std::size_t at);
  void Instruction(std::string_view raw);
  void Apply(const Mark& mark);
  void Condition(const Mark& mark);
  void Object(const std::string& statement);
  void BeginReference(const std::string& statement);
  void EndReference();
  void Graphic(const std::string& named);
  void Tag(std::string_view raw);
  void StartTag(std::string_view raw);
  void EndTag(std::string_view raw);
  void CloseElement();
  void Text(std::string_view raw);
  void AddPath(const std::string& path);
  void PathElement(std::string_view name, const std::string& path);
  void DocumentType(std::string_view raw);
  bool IsHidden() const;
  std::string Rebased(const std::string& path) const;

  std::filesystem::path from_;
  std::filesystem::path to_;
  const std::set<std::string>& files_;
  bool declares_;
  Declarations* declarations_;
  DeliveredXml result_;
  std::string out_;
  std::vector<Open> open_;
  std::map<std::string, ElementKind> kinds_;
  std::set<std::string> hidden_conditions_;
  bool show_all_ = false;
  bool in_content_ = false;                           // behind the prolog
  std::vector<std::vector<std::string>> applied_{1};  // conditions, by scope
  std::optional<Reference> reference_;
};

// Text with several conditions is shown as long as one of them is.
bool Pass::IsHidden() const {
  const std::vector<std::string>& applied = applied_.back();
  return !show_all_ && !applied.empty() &&
         std::all_of(applied.begin(), applied.end(),
                     [&](const std::string& name) { return hidden_conditions_.contains(name); });
}

std::string Pass::Rebased(const std::string& path) const {
  const std::filesystem::path file(path);
  if (path.empty() || file.is_absolute() || path.find("://") != std::string::npos) return path;
  const std::filesystem::path absolute = (from_ / file).lexically_normal();
  if (files_.contains(absolute.string())) return {};
  const std::filesystem::path relative = absolute.lexically_relative(to_);
  return relative.empty() ? path : relative.generic_string();
}

// Goes over the text, tag or other piece that begins there; where it ends.
std::size_t Pass::Piece(std::string_view text, std::size_t at) {
  const std::string_view rest = text.substr(at);
  const auto until = [&](std::size_t end) { return text.substr(at, end - at); };
  std::string_view piece;
  if (rest.front() != '<') {
    piece = rest.substr(0, rest.find('<'));
    Text(piece);
  } else if (rest.starts_with("<!--")) {
    piece = until(Behind(text, "-->", at + 4));
    if (!IsHidden()) out_.append(piece);
  } else if (rest.starts_with("<![CDATA[")) {
    piece = until(Behind(text, "]]>", at));
    Text(piece);
  } else if (rest.starts_with("<!DOCTYPE")) {
    piece = until(EndOfDocumentType(text, at));
    DocumentType(piece);
  } else if (rest.starts_with("<?")) {
    piece = until(Behind(text, "?>", at));
    Instruction(piece);
  } else {
    piece = until(EndOfTag(text, at));
    Tag(piece);
  }
  return at + piece.size();
}

void Pass::Tag(std::string_view raw) {
  if (!in_content_) result_.prolog = std::exchange(out_, {});
  in_content_ = true;
  if (raw.starts_with("</")) {
    EndTag(raw);
  } else {
    StartTag(raw);
  }
}

DeliveredXml Pass::Run(std::string_view text) {
  for (std::size_t at = 0; at < text.size();) at = Piece(text, at);
  result_.is_own = !declares_;
  while (!out_.empty() && kBlanks.find(out_.back()) != std::string_view::npos) out_.pop_back();
  result_.body = std::move(out_);
  return std::move(result_);
}

void Pass::DocumentType(std::string_view raw) {
  if (!declares_) {
    out_.append(raw);
    return;
  }
  constexpr std::string_view kList = "<!ATTLIST ";
  for (std::size_t at = raw.find(kList); at != std::string_view::npos; at = raw.find(kList, at)) {
    at += kList.size();
    const std::size_t name_end = raw.find(' ', at);
    const std::size_t attribute_end = raw.find(' ', name_end + 1);
    const std::size_t end = EndOfTag(raw, attribute_end) - 1;
    const std::string element(raw.substr(at, name_end - at));
    const std::string attribute(raw.substr(name_end + 1, attribute_end - name_end - 1));
    declarations_->attributes[element].try_emplace(attribute,
                                                   raw.substr(attribute_end + 1, end - attribute_end - 1));
    at = end;
  }
}

void Pass::Instruction(std::string_view raw) {
  const std::string_view inner = raw.substr(2, raw.size() - 4);
  const std::size_t target_end = std::min(inner.find_first_of(kBlanks), inner.size());
  const std::size_t data = std::min(inner.find_first_not_of(kBlanks, target_end), inner.size());
  const Mark mark = ReadMark(inner.substr(0, target_end), inner.substr(data));
  if (mark.kind != MarkKind::kNone) {
    Apply(mark);
  } else if (!IsHidden()) {
    out_.append(raw);
  }
}

void Pass::Apply(const Mark& mark) {
  switch (mark.kind) {
    case MarkKind::kConditionState:
      if (!mark.on) hidden_conditions_.insert(mark.name);
      break;
    case MarkKind::kShowAll:
      show_all_ = mark.on;
      break;
    case MarkKind::kElementKind:
      kinds_[mark.name] = mark.element_kind;
      break;
    case MarkKind::kConditionStart:
    case MarkKind::kConditionEnd:
      Condition(mark);
      break;
    case MarkKind::kObject:
      if (!IsHidden()) Object(mark.name);
      break;
    case MarkKind::kGraphic:
      if (!IsHidden()) Graphic(mark.name);
      break;
    case MarkKind::kParagraph:
      if (!IsHidden()) out_.push_back('\n');
      break;
    default:
      break;
  }
}

void Pass::Condition(const Mark& mark) {
  std::vector<std::string>& applied = applied_.back();
  if (mark.kind == MarkKind::kConditionStart) {
    applied.push_back(mark.name);
  } else if (const auto known = std::find(applied.rbegin(), applied.rend(), mark.name);
             known != applied.rend()) {
    applied.erase(std::next(known).base());
  }
  // As the first thing in a row a condition is the row's own.
  if (open_.empty() || open_.back().kind != ElementKind::kTableRow || open_.back().visible) return;
  if (IsHidden()) open_.back().goes = true;
}

void Pass::Object(const std::string& statement) {
  if (statement.starts_with("<XRefEnd")) {
    EndReference();
  } else if (statement.starts_with("<XRef")) {
    BeginReference(statement);
  }
}

void Pass::BeginReference(const std::string& statement) {
  std::string file;
  const std::string target = TargetOfReference(statement, &file);
  const std::string path = Rebased(file) + (target.empty() ? std::string() : "#" + target);
  if (!open_.empty() && open_.back().kind == ElementKind::kCrossReference) {
    AddPath(path);
  } else {
    reference_ = Reference{out_.size(), open_.size(), path};
  }
}

// A reference without an element of its own becomes one, around its text where nothing stands in the way.
void Pass::EndReference() {
  if (!reference_) return;
  const Reference reference = *std::exchange(reference_, std::nullopt);
  if (open_.empty() || reference.depth != open_.size() || reference.begin > out_.size()) return;
  std::string tag = "<xref href=\"";
  xml::AppendValue(reference.path, '"', &tag);
  out_.insert(reference.begin, tag + "\">");
  out_.append("</xref>");
  open_.back().visible = true;
  if (declares_) declarations_->used["xref"].insert(std::string(kPathAttribute));
}

void Pass::Graphic(const std::string& named) {
  const std::string file = named.starts_with('<') ? PlatformPath(named) : named;
  if (!open_.empty() && open_.back().kind == ElementKind::kGraphic && !open_.back().has_path) {
    AddPath(Rebased(file));
  } else {
    PathElement("graphic", Rebased(file));
  }
}

void Pass::PathElement(std::string_view name, const std::string& path) {
  out_.append("<").append(name).append(" ").append(kPathAttribute).append("=\"");
  xml::AppendValue(path, '"', &out_);
  out_.append("\"/>");
  if (!open_.empty()) open_.back().visible = true;
  if (declares_) declarations_->used[std::string(name)].insert(std::string(kPathAttribute));
}

void Pass::AddPath(const std::string& path) {
  Open& element = open_.back();
  element.visible = true;
  if (element.has_path) return;
  element.has_path = true;
  std::string attribute = " " + std::string(kPathAttribute) + "=\"";
  xml::AppendValue(path, '"', &attribute);
  attribute += '"';
  if (declares_) {
    const std::string_view tag = std::string_view(out_).substr(element.begin + 1);
    declarations_->used[std::string(tag.substr(0, tag.find_first_of(" \t\r\n/>")))].insert(
        std::string(kPathAttribute));
  }
  out_.insert(element.tail, attribute);
  if (reference_ && reference_->begin >= element.tail) reference_->begin += attribute.size();
}

void Pass::StartTag(std::string_view raw) {
  std::vector<xml::TagAttribute> attributes;
  std::size_t tail = 0;
  xml::SplitTag(raw, &attributes, &tail);
  const std::size_t name_end = std::min(raw.find_first_of(" \t\r\n/>"), raw.size());
  const std::string name(raw.substr(1, name_end - 1));
  const auto kind = kinds_.find(name);
  Open element;
  element.begin = out_.size();
  element.tail = out_.size() + tail;
  element.kind = kind == kinds_.end() ? KindOfName(name) : kind->second;
  element.hidden = IsHidden() && !open_.empty();
  // What is in a table or footnote stands elsewhere than its anchor, which decides; around rows a condition
  // is that of each row.
  const bool anchored = element.kind == ElementKind::kTable || element.kind == ElementKind::kFootnote;
  element.goes = element.hidden && (anchored || element.kind == ElementKind::kTableRow);
  element.is_scope = anchored || HoldsStory(element.kind);
  for (const xml::TagAttribute& attribute : attributes) {
    const std::string_view own = raw.substr(attribute.begin, attribute.name_end - attribute.begin);
    element.has_path = element.has_path || own == kPathAttribute;
  }
  if (declares_) {
    std::set<std::string>& used = declarations_->used[name];
    for (const xml::TagAttribute& attribute : attributes) {
      used.emplace(raw.substr(attribute.begin, attribute.name_end - attribute.begin));
    }
  }
  if (result_.root.empty()) result_.root = name;
  out_.append(raw);
  open_.push_back(element);
  if (element.is_scope) applied_.emplace_back();
  if (raw.ends_with("/>")) CloseElement();
}

void Pass::EndTag(std::string_view raw) {
  if (open_.empty()) return;
  out_.append(raw);
  CloseElement();
}

void Pass::CloseElement() {
  const Open element = open_.back();
  open_.pop_back();
  if (element.is_scope) applied_.pop_back();
  const bool goes = !open_.empty() && (element.goes || (element.hidden && !element.visible));
  if (goes) {
    out_.resize(element.begin);
  } else if (!open_.empty()) {
    open_.back().visible = true;
  }
}

void Pass::Text(std::string_view raw) {
  if (IsHidden()) return;
  out_.append(raw);
  if (!open_.empty() && !IsBlank(raw)) open_.back().visible = true;
}

}  // namespace

std::string Declarations::Text(const std::string& root) const {
  if (used.empty()) return {};
  std::string text = "<!DOCTYPE " + root + " [\n";
  for (const auto& [element, names] : used) {
    text += "<!ELEMENT " + element + " ANY>\n";
    const auto declared = attributes.find(element);
    const auto attribute = [&text, &tag = element](const std::string& name, const std::string& type) {
      text.append("<!ATTLIST ").append(tag).append(" ").append(name).append(" ").append(type).append(">\n");
    };
    if (declared != attributes.end()) {
      for (const auto& [name, type] : declared->second) attribute(name, type);
    }
    for (const std::string& name : names) {
      const bool known = declared != attributes.end() && declared->second.contains(name);
      if (!known) attribute(name, "CDATA #IMPLIED");
    }
  }
  return text + "]>\n";
}

DeliveredXml Deliver(const Document& document, std::string text, const Delivery& delivery,
                     Declarations* declarations) {
  const bool is_xml = document.format == Format::kXml;
  const xml::Encoding encoding = is_xml ? xml::DetectEncoding(text) : xml::Encoding::kUtf8;
  if (encoding != xml::Encoding::kUtf8) {
    text = xml::ToUtf8(text, encoding);
    // The declaration names the encoding that the file no longer has.
    const std::size_t end = text.starts_with("<?xml") ? Behind(text, "?>", 0) : 0;
    text.replace(0, end, kDeclaration.substr(0, kDeclaration.size() - 1));
  }
  return Pass(document, delivery, declarations).Run(text);
}

std::string FileOf(const DeliveredXml& xml, const Declarations& declarations) {
  if (xml.is_own) return xml.prolog + xml.body + "\n";
  return std::string(kDeclaration) + declarations.Text(xml.root) + xml.body + "\n";
}

}  // namespace qelm::embedded::model
