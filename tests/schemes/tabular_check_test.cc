// Scheme data in a table: what is read of it, and the condition of each message.
#include "schemes/tabular_check.h"

#include <gtest/gtest.h>

#include "schemes/settings_session.h"
#include "support/mif_files.h"

namespace qelm::schemes {
namespace {

using testing::SettingsSession;

// A table of rows, each of cells with "|" between them; "^" in a cell begins a new line.
std::string Table(const std::string& title, const std::vector<std::string>& rows) {
  std::string text = "<Table .format=\"Grid\">\n";
  if (!title.empty()) text += "<TableTitle>" + title + "</TableTitle>\n";
  text += "<TableHeading>\n<Row><Cell>Row</Cell><Cell>What</Cell></Row>\n</TableHeading>\n<TableBody>\n";
  for (const std::string& row : rows) {
    text += "<Row>\n";
    for (std::size_t at = 0; at <= row.size();) {
      const std::size_t end = std::min(row.find('|', at), row.size());
      std::string cell = row.substr(at, end - at);
      for (std::size_t slash = cell.find('^'); slash != cell.npos; slash = cell.find('^')) cell[slash] = '\n';
      text += "<Cell>" + cell + "</Cell>\n";
      at = end + 1;
    }
    text += "</Row>\n";
  }
  return text + "</TableBody>\n</Table>\n";
}

struct Checked {
  TabularCheck check;
  ActiveSchemes active;
  std::vector<std::string> notes;

