// The state of one coloring or uncoloring: what was asked for, and what came of it. It is set from the
// settings before the run; one run is under way at a time.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "common/result_codes.h"
#include "host/interface/types.h"

namespace qelm::coloring {

// What the entry is asked to do. The numbers are those by which commands and calls name it.
enum class Command : std::uint8_t {
  kColorSelection = 10,
  kColorDocument = 14,
  kColorBook = 15,
  kUncolorDocument = 16,
  kUncolorBook = 17,
};

constexpr bool IsForBook(Command command) {
  return command == Command::kColorBook || command == Command::kUncolorBook;
}
constexpr bool IsUncoloring(Command command) {
  return command == Command::kUncolorDocument || command == Command::kUncolorBook;
}

// How a run ended, for callers that turn it into words or an exit status. From kSchemeRefused on it failed,
// and its result code is 0.
enum class Ending : std::uint8_t {
  kNone,  // not run, or still under way
  kCompleted,
  kByUser,         // cancelled by the Esc key
  kColorsMissing,  // the document lacks colors of the scheme, and the user did not want to go on
  kBookDeclined,   // the book did not pass its check, and the user did not want to go on
  kMissingDocument,
  kMissingElement,
  kMissingScheme,
  kMissingFlow,
  kSchemeRefused,  // an expression is not valid
  kNoBlack,        // text cannot be set back to black: the document has no such color
  kNotUncolored,   // the host could not give the text its formatting again
};

struct ColoredComponent {
  std::string path;
  host::Id document = host::kNone;  // 0: it could not be opened, and was passed over, and
  std::string why;                  // this is why, in the host's words
  std::int32_t result = 0;
  Ending ending = Ending::kNone;  // its own, whatever became of the others
};

struct ColoringRun {
  // What was asked for.
  bool report = true;  // whether the user is told and asked
  bool missing_color_prompt = true;
  bool suppress_opening_alerts = false;
  bool import_definitions_to_uncolor = true;  // else by the three properties below
  bool uncolor_to_black = true;
  bool remove_underlining = true;
  bool remove_highlighting = true;
  bool remove_change_bars_on_uncoloring = false;
  bool remove_change_bars_before_coloring = false;
  bool only_element =
      false;  // an element that is colored alone: nothing that it holds finds a rule of its own

  // What came of it.
  bool cancelled = false;     // by the user
  bool node_set_cut = false;  // an expression selected more nodes than the engine may collect
  Ending ending = Ending::kNone;
  std::uint64_t visited = 0;                 // elements and text nodes
  std::uint64_t colored = 0;                 // of them, those to which a rule was applied
  std::uint64_t refused = 0;                 // found a rule, but the host did not let their text be changed
  std::vector<std::uint64_t> rule_elements;  // by rule: how many it was applied to
  std::vector<std::string> missing_colors;   // that the scheme names, each once
  std::vector<ColoredComponent> components;  // of a book, in its order
};

}  // namespace qelm::coloring
