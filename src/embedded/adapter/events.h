// The record of what a session showed and was answered: one JSON object a line, written at once, so that the
// record of a run that is killed is complete up to there.
//
//   {"event":"question","text":"Restore the document?","answer":"yes","by":"file"}
#pragma once

#include <fstream>
#include <nlohmann/json.hpp>
#include <ostream>
#include <string>

namespace qelm::embedded::adapter {

class EventLog {
 public:
  // Appends to the file. False, with the log as it was, when it cannot be opened.
  bool OpenFile(const std::string& path);
  // Writes to a stream that outlives the log.
  void UseStream(std::ostream& stream) { stream_ = &stream; }

  // Writes an event of this kind with the members of `fields`. Nothing happens where no log was asked for.
  void Write(std::string_view kind, nlohmann::ordered_json fields);

 private:
  std::ofstream file_;
  std::ostream* stream_ = nullptr;
};

}  // namespace qelm::embedded::adapter