  // The numbers of the messages, with their rows.
  std::string Problems() const {
    std::string text;
    for (const TabularProblem& problem : check.problems) {
      text += (text.empty() ? "" : " ") + std::to_string(static_cast<int>(problem.fault)) + "@" +
              std::to_string(problem.row);
    }
    return text;
  }
};

Checked Check(const std::string& tables) {
  SettingsSession session;
  const host::Id document = session.Open("/doc.mif", testing::Mif("<Doc>\n" + tables + "</Doc>"));
  Checked checked;
  TabularContext context{session.host(), session.messenger, session.engine, checked.active, "Standard"};
  checked.check = CheckTabularScheme(context, document);
  checked.notes = session.user.notes;
  return checked;
}

TEST(TabularCheck, ReadsAColoringScheme) {
  const Checked checked = Check(Table(
      "QELM Coloring Scheme: Review / By audience",
      {"Rule|Red|Numeric Underline|Yellow|match all^Override", "Attribute|Audience|expert^admin|beginner",
       "||", "attribute|Level|advanced", "Rule|None|3", "Attribute|Product|P 100"}));
  EXPECT_EQ(checked.Problems(), "");
  EXPECT_TRUE(checked.check.active);
  const Scheme& scheme = checked.active.coloring;
  EXPECT_EQ(scheme.category, "Review");
  EXPECT_EQ(scheme.name, "By audience");
  EXPECT_FALSE(scheme.is_xpath);
  ASSERT_EQ(scheme.rules.size(), 2U);
  const Rule& first = scheme.rules[0];
  EXPECT_EQ(first.color, "Red");
  EXPECT_EQ(first.style, 6);
  EXPECT_EQ(first.background, "Yellow");
  EXPECT_TRUE(first.match_all && first.override_others);
  ASSERT_EQ(first.conditions.size(), 2U);
  EXPECT_EQ(first.conditions[0].values, (std::vector<std::string>{"expert", "admin", "beginner"}));
  EXPECT_EQ(scheme.rules[1].style, 3);
  EXPECT_EQ(scheme.rules[1].conditions[0].values, std::vector<std::string>{"P 100"});
  EXPECT_EQ(checked.notes.size(), 1U) << "that it is in order";
}

TEST(TabularCheck, ReadsTheOtherKinds) {
  Checked checked =
      Check(Table("Filter scheme: Experts", {"XPath Expressions|//P^//S|//T", "Expressions|//U"}));
  EXPECT_EQ(checked.Problems(), "");
  EXPECT_EQ(checked.active.filter.category, "Standard");
  EXPECT_TRUE(checked.active.filter.is_xpath);
  EXPECT_EQ(checked.active.filter.expressions, (std::vector<std::string>{"//P", "//S", "//T", "//U"}));
  checked = Check(Table("Coloring Scheme: X", {"Rule|Red|", "Expressions|//P", "Expressions|//S"}));
  EXPECT_EQ(checked.Problems(), "");
  ASSERT_EQ(checked.active.coloring.rules[0].conditions.size(), 1U);
  EXPECT_EQ(checked.active.coloring.rules[0].conditions[0].values, (std::vector<std::string>{"//P", "//S"}));
  for (const char* kind :
       {"QELM Validate Scheme", "QELM Validation Scheme", "Validate Scheme", "Validation Scheme"}) {
    checked = Check(Table(std::string(kind) + ":Quality/Values", {"Attribute|Audience|expert"}));
    EXPECT_EQ(checked.Problems(), "") << kind;
    EXPECT_EQ(checked.active.validation.attributes.size(), 1U);
  }
}

struct FaultCase {
  const char* title;
  std::vector<std::string> rows;
  const char* problems;  // NUMBER@ROW; the heading is row 1
  bool active;
};

TEST(TabularCheck, EveryMessageHasItsCondition) {
  const char* color = "Coloring Scheme: A/B";
  const char* filter = "Filter Scheme: A/B";
  const std::string long_name = "Filter Scheme: A/" + std::string(300, 'x');
  const std::vector<FaultCase> cases = {
      {"Coloring Schemes: A/B", {"Rule|Red"}, "1@0", false},
      {"", {"Rule|Red"}, "1@0", false},
      {"Filter Scheme", {"Attribute|a|x"}, "2@0", false},
      {"Filter Scheme: \\<none>", {"Attribute|a|x"}, "2@0", false},
      {"Filter Scheme: /B", {"Attribute|a|x"}, "2@0", false},
      {long_name.c_str(), {"Attribute|a|x"}, "2@0", false},
      {filter, {"|"}, "4@0", true},
      {filter, {"|a|x"}, "5@2", true},
      {filter, {"Atribute|a|x"}, "6@2", true},
      {filter, {"Rule|Red"}, "7@2", true},
      {"Validation Scheme: A/B", {"Expressions|//P"}, "7@2", true},
      {color, {"Attribute|a|x", "Rule|Red", "Attribute|a|x"}, "8@2", true},
      {filter, {"Attribute||x"}, "9@2", true},
      {filter, {"Attribute|a|"}, "10@2", true},
      {filter, {"Attribute|a|x", "Attribute|a|y"}, "11@3", true},
      {filter, {"Attribute|a|x^y|x"}, "12@2", true},
      {filter, {"Expressions| "}, "13@2", true},
      {filter, {"Expressions|//P[", "Expressions|//P", "Expressions|P/foo::x"}, "14@2 14@4", false},
      {color, {"Rule|Pink||Mauve", "Attribute|a|x"}, "15@2 15@2", true},
      {color, {"Rule|", "Attribute|a|x"}, "15@2", true},
      {color, {"Rule|Red", "Rule|Blue", "Attribute|a|x"}, "16@2", true},
      {color, {"Rule|Red|9", "Attribute|a|x"}, "17@2", true},
      {color, {"Rule|Red|Dotted", "Attribute|a|x"}, "17@2", true},
      {color, {"Rule|Red||None|Match", "Attribute|a|x"}, "18@2", true},
      {filter, {"Attribute|a|x", "Expressions|//P"}, "19@3", true},
      {color, {"Rule|Red", "Expressions|//P", "Rule|Blue", "Attribute|a|x"}, "16@4 19@5", true},
  };
  for (const FaultCase& test : cases) {
    SCOPED_TRACE(std::string(test.title) + " " + test.rows[0]);
    const Checked checked = Check(Table(test.title, test.rows));
    EXPECT_EQ(checked.Problems(), test.problems);
    EXPECT_EQ(checked.check.active, test.active);
    ASSERT_EQ(checked.notes.size(), checked.check.problems.size()) << "an alert for each";
    for (std::size_t i = 0; i < checked.notes.size(); ++i) {
      EXPECT_TRUE(checked.notes[i].ends_with(MessageOf(checked.check.problems[i].fault)));
    }
  }
}

TEST(TabularCheck, FirstOfSeveralTablesCounts) {
  const Checked checked =
      Check(Table("Parts", {"Attribute|a|x"}) + Table("Filter Scheme: A/B", {"Attribute|a|x"}) +
            Table("Validation Scheme: C/D", {"Attribute|a|x"}));
  EXPECT_EQ(checked.Problems(), "3@0");
  EXPECT_EQ(checked.check.title, "Filter Scheme: A/B");
  EXPECT_TRUE(checked.active.filter.Active());
  EXPECT_FALSE(checked.active.validation.Active());
}

}  // namespace
}  // namespace qelm::schemes
