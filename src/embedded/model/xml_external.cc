#include "embedded/model/xml_external.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "embedded/xml/encoding.h"

namespace qelm::embedded::model {
namespace {

constexpr std::string_view kBlanks = " \t\r\n";
constexpr int kHexadecimal = 16;

bool IsBlank(char c) { return kBlanks.find(c) != std::string_view::npos; }

// "%20" and the like as the bytes that they stand for.
std::string Decoded(std::string_view address) {
  std::string path;
  for (std::size_t at = 0; at < address.size(); ++at) {
    unsigned byte = 0;
    const char* const digits = address.data() + at + 1;
    const bool escaped = address[at] == '%' && at + 2 < address.size() &&
                         std::from_chars(digits, digits + 2, byte, kHexadecimal).ptr == digits + 2;
    path.push_back(escaped ? static_cast<char>(byte) : address[at]);
    if (escaped) at += 2;
  }
  return path;
}

// An address with a scheme ("http:", "urn:") is no path.
bool IsPath(std::string_view address) {
  const std::size_t colon = address.find(':');
  return !address.empty() && (colon == std::string_view::npos || address.find('/') < colon);
}

// Goes over the words, literals and marks of the document type declaration. Positions are those of the text,
// which has one byte a character of the source.
class Declarations {
 public:
  Declarations(const Document& document, std::string_view text, xml::Encoding encoding)
      : document_(document), text_(text), encoding_(encoding) {}

  std::vector<ExternalFile> Run() {
    while (at_ < text_.size() && Step()) {
    }
    return std::move(found_);
  }

 private:
  bool Step();
  void Word();
  void Literal();
  void Pass(std::string_view closer) {
    const std::size_t end = text_.find(closer, at_);
    at_ = end == std::string_view::npos ? text_.size() : end + closer.size();
  }

  const Document& document_;
  std::string_view text_;
  xml::Encoding encoding_;
  std::vector<ExternalFile> found_;
  std::size_t at_ = 0;
  std::string_view declaration_;  // the word behind "<!"
  int words_ = 0;                 // of it, without a "%"
  int literals_ = 0;
  int wanted_ = 0;  // which literal names the file; 0: none does
  bool has_file_ = false;
};

// False at the first element.
bool Declarations::Step() {
  const std::string_view rest = text_.substr(at_);
  if (rest.starts_with("<!--")) {
    Pass("-->");
  } else if (rest.starts_with("<?")) {
    Pass("?>");
  } else if (rest.starts_with("<!")) {
    at_ += 2;
    declaration_ = {};
    words_ = literals_ = wanted_ = 0;
    has_file_ = false;
  } else if (rest.front() == '<') {
    return false;
  } else if (rest.front() == '"' || rest.front() == '\'') {
    Literal();
  } else if (IsBlank(rest.front()) || rest.front() == '%' || rest.front() == '>' || rest.front() == '[' ||
             rest.front() == ']') {
    if (rest.front() == '[' || rest.front() == '>') wanted_ = 0;
    ++at_;
  } else {
    Word();
  }
  return true;
}

// The second word, behind the name, may say that a file follows.
void Declarations::Word() {
  const std::size_t end = std::min(text_.find_first_of(" \t\r\n\"'<>[]", at_), text_.size());
  const std::string_view word = text_.substr(at_, end - at_);
  at_ = end;
  if (declaration_.empty()) {
    declaration_ = word;
    return;
  }
  const bool names_file = declaration_ == "DOCTYPE" || declaration_ == "ENTITY";
  if (++words_ == 2 && names_file) wanted_ = word == "SYSTEM" ? 1 : word == "PUBLIC" ? 2 : 0;
  if (word == "NDATA" && has_file_) found_.back().is_unparsed = true;
}

void Declarations::Literal() {
  const std::size_t begin = at_;
  const std::size_t end = text_.find(text_[at_], at_ + 1);
  at_ = end == std::string_view::npos ? text_.size() : end + 1;
  if (wanted_ == 0 || ++literals_ != wanted_) return;
  const std::uint32_t unit = xml::UnitSize(encoding_);
  const Span literal{static_cast<std::uint32_t>(begin) * unit, static_cast<std::uint32_t>(at_) * unit};
  const Span inside{literal.begin + unit, literal.end - unit};
  const auto edit = document_.replacements.find(literal.begin);
  const bool is_edited = edit != document_.replacements.end();
  const std::string address = is_edited ? edit->second.text.substr(1, edit->second.text.size() - 2)
                                        : xml::ToUtf8(document_.At(inside), encoding_);
  if (!IsPath(address)) return;
  found_.push_back({literal, Decoded(address), false});
  has_file_ = true;
}

// What comes before the first element, one byte a character, of which others than those of ASCII do not
// matter.
std::string Head(const Document& document, xml::Encoding encoding) {
  const Id root = document.main_flow == 0 ? 0 : document.flows[document.main_flow].root;
  const std::uint32_t end =
      root == 0 ? static_cast<std::uint32_t>(document.source.size()) : document.elements[root].source;
  std::string head;
  for (std::uint32_t at = 0; at < end; at += xml::UnitSize(encoding)) {
    const char c = xml::AsciiAt(document.source, at, encoding);
    head.push_back(c == '\0' ? 'x' : c);
  }
  return head;
}

}  // namespace

std::vector<ExternalFile> ExternalFiles(const Document& document) {
  if (document.format != Format::kXml) return {};
  const xml::Encoding encoding = xml::DetectEncoding(document.source);
  return Declarations(document, Head(document, encoding), encoding).Run();
}

std::string ExternalLiteral(std::string_view path) {
  constexpr std::string_view kEscaped = " \"%'<>";
  std::string literal = "\"";
  for (const char c : path) {
    if (kEscaped.find(c) == std::string_view::npos) {
      literal.push_back(c);
      continue;
    }
    std::array<char, 2> digits{};
    std::to_chars(digits.data(), digits.data() + digits.size(), static_cast<unsigned char>(c), kHexadecimal);
    literal.append("%").append(digits.data(), digits.size());
  }
  return literal + '"';
}

}  // namespace qelm::embedded::model
