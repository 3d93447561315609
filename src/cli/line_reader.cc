#include "cli/line_reader.h"

#include <dlfcn.h>
#include <editline/readline.h>
#include <stdlib.h>
#include <string.h>

#include <algorithm>
#include <filesystem>
#include <istream>
#include <ostream>

namespace qelm::cli {
namespace {

// What is used of the library that edits lines. It is loaded when there is somebody who types: with what it
// brings along it takes a tenth of the time in which a small document is done.
struct Editor {
  decltype(&::readline) read_line = nullptr;
  decltype(&::add_history) add_history = nullptr;
  decltype(&::read_history) read_history = nullptr;
  decltype(&::write_history) write_history = nullptr;
  decltype(&::using_history) using_history = nullptr;
  decltype(&::stifle_history) stifle_history = nullptr;
  decltype(&::rl_completion_matches) matches = nullptr;
  decltype(&::rl_attempted_completion_function) complete = nullptr;
  decltype(&::rl_attempted_completion_over) completion_over = nullptr;
  decltype(&::rl_completion_append_character) append_character = nullptr;
  decltype(&::rl_basic_word_break_characters) word_breaks = nullptr;
  decltype(&::rl_readline_name) program = nullptr;
  decltype(&::rl_line_buffer) line = nullptr;
  decltype(&::rl_point) point = nullptr;
  std::string why;  // it cannot be used; empty: it can

  Editor();

 private:
  template <typename Symbol>
  void Find(void* library, const char* name, Symbol* symbol) {
    *symbol = library == nullptr ? nullptr : reinterpret_cast<Symbol>(::dlsym(library, name));
    if (*symbol != nullptr || !why.empty()) return;
    const char* const problem = ::dlerror();
    why = problem == nullptr ? std::string(name) + " is missing" : problem;
  }
};

Editor::Editor() {
  void* const library = ::dlopen("libedit.so.2", RTLD_NOW | RTLD_LOCAL);
  Find(library, "readline", &read_line);
  Find(library, "add_history", &add_history);
  Find(library, "read_history", &read_history);
  Find(library, "write_history", &write_history);
  Find(library, "using_history", &using_history);
  Find(library, "stifle_history", &stifle_history);
  Find(library, "rl_completion_matches", &matches);
  Find(library, "rl_attempted_completion_function", &complete);
  Find(library, "rl_attempted_completion_over", &completion_over);
  Find(library, "rl_completion_append_character", &append_character);
  Find(library, "rl_basic_word_break_characters", &word_breaks);
  Find(library, "rl_readline_name", &program);
  Find(library, "rl_line_buffer", &line);
  Find(library, "rl_point", &point);
}

const Editor& TheEditor() {
  static const Editor editor;
  return editor;
}

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
  const Editor& editor = TheEditor();
  const std::size_t begin = static_cast<std::size_t>(std::max(*editor.point, 0)) - std::string(text).size();
  const bool behind_at = begin > 0 && (*editor.line)[begin - 1] == '@';
  const std::vector<std::string>& words = behind_at ? Known().attributes : Known().names;
  while (at < words.size()) {
    const std::string& word = words[at++];
    if (word.starts_with(text)) return ::strdup(word.c_str());
  }
  return nullptr;
}

char** Complete(const char* text, int, int) {
  const Editor& editor = TheEditor();
  *editor.completion_over = 1;  // no file names
  *editor.append_character = '\0';
  return editor.matches(text, NextMatch);
}

class TerminalReader : public LineReader {
 public:
  TerminalReader(std::string prompt, std::string history_file, Completions completions)
      : prompt_(std::move(prompt)), history_file_(std::move(history_file)) {
    Known() = std::move(completions);
    *editor_.program = "qelm";
    *editor_.word_breaks = kWordBreaks;
    *editor_.complete = Complete;
    editor_.using_history();
    editor_.stifle_history(kMostLines);
    if (!history_file_.empty()) editor_.read_history(history_file_.c_str());
  }
  ~TerminalReader() override {
    if (history_file_.empty()) return;
    std::error_code ignored;
    std::filesystem::create_directories(std::filesystem::path(history_file_).parent_path(), ignored);
    editor_.write_history(history_file_.c_str());
  }

  bool Read(std::string* line) override {
    char* const text = editor_.read_line(prompt_.c_str());
    if (text == nullptr) return false;
    *line = text;
    ::free(text);
    if (!line->empty() && *line != last_) editor_.add_history(line->c_str());
    last_ = *line;
    return true;
  }
  bool Interactive() const override { return true; }

 private:
  const Editor& editor_ = TheEditor();
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
  if (const std::string& why = TheEditor().why; !why.empty()) {
    environment.err << "lines cannot be edited here, and are taken as they come: " << why << '\n';
    return std::make_unique<StreamReader>(environment.in);
  }
  return std::make_unique<TerminalReader>(std::move(prompt), std::move(history_file), std::move(completions));
}

}  // namespace qelm::cli
