#include "embedded/xml/reader.h"

#include <expat.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <memory>

#include "embedded/xml/plain_reader.h"

namespace qelm::embedded::xml {
namespace {

// expat copies what it is given into a buffer of its own; pieces keep that small. A piece in which nothing
// ends is followed by a larger one, so that a very long token is not looked through again and again.
constexpr std::size_t kPiece = std::size_t{1} << 18U;
constexpr std::size_t kLargestPiece = std::size_t{1} << 29U;

// expat descends one call for each entity inside an entity. More entities that name others than this cannot
// be in a document that means well.
constexpr int kMostNestedEntities = 1000;

struct FreeParser {
  void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
};

class Parse {
 public:
  Parse(std::string_view bytes, Handler* handler) : bytes_(bytes), handler_(*handler) {}
  bool Run(Error* error);

 private:
  static Parse& Of(void* self) { return *static_cast<Parse*>(self); }
  static void XMLCALL OnStart(void* self, const char* name, const char** attributes) {
    Of(self).Start(name, attributes);
  }
  static void XMLCALL OnEnd(void* self, const char* name) { Of(self).End(name); }
  static void XMLCALL OnText(void* self, const char* text, int length) {
    Of(self).Text({text, static_cast<std::size_t>(length)});
  }
  static void XMLCALL OnCDataStart(void* self) { Of(self).CDataStart(); }
  static void XMLCALL OnCDataEnd(void* self) { Of(self).CDataEnd(); }
  static void XMLCALL OnComment(void* self, const char* text) {
    Of(self).Simple(EventKind::kComment, {}, text);
  }
  static void XMLCALL OnInstruction(void* self, const char* target, const char* data) {
    Of(self).Simple(EventKind::kInstruction, target, data);
  }
  static void XMLCALL OnSkipped(void* self, const char* name, int is_parameter) {
    Of(self).Skipped(name, is_parameter != 0);
  }
  static int XMLCALL OnExternal(XML_Parser parser, const char* context, const char* base, const char* system,
                                const char* public_id);
  static void XMLCALL OnElementDecl(void* self, const char* name, XML_Content* model);
  static void XMLCALL OnAttlistDecl(void* self, const char* element, const char* name, const char* type,
                                    const char* value, int required);
  static void XMLCALL OnEntityDecl(void* self, const char* name, int is_parameter, const char* value,
                                   int length, const char* base, const char* system, const char* public_id,
                                   const char* notation);

  void SetHandlers();
  bool Feed();
  void Locate(Event* event) const;
  bool IsEntityReference(std::uint32_t begin, std::uint32_t end) const;
  void Start(const char* name, const char** attributes);
  void End(const char* name);
  void Text(std::string_view text);
  void CDataStart();
  void CDataEnd();
  void Simple(EventKind kind, std::string_view name, std::string_view text);
  void Skipped(std::string_view name, bool is_parameter);
  void FlushText();
  void Send(const Event& event);
  void Stop(std::string message);
  std::string TagName(std::uint32_t begin) const;
  void Explain(Error* error) const;
  std::uint64_t LineOf(std::uint32_t offset) const;

