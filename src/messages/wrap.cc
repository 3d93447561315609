#include "messages/wrap.h"

#include <algorithm>

#include "common/text.h"
#include "common/utf8.h"

namespace qelm::messages {
namespace {

// Takes the first line of at most `width` characters from `rest`, which holds more than that.
std::string_view TakeLine(std::string_view* rest, std::size_t width) {
  const std::string_view fitting = common::FirstCharacters(*rest, width);
  // A blank right behind the line breaks it as well as one inside it. Blanks at the start of the line are
  // its indentation: breaking there would leave an empty line.
  const std::size_t blank = rest->substr(0, fitting.size() + 1).rfind(' ');
  const std::size_t word = rest->find_first_not_of(' ');
  std::string_view line = fitting;
  if (blank != std::string_view::npos && blank > word) line = rest->substr(0, blank);
  rest->remove_prefix(line.size());
  rest->remove_prefix(std::min(rest->find_first_not_of(' '), rest->size()));
  return line.substr(0, line.find_last_not_of(' ') + 1);
}

}  // namespace

std::vector<std::string> WrapLines(std::string_view text, std::size_t width) {
  std::vector<std::string> lines;
  for (std::string_view rest : common::SplitLines(text)) {
    const bool empty = rest.empty();
    while (common::OffsetOfCharacter(rest, width) < rest.size()) lines.emplace_back(TakeLine(&rest, width));
    if (empty || !rest.empty()) lines.emplace_back(rest);
  }
  return lines;
}

}  // namespace qelm::messages
