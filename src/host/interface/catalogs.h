// The named things of a document: colors, conditions, and the tables and text insets by which they are
// applied.
#pragma once

#include "host/interface/types.h"

namespace qelm::host {

class Catalogs {
 public:
  virtual ~Catalogs() = default;

  // A color by its name, compared exactly; 0 when the document does not define it. Names hold as long as the
  // document is open.
  virtual Id FindColor(Id document, std::string_view name) = 0;
  virtual Id FirstColor(Id document) = 0;
  virtual Id NextColor(Id document, Id color) = 0;
  virtual std::string_view ColorName(Id document, Id color) = 0;
  // Defines a color by its parts, each 0 to 100 percent. Returns the existing one of that name as it is.
  virtual Id CreateColor(Id document, std::string_view name, double cyan, double magenta, double yellow,
                         double black) = 0;

  // Condition tags. A new one is shown, and has no style and no color.
  virtual Id FindCondition(Id document, std::string_view name) = 0;
  virtual Id FirstCondition(Id document) = 0;
  virtual Id NextCondition(Id document, Id condition) = 0;
  virtual std::string_view ConditionName(Id document, Id condition) = 0;
  virtual Id CreateCondition(Id document, std::string_view name) = 0;
  virtual bool ConditionShown(Id document, Id condition) = 0;
  virtual bool SetConditionShown(Id document, Id condition, bool shown) = 0;
};

class Tables {
 public:
  virtual ~Tables() = default;

  // Tables in the host's order, and the rows of one: headings, body, footings. 0 at the end.
  virtual Id FirstTable(Id document) = 0;
  virtual Id NextTable(Id document, Id table) = 0;
  virtual Id FirstRow(Id document, Id table) = 0;
  virtual Id NextRow(Id document, Id row) = 0;
  // The part in which the row is: kTableHeading, kTableBody or kTableFooting. kTable for an invalid id.
  virtual ElementKind PartOfRow(Id document, Id row) = 0;
  // The text of a table's title, and that of the cells of a row, from left to right. There is a line end
  // between paragraphs. Empty where there is none, and for an invalid id.
  virtual std::string TitleText(Id document, Id table) = 0;
  virtual std::vector<std::string> CellTexts(Id document, Id row) = 0;
  // The row behind a row element; 0 for other elements.
  virtual Id RowOfElement(Id document, Id element) = 0;

  // The conditions of a row itself; text in its cells carries its own. Setting replaces them all.
  virtual std::vector<Id> RowConditions(Id document, Id row) = 0;
  virtual bool SetRowConditions(Id document, Id row, const std::vector<Id>& conditions) = 0;

  // Text insets in the host's order. A locked one refuses changes to its text.
  virtual Id FirstInset(Id document) = 0;
  virtual Id NextInset(Id document, Id inset) = 0;
  virtual bool InsetLocked(Id document, Id inset) = 0;
  virtual bool SetInsetLocked(Id document, Id inset, bool locked) = 0;
};

}  // namespace qelm::host
