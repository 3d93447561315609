// The record of what a session showed and was answered: one JSON object a line, written at once, so that the
// record of a run that is killed is complete up to there.
//
//   {"event":"question","text":"Restore the document?","answer":"yes","by":"file"}
#pragma once

#include <fstream>
#include <functional>
#include <nlohmann/json.hpp>
#include <ostream>
#include <string>
#include <utility>

namespace qelm::embedded::adapter {

class EventLog {
 public:
  // Appends to the file. False, with the log as it was, when it cannot be opened.
  bool OpenFile(const std::string& path);
  // Writes to a stream that outlives the log.
  void UseStream(std::ostream& stream) { stream_ = &stream; }

  // Hands every event on as well, whether a log was asked for or not.
  void SetListener(std::function<void(const nlohmann::ordered_json& event)> listener) {
    listener_ = std::move(listener);
  }

  // Whether anybody asked for events, for those who write many.
  bool Wanted() const { return stream_ != nullptr || listener_; }

  // Writes an event of this kind with the members of `fields`. Nothing happens where nobody asked for it.
  void Write(std::string_view kind, nlohmann::ordered_json fields);

 private:
  std::ofstream file_;
  std::ostream* stream_ = nullptr;
  std::function<void(const nlohmann::ordered_json&)> listener_;
};

}  // namespace qelm::embedded::adapter
