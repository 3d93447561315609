#include "embedded/xml/plain_reader.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cstring>
#include <deque>
#include <limits>
#include <utility>

namespace qelm::embedded::xml {
namespace {

// What a byte may be part of.
enum ByteClass : std::uint8_t {
  kNameStart = 1U << 0,
  kNamePart = 1U << 1,
  kSpace = 1U << 2,
  kInValue = 1U << 3,  // of an attribute, as it stands
};

constexpr std::array<std::uint8_t, 256> MakeClasses() {
  std::array<std::uint8_t, 256> classes{};
  for (unsigned c = 0x20; c < 0x80; ++c) {
    if (c != '<' && c != '&' && c != '"' && c != '\'') classes[c] |= kInValue;
    const unsigned lower = c | 0x20U;
    const bool starts = (lower >= 'a' && lower <= 'z') || c == '_' || c == ':';
    if (starts) classes[c] |= kNameStart;
    if (starts || (c >= '0' && c <= '9') || c == '-' || c == '.') classes[c] |= kNamePart;
  }
  for (const char c : {' ', '\t', '\n', '\r'}) classes[static_cast<unsigned char>(c)] |= kSpace;
  return classes;
}
constexpr std::array<std::uint8_t, 256> kClasses = MakeClasses();

bool Has(char c, std::uint8_t byte_class) {
  return (kClasses[static_cast<unsigned char>(c)] & byte_class) != 0;
}

// More attributes than this are not compared in pairs here.
constexpr std::size_t kMostAttributes = 32;

// The first byte of text that is more than itself: markup, a reference, a control character that is no tab or
// line feed, part of a character beyond ASCII, or `]`, which may begin what text must not have. What is
// neither blank, tab nor line feed before it makes `is_blank` false.
inline const char* TextMark(const char* at, const char* end, bool* is_blank) {
#if defined(__SSE2__)
  constexpr std::ptrdiff_t kStep = sizeof(__m128i);
  for (; end - at >= kStep; at += kStep) {
    __m128i bytes;
    std::memcpy(&bytes, at, sizeof bytes);
    const auto is = [&](char c) { return _mm_cmpeq_epi8(bytes, _mm_set1_epi8(c)); };
    const __m128i control = _mm_cmplt_epi8(bytes, _mm_set1_epi8(0x20));  // and all beyond ASCII
    const __m128i layout = _mm_or_si128(is('\n'), is('\t'));
    const __m128i marks = _mm_or_si128(_mm_or_si128(is('<'), is('&')), is(']'));
    const auto bits = [](__m128i of) { return static_cast<unsigned>(_mm_movemask_epi8(of)); };
    const unsigned found = bits(_mm_or_si128(_mm_andnot_si128(layout, control), marks));
    const unsigned visible = bits(_mm_cmpgt_epi8(bytes, _mm_set1_epi8(0x20)));
    // Below the lowest bit that is found, or all of them.
    if ((visible & (found - 1) & ~found) != 0) *is_blank = false;
    if (found != 0) return at + std::countr_zero(found);
  }
#endif
  for (; at < end; ++at) {
    const auto c = static_cast<unsigned char>(*at);
    if (c >= 0x80 || c == '<' || c == '&' || c == ']' || (c < 0x20 && c != '\n' && c != '\t')) break;
    if (c > 0x20) *is_blank = false;
  }
  return at;
}

// Behind the character beyond ASCII that begins here; null when it is none that XML may have.
const char* CharacterEnd(const char* at, const char* end) {
  const auto byte = [&](std::ptrdiff_t index) { return static_cast<unsigned char>(at[index]); };
  const unsigned lead = byte(0);
  const std::ptrdiff_t size = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4 || end - at < size) return nullptr;
  for (std::ptrdiff_t i = 1; i < size; ++i) {
    if ((byte(i) & 0xC0U) != 0x80) return nullptr;
  }
  const unsigned second = byte(1);
  const bool too_long = (lead == 0xE0 && second < 0xA0) || (lead == 0xF0 && second < 0x90);
  const bool no_character = (lead == 0xED && second > 0x9F) || (lead == 0xF4 && second > 0x8F) ||
                            (lead == 0xEF && second == 0xBF && byte(2) > 0xBD);
  return too_long || no_character ? nullptr : at + size;
}

// Whether all of it are characters that XML may have.
bool AreCharacters(std::string_view text) {
  const char* at = text.data();
  const char* const end = at + text.size();
  bool is_blank = true;
  while ((at = TextMark(at, end, &is_blank)) != end) {
    const auto c = static_cast<unsigned char>(*at);
    if (c < 0x20 && c != '\r') return false;
    at = c >= 0x80 ? CharacterEnd(at, end) : at + 1;
    if (at == nullptr) return false;
  }
  return true;
}

void AppendCharacter(std::uint32_t c, std::string* text) {
  const auto add = [&](std::uint32_t byte) { text->push_back(static_cast<char>(byte)); };
  if (c < 0x80) {
    add(c);
    return;
  }
  if (c < 0x800) {
    add(0xC0U | c >> 6U);
  } else {
    if (c < 0x10000) {
      add(0xE0U | c >> 12U);
    } else {
      add(0xF0U | c >> 18U);
      add(0x80U | (c >> 12U & 0x3FU));
    }
    add(0x80U | (c >> 6U & 0x3FU));
  }
  add(0x80U | (c & 0x3FU));
}

// Takes the reference that begins here; behind it, or null for one to anything that is not known here.
const char* ReadReference(const char* at, const char* end, std::string* text) {
  constexpr std::pair<std::string_view, char> kKnown[] = {
      {"amp", '&'}, {"lt", '<'}, {"gt", '>'}, {"quot", '"'}, {"apos", '\''}};
  const void* const semicolon =
      std::memchr(at, ';', static_cast<std::size_t>(std::min<std::ptrdiff_t>(end - at, 12)));
  if (semicolon == nullptr) return nullptr;
  const char* const behind = static_cast<const char*>(semicolon);
  const std::string_view name(at + 1, static_cast<std::size_t>(behind - at - 1));
  if (!name.starts_with('#')) {
    for (const auto& [known, c] : kKnown) {
      if (known != name) continue;
      text->push_back(c);
      return behind + 1;
    }
    return nullptr;
  }
  const bool hexadecimal = name.starts_with("#x");
  std::uint32_t c = 0;
  const auto read = std::from_chars(at + (hexadecimal ? 3 : 2), behind, c, hexadecimal ? 16 : 10);
  const bool allowed = (c >= 0x20 && c < 0xD800) || c == '\t' || c == '\n' || c == '\r' ||
                       (c >= 0xE000 && c < 0xFFFE) || (c >= 0x10000 && c <= 0x10FFFF);
  if (read.ec != std::errc() || read.ptr != behind || !allowed) return nullptr;
  AppendCharacter(c, text);
  return behind + 1;
}

// Whether blanks are where they stay in an attribute of every type: single ones, between other text.
bool HasSingleBlanks(std::string_view value) {
  return !value.starts_with(' ') && !value.ends_with(' ') && value.find("  ") == std::string_view::npos;
}

// Passes on what is said before the root element.
class PrologHandler : public Handler {
 public:
  explicit PrologHandler(Handler* handler) : handler_(*handler) {}
  void OnEvent(const Event& event) override {
    if (event.kind != EventKind::kStartTag && event.kind != EventKind::kEndTag) handler_.OnEvent(event);
  }
  void OnAttributeDeclaration(const AttributeDeclaration& declaration) override {
    handler_.OnAttributeDeclaration(declaration);
  }
  void OnElementDeclaration(std::string_view name, bool mixed) override {
    handler_.OnElementDeclaration(name, mixed);
  }

