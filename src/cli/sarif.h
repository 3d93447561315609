// SARIF 2.1.0, the form in which build servers and editors take what a checker has found.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

namespace qelm::cli {

// A kind of finding.
struct SarifRule {
  std::string_view id;    // stable, for those who suppress or count findings of a kind
  std::string_view name;  // in Pascal case
  std::string summary;    // a sentence
  std::string_view level = "error";
};

struct SarifResult {
  std::size_t rule = 0;  // index into the rules
  std::string message;
  std::string file;        // a path; empty: no physical location
  std::uint32_t line = 0;  // from 1; 0: not known
  std::string logical_name;
  std::string logical_path;  // empty: no logical location
  std::string_view logical_kind;
};

struct SarifLog {
  std::string version;  // of this program
  std::vector<SarifRule> rules;
  std::vector<SarifResult> results;
  // What kept the run from checking everything, each with the file that it is about.
  struct Notification {
    std::string message;
    std::string file;
  };
  std::vector<Notification> notifications;
};

// Writes the log, indented, with a line end behind it.
void WriteSarif(const SarifLog& log, std::ostream& out);

}  // namespace qelm::cli
