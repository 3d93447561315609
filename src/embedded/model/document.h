// A document: the bytes that it was read from, and on top of them what the plug-in's logic needs: catalogs,
// flows, the element tree with attributes, and the text with its character properties and conditions.
//
// The bytes stay as they were read for as long as the document is open. An edit changes the model and marks
// what it changed; saving copies the bytes and replaces only the statements that the marks call for. Nothing
// here knows who edits, and nothing is looked up by searching: what is named by text is found through an
// index.
#pragma once

#include <cstdint>
#include <deque>
#include <list>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <unordered_map>
#include <vector>

#include "embedded/mif/strings.h"
#include "embedded/model/additions.h"
#include "embedded/model/grown_array.h"
#include "embedded/model/ids.h"
#include "embedded/model/items.h"
#include "embedded/model/shared_array.h"
#include "embedded/model/source_bytes.h"

namespace qelm::embedded::model {

// These two are trivial as items are: one is made as `Element{}`.
struct Attribute {
  std::uint32_t name;         // index into Document::names
  std::uint32_t first_value;  // index into Document::values
  std::uint32_t value_count;
};

struct Element {
  Id parent;
  Id first_child;
  Id last_child;
  Id previous;
  Id next;
  Id definition;             // 0: a text node
  std::uint32_t first_item;  // the element is items [first_item, end_item)
  std::uint32_t end_item;
  std::uint32_t first_attribute;
  std::uint16_t attribute_count;
  ElementKind kind;
  bool deleted : 1;
  bool attributes_changed : 1;
  bool is_virtual : 1;   // made by the reader: the root of a flow that has no single one
  std::uint32_t source;  // where its statement begins in the source
};
static_assert(std::is_trivial_v<Attribute> && std::is_trivial_v<Element>);

struct AttributeDefinition {
  std::uint32_t name = 0;
  std::uint8_t type = 0;  // as in host::AttributeType
  bool required = false;
  bool read_only = false;
  bool hidden = false;
  std::vector<std::string_view> choices;
  std::vector<std::string_view> defaults;
};

struct Definition {
  std::string_view name;
  ElementKind kind = ElementKind::kContainer;
  bool declared = false;  // in the catalog, not only used
  std::string_view content_rule;
  std::vector<AttributeDefinition> attributes;
};

struct Flow {
  std::string_view name;
  FlowKind kind = FlowKind::kBody;
  Id root = 0;
  std::uint32_t first_item = 0;
  std::uint32_t end_item = 0;
  std::uint32_t text_frame = 0;  // the first text frame it runs through
  std::int32_t page = 0;         // index of that frame's page in file order, for finding the main flow
  bool auto_connect = false;
  Span span;  // the whole statement
};

struct Condition {
  std::string_view name;
  bool shown = true;
  bool source_shown = true;
  bool created = false;   // not in the source
  bool declared = false;  // in the catalog
  Span state;             // the statement CState, or the empty range where it would go
};

struct Color {
  std::string_view name;
  double cyan = 0;
  double magenta = 0;
  double yellow = 0;
  double black = 0;
  bool created = false;
  bool declared = false;  // in the catalog, not only used
};

// What a format says of the six properties that coloring uses; the bits of `known` are TextPropertyBit.
enum TextPropertyBit : std::uint8_t {
  kColorBit = 1U << 0,
  kUnderliningBit = 1U << 1,
  kOverlineBit = 1U << 2,
  kStrikethroughBit = 1U << 3,
  kChangeBarBit = 1U << 4,
  kBackgroundBit = 1U << 5,
};
struct CharacterProperties {
  std::uint8_t known = 0;
  Underlining underlining = Underlining::kNone;
  bool overline = false;
  bool strikethrough = false;
  bool change_bar = false;
  Id color = 0;
  Id background = 0;

  // Takes over what `from` knows.
  void Take(const CharacterProperties& from);
};

// A character state: a character format and overrides on top of it. Index 0 is the paragraph's own font.
struct FontState {
  std::string_view tag;
  struct Override {
    std::string_view name;  // the statement's name
    std::string_view text;  // the whole statement
  };
  std::vector<Override> overrides;
  CharacterProperties properties;  // what the overrides say
};

// What edits know of the character states (character_edit.h).
struct FontEdits {
  // A change of a state in a paragraph of one format.
  struct Change {
    std::uint32_t font = 0;
    std::uint32_t paragraph_state = 0;
    Id color = 0;
    Id background = 0;
    std::uint8_t known = 0;
    Underlining underlining = Underlining::kNone;
    bool overline = false;
    bool strikethrough = false;
    bool change_bar = false;
    bool reset = false;  // overrides of what formats define go first
    friend bool operator==(const Change&, const Change&) = default;
  };
  struct ChangeHash {
    std::size_t operator()(const Change& change) const;
  };

