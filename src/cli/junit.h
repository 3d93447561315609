// JUnit's XML, the form in which build servers take the outcome of tests.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace qelm::cli {

struct JunitCase {
  enum class Outcome { kPassed, kFailed, kError };
  std::string name;
  std::string class_name;
  Outcome outcome = Outcome::kPassed;
  std::string type;     // of a failure or error
  std::string message;  // in a line
  std::string details;  // what stands inside the element
};

struct JunitSuite {
  std::string name;
  std::vector<JunitCase> cases;
};

// Writes the suites as one document, with their counts.
void WriteJunit(const std::string& name, const std::vector<JunitSuite>& suites, std::ostream& out);

}  // namespace qelm::cli
