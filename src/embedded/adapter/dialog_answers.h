// Answers to dialogs and to the choosing of files, prepared in a file:
//
//   dialog PATTERN: ITEM = VALUE, ITEM = VALUE, press BUTTON
//   once dialog PATTERN: press BUTTON
//   file PATTERN -> PATH
//   once file PATTERN -> PATH
//
// The pattern of a dialog ends at the first colon with a blank behind it; it is the name of the dialog or
// fits its title or its words. A value with a comma in it stands in double quotes, a quotation mark in it is
// doubled. Lines are used in the order of the file: one with "once" a single time in the session, another
// once for each time that the dialog is shown, so that a dialog that stays open takes the next line that
// fits.
#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "embedded/adapter/answer_pattern.h"

namespace qelm::embedded::adapter {

struct DialogAnswer {
  std::vector<std::pair<std::string, std::string>> values;  // of items, by name or label
  std::string button;
  std::size_t line = 0;  // of the answers file
};

class DialogAnswers {
 public:
  // Whether a line of an answers file is one for dialogs or files.
  static bool IsMeant(std::string_view line);

  // Takes such a line. False with `error` when it is not well-formed.
  bool Add(std::string_view line, std::size_t number, std::string* error);

  // The next answer to a dialog; null when there is none left. `used` holds what the dialog was given since it
  // was shown, from here or from other answers.
  const DialogAnswer* Next(std::string_view name, std::string_view title, std::string_view words,
                           std::set<const DialogAnswer*>* used);

  // The path for a title.
  std::optional<std::string> NextFile(std::string_view title);

 private:
  struct ForDialog {
    std::string pattern_text;
    AnswerPattern pattern;
    bool once = false;
    bool spent = false;
    DialogAnswer answer;
  };
  struct ForFile {
    AnswerPattern pattern;
    std::string path;
    bool once = false;
    bool spent = false;
  };

  std::deque<ForDialog> dialogs_;  // its elements stay where they are
  std::vector<ForFile> files_;
};

}  // namespace qelm::embedded::adapter