  std::unordered_map<std::string, std::uint32_t> by_content;  // to the first state of that content
  std::vector<std::uint32_t> same;                            // by state: the first one that means the same
  std::unordered_map<Change, std::uint32_t, ChangeHash> changes;  // to the state that came of it
};

// A paragraph state: a catalog format, or the state before it with changes on top.
struct ParagraphState {
  std::string_view tag;
  std::uint32_t before = 0;  // the state that the changes stand on; 0 for one that stands on nothing
  Span tag_statement;        // PgfTag in the paragraph itself
  Span override_statement;   // Pgf
  CharacterProperties font;
};

struct Paragraph {
  std::uint32_t begin = 0;  // the whole statement
  std::uint32_t end = 0;
  std::uint32_t body = 0;           // where its first line begins
  std::uint32_t last_line_end = 0;  // the `>` of its last line
  std::uint32_t close = 0;          // its own `>`
  std::uint32_t state = 0;          // index into Document::paragraph_states
  bool sets_state = false;          // it has a PgfTag or Pgf of its own
  bool absolute = false;            // it names a catalog format, so that nothing before it matters
  bool ends_block = false;          // PgfEndCond
  bool hidden_mark = false;         // PgfCondFullPgf
};

// A part of the document with text of its own in it: a table, what it consists of, or a footnote.
struct Part {
  ElementKind kind = ElementKind::kTable;
  Id element = 0;
  std::uint32_t parent = 0;      // part; 0 for tables and footnotes
  std::uint32_t first_item = 0;  // kPartBegin; kPartEnd is at end_item - 1
  std::uint32_t end_item = 0;
  Span span;                        // the whole statement
  std::uint32_t number = 0;         // TblID or ID: what the anchor names
  std::uint32_t anchor = kNoIndex;  // the anchor's item, for tables and footnotes
  std::string_view tag;             // a table's format
  std::uint16_t conditions = 0;     // a row's own condition set
  std::uint16_t source_conditions = 0;
  Span condition_statement;            // a row's Conditional
  std::uint32_t rows_left = kNoIndex;  // of a heading, body or footing; counted when it is first asked for
  bool deleted = false;
};

// An anchored frame. `file` is the imported graphic, decoded; empty when there is none.
struct AnchoredFrame {
  std::uint32_t number = 0;
  Id element = 0;
  Span span;
  std::uint32_t anchor = kNoIndex;
  std::string_view file;
  ElementKind kind = ElementKind::kGraphic;
};

struct Inset {
  std::uint32_t first_item = 0;
  std::uint32_t end_item = 0;
  bool locked = true;
};

// A block of hidden text: its place in the visible flow, and where it lies in the hidden one.
struct HiddenBlock {
  std::uint32_t number = 0;
  std::uint32_t place = kNoIndex;       // item kHiddenPlace
  std::uint32_t first_item = kNoIndex;  // the block's items, its own marks included
  std::uint32_t end_item = kNoIndex;
  std::uint32_t first_stored = 0;  // the same items in Document::hidden_items
  std::uint32_t end_stored = 0;
};

struct TextFrame {
  std::uint32_t number = 0;
  std::int32_t page = -1;   // index into pages; -1: inside an anchored frame
  std::uint32_t frame = 0;  // the anchored frame that it is in
};

struct Page {
  FlowKind kind = FlowKind::kBody;
  std::string_view number;   // PageNum of a body page, else PageTag
  std::int32_t ordinal = 0;  // 1-based among the body pages
  Span span;                 // the whole statement
  bool imports = false;      // graphics are imported on it
};

// A statement that is replaced by another one where it stands: the file of a link (links.h), the number of a
// paragraph (numbering.h). It goes with the statement that it lies in.
struct Replacement {
  Span place;
  std::string text;
};

// A problem that did not keep the document from opening.
struct Warning {
  std::string text;  // with file's line where it is known
};

class SharedLinks;

class Document {
 public:
  Format format = Format::kMif;
  std::string path;
  SourceBytes source;
  double level = 0;  // MIF's language level; 0 for XML
  mif::Encoding encoding = mif::Encoding::kUtf8;
  bool crlf = false;  // the line end of the file's first line
  std::vector<Warning> warnings;

