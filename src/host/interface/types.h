// The plain types that the host and the plug-in exchange: ids, text positions, text properties, element
// kinds. Nothing here owns host objects; an id is only a name, and may outlive what it names.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace qelm::host {

// Names a host object. Documents, books, menus and commands are named by an id alone, objects of a document
// by the document's id and their own. 0 names nothing and is what a look-up that finds nothing returns.
using Id = std::uint32_t;
inline constexpr Id kNone = 0;

// One inch and one centimetre in the host's unit of length, 1/65536 point.
inline constexpr std::int32_t kInch = 4718592;
inline constexpr std::int32_t kCentimetre = 1857713;

enum class ElementKind : std::uint8_t {
  kContainer,
  kTable,
  kTableTitle,
  kTableHeading,
  kTableBody,
  kTableFooting,
  kTableRow,
  kTableCell,
  kFootnote,
  kCrossReference,
  kGraphic,
  kEquation,
  kMarker,
  kSystemVariable,
  kRubi,
  kText,  // a text node: it has no element definition
};

// The kind of page on which a flow begins.
enum class FlowKind : std::uint8_t { kBody, kMaster, kReference, kHidden, kFrame };

enum class Underlining : std::uint8_t { kNoLine, kSingle, kDouble, kNumeric };

// A position in the text of one document. `object` is the flow, cell or footnote that holds the text,
// `offset` a position in it; both are the host's own and only ordered within one object. Edits make positions
// stale.
struct TextLocation {
  Id object = kNone;
  std::uint32_t offset = 0;
  friend bool operator==(const TextLocation&, const TextLocation&) = default;
};

// The text from `begin` up to, not including, `end`. Empty (object 0) when there is none.
struct TextRange {
  TextLocation begin;
  TextLocation end;
  bool Empty() const { return begin.object == kNone; }
};

// Which members of TextProperties are meant. Values combine.
enum TextPropertyMask : std::uint32_t {
  kColorProperty = 1U << 0,
  kUnderliningProperty = 1U << 1,
  kOverlineProperty = 1U << 2,
  kStrikethroughProperty = 1U << 3,
  kChangeBarProperty = 1U << 4,
  kBackgroundProperty = 1U << 5,
  kConditionsProperty = 1U << 6,
  kAllTextProperties = 0x7F,
};

// Character properties of a range of text. Reading gives the values at the range's start; writing changes the
// members that `mask` names, for the whole range, and leaves the others as they are.
struct TextProperties {
  std::uint32_t mask = 0;
  Id color = kNone;
  Underlining underlining = Underlining::kNoLine;
  bool overline = false;
  bool strikethrough = false;
  bool change_bar = false;
  Id background = kNone;       // 0: no background color
  std::vector<Id> conditions;  // the condition tags applied, in the host's order
};

enum class AttributeType : std::uint8_t {
  kString,
  kStrings,
  kChoice,
  kInteger,
  kIntegers,
  kReal,
  kReals,
  kUniqueId,
  kUniqueIdReference,
  kUniqueIdReferences,
};

// One attribute as an element carries it. The views belong to the document and hold until it is next edited.
struct AttributeView {
  std::string_view name;
  std::uint32_t first_value = 0;  // index into AttributeBuffer::values
  std::uint32_t value_count = 0;
};

// What ReadAttributes fills. Made once by the caller and used again for each element, so that a walk over a
// document does not allocate.
struct AttributeBuffer {
  std::vector<AttributeView> attributes;
  std::vector<std::string_view> values;

  void Clear() {
    attributes.clear();
    values.clear();
  }
};

// An attribute to be set, and its values in order; an attribute without a value is one that is unset.
struct AttributeValue {
  std::string name;
  std::vector<std::string> values;
};

// What an element definition says of one attribute. Views hold as long as the document is open and its
// definitions are not changed.
struct AttributeDefinition {
  std::string_view name;
  AttributeType type = AttributeType::kString;
  bool required = false;
  bool read_only = false;
  bool hidden = false;
  std::vector<std::string_view> choices;
  std::vector<std::string_view> defaults;
};

// The properties of an element that the host reads from the object behind it or from its place on a page.
enum class ElementProperty : std::uint8_t {
  kImportedFile,          // ImportObFile
  kParagraphTag,          // PgfTag
  kTableTag,              // TblTag
  kChangeBar,             // FChangeBar
  kCrossReferenceFormat,  // XRefName
  kCrossReferenceSource,  // XRefSrcText
  kCrossReferenceFile,    // XRefSrcFile
  kMarkerType,            // MTypeName
  kMarkerText,            // MText
  kPageNumber,            // PageNumInt
  kPageNumberText,        // PageNumStr
};

}  // namespace qelm::host