 private:
  Handler& handler_;
};

// Has expat read what ends with a document type.
bool ReadProlog(std::string_view prolog, Handler* handler) {
  PrologHandler told(handler);
  Error error;
  return ReadByExpat(std::string(prolog) + "<root/>", &told, &error);
}

// Goes through the file once. `kTells`: the handler hears of it. `kChecks`: nothing was checked before.
template <bool kTells, bool kChecks>
class Pass {
 public:
  Pass(std::string_view bytes, Handler* handler)
      : begin_(bytes.data()), end_(begin_ + bytes.size()), handler_(*handler) {}
  bool Run();
  // The same for what is behind a declaration or a document type.
  bool RunFrom(std::uint32_t begin);
  // Where the document type ends; 0 when there is none.
  std::uint32_t prolog_end() const { return prolog_end_; }

 private:
  // Each reads what begins at `at_`, and goes behind it. False when it is not plain.
  bool Declaration();
  bool DocumentType();
  bool RetellProlog();
  bool Markup();
  bool Text();
  bool StartTag();
  bool ReadAttribute();
  bool Value(Attribute* attribute);
  bool EndTag();
  bool Section();
  bool Comment();
  bool Instruction();
  bool UpTo(std::string_view mark, std::size_t from, std::string_view* content);

  bool StartsWith(std::string_view word) const {
    return static_cast<std::size_t>(end_ - at_) >= word.size() &&
           std::memcmp(at_, word.data(), word.size()) == 0;
  }
  // The same for names, which are short: eight bytes at a time where the file has so many.
  bool StartsWithName(std::string_view name) const {
    constexpr std::size_t kStep = sizeof(std::uint64_t);
    if (name.size() > kStep || static_cast<std::size_t>(end_ - at_) < kStep) return StartsWith(name);
    std::uint64_t there = 0;
    std::uint64_t wanted = 0;
    std::memcpy(&there, at_, kStep);
    std::memcpy(&wanted, name.data(), kStep);  // a name that was read before what is here
    if constexpr (std::endian::native == std::endian::big) return StartsWith(name);
    return ((there ^ wanted) << (8 * (kStep - name.size()))) == 0;
  }
  void SkipSpace() {
    const char* at = at_;
    while (at < end_ && Has(*at, kSpace)) ++at;
    at_ = at;
  }
  std::string_view Name() {
    const char* const first = at_;
    const char* at = first;
    if (at < end_ && Has(*at, kNameStart)) {
      do ++at;
      while (at < end_ && Has(*at, kNamePart));
    }
    at_ = at;
    return {first, static_cast<std::size_t>(at - first)};
  }
  std::uint32_t Place(const char* at) const { return static_cast<std::uint32_t>(at - begin_); }
  // The event of the bytes from `first` up to here.
  Event From(const char* first, EventKind kind) const {
    Event event;
    event.kind = kind;
    event.begin = Place(first);
    event.end = Place(at_);
    return event;
  }
  std::string_view WithoutReturns(std::string_view text);