  SharedArray<Item> items;
  SharedArray<Element> elements{1};  // [0] is no element
  GrownArray<Attribute> attributes;
  GrownArray<std::string_view> values;
  std::vector<Definition> definitions{1};
  std::vector<Flow> flows{1};
  std::vector<Condition> conditions{1};
  std::vector<std::vector<Id>> condition_sets{{}};
  std::vector<Color> colors{1};
  std::vector<FontState> fonts{1};
  std::vector<ParagraphState> paragraph_states{1};
  GrownArray<Paragraph> paragraphs{1};  // in file order
  std::vector<Part> parts{1};
  std::vector<AnchoredFrame> frames{1};
  std::vector<Inset> insets{1};
  std::vector<HiddenBlock> blocks{1};
  std::vector<Item> hidden_items;  // the hidden flow as the file has it
  std::vector<TextFrame> text_frames{1};
  std::unordered_map<std::uint32_t, std::uint32_t> text_frame_index;  // by number
  std::unordered_multimap<std::uint32_t, Id> frame_flows;             // anchored frame to the flows in it
  std::vector<Page> pages;
  std::unordered_map<std::string_view, CharacterProperties> character_formats;
  std::unordered_map<std::string_view, CharacterProperties> paragraph_formats;  // their fonts
  std::unordered_map<std::string_view, std::string_view> variables;             // name to definition, decoded
  Id main_flow = 0;

  bool show_all = false;
  bool source_show_all = false;
  Span show_all_statement;  // the value of DShowAllConditions
  bool boundaries = false;  // of elements, are displayed
  bool source_boundaries = false;
  Span boundaries_statement;  // the value of DElementBordersOn
  Span condition_catalog;     // whole statements; empty when the file has none
  Span color_catalog;
  Span document_statement;
  std::uint32_t content_begin =
      0;  // the first statement behind the catalogs and the Document statement; 0: none
  std::uint32_t first_statement_end = 0;  // behind <MIFFile ...> and its line

  // States that edits changed, as they were in the source; empty while nothing was edited.
  std::vector<std::uint16_t> source_conditions;
  std::vector<std::uint32_t> source_fonts;
  FontEdits font_edits;
  bool modified = false;
  bool marked = false;                                // items or rows carry changes (edit.h)
  bool attributes_changed = false;                    // of an element
  std::map<std::uint32_t, Replacement> replacements;  // by where the statement around it begins

  Additions additions;
  std::int64_t next_unique = 0;  // the next number of a new object; 0: not looked for yet
  // The elements that have items in the order of their first items, when that is not the order of their ids;
  // else empty.
  std::vector<Id> order;

  std::vector<std::string_view> names;  // of attributes
  std::unordered_map<std::string_view, std::uint32_t> name_index;
  std::unordered_map<std::string_view, std::uint16_t> condition_set_index;  // by the bytes of the ids
  std::unordered_map<std::string_view, Id> definition_index;
  std::unordered_map<std::string_view, Id> condition_index;
  std::unordered_map<std::string_view, Id> color_index;

  // The document that this one is a copy of, and to whose bytes and texts it refers; null for one that was
  // read.
  std::shared_ptr<const Document> origin;
  // What is read of the origin's links once for all copies (shared_links.h).
  std::shared_ptr<SharedLinks> shared_links;

  // Text that is not in the source as it reads: decoded strings, names that edits brought. Never moves.
  std::string_view Keep(std::string text) { return arena_.emplace_back(std::move(text)); }
  // A copy of short text, beside the others, so that who goes over many does not go all over the source; long
  // text as it lies.
  std::string_view KeepBeside(std::string_view text);
  // The same for names that callers may hold for as long as the document is open, whatever is done to it.
  std::string_view KeepName(std::string_view name) { return lasting_.emplace_back(name); }
  // Gives this document, into which nothing was read yet, the definitions, conditions and colors of another
  // one with their ids, and the names that are kept there.
  void TakeNamesFrom(Document* other);

  std::uint32_t InternName(std::string_view name);
  Id InternDefinition(std::string_view name);
  Id InternCondition(std::string_view name);
  Id InternColor(std::string_view name);
  // The index of a condition set, which is made when it is new. The order of the tags is kept.
  std::uint16_t InternConditions(const std::vector<Id>& set);

  std::string_view At(Span span) const {
    return std::string_view(source).substr(span.begin, span.end - span.begin);
  }
  // The part that an element is: a table, a part of one or a footnote; else 0.
  std::uint32_t PartOf(const Element& element) const {
    return HasPart(element.kind) ? items[element.first_item].ref : 0;
  }

  std::string_view At(const Item& item) const {
    return std::string_view(source).substr(item.begin, item.end - item.begin);
  }

 private:
  // What a document keeps for itself; a copy of the document refers to that of its origin.
  template <typename Texts>
  struct Own : Texts {
    Own() = default;
    Own(const Own&) : Texts() {}
    Own(Own&&) noexcept = default;
    Own& operator=(const Own&) = delete;
    Own& operator=(Own&&) noexcept = default;
    ~Own() = default;
  };

  Own<std::deque<std::string>> arena_;
  Own<std::deque<std::string>> beside_;  // each has its room reserved, so that nothing in it moves
  Own<std::list<std::string>> lasting_;
};

// A copy that is edited and saved by itself and costs much less than reading the bytes once more. The origin
// must not change any more.
Document CopyOf(const std::shared_ptr<const Document>& origin);

}  // namespace qelm::embedded::model
