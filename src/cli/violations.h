// What a validation found, with the places at which a person or a program finds it again: file and line of
// the element's statement, number and path of the element.
#pragma once

#include <deque>
#include <memory>
#include <memory_resource>
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
  std::size_t file = 0;       // index into Violations::Files
  std::uint32_t line = 0;     // 0: it is not known
  std::uint32_t element = 0;  // its number in its flow, where numbers are wanted
  std::string_view tag;       // the texts are the list's
  std::string_view path;
  std::string_view attribute;
  std::string_view value;
  bool has_value = false;  // rules 1 and 2 are about one
};

// Collects the violations in report order: there may be as many as there are elements, so their texts lie one
// behind the other in blocks. What places need of a document is worked out when its first violation comes.
class Violations : public coloring::ViolationSink {
 public:
  // `numbered`: whether the numbers of elements are wanted.
  Violations(Session& session, bool numbered) : session_(session), numbered_(numbered) {}

  void BeginDocument(host::Id document, bool by_command) override;
  void Add(const coloring::Violation& violation) override;
  void EndDocument(host::Id document, std::uint64_t violations, bool finished) override;

  const std::deque<FoundViolation>& All() const { return all_; }
  // The documents that were checked, as the user knows them.
  const std::vector<std::string>& Files() const { return files_; }

 private:
  struct Places {
    Places(host::Host& host, host::Id document, const embedded::model::Document& model)
        : elements(host, document), lines(model) {}
    messages::ElementPlaces elements;
    embedded::model::SourceLines lines;
  };

  std::string_view Keep(std::string_view text);

  Session& session_;
  bool numbered_;
  std::pmr::monotonic_buffer_resource texts_;
  std::deque<FoundViolation> all_;
  std::string path_;
  std::vector<std::string> files_;
  std::unique_ptr<Places> places_;  // of the document under way
};

// Appends the text with its control characters written as escapes, so that it stays on one line.
void AppendOneLine(std::string_view text, std::string* line);

// Appends `Audience="expret": this value is not allowed (rule 1)`.
void AppendDescription(const FoundViolation& violation, std::string* line);
std::string Describe(const FoundViolation& violation);

// The four rules, in the order of their numbers.
const std::vector<SarifRule>& ValidationSarifRules();

}  // namespace qelm::cli
