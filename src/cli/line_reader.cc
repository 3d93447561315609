#include "cli/line_reader.h"

#include <editline/readline.h>
#include <stdlib.h>

#include <algorithm>
#include <filesystem>
#include <istream>

namespace qelm::cli {
namespace {

// The library calls back without a pointer of ours, so there is one place for what it completes.
Completions& Known() {
  static Completions known;
  return known;
}

// What separates names in an expression.
const char kWordBreaks[] = " /[](),=<>!@*:\"'|";
constexpr int kMostLines = 1000;

// The library's contract: called with `state` 0, 1, 2...; a match allocated by malloc, null at the end.
char* NextMatch(const char* text, int state) {
  static std::size_t at = 0;
  if (state == 0) at = 0;
  const std::size_t begin = static_cast<std::size_t>(std::max(rl_point, 0)) - std::string(text).size();
  const bool behind_at = begin > 0 && rl_line_buffer[begin - 1] == '@';
  const std::vector<std::string>& words = behind_at ? Known().attributes : Known().names;
  while (at < words.size()) {
    const std::string& word = words[at++];
    if (word.starts_with(text)) return ::strdup(word.c_str());
  }
  return nullptr;
}

char** Complete(const char* text, int, int) {
  rl_attempted_completion_over = 1;  // no file names
  rl_completion_append_character = '\0';
  return rl_completion_matches(text, NextMatch);
}

class TerminalReader : public LineReader {
 public:
  TerminalReader(std::string prompt, std::string history_file, Completions completions)
      : prompt_(std::move(prompt)), history_file_(std::move(history_file)) {
    Known() = std::move(completions);
    rl_readline_name = "qelm";
    rl_basic_word_break_characters = kWordBreaks;
    rl_attempted_completion_function = Complete;
    using_history();
    stifle_history(kMostLines);
    if (!history_file_.empty()) read_history(history_file_.c_str());
  }
  ~TerminalReader() override {
    if (history_file_.empty()) return;
    std::error_code ignored;
    std::filesystem::create_directories(std::filesystem::path(history_file_).parent_path(), ignored);
    write_history(history_file_.c_str());
  }

  bool Read(std::string* line) override {
    char* const text = ::readline(prompt_.c_str());
    if (text == nullptr) return false;
    *line = text;
    ::free(text);
    if (!line->empty() && *line != last_) add_history(line->c_str());
    last_ = *line;
    return true;
  }
  bool Interactive() const override { return true; }

 private:
  std::string prompt_;
  std::string history_file_;
  std::string last_;
};

class StreamReader : public LineReader {
 public:
  explicit StreamReader(std::istream& in) : in_(in) {}
  bool Read(std::string* line) override {
    if (!std::getline(in_, *line)) return false;
    if (line->ends_with('\r')) line->pop_back();
    return true;
  }
  bool Interactive() const override { return false; }

 private:
  std::istream& in_;
};

}  // namespace

std::unique_ptr<LineReader> MakeLineReader(const Environment& environment, std::string prompt,
                                           std::string history_file, Completions completions) {
  if (!environment.interactive) return std::make_unique<StreamReader>(environment.in);
  return std::make_unique<TerminalReader>(std::move(prompt), std::move(history_file), std::move(completions));
}

}  // namespace qelm::cli
