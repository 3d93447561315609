// Reads XML as events that know which bytes of the source they stand for.
//
// The parsing is expat's, but for files that need little of XML (plain_reader.h). On top of it come the
// places: each event has the bytes of its tag, text, comment or instruction, so that what is not changed can
// be copied as it stands. Names are as written, prefix and all; attribute values are normalized as XML says,
// with the defaults of the document type definition marked as such.
//
// Entities that the file declares are expanded: all that comes out of `&name;` has the place of the reference
// and says that it is out of one. External ones, and the external part of the document type, are never
// loaded: a reference to one is an event of its own, with a warning. An expansion that grows out of all
// measure is an error (expat's limit: a hundred times the input), and so are entities nested thousands deep.
//
//   class Counter : public xml::Handler { void OnEvent(const xml::Event& event) override { ... } };
//   xml::Error error;
//   if (!xml::Read(bytes, &counter, &error)) std::cerr << error.Describe();
//
// Nothing is copied that can be shown in place, and nothing recurses. Places are 32 bits wide.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "embedded/xml/encoding.h"

namespace qelm::embedded::xml {

enum class EventKind : std::uint8_t {
  kStartTag,  // of an empty element's tag too; then the end tag follows with an empty range behind it
  kEndTag,
  kText,
  kCData,  // a whole section, its marks included in the range
  kComment,
  kInstruction,
  kReference,  // to an entity that is not in the file
};

struct Attribute {
  std::string_view name;
  std::string_view value;
  bool specified = true;  // false: a default of the document type
  bool plain = false;     // the value is the source's own bytes, and holds as long as they do
};

// All views hold until the handler returns; a plain text's view is into the source and holds as long as that
// does.
struct Event {
  EventKind kind = EventKind::kText;
  std::uint32_t begin = 0;
  std::uint32_t end = 0;
  std::string_view name;    // of the element, the instruction's target, the entity
  std::string_view text;    // text as it reads; a comment's content; an instruction's data
  bool plain = false;       // the text is the source's own bytes
  bool referenced = false;  // some of the text is written as character references
  bool in_entity = false;   // comes out of an entity; the range is that of the reference
  std::span<const Attribute> attributes;
};

// One attribute as the document type declares it.
struct AttributeDeclaration {
  std::string_view element;
  std::string_view name;
  std::string_view type;  // CDATA, ID, NMTOKENS, "(a|b)", "NOTATION(a|b)" ...
  bool has_default = false;
  std::string_view default_value;
  bool required = false;  // with a default: the value is fixed
};

class Handler {
 public:
  virtual ~Handler() = default;
  virtual void OnEvent(const Event& /*event*/) {}
  // The two events that come most often, for handlers that need no more of them. The text is the source's own
  // bytes, without references; `is_blank`: nothing but blanks, tabs and line feeds.
  virtual void OnEndTag(std::uint32_t begin, std::uint32_t end, std::string_view name) {
    Event event;
    event.kind = EventKind::kEndTag;
    event.begin = begin;
    event.end = end;
    event.name = name;
    OnEvent(event);
  }
  virtual void OnPlainText(std::uint32_t begin, std::uint32_t end, std::string_view text, bool /*is_blank*/) {
    Event event;
    event.begin = begin;
    event.end = end;
    event.text = text;
    event.plain = true;
    OnEvent(event);
  }
  // All that came so far comes once more from the beginning, or something else in its place. A handler that
  // can forget it does, and says so; to the others nothing is told until it is certain.
  virtual bool Restart() { return false; }
  virtual void OnAttributeDeclaration(const AttributeDeclaration& /*declaration*/) {}
  // `mixed`: text is content of the element, white space too.
  virtual void OnElementDeclaration(std::string_view /*name*/, bool /*mixed*/) {}
  virtual void OnWarning(std::uint32_t /*offset*/, std::string /*text*/) {}
};

// Where and why reading stopped.
struct Error {
  std::string message;       // what is wrong, and what was expected where that is known
  std::uint64_t line = 0;    // from 1
  std::uint64_t column = 0;  // from 1
  std::uint64_t offset = 0;

  // "line 3, column 7, offset 45: mismatched tag; expected </b>, which began in line 2"
  std::string Describe() const;
};

// Reads a whole file. False with `error` when it is not well-formed, or too large for its places.
bool Read(std::string_view bytes, Handler* handler, Error* error);
// The same by expat, whatever the file needs.
bool ReadByExpat(std::string_view bytes, Handler* handler, Error* error);

}  // namespace qelm::embedded::xml