  std::string_view bytes_;
  Handler& handler_;
  std::unique_ptr<XML_ParserStruct, FreeParser> parser_;
  Encoding encoding_ = Encoding::kUtf8;
  std::vector<Attribute> attributes_;
  std::vector<std::uint32_t> open_;  // where the start tags of the open elements are
  Event text_;                       // text that is being gathered; its text is in text_buffer_ unless plain
  bool has_text_ = false;
  bool in_cdata_ = false;
  bool cdata_in_entity_ = false;
  std::string text_buffer_;
  std::string stopped_;  // why this reader itself stopped
  int nested_entities_ = 0;
  bool warned_external_ = false;
  std::uint64_t events_ = 0;
};

bool Parse::Run(Error* error) {
  if (bytes_.size() >= std::numeric_limits<std::uint32_t>::max()) {
    *error = {"the file is larger than 4 GiB", 1, 1, 0};
    return false;
  }
  std::string declared;
  encoding_ = DetectEncoding(bytes_, &declared);
  if (encoding_ == Encoding::kUnsupported) {
    *error = {"the encoding \"" + declared +
                  "\" is not supported; save the file as UTF-8, UTF-16, ISO-8859-1 or US-ASCII",
              1, 1, 0};
    return false;
  }
  // expat tells the order of the bytes from the file; it is given the name only where the file has none.
  const bool is_bare =
      UnitSize(encoding_) == 2 && !bytes_.starts_with("\xFF\xFE") && !bytes_.starts_with("\xFE\xFF");
  const char* name = encoding_ == Encoding::kUtf16Little ? "UTF-16LE" : "UTF-16BE";
  parser_.reset(XML_ParserCreate(is_bare ? name : nullptr));
  SetHandlers();
  if (Feed()) return true;
  Explain(error);
  return false;
}

void Parse::SetHandlers() {
  XML_Parser parser = parser_.get();
  XML_SetUserData(parser, this);
  XML_SetElementHandler(parser, OnStart, OnEnd);
  XML_SetCharacterDataHandler(parser, OnText);
  XML_SetCdataSectionHandler(parser, OnCDataStart, OnCDataEnd);
  XML_SetCommentHandler(parser, OnComment);
  XML_SetProcessingInstructionHandler(parser, OnInstruction);
  XML_SetSkippedEntityHandler(parser, OnSkipped);
  XML_SetElementDeclHandler(parser, OnElementDecl);
  XML_SetAttlistDeclHandler(parser, OnAttlistDecl);
  XML_SetEntityDeclHandler(parser, OnEntityDecl);
  // With this, parameter entities of the file itself are expanded, so that what they declare counts. The
  // handler loads nothing, so external ones stay what they are.
  XML_SetParamEntityParsing(parser, XML_PARAM_ENTITY_PARSING_ALWAYS);
  XML_SetExternalEntityRefHandler(parser, OnExternal);
}

bool Parse::Feed() {
  std::size_t piece = kPiece;
  std::size_t at = 0;
  for (;;) {
    const std::size_t size = std::min(piece, bytes_.size() - at);
    const bool is_last = at + size == bytes_.size();
    const std::uint64_t before = events_;
    if (XML_Parse(parser_.get(), bytes_.data() + at, static_cast<int>(size), is_last ? 1 : 0) !=
        XML_STATUS_OK) {
      return false;
    }
    if (is_last) return true;
    at += size;
    piece = events_ == before ? std::min(piece * 2, kLargestPiece) : kPiece;
  }
}

void Parse::Locate(Event* event) const {
  event->begin = static_cast<std::uint32_t>(XML_GetCurrentByteIndex(parser_.get()));
  event->end = event->begin + static_cast<std::uint32_t>(XML_GetCurrentByteCount(parser_.get()));
}

// Whether the bytes are a reference to a declared entity: `&` and neither a number nor one of XML's own five.
bool Parse::IsEntityReference(std::uint32_t begin, std::uint32_t end) const {
  if (begin == end || AsciiAt(bytes_, begin, encoding_) != '&') return false;
  const std::uint32_t unit = UnitSize(encoding_);
  char name[6] = {};
  const std::uint32_t length = (end - begin) / unit;
  if (length < 4 || length > 6) return AsciiAt(bytes_, begin + unit, encoding_) != '#';
  for (std::uint32_t i = 1; i + 1 < length; ++i) name[i - 1] = AsciiAt(bytes_, begin + i * unit, encoding_);
  const std::string_view view(name);
  return !view.starts_with('#') && view != "lt" && view != "gt" && view != "amp" && view != "apos" &&
         view != "quot";
}

void Parse::Send(const Event& event) {
  ++events_;
  handler_.OnEvent(event);
}

void Parse::Start(const char* name, const char** attributes) {
  FlushText();
  Event event;
  event.kind = EventKind::kStartTag;
  Locate(&event);
  event.name = name;
  event.in_entity = IsEntityReference(event.begin, event.end);
  attributes_.clear();
  const int specified = XML_GetSpecifiedAttributeCount(parser_.get());
  for (int i = 0; attributes[i] != nullptr; i += 2) {
    attributes_.push_back({attributes[i], attributes[i + 1], i < specified});
  }
  event.attributes = attributes_;
  open_.push_back(event.begin);
  Send(event);
}

void Parse::End(const char* name) {
  FlushText();
  Event event;
  event.kind = EventKind::kEndTag;
  Locate(&event);
  event.name = name;
  event.in_entity = IsEntityReference(event.begin, event.end);
  open_.pop_back();
  Send(event);
}

void Parse::Text(std::string_view text) {
  Event piece;
  Locate(&piece);
  const bool is_reference = !in_cdata_ && AsciiAt(bytes_, piece.begin, encoding_) == '&';
  piece.in_entity = in_cdata_ ? cdata_in_entity_ : is_reference && IsEntityReference(piece.begin, piece.end);
  const bool continues =
      has_text_ && text_.in_entity == piece.in_entity &&
      (in_cdata_ || (piece.in_entity ? piece.begin == text_.begin : piece.begin == text_.end));
  if (!continues) {
    FlushText();
    text_ = piece;
    text_.end = piece.begin;
    text_.kind = in_cdata_ ? EventKind::kCData : EventKind::kText;
    text_.plain = true;
    has_text_ = true;
  }
  const std::size_t size = piece.end - piece.begin;
  const bool same = !piece.in_entity && size == text.size() &&
                    std::memcmp(bytes_.data() + piece.begin, text.data(), size) == 0;
  if (text_.plain && !same) {
    text_buffer_.assign(bytes_.substr(text_.begin, text_.end - text_.begin));
    text_.plain = false;
  }
  if (!text_.plain) text_buffer_.append(text);
  text_.referenced = text_.referenced || (is_reference && !piece.in_entity);
  text_.end = piece.end;
}

void Parse::FlushText() {
  if (!has_text_) return;
  has_text_ = false;
  text_.text =
      text_.plain ? bytes_.substr(text_.begin, text_.end - text_.begin) : std::string_view(text_buffer_);
  Send(text_);
}

// Text in a section is gathered like other text; the marks come on when it ends.
void Parse::CDataStart() {
  FlushText();
  Event mark;
  Locate(&mark);
  cdata_in_entity_ = AsciiAt(bytes_, mark.begin, encoding_) == '&';
  in_cdata_ = true;
  has_text_ = true;
  text_ = mark;
  text_.kind = EventKind::kCData;
  text_.in_entity = cdata_in_entity_;
  text_.plain = !cdata_in_entity_;
  text_.begin = cdata_in_entity_ ? mark.begin : mark.end;
  text_.end = text_.begin;
  text_buffer_.clear();
}

void Parse::CDataEnd() {
  Event mark;
  Locate(&mark);
  in_cdata_ = false;
  has_text_ = false;
  text_.text =
      text_.plain ? bytes_.substr(text_.begin, text_.end - text_.begin) : std::string_view(text_buffer_);
  if (!text_.in_entity) {
    constexpr std::uint32_t kOpener = 9;  // <![CDATA[
    text_.begin -= kOpener * UnitSize(encoding_);
  }
  text_.end = mark.end;
  Send(text_);
}

void Parse::Simple(EventKind kind, std::string_view name, std::string_view text) {
  FlushText();
  Event event;
  event.kind = kind;
  Locate(&event);
  event.name = name;
  event.text = text;
  event.in_entity = AsciiAt(bytes_, event.begin, encoding_) == '&';
  if (kind == EventKind::kReference && event.in_entity) {
    // The reference may be in the file itself, or in another entity.
    const std::uint32_t unit = UnitSize(encoding_);
    const std::string_view inside = bytes_.substr(event.begin + unit, event.end - event.begin - 2 * unit);
    event.in_entity = ToUtf8(inside, encoding_) != name;
  }
  Send(event);
}

void Parse::Skipped(std::string_view name, bool is_parameter) {
  if (is_parameter) return;
  Simple(EventKind::kReference, name, {});
  handler_.OnWarning(static_cast<std::uint32_t>(XML_GetCurrentByteIndex(parser_.get())),
                     "the entity &" + std::string(name) + "; is not declared in the file; it stays as it is");
}

int Parse::OnExternal(XML_Parser parser, const char* context, const char* /*base*/, const char* system,
                      const char* /*public_id*/) {
  Parse& self = Of(XML_GetUserData(parser));
  const std::string file = system == nullptr ? std::string() : " (" + std::string(system) + ")";
  const auto offset = static_cast<std::uint32_t>(XML_GetCurrentByteIndex(parser));
  if (context != nullptr) {
    // The context begins with the names of the open entities, this one first.
    const std::string_view names(context);
    const std::string_view name = names.substr(0, names.find_first_of("\f="));
    self.Simple(EventKind::kReference, name, {});
    self.handler_.OnWarning(offset,
                            "an external entity" + file + " is not loaded; its reference stays as it is");
  } else if (!self.warned_external_) {
    self.warned_external_ = true;
    self.handler_.OnWarning(offset, "external declarations" + file +
                                        " are not loaded; entities and attribute defaults that they "
                                        "declare are not known");
  }
  return XML_STATUS_OK;
}

void Parse::OnElementDecl(void* self, const char* name, XML_Content* model) {
  Of(self).handler_.OnElementDeclaration(name, model->type == XML_CTYPE_MIXED);
  XML_FreeContentModel(Of(self).parser_.get(), model);
}

void Parse::OnAttlistDecl(void* self, const char* element, const char* name, const char* type,
                          const char* value, int required) {
  AttributeDeclaration declaration;
  declaration.element = element;
  declaration.name = name;
  declaration.type = type;
  declaration.has_default = value != nullptr;
  if (value != nullptr) declaration.default_value = value;
  declaration.required = required != 0;
  Of(self).handler_.OnAttributeDeclaration(declaration);
}

void Parse::OnEntityDecl(void* self, const char* /*name*/, int /*is_parameter*/, const char* value,
                         int length, const char* /*base*/, const char* /*system*/, const char* /*public_id*/,
                         const char* /*notation*/) {
  if (value == nullptr) return;
  const std::string_view text(value, static_cast<std::size_t>(length));
  if (text.find_first_of("&%") == std::string_view::npos) return;
  if (++Of(self).nested_entities_ > kMostNestedEntities)
    Of(self).Stop("too many entities that name other entities");
}

void Parse::Stop(std::string message) {
  stopped_ = std::move(message);
  XML_StopParser(parser_.get(), XML_FALSE);
}

std::uint64_t Parse::LineOf(std::uint32_t offset) const {
  std::uint64_t line = 1;
  const std::uint32_t unit = UnitSize(encoding_);
  for (std::uint32_t at = 0; at < offset; at += unit) {
    if (AsciiAt(bytes_, at, encoding_) == '\n') ++line;
  }
  return line;
}

// The name of the tag at an offset, as far as it is ASCII.
std::string Parse::TagName(std::uint32_t begin) const {
  std::string name;
  const std::uint32_t unit = UnitSize(encoding_);
  constexpr std::size_t kLongest = 60;
  for (std::uint32_t at = begin + unit; name.size() < kLongest; at += unit) {
    const char c = AsciiAt(bytes_, at, encoding_);
    if (c == '\0' || static_cast<unsigned char>(c) <= ' ' || c == '>' || c == '/') break;
    name.push_back(c);
  }
  return name;
}

void Parse::Explain(Error* error) const {
  XML_Parser parser = parser_.get();
  const XML_Error code = XML_GetErrorCode(parser);
  error->message = stopped_.empty() ? XML_ErrorString(code) : stopped_;
  error->line = XML_GetCurrentLineNumber(parser);
  error->column = XML_GetCurrentColumnNumber(parser) + 1;
  error->offset = static_cast<std::uint64_t>(std::max<XML_Index>(XML_GetCurrentByteIndex(parser), 0));
  const bool about_tags = code == XML_ERROR_TAG_MISMATCH || code == XML_ERROR_NO_ELEMENTS ||
                          code == XML_ERROR_UNCLOSED_TOKEN || code == XML_ERROR_UNCLOSED_CDATA_SECTION;
  if (!about_tags) return;
  if (open_.empty()) {
    if (code == XML_ERROR_NO_ELEMENTS) error->message += "; expected an element";
    return;
  }
  const std::string name = TagName(open_.back());
  error->message += "; expected </" + name + ">, which began in line " + std::to_string(LineOf(open_.back()));
}

}  // namespace

std::string Error::Describe() const {
  return "line " + std::to_string(line) + ", column " + std::to_string(column) + ", offset " +
         std::to_string(offset) + ": " + message;
}

bool ReadByExpat(std::string_view bytes, Handler* handler, Error* error) {
  return Parse(bytes, handler).Run(error);
}

bool Read(std::string_view bytes, Handler* handler, Error* error) {
  return ReadPlain(bytes, handler) || ReadByExpat(bytes, handler, error);
}

}  // namespace qelm::embedded::xml
