#include "cli/scheme_findings.h"

#include "cli/expression_error.h"
#include "cli/file_names.h"
#include "cli/scheme_choice.h"
#include "embedded/model/source_lines.h"

namespace qelm::cli {
namespace {

using schemes::SchemeFault;
using schemes::SchemeFinding;

// What is said of each fault: %1 and %2 stand for the finding's texts.
struct FaultText {
  SchemeFault fault;
  std::string_view id;
  std::string_view name;  // in Pascal case
  std::string_view text;
};
constexpr FaultText kFaults[] = {
    {SchemeFault::kCategoryName, "QELM-SCH-1", "CategoryName",
     "the category has no name that a scheme could be found by"},
    {SchemeFault::kSchemeName, "QELM-SCH-2", "SchemeName",
     "the scheme has no name that it could be found by"},
    {SchemeFault::kCategoryAgain, "QELM-SCH-3", "CategoryAgain",
     "there is another category \"%1\" before this one"},
    {SchemeFault::kSchemeAgain, "QELM-SCH-4", "SchemeAgain",
     "there is another scheme of this name before this one, which is never found"},
    {SchemeFault::kSchemeHidden, "QELM-SCH-5", "SchemeHidden",
     "a scheme of the same category and name is in the other family before this one, which is never found"},
    {SchemeFault::kSwitch, "QELM-SCH-6", "UnclearSwitch", "%1 is \"%2\", which counts as False"},
    {SchemeFault::kNothingInIt, "QELM-SCH-7", "EmptyScheme", "the scheme is empty"},
    {SchemeFault::kNoConditions, "QELM-SCH-8", "EmptyRule",
     "there are no conditions, so nothing is selected"},
    {SchemeFault::kAttributeName, "QELM-SCH-9", "NoAttributeName", "an attribute has no name"},
    {SchemeFault::kNoValues, "QELM-SCH-10", "NoValues", "no value is listed for the attribute %1"},
    {SchemeFault::kAttributeAgain, "QELM-SCH-11", "AttributeAgain", "the attribute %1 is listed already"},
    {SchemeFault::kValueAgain, "QELM-SCH-12", "ValueAgain", "the value \"%1\" of %2 is listed already"},
    {SchemeFault::kValueEmpty, "QELM-SCH-13", "EmptyValue",
     "an empty value of %1 can never match; <no value> stands for an attribute without one"},
    {SchemeFault::kValueWithBlank, "QELM-SCH-14", "ValueWithBlank",
     "the value \"%1\" of %2 can never match, as the scheme splits values at blanks"},
    {SchemeFault::kNoAndAnyValue, "QELM-SCH-15", "NoAndAnyValue",
     "<no value> and <any value> of %1 can never both match, as the rule wants"},
    {SchemeFault::kColorName, "QELM-SCH-16", "NoColorName", "the rule names no color"},
    {SchemeFault::kNoSuchColor, "QELM-SCH-17", "NoSuchColor", "the document has no color \"%1\""},
    {SchemeFault::kStyle, "QELM-SCH-18", "UnknownStyle",
     "\"%1\" is no style; styles are numbers from 0 to 8"},
    {SchemeFault::kExpressionAgain, "QELM-SCH-19", "ExpressionAgain", "the expression is listed already: %1"},
    {SchemeFault::kExpression, "QELM-SCH-20", "ExpressionRefused", "the expression is refused"},
    {SchemeFault::kOldFormat, "QELM-SCH-21", "OldFormat",
     "the document has the format of before 3.00, in which no schemes are found; qelm schemes convert "
     "brings it up to date"},
};

const FaultText& TextFor(SchemeFault fault) { return kFaults[static_cast<std::size_t>(fault)]; }

constexpr bool InOrder() {
  std::size_t index = 0;
  for (const FaultText& fault : kFaults) {
    if (static_cast<std::size_t>(fault.fault) != index++) return false;
  }
  return true;
}
static_assert(InOrder());

std::string Filled(std::string_view text, std::string_view text1, std::string_view text2) {
  std::string message;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '%') {
      message += text[i];
      continue;
    }
    message += text[++i] == '1' ? text1 : text2;
  }
  return message;
}

