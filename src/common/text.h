// Small operations on text that several rooms need: trimming, splitting, letter case, replacing.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace qelm::common {

// Without white space (blank, tab, line ends, form feed, vertical tab, no-break space) at both ends.
std::string_view Trim(std::string_view text);

// Appends the pieces of the text between blanks to `pieces`. There are no empty ones. The views are into
// `text`.
void SplitAtSpaces(std::string_view text, std::vector<std::string_view>* pieces);

// "what (why)"; only what where there is no reason.
std::string WithReason(std::string_view what, std::string_view why);

// The lines of a text, one after the other, without their ends (LF, CR LF or CR). The views are into the
// text.
class LineCutter {
 public:
  explicit LineCutter(std::string_view text)
      : rest_(text), has_returns_(text.find('\r') != std::string_view::npos) {}

  // What was not taken yet.
  std::string_view Rest() const { return rest_; }
  // Where something is left.
  std::string_view Take();

 private:
  std::string_view rest_;
  bool has_returns_;
};

// The lines of a text without their ends. A text that ends with a line end has no empty
// line behind it. The views are into `text`.
std::vector<std::string_view> SplitLines(std::string_view text);

// The text with letter case folded, character by character: one character stays one, so that positions in the
// folded text are positions in the text.
std::string FoldCase(std::string_view text);

// In lower case, ASCII letters only. For keys and switches that are ASCII by their format.
std::string AsciiLower(std::string_view text);

// Whether `part` occurs in the text, letter case ignored.
bool ContainsIgnoreCase(std::string_view text, std::string_view part);

// Replaces every occurrence of `what`, from left to right; an empty `what` replaces nothing.
std::string ReplaceAll(std::string_view text, std::string_view what, std::string_view with);

// How a switch is written in settings documents and in settings files: by the first letter, lower-cased. 't',
// 'y' and '1' are true; 'f', 'n' and '0' are false; kUnclear is everything else, the empty text included.
enum class SwitchWord { kFalse, kTrue, kUnclear };
SwitchWord ReadSwitchWord(std::string_view text);

}  // namespace qelm::common