  const char* begin_;
  const char* end_;
  const char* at_ = nullptr;
  Handler& handler_;
  std::vector<std::string_view> open_;  // names of the open elements
  bool had_root_ = false;
  std::uint32_t prolog_end_ = 0;
  std::vector<Attribute> attributes_;
  std::string buffer_;              // text that is not the file's own bytes
  std::deque<std::string> values_;  // of the tag being read, that are not
};

template <bool kTells, bool kChecks>
bool Pass<kTells, kChecks>::Run() {
  at_ = begin_;
  if (StartsWith("\xEF\xBB\xBF")) at_ += 3;
  if (StartsWith("<?xml") && end_ - at_ > 5 && Has(at_[5], kSpace) && !Declaration()) return false;
  return RunFrom(static_cast<std::uint32_t>(at_ - begin_));
}

template <bool kTells, bool kChecks>
bool Pass<kTells, kChecks>::RunFrom(std::uint32_t begin) {
  at_ = begin_ + begin;
  while (at_ < end_) {
    if (*at_ == '<') {
      if (!Markup()) return false;
    } else if (!open_.empty()) {
      if (!Text()) return false;
    } else {
      const char* const first = at_;
      SkipSpace();
      if (at_ == first) return false;
    }
  }
  return had_root_ && open_.empty();
}

// <?xml version="1.0" encoding="UTF-8" standalone="no"?>, with either kind of quotation marks.
template <bool kTells, bool kChecks>
bool Pass<kTells, kChecks>::Declaration() {
  constexpr std::string_view kVersions[] = {"1.0"};
  constexpr std::string_view kEncodings[] = {"UTF-8", "utf-8"};
  constexpr std::string_view kAnswers[] = {"yes", "no"};
  const auto part = [&](std::string_view name, std::span<const std::string_view> values) {
    if (!StartsWith(name)) return false;
    at_ += name.size();
    for (const std::string_view value : values) {
      for (const char quote : {'"', '\''}) {
        const std::string text = "=" + std::string(1, quote) + std::string(value) + quote;
        if (!StartsWith(text)) continue;
        at_ += text.size();
        return true;
      }
    }
    at_ = end_;
    return false;
  };
  at_ += 5;
  if (!part(" version", kVersions)) return false;
  part(" encoding", kEncodings);
  part(" standalone", kAnswers);
  SkipSpace();
  if (!StartsWith("?>")) return false;
  at_ += 2;
  return true;
}

// Without quotation marks there are no defaults, entities and names of files, so that expat is needed for the
// declarations alone and the first bracket ends them.
template <bool kTells, bool kChecks>
bool Pass<kTells, kChecks>::DocumentType() {
  if (had_root_ || prolog_end_ != 0) return false;
  const std::string_view rest(at_, static_cast<std::size_t>(end_ - at_));
  const std::size_t opened = rest.find_first_of("[>\"'<", 1);
  const std::size_t closed = rest.find(']');
  if (closed == std::string_view::npos || opened >= closed || rest[opened] != '[') return false;
  std::string_view declarations = rest.substr(opened + 1, closed - opened - 1);
  if (declarations.find_first_of("\"'%&[?") != std::string_view::npos) return false;
  for (std::size_t at = 0; (at = declarations.find('<', at)) != std::string_view::npos; ++at) {
    const std::string_view one = declarations.substr(at);
    if (!one.starts_with("<!ATTLIST") && !one.starts_with("<!ELEMENT")) return false;
  }
  at_ += closed + 1;
  SkipSpace();
  if (at_ == end_ || *at_ != '>') return false;
  ++at_;
  prolog_end_ = Place(at_);
  return !kTells || !kChecks || RetellProlog();
}

// What came before the declarations is told once more, among them. Where they are damaged, all of it is taken
// back.
template <bool kTells, bool kChecks>
bool Pass<kTells, kChecks>::RetellProlog() {
  return handler_.Restart() && ReadProlog({begin_, prolog_end_}, &handler_);
}

template <bool kTells, bool kChecks>
bool Pass<kTells, kChecks>::Markup() {
  if (end_ - at_ < 2) return false;
  if (at_[1] == '/') return EndTag();
  if (at_[1] == '?') return Instruction();
  if (at_[1] != '!') return StartTag();
  if (StartsWith("<!DOCTYPE")) return DocumentType();
  return StartsWith("<!--") ? Comment() : StartsWith("<![CDATA[") && !open_.empty() && Section();
}

template <bool kTells, bool kChecks>
bool Pass<kTells, kChecks>::Text() {
  const char* const first = at_;
  const char* copied = nullptr;  // what is in the buffer ends here
  bool referenced = false;
  bool is_blank = true;
  const auto copy = [&] {
    if (copied == nullptr) buffer_.clear();
    const char* const from = copied == nullptr ? first : copied;
    if (kTells) buffer_.append(from, at_);
  };
  while ((at_ = TextMark(at_, end_, &is_blank)) != end_ && *at_ != '<') {
    is_blank = false;
    if (*at_ == ']') {
      if (StartsWith("]]>")) return false;
      ++at_;
    } else if (*at_ == '&') {
      copy();
      at_ = ReadReference(at_, end_, &buffer_);
      if (at_ == nullptr) return false;
      copied = at_;
      referenced = true;
    } else if (*at_ == '\r') {
      copy();
      at_ += StartsWith("\r\n") ? 2 : 1;
      buffer_.push_back('\n');
      copied = at_;
    } else {
      at_ = CharacterEnd(at_, end_);
      if (at_ == nullptr) return false;
    }
  }
  if constexpr (kTells) {
    if (copied == nullptr) {
      handler_.OnPlainText(Place(first), Place(at_), {first, static_cast<std::size_t>(at_ - first)},
                           is_blank);
      return true;
    }
    Event event = From(first, EventKind::kText);
    event.referenced = referenced;
    buffer_.append(copied, at_);
    event.text = buffer_;
    handler_.OnEvent(event);
  }
  return true;
}

template <bool kTells, bool kChecks>
bool Pass<kTells, kChecks>::StartTag() {
  const char* const first = at_++;
  if (open_.empty() && had_root_) return false;
  had_root_ = true;
  const std::string_view name = Name();
  if (name.empty()) return false;
  attributes_.clear();
  if (!values_.empty()) values_.clear();
  bool is_empty = false;
  for (;;) {
    const bool spaced = at_ < end_ && Has(*at_, kSpace);
    if (spaced) SkipSpace();
    if (end_ - at_ < 2) return false;
    is_empty = *at_ == '/';
    if (*at_ == '>' || is_empty) break;
    if (!spaced || !ReadAttribute()) return false;
  }
  if (is_empty && at_[1] != '>') return false;
  at_ += is_empty ? 2 : 1;
  if constexpr (kTells) {
    Event event = From(first, EventKind::kStartTag);
    event.name = name;
    event.attributes = attributes_;
    handler_.OnEvent(event);
    if (is_empty) handler_.OnEndTag(Place(at_), Place(at_), name);
  }
  if (!is_empty) open_.push_back(name);
  return true;
}

template <bool kTells, bool kChecks>
bool Pass<kTells, kChecks>::ReadAttribute() {
  Attribute attribute;
  attribute.name = Name();
  SkipSpace();
  if (attribute.name.empty() || at_ == end_ || *at_ != '=') return false;
  ++at_;
  SkipSpace();
  if (!Value(&attribute)) return false;
  if constexpr (kChecks) {
    if (attributes_.size() == kMostAttributes) return false;
    for (const Attribute& other : attributes_) {
      if (other.name == attribute.name) return false;
    }
  }
  attributes_.push_back(attribute);
  return true;
}

template <bool kTells, bool kChecks>
bool Pass<kTells, kChecks>::Value(Attribute* attribute) {
  if (at_ == end_ || (*at_ != '"' && *at_ != '\'')) return false;
  const char quote = *at_++;
  const char* const first = at_;
  std::string* text = nullptr;
  const char* copied = first;  // what is in the text ends here
  const auto copy = [&] {
    if (text == nullptr) text = &values_.emplace_back();
    text->append(copied, at_);
  };
  for (;;) {
    const char* at = at_;
    while (at < end_ && Has(*at, kInValue)) ++at;
    at_ = at;
    if (at_ == end_ || *at_ == '<') return false;
    if (*at_ == quote) break;
    const auto c = static_cast<unsigned char>(*at_);
    if (c == '&') {
      copy();
      at_ = ReadReference(at_, end_, text);
      copied = at_;
    } else if (Has(*at_, kSpace)) {
      copy();
      at_ += StartsWith("\r\n") ? 2 : 1;
      text->push_back(' ');
      copied = at_;
    } else if (c >= 0x80) {
      at_ = CharacterEnd(at_, end_);
    } else if (c == '"' || c == '\'') {
      ++at_;
    } else {
      return false;
    }
    if (at_ == nullptr) return false;
  }
  attribute->plain = text == nullptr;
  attribute->value = {first, static_cast<std::size_t>(at_ - first)};
  if (text != nullptr) {
    copy();
    attribute->value = *text;
  }
  ++at_;
  return !kChecks || prolog_end_ == 0 || HasSingleBlanks(attribute->value);
}

template <bool kTells, bool kChecks>
bool Pass<kTells, kChecks>::EndTag() {
  const char* const first = at_;
  at_ += 2;
  if (open_.empty() || !StartsWithName(open_.back())) return false;
  at_ += open_.back().size();
  SkipSpace();
  if (at_ == end_ || *at_ != '>') return false;
  ++at_;
  if constexpr (kTells) {
    handler_.OnEndTag(Place(first), Place(at_), open_.back());
  }
  open_.pop_back();
  return true;
}

// Goes behind the mark, and takes what is before it; what is before `from` is passed over.
template <bool kTells, bool kChecks>
bool Pass<kTells, kChecks>::UpTo(std::string_view mark, std::size_t from, std::string_view* content) {
  const std::string_view rest(at_, static_cast<std::size_t>(end_ - at_));
  const std::size_t found = rest.find(mark, from);
  if (found == std::string_view::npos) return false;
  *content = rest.substr(from, found - from);
  at_ += found + mark.size();
  return !kChecks || AreCharacters(*content);
}

template <bool kTells, bool kChecks>
std::string_view Pass<kTells, kChecks>::WithoutReturns(std::string_view text) {
  if (text.find('\r') == std::string_view::npos) return text;
  buffer_.clear();
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '\r') {
      buffer_.push_back(text[i]);
    } else if (i + 1 == text.size() || text[i + 1] != '\n') {
      buffer_.push_back('\n');
    }
  }
  return buffer_;
}