std::string Message(const SchemeFinding& finding) {
  return Filled(TextFor(finding.fault).text, finding.text1, finding.text2);
}

// "Audience/Beginner (filter): "; nothing for the whole document.
std::string Owner(const SchemeFinding& finding) {
  if (finding.fault == SchemeFault::kOldFormat) return {};
  if (finding.scheme.empty()) return finding.category + ": ";
  return FullName(finding.category, finding.scheme) + " (" + std::string(KindName(finding.kind)) + "): ";
}

// The expression with its place marked, and the reason.
std::string Details(Session& session, const SchemeFinding& finding) {
  if (finding.fault != SchemeFault::kExpression || finding.error.code == 0) return {};
  return " (" + std::string(finding.error.id) + "):\n" + WithCaret(finding.text1, finding.error.position) +
         session.plugin().messenger.Get(finding.error.id);
}

}  // namespace

SchemeReport CheckAllSchemes(Session& session, host::Id document) {
  Plugin& plugin = session.plugin();
  SchemeReport report;
  report.file = ShownPath(plugin.settings.paths.main_settings);
  report.findings = schemes::CheckSchemes(plugin.engine, plugin.main_settings, document);
  embedded::model::SourceLines lines(*session.host().Find(plugin.main_settings));
  for (const SchemeFinding& finding : report.findings) report.lines.push_back(lines.LineOf(finding.element));
  return report;
}

std::string TextOf(Session& session, const SchemeReport& report) {
  std::string text;
  for (std::size_t i = 0; i < report.findings.size(); ++i) {
    const SchemeFinding& finding = report.findings[i];
    text += report.file + ":" + (report.lines[i] == 0 ? "" : std::to_string(report.lines[i]) + ":") + " " +
            Owner(finding) + Message(finding) + Details(session, finding) + "\n";
  }
  const std::size_t count = report.findings.size();
  return text + report.file + ": " +
         (count == 0 ? "all schemes are in order\n"
                     : std::to_string(count) + (count == 1 ? " finding\n" : " findings\n"));
}

nlohmann::ordered_json JsonOf(Session& session, const SchemeReport& report) {
  using Json = nlohmann::ordered_json;
  Json list = Json::array();
  for (std::size_t i = 0; i < report.findings.size(); ++i) {
    const SchemeFinding& finding = report.findings[i];
    Json entry{{"id", TextFor(finding.fault).id},
               {"category", finding.category},
               {"name", finding.scheme.empty() ? Json(nullptr) : Json(finding.scheme)},
               {"kind", finding.scheme.empty() ? Json(nullptr) : Json(KindName(finding.kind))},
               {"line", report.lines[i] == 0 ? Json(nullptr) : Json(report.lines[i])},
               {"message", Message(finding)}};
    if (finding.error.code != 0) {
      entry["expression"] = finding.text1;
      entry["error"] = {{"id", finding.error.id},
                        {"code", finding.error.code},
                        {"position", finding.error.position},
                        {"message", session.plugin().messenger.Get(finding.error.id)}};
    }
    list.push_back(std::move(entry));
  }
  return list;
}

SarifLog SarifOf(Session& session, const SchemeReport& report) {
  SarifLog log;
  log.version = session.environment().version;
  for (const FaultText& fault : kFaults) {
    log.rules.push_back({fault.id, fault.name, Filled(fault.text, "...", "...")});
  }
  for (std::size_t i = 0; i < report.findings.size(); ++i) {
    const SchemeFinding& finding = report.findings[i];
    SarifResult result;
    result.rule = static_cast<std::size_t>(finding.fault);
    result.message = Owner(finding) + Message(finding) + Details(session, finding);
    result.file = report.file;
    result.line = report.lines[i];
    result.logical_name = finding.scheme.empty() ? finding.category : finding.scheme;
    result.logical_path =
        finding.scheme.empty() ? finding.category : FullName(finding.category, finding.scheme);
    result.logical_kind = "element";
    log.results.push_back(std::move(result));
  }
  return log;
}

}  // namespace qelm::cli
