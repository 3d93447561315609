// How a run ended, as the shell sees it, and the failure by which a command ends early.
#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>

namespace qelm::cli {

enum class ExitStatus : int {
  kDone = 0,
  kFound = 1,  // done, and something was found
  kUsage = 2,
  kFile = 3,       // a file cannot be read, is damaged or cannot be written
  kRefused = 4,    // an expression or a scheme was refused
  kOperation = 5,  // the operation ended with another result code than "done"
  kCancelled = 130,
};

// Ends a command. The message goes to standard error; `fields` become members of the JSON object.
class Failure : public std::runtime_error {
 public:
  Failure(ExitStatus status, const std::string& message,
          nlohmann::ordered_json fields = nlohmann::ordered_json::object())
      : std::runtime_error(message), status_(status), fields_(std::move(fields)) {}

  ExitStatus Status() const { return status_; }
  const nlohmann::ordered_json& Fields() const { return fields_; }

 private:
  ExitStatus status_;
  nlohmann::ordered_json fields_;
};

}  // namespace qelm::cli
