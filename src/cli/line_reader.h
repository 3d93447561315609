// Reads lines from a person at a terminal, with editing, history and completion, or from a stream as they
// come.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "cli/environment.h"

namespace qelm::cli {

class LineReader {
 public:
  virtual ~LineReader() = default;
  // The next line without its end; false when there are no more.
  virtual bool Read(std::string* line) = 0;
  // Whether a person is asked.
  virtual bool Interactive() const = 0;
};

// The names that the Tab key completes: attributes behind "@", all others elsewhere.
struct Completions {
  std::vector<std::string> names;
  std::vector<std::string> attributes;
};

// A reader of `environment.in`. At a terminal `prompt` stands before each line, and lines of earlier sessions
// are in the history, which is kept in `history_file` (empty: not kept).
std::unique_ptr<LineReader> MakeLineReader(const Environment& environment, std::string prompt,
                                           std::string history_file, Completions completions);

}  // namespace qelm::cli
