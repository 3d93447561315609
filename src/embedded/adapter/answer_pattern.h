// What an answer in an answers file is for: text that a question or title contains, a regular expression
// between slashes ("/pattern/", "/pattern/i"), or "*" for anything. Line ends in the text count as blanks as
// well, so that a text that was broken into lines is still found.
#pragma once

#include <optional>
#include <regex>
#include <string>
#include <string_view>

namespace qelm::embedded::adapter {

// Without blanks, tabs and carriage returns at both ends.
std::string_view Trimmed(std::string_view text);

class AnswerPattern {
 public:
  // Throws std::regex_error when the text is written as a regular expression and is none.
  explicit AnswerPattern(std::string_view text);

  bool Fits(std::string_view text) const;

 private:
  bool Contained(std::string_view text) const;

  std::string text_;                 // empty: fits anything
  std::optional<std::regex> regex_;  // in place of the text
};

}  // namespace qelm::embedded::adapter
