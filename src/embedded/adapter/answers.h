// Answers prepared in a file. One answer a line; the first line that fits a question answers it:
//
//   # comments and empty lines are passed over
//   would be filtered -> no          the question contains this text
//   /save .* first\?/i -> yes        a regular expression (ECMAScript); "i" ignores case
//   * -> yes                         any question
//   dialog ..., file ...             dialogs and files, see dialog_answers.h
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "embedded/adapter/answer_pattern.h"
#include "embedded/adapter/dialog_answers.h"

namespace qelm::embedded::adapter {

class Answers {
 public:
  // Reads the text of an answers file. On failure nothing is returned and `error` says which line is wrong.
  static std::optional<Answers> Parse(std::string_view text, std::string* error);

  // Adds one line, the line of that number. False with `error` saying what is wrong with it.
  bool Add(std::string_view line, std::size_t number, std::string* error);

  // True for yes; nothing when no line fits.
  std::optional<bool> Find(std::string_view question) const;

  DialogAnswers& dialogs() { return dialogs_; }

 private:
  struct Line {
    AnswerPattern pattern;
    bool yes = false;
  };
  std::vector<Line> lines_;
  DialogAnswers dialogs_;
};

}  // namespace qelm::embedded::adapter
