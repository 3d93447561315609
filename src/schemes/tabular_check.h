// Scheme data that a user keeps in a table of an ordinary document: it is read, checked, and made the active
// scheme.
//
//   Coloring Scheme: Review/By audience         the table's title: kind, colon, category and name
//   Rule                    | Red | Underline | None | Match all
//   Attribute               | Audience | expert (a line each: more values, also in further cells)
//   XPath Expressions       | //P (a line each, also in further cells)
//
// The first cell of a row says what the row is; further cells are read by that. Heading and footing rows, and
// rows without any text, are passed over. In a coloring scheme "Rule" begins a rule, and the conditions below
// it are its own. The switches of a scheme have no place in the table and are off.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/interface/host.h"
#include "messages/messenger.h"
#include "schemes/scheme.h"
#include "xpath/engine.h"

namespace qelm::schemes {

// Everything that can be wrong, by the number of its message, QELM_MSG_STGS_CHECK_1 and so on.
enum class TabularFault : std::int32_t {
  kNoTable = 1,   // no table has a title with the name of a kind
  kNoSchemeName,  // the title has no name that a scheme can have
  kSeveralTables,
  kNoRows,
  kNoRowKind,       // the first cell is empty
  kUnknownRowKind,  // the first cell says something else
  kRowNotAllowed,   // rows of this kind have no meaning in schemes of this kind
  kBeforeFirstRule,
  kNoAttribute,
  kNoValues,
  kAttributeAgain,
  kValueAgain,
  kNoExpression,
  kExpressionRefused,
  kNoSuchColor,
  kNoConditions,  // of a rule
  kUnknownStyle,
  kUnknownOption,
  kMixed,  // attributes and expressions in one scheme
};

struct TabularProblem {
  TabularFault fault = TabularFault::kNoTable;
  std::int32_t row = 0;           // the row's number in the table, from 1; 0: the table as a whole
  host::Id row_id = host::kNone;  // the same as the host names it
  std::string message;            // the message's text, with row and texts filled in
};

struct TabularCheck {
  host::Id table = host::kNone;
  std::string title;
  Scheme scheme;        // what was read; its category is `default_category` where the title has none
  bool active = false;  // it is the active scheme of its kind now
  std::vector<TabularProblem> problems;
};

// What the check works with.
struct TabularContext {
  host::Host& host;
  messages::Messenger& messenger;
  xpath::Engine& engine;
  ActiveSchemes& active;
  std::string default_category;
  bool report = true;  // show the problems, or that there are none, as alerts
};

// Checks the table of the document whose title names a kind of scheme, the first one if there are several.
// The scheme becomes the active one of its kind, unless it cannot be used: when the title does not name it,
// or when the engine refuses one of its expressions.
TabularCheck CheckTabularScheme(TabularContext& context, host::Id document);

// The id of a fault's message.
std::string_view MessageOf(TabularFault fault);

}  // namespace qelm::schemes
