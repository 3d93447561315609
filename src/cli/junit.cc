#include "cli/junit.h"

#include <ostream>

#include "embedded/xml/write.h"

namespace qelm::cli {
namespace {

struct Counts {
  std::size_t tests = 0;
  std::size_t failures = 0;
  std::size_t errors = 0;

  void Add(const JunitSuite& suite) {
    for (const JunitCase& test : suite.cases) {
      ++tests;
      failures += test.outcome == JunitCase::Outcome::kFailed ? 1 : 0;
      errors += test.outcome == JunitCase::Outcome::kError ? 1 : 0;
    }
  }
};

void AppendAttribute(std::string_view name, std::string_view value, std::string* xml) {
  xml->append(" ").append(name).append("=\"");
  embedded::xml::AppendValue(value, '"', xml);
  *xml += '"';
}

void AppendCounts(const Counts& counts, std::string* xml) {
  AppendAttribute("tests", std::to_string(counts.tests), xml);
  AppendAttribute("failures", std::to_string(counts.failures), xml);
  AppendAttribute("errors", std::to_string(counts.errors), xml);
  AppendAttribute("skipped", "0", xml);
}

void AppendCase(const JunitCase& test, std::string* xml) {
  *xml += "    <testcase";
  AppendAttribute("name", test.name, xml);
  AppendAttribute("classname", test.class_name, xml);
  if (test.outcome == JunitCase::Outcome::kPassed) {
    *xml += "/>\n";
    return;
  }
  const std::string_view tag = test.outcome == JunitCase::Outcome::kFailed ? "failure" : "error";
  xml->append(">\n      <").append(tag);
  AppendAttribute("type", test.type, xml);
  AppendAttribute("message", test.message, xml);
  *xml += '>';
  embedded::xml::AppendText(test.details, xml);
  xml->append("</").append(tag).append(">\n    </testcase>\n");
}

}  // namespace

void WriteJunit(const std::string& name, const std::vector<JunitSuite>& suites, std::ostream& out) {
  Counts all;
  for (const JunitSuite& suite : suites) all.Add(suite);
  std::string xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites";
  AppendAttribute("name", name, &xml);
  AppendCounts(all, &xml);
  xml += ">\n";
  for (const JunitSuite& suite : suites) {
    Counts counts;
    counts.Add(suite);
    xml += "  <testsuite";
    AppendAttribute("name", suite.name, &xml);
    AppendCounts(counts, &xml);
    xml += ">\n";
    for (const JunitCase& test : suite.cases) AppendCase(test, &xml);
    xml += "  </testsuite>\n";
    out << xml;
    xml.clear();
  }
  out << xml << "</testsuites>\n";
}

}  // namespace qelm::cli