template <bool kTells, bool kChecks>
bool Pass<kTells, kChecks>::Section() {
  const char* const first = at_;
  std::string_view content;
  if (!UpTo("]]>", 9, &content)) return false;
  if constexpr (kTells) {
    Event event = From(first, EventKind::kCData);
    event.text = WithoutReturns(content);
    event.plain = event.text.data() == content.data();
    handler_.OnEvent(event);
  }
  return true;
}

template <bool kTells, bool kChecks>
bool Pass<kTells, kChecks>::Comment() {
  const char* const first = at_;
  std::string_view content;
  if (!UpTo("--", 4, &content) || at_ == end_ || *at_++ != '>') return false;
  if constexpr (kTells) {
    Event event = From(first, EventKind::kComment);
    event.text = WithoutReturns(content);
    handler_.OnEvent(event);
  }
  return true;
}

template <bool kTells, bool kChecks>
bool Pass<kTells, kChecks>::Instruction() {
  const char* const first = at_;
  at_ += 2;
  const std::string_view target = Name();
  const bool is_reserved = target.size() == 3 && (target[0] | 0x20) == 'x' && (target[1] | 0x20) == 'm' &&
                           (target[2] | 0x20) == 'l';
  if (target.empty() || is_reserved) return false;
  const bool spaced = at_ < end_ && Has(*at_, kSpace);
  SkipSpace();
  std::string_view content;
  if (!UpTo("?>", 0, &content) || (!spaced && !content.empty())) return false;
  if constexpr (kTells) {
    Event event = From(first, EventKind::kInstruction);
    event.name = target;
    event.text = WithoutReturns(content);
    handler_.OnEvent(event);
  }
  return true;
}

}  // namespace

bool ReadPlain(std::string_view bytes, Handler* handler) {
  if (bytes.size() >= std::numeric_limits<std::uint32_t>::max()) return false;
  if (DetectEncoding(bytes) != Encoding::kUtf8) return false;
  if (handler->Restart()) {
    if (Pass<true, true>(bytes, handler).Run()) return true;
    handler->Restart();
    return false;
  }
  Pass<false, true> check(bytes, handler);
  if (!check.Run()) return false;
  const std::uint32_t prolog_end = check.prolog_end();
  if (prolog_end == 0) return Pass<true, false>(bytes, handler).Run();
  const std::string_view prolog = bytes.substr(0, prolog_end);
  Handler nobody;
  if (!ReadProlog(prolog, &nobody)) return false;
  return ReadProlog(prolog, handler) && Pass<true, false>(bytes, handler).RunFrom(prolog_end);
}

}  // namespace qelm::embedded::xml
