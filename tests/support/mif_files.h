// Small but complete MIF documents and books from a compact notation, in FrameMaker's own layout.
//
//   <Doc Audience="admin|user">             an element; several values between "|", none without "="
//     [Heading]<Title>Pump</Title>          a paragraph of the format Heading, else of Body; [+] goes on with
//     the
//                                           format before it without saying so
//     <P>one {Hidden}two{} three</P>        text with a condition
//     <P>{Red,Underline}four{}</P>          or with character properties
//     <P>see <XRef .format="Page" .source="12: P: four" .file="<c>b.fm">page 3</XRef></P>
//     <P>a note<Footnote>its text</Footnote> <Marker .type="Index" .text="pump"/></P>
//     <P><Variable .name="Product"/> <Graphic .file="<c>img<c>a.png"/></P>
//     <Table .format="Grid">
//       <TableTitle>Parts</TableTitle>
//       <TableHeading><Row><Cell>No</Cell></Row></TableHeading>
//       <TableBody>
//         <Row {Hidden}><Cell>1</Cell></Row>
//       </TableBody>
//     </Table>
//   </Doc>
//
// Each line with something on it is a paragraph; blanks before it do not count. A line that only begins
// elements goes with the next paragraph, one that only ends them with the one before. An element's tag says
// what it is: Table, TableTitle, TableHeading, TableBody, TableFooting, Row, Cell, Footnote, XRef, Marker,
// Variable, Graphic; every other is a container. With "!" before the tag there is the object and no element:
// <!Marker .type="Index"/>,
// <!Table>. Beyond that: <!Inset .file="...">...</!Inset> is a text inset, <!Page/> enters a new page,
// <!PrefixEnd/> and <!SuffixBegin/> end and begin text that the element's definition generates. A "\" before
// a character takes it as it is.
//
// Properties: Underline, DoubleUnderline, NumericUnderline, Overline, Strikethrough, ChangeBar, a color's
// name, Background=COLOR. Any other name is a condition.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace qelm::testing {

struct MifAttribute {
  std::string name;
  std::string type = "FAttrString";
  std::vector<std::string> choices;
  std::vector<std::string> defaults;
};

struct MifDefinition {
  std::string tag;
  std::vector<MifAttribute> attributes;
};

struct MifFlow {
  enum class Place { kBody, kMaster, kReference };
  std::string text;
  Place place = Place::kBody;
  std::string tag = "A";
};

struct MifFile {
  std::vector<MifFlow> flows;
  std::string level = "10.0";
  std::vector<std::string> hidden;  // conditions that are hidden; all others that occur are shown
  bool hidden_flow = false;         // text under hidden conditions lies in the hidden flow
  bool show_all = false;
  std::vector<MifDefinition> definitions;  // of those that have attributes
};

// Throws std::invalid_argument when the notation is not in order.
std::string Mif(const MifFile& file);
std::string Mif(std::string_view text);

// A book of components with device-independent paths, each an element of the book.
std::string MifBook(const std::vector<std::string>& components);

}  // namespace qelm::testing
