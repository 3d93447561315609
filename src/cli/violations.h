// What a validation found, with the places at which a person or a program finds it again: file and line of
// the element's statement, number and path of the element.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "cli/sarif.h"
#include "cli/session.h"
#include "coloring/validation_sink.h"
#include "embedded/model/source_lines.h"
#include "messages/element_places.h"

namespace qelm::cli {

struct FoundViolation {
  std::int32_t rule = 0;
  std::size_t file = 0;  // index into Violations::Files
  std::uint32_t line = 0;
  std::uint32_t element = 0;  // its number in its flow
  std::string tag;
  std::string path;
  std::string attribute;
  std::string value;
  bool has_value = false;  // rules 1 and 2 are about one
};

// Collects the violations in report order. What places need of a document is worked out when its first
// violation comes.
class Violations : public coloring::ViolationSink {
 public:
  explicit Violations(Session& session) : session_(session) {}

  void BeginDocument(host::Id document, bool by_command) override;
  void Add(const coloring::Violation& violation) override;
  void EndDocument(host::Id document, std::uint64_t violations, bool finished) override;

  const std::vector<FoundViolation>& All() const { return all_; }
  // The documents that were checked, as the user knows them.
  const std::vector<std::string>& Files() const { return files_; }

 private:
  struct Places {
    Places(host::Host& host, host::Id document, const embedded::model::Document& model)
        : elements(host, document), lines(model) {}
    messages::ElementPlaces elements;
    embedded::model::SourceLines lines;
  };

  Session& session_;
  std::vector<FoundViolation> all_;
  std::vector<std::string> files_;
  std::unique_ptr<Places> places_;  // of the document under way
};

// The text with its control characters written as escapes, so that it stays on one line.
std::string OneLine(std::string_view text);

// `Audience="expret": this value is not allowed (rule 1)`.
std::string Describe(const FoundViolation& violation);

// The four rules, in the order of their numbers.
const std::vector<SarifRule>& ValidationSarifRules();

}  // namespace qelm::cli
