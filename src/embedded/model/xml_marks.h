// The processing instructions in which an XML file keeps what XML has no words for, and what they say.
//
//   <?Fm Condstart NAME?> ... <?Fm Condend NAME?>   the condition NAME is applied to what is between. As the
//   first
//                                                   and last thing in a table row they are the row's own.
//   <?qelm text color="Red" underline="single"?> ... <?qelm end?>   character properties; they may nest
// and before the root element
//   <?qelm condition NAME hidden?>   the condition is not shown (`shown`: it exists, and is shown). With
//   `while-used`
//                                    behind it goes when nothing has the condition any more: so are those
//                                    that saving adds
//   <?qelm show-all yes?>            hidden conditions are shown all the same; without hidden ones that is so
//   anyway
//   <?qelm kind NAME table-row?>     elements of that name are of that kind
//   <?qelm color 0 100 100 0 NAME?>  a color in percent of cyan, magenta, yellow and black
//   <?qelm metadata PACKET?>         the XMP packet of the document (metadata.h)
//   <?qelm object STATEMENT?>        a MIF statement that comes back on the way to MIF; also in the text,
//   where
//                                    <?qelm object-end?> ends what it generated
//   <?qelm graphic FILE?>            in the text: an imported graphic
//   <?qelm paragraph?>               in the text: a new paragraph begins inside the element
//
// Names are written with the escapes of xml::ToData. Every instruction is one that other programs pass over.
#pragma once

#include <string>
#include <string_view>

#include "embedded/model/document.h"

namespace qelm::embedded::model {

enum class MarkKind : std::uint8_t {
  kNone,
  kConditionStart,
  kConditionEnd,
  kText,
  kTextEnd,
  kConditionState,
  kShowAll,
  kElementKind,
  kColor,
  kObject,
  kObjectEnd,
  kGraphic,
  kParagraph,
  kMetadata,
};

struct Mark {
  MarkKind kind = MarkKind::kNone;
  std::string name;  // of the condition, element or color; a statement; a file; the data of kText
  bool on = false;   // shown, show-all
  bool while_used = false;
  ElementKind element_kind = ElementKind::kContainer;
  double ink[4] = {};  // of a color
};

// What an instruction says; kNone for any other one, and for one of ours that is not in order.
Mark ReadMark(std::string_view target, std::string_view data);

// The instructions themselves.
std::string ConditionStartMark(std::string_view condition);
std::string ConditionEndMark(std::string_view condition);
std::string TextMark(const Document& document, const FontState& state);
inline constexpr std::string_view kTextEndMark = "<?qelm end?>";
inline constexpr std::string_view kShowAllMark = "<?qelm show-all yes?>";
inline constexpr std::string_view kObjectEndMark = "<?qelm object-end?>";
inline constexpr std::string_view kParagraphMark = "<?qelm paragraph?>";
std::string ConditionStateMark(std::string_view condition, bool shown, bool while_used);
std::string KindMark(std::string_view element, ElementKind kind);
std::string ColorMark(const Color& color);
std::string ObjectMark(std::string_view statement);
std::string GraphicMark(std::string_view file);
// A marker, and a variable, as the statements that they are in MIF.
std::string MarkerMark(std::string_view type, std::string_view text);
std::string VariableMark(std::string_view name);

// The state `under` with what a text mark says on top of it. Colors that it names are made where they are
// missing.
FontState ReadTextMark(Document* document, const FontState& under, std::string_view data);

// The colors that every FrameMaker document has.
void AddReservedColors(Document* document);
bool IsReservedColor(std::string_view name);
// The inks of one of them, cyan, magenta, yellow and black in percent; null for any other color.
const double* ReservedInks(std::string_view name);

// Whether a part has text of its own, in which conditions and character properties begin anew.
constexpr bool HoldsStory(ElementKind kind) {
  return kind == ElementKind::kTableTitle || kind == ElementKind::kTableCell ||
         kind == ElementKind::kFootnote;
}

// The client data of a MIF table's element that holds what the table had besides its parts in XML.
inline constexpr std::string_view kStrayElements = "qelm-xml:";

// What a mark item of an XML document does, kept in Item::ref. Of kConditional: the condition, whether it
// ends here, and whether it belongs to table rows and not to text. Of kFont: whether a text mark begins.
constexpr std::uint32_t kMarkEnds = 1U << 30U;
constexpr std::uint32_t kMarkOfRows = 1U << 31U;
constexpr std::uint32_t kMarkCondition = kMarkEnds - 1;
// Of kOther, where it is not kEscaped: an instruction.
constexpr std::uint32_t kInstructionItem = 1;

// The data of a MIF leaf statement `<Name data>`, without blanks around it.
std::string_view StatementData(std::string_view statement);

}  // namespace qelm::embedded::model
