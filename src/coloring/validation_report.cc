#include "coloring/validation_report.h"

#include <array>

namespace qelm::coloring {
namespace {

// Format indices of the lines that are not a violation's.
enum Format : std::int32_t {
  kEmptyLine = 1,
  kClosing = 10,
  kHeading = 11,
  kDocumentName = 14,
  kText = 15,
};

// The heading and the element's line of each rule, by its number - 1.
struct RuleFormats {
  std::int32_t heading;
  std::int32_t element;
};
constexpr std::array<RuleFormats, kValidationRules> kRuleFormats = {{{2, 3}, {4, 5}, {6, 7}, {8, 9}}};

}  // namespace

void ValidationReport::Line(const filtering::ReportLine& line) {
  filtering::AddReportLine(messenger_, roles_, report_, line);
}

void ValidationReport::BeginDocument(host::Id document, bool by_command) {
  Line({.format = kHeading, .texts = {"QELM_MSG_VAL_REP_1"}});
  Line({.format = kDocumentName, .document = document, .link = true, .texts = {}});
  if (by_command) Line({.format = kText, .texts = {"QELM_MSG_VAL_REP_2", scheme_.name}});
}

void ValidationReport::Add(const Violation& violation) {
  const RuleFormats& formats = kRuleFormats[static_cast<std::size_t>(violation.rule) - 1];
  Line({.format = formats.heading, .texts = {}});
  Line({.format = formats.element,
        .document = violation.document,
        .element = violation.element,
        .link = true,
        .texts = {violation.attribute, violation.value}});
  Line({.format = kClosing,
        .document = violation.document,
        .element = violation.element,
        .link = true,
        .texts = {}});
}

void ValidationReport::EndDocument(host::Id, std::uint64_t violations, bool finished) {
  if (violations == 0 && finished) Line({.format = kText, .texts = {"QELM_MSG_VAL_REP_12"}});
  Line({.format = kEmptyLine, .texts = {}});
}

}  // namespace qelm::coloring
