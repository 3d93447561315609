// Answers to questions, prepared in a file. One answer a line, the first line that fits a question answers
// it:
//
//   # comments and empty lines are passed over
//   would be filtered -> no          the question contains this text
//   /save .* first\?/i -> yes        a regular expression (ECMAScript); "i" ignores case
//   * -> yes                         any question
#pragma once

#include <optional>
#include <regex>
#include <string>
#include <string_view>
#include <vector>

namespace qelm::embedded::adapter {

class Answers {
 public:
  // Reads the text of an answers file. On failure nothing is returned and `error` says which line is wrong.
  static std::optional<Answers> Parse(std::string_view text, std::string* error);

  // True for yes; nothing when no line fits.
  std::optional<bool> Find(std::string_view question) const;

 private:
  struct Line {
    std::string text;                 // contained in the question; empty: fits any
    std::optional<std::regex> regex;  // in place of the text
    bool yes = false;
  };
  std::vector<Line> lines_;
};

}  // namespace qelm::embedded::adapter
