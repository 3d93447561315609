// qelm validate: what it prints in each form, what it writes, and how it ends.
#include <expat.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>

#include "cli/program.h"
#include "support/mif_files.h"

namespace qelm {
namespace {

using nlohmann::json;
using testing::Program;
using testing::ProgramResult;

constexpr char kText[] = R"(
<Doc a="A">
  <P a="A">good</P>
  <P a="C">bad</P>
  <S>
  <P a>empty</P>
  </S>
</Doc>)";

std::string SchemeXml(const std::string& name, const std::string& values) {
  return "<Scheme><SchemeSettings><Name>" + name + "</Name></SchemeSettings><Attribute><Name>a</Name>" +
         values + "</Attribute></Scheme>";
}

// A program with validation schemes, and a document that violates them.
class ValidateProgram : public Program {
 public:
  ValidateProgram()
      : source_(folder.Write("source.mif", testing::Mif(kText))),
        settings_(folder.Write(
            "settings.xml",
            "<QELM_MainSettings><SchemeCategories><SchemeCategory><CategorySettings><Name>Q</Name>"
            "</CategorySettings><FilterSchemes/><ColoringSchemes/><ValidationSchemes>" +
                SchemeXml("Strict", "<Value>A</Value><Value>B</Value>") +
                SchemeXml("Lax", "<Value>&lt;any value&gt;</Value><Value>&lt;no value&gt;</Value>") +
                "</ValidationSchemes></SchemeCategory></SchemeCategories><SchemeCategories_XPath/>"
                "</QELM_MainSettings>")) {}

  ProgramResult Validate(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "validate");
    arguments.insert(arguments.end(), {"--profile", folder.File("profile"), "--main-settings", settings_});
    return RunPlain(std::move(arguments));
  }
  const std::string& source() const { return source_; }

  // The line, counted from 1, on which `what` stands for the n-th time.
  static std::uint32_t Line(const std::string& text, const std::string& what, int n) {
    std::size_t at = 0;
    for (int i = 0; i < n; ++i) at = text.find(what, i == 0 ? 0 : at + 1);
    return 1 + static_cast<std::uint32_t>(
                   std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(at), '\n'));
  }

 private:
  std::string source_;
  std::string settings_;
};

TEST(Validate, TextNamesFileLineElementAttributeValueAndRule) {
  ValidateProgram program;
  const ProgramResult result =
      program.Validate({program.source(), "--scheme", "Q/Strict", "--rules", "1,3,4"});
  EXPECT_EQ(result.status, 1);
  const std::string mif = program.folder.Read("source.mif");
  // Elements in the order of the file: Doc, P, P, S, P.
  const std::string second = std::to_string(ValidateProgram::Line(mif, "<ElementBegin", 3));
  const std::string third = std::to_string(ValidateProgram::Line(mif, "<ElementBegin", 5));
  EXPECT_EQ(
      result.out,
      program.source() + ":" + second + ": /Doc[1]/P[2]: a=\"C\": this value is not allowed (rule 1)\n" +
          program.source() + ":" + third +
          ": /Doc[1]/S[1]/P[1]: a: no value, although the nearest element above with this attribute has "
          "one (rule 3)\n" +
          program.source() + ":" + third +
          ": /Doc[1]/S[1]/P[1]: a: no value, which is not allowed (rule 4)\n" + program.source() +
          ": 5 elements, 3 violations\n");
  EXPECT_EQ(program.folder.Read("source.mif"), mif);
}

TEST(Validate, JsonHasTheViolationsInReportOrder) {
  ValidateProgram program;
  const ProgramResult result = program.Validate({program.source(), "--scheme", "Q/Strict", "--json"});
  EXPECT_EQ(result.status, 1);
  const json object = result.Json();
  EXPECT_EQ(object["result"], 1);
  EXPECT_EQ(object["rules"], json::parse("[1, 2, 4]"));
  EXPECT_EQ(object["last_rule"], 4);
  ASSERT_EQ(object["violations"].size(), 3U);
  json first = object["violations"][0];
  EXPECT_TRUE(first["line"].is_number());
  first.erase("line");
  EXPECT_EQ(first, json({{"rule", 1},
                         {"element", 2},
                         {"tag", "P"},
                         {"path", "/Doc[1]/P[2]"},
                         {"attribute", "a"},
                         {"value", "C"},
                         {"file", program.source()}}));
  EXPECT_EQ(object["violations"][1]["rule"], 2);
  EXPECT_EQ(object["violations"][2]["rule"], 4);
  EXPECT_TRUE(object["violations"][2]["value"].is_null());
}

// What SARIF 2.1.0's schema requires of what is written, as far as a run could get it wrong.
void CheckSarif(const json& log) {
  EXPECT_EQ(log["version"], "2.1.0");
  ASSERT_FALSE(log["runs"].empty());
  const json& run = log["runs"][0];
  EXPECT_TRUE(run["tool"]["driver"].contains("name"));
  for (const json& invocation : run["invocations"]) EXPECT_TRUE(invocation.contains("executionSuccessful"));
  for (const json& result : run["results"]) {
    EXPECT_TRUE(result["message"].contains("text"));
    const std::string level = result["level"];
    EXPECT_TRUE(level == "none" || level == "note" || level == "warning" || level == "error") << level;
    const json& rule = run["tool"]["driver"]["rules"].at(result["ruleIndex"].get<std::size_t>());
    EXPECT_EQ(rule["id"], result["ruleId"]);
    for (const json& location : result["locations"]) {
      const std::string uri = location["physicalLocation"]["artifactLocation"]["uri"];
      EXPECT_EQ(uri.find_first_of(" <>\"\\^`{|}"), std::string::npos) << uri;
    }
  }
}

TEST(Validate, SarifIsAsItsSchemaRequires) {
  ValidateProgram program;
  const std::string spaced = program.folder.Write("a file.mif", testing::Mif(kText));
  const ProgramResult result = program.Validate({spaced, "--scheme", "Q/Strict", "--format", "sarif"});
  EXPECT_EQ(result.status, 1);
  const json log = result.Json();
  CheckSarif(log);
  ASSERT_EQ(log["runs"][0]["results"].size(), 3U);
  const json& first = log["runs"][0]["results"][0];
  EXPECT_EQ(first["ruleId"], "QELM-VAL-1");
  const json& location = first["locations"][0];
  EXPECT_EQ(location["physicalLocation"]["artifactLocation"]["uri"],
            "file://" + program.folder.path() + "/a%20file.mif");
  EXPECT_EQ(location["physicalLocation"]["region"]["startLine"],
            ValidateProgram::Line(program.folder.Read("a file.mif"), "<ElementBegin", 3));
  EXPECT_EQ(location["logicalLocations"][0]["fullyQualifiedName"], "/Doc[1]/P[2]");

  const std::string book = program.folder.Write("b.mif", testing::MifBook({"<c>source.mif", "<c>gone.mif"}));
  const json of_book =
      program.Validate({book, "--scheme", "Q/Lax", "--rules", "1,4", "--format", "sarif"}).Json();
  CheckSarif(of_book);
  EXPECT_TRUE(of_book["runs"][0]["results"].empty());
  EXPECT_EQ(of_book["runs"][0]["invocations"][0]["executionSuccessful"], false) << "a file is missing";
}

// Elements of an XML text by "name" and, where there is one, "name type"; empty when it is not well-formed.
std::vector<std::string> ElementsOf(const std::string& xml) {
  std::vector<std::string> elements;
  const auto begin = [](void* list, const XML_Char* name, const XML_Char** attributes) {
    std::string element = name;
    for (; *attributes != nullptr; attributes += 2) {
      const std::string attribute = attributes[0];
      if (attribute == "type" || attribute == "failures" || attribute == "errors" || attribute == "tests") {
        element += " " + attribute + "=" + attributes[1];
      }
    }
    static_cast<std::vector<std::string>*>(list)->push_back(element);
  };
  XML_Parser parser = XML_ParserCreate(nullptr);
  XML_SetUserData(parser, &elements);
  XML_SetStartElementHandler(parser, begin);
  const bool parsed = XML_Parse(parser, xml.data(), static_cast<int>(xml.size()), 1) == XML_STATUS_OK;
  XML_ParserFree(parser);
  return parsed ? elements : std::vector<std::string>();
}

TEST(Validate, JunitHasACaseForEachViolationAndOneForACleanFile) {
  ValidateProgram program;
  const std::string odd = program.folder.Write("odd.mif", testing::Mif("<Doc a=\"<&\\\"\"><P>x</P></Doc>"));
  EXPECT_EQ(ElementsOf(program.Validate({odd, "--scheme", "Q/Strict", "--format", "junit"}).out),
            (std::vector<std::string>{"testsuites tests=1 failures=1 errors=0",
                                      "testsuite tests=1 failures=1 errors=0", "testcase",
                                      "failure type=QELM-VAL-1"}));
  const std::string book =
      program.folder.Write("b.mif", testing::MifBook({"<c>source.mif", "<c>doc.mif", "<c>gone.mif"}));
  const ProgramResult result =
      program.Validate({book, "--scheme", "Q/Strict", "--rules", "1", "--format", "junit"});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(ElementsOf(result.out),
            (std::vector<std::string>{
                "testsuites tests=3 failures=1 errors=1", "testsuite tests=1 failures=1 errors=0", "testcase",
                "failure type=QELM-VAL-1", "testsuite tests=1 failures=0 errors=0", "testcase",
                "testsuite tests=1 failures=0 errors=1", "testcase", "error type=file"}));
}

TEST(Validate, ReportHasALinkedEntryForEachViolation) {
  ValidateProgram program;
  const std::string report = program.folder.File("report.mif");
  EXPECT_EQ(program.Validate({program.source(), "--scheme", "Q/Strict", "--report", report}).status, 1);
  const std::string text = program.folder.Read("report.mif");
  std::size_t at = 0;
  for (const char* part : {"Validation scheme: Strict", "Rule 1: ", "openObjectId",
                           "Rule 2: ", "openObjectId", "Rule 4: ", "Show this element in its document"}) {
    at = text.find(part, at + 1);
    ASSERT_NE(at, std::string::npos) << part;
  }
  const std::string none = program.folder.File("none.mif");
  program.Validate({program.source(), "--scheme", "Q/Lax", "--rules", "1,4", "--report", none});
  EXPECT_NE(program.folder.Read("none.mif").find("No violations were found."), std::string::npos);
}

TEST(Validate, MarksGoWithTheViolations) {
  ValidateProgram program;
  const std::string before = program.Dump(program.source());
  const std::string marked = program.folder.File("marked.mif");
  ASSERT_EQ(program.Validate({program.source(), "--scheme", "Q/Strict", "-o", marked}).status, 1);
  const std::string dump = program.Dump(marked);
  EXPECT_NE(dump.find("{Strikethrough}bad"), std::string::npos) << dump;
  EXPECT_NE(dump.find("{Strikethrough}empty"), std::string::npos) << dump;
  EXPECT_EQ(dump.find("{Strikethrough}good"), std::string::npos) << dump;
  ASSERT_EQ(program.Validate({marked, "--scheme", "Q/Lax", "--rules", "1,4", "--in-place"}).status, 0);
  EXPECT_EQ(program.Dump(marked), before);
}

TEST(Validate, SelectionIsCheckedBelowItsAncestors) {
  ValidateProgram program;
  const auto paths = [&](const std::string& selection) {
    std::string text;
    const json violations = program
                                .Validate({program.source(), "--scheme", "Q/Strict", "--rules", "1,3",
                                           "--selection", selection, "--json"})
                                .Json()["violations"];
    for (const json& violation : violations) text += violation["path"].get<std::string>() + " ";
    return text;
  };
  EXPECT_EQ(paths("//S"), "/Doc[1]/S[1]/P[1] ");
  EXPECT_EQ(paths("//P"), "") << "the first one only";
  EXPECT_EQ(paths("/Doc"), "/Doc[1]/P[2] /Doc[1]/S[1]/P[1] ");
}

TEST(Validate, BookInPlaceWritesOnlyWhatChanged) {
  ValidateProgram program;
  program.folder.Write("clean.mif", testing::Mif("<Doc a=\"A\"><P>x</P></Doc>"));
  const std::string clean = program.folder.Read("clean.mif");
  const std::string book = program.folder.Write("b.mif", testing::MifBook({"<c>source.mif", "<c>clean.mif"}));
  const ProgramResult result = program.Validate({book, "--scheme", "Q/Strict", "--in-place", "--json"});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.Json()["files"].size(), 2U);
  EXPECT_EQ(program.folder.Read("clean.mif"), clean);
  EXPECT_NE(program.Dump(program.source()).find("{Strikethrough}bad"), std::string::npos);
}

TEST(Validate, RefusalsNameWhatIsWrong) {
  ValidateProgram program;
  const std::string book = program.folder.Write("b.mif", testing::MifBook({"<c>source.mif"}));
  const std::string flat = program.folder.Write("flat.mif", testing::Mif("no elements"));
  const std::string before = program.folder.Read("source.mif");
  struct Case {
    std::vector<std::string> arguments;
    int status;
    const char* message;
  };
  const std::vector<Case> cases = {
      {{program.source()}, 5, "no validation scheme is active"},
      {{program.source(), "--scheme", "Q/Stric"}, 4, "\"Q/Strict\""},
      {{program.source(), "--scheme", "Q/Strict", "--rules", "1,5"}, 2, "from 1 to 4"},
      {{program.source(), "--scheme", "Q/Strict", "--selection", "//P["}, 4, "--selection"},
      {{program.source(), "--scheme", "Q/Strict", "--selection", "//X"}, 5, "selects no element"},
      {{program.source(), "--scheme", "Q/Strict", "--selection", "//P/text()"}, 5, "selects no element"},
      {{program.source(), "--scheme", "Q/Strict", "--selection", "//P/@a"}, 5, "selects no element"},
      {{program.source(), "--scheme", ""}, 2, "--scheme"},
      {{program.source(), "--scheme", "<none>"}, 4, "there is no validation scheme"},
      {{program.source(), "--scheme", "Q/Strict", "--rules", ""}, 2, "--rules"},
      {{program.source(), "--scheme", "Q/Strict", "--report", program.folder.File("r.XML")}, 2, "writes MIF"},
      {{book, "--scheme", "Q/Strict", "--report", program.source()}, 2, "a file of the book"},
      {{program.source(), "--scheme", "Q/Strict", "--format", "sarif", "--json"}, 2, "exclude"},
      {{book, "--scheme", "Q/Strict", "-o", program.folder.File("out.mif")}, 2, "--in-place"},
      {{flat, "--scheme", "Q/Strict"}, 5, "no elements"},
  };
  for (const Case& test : cases) {
    const ProgramResult result = program.Validate(test.arguments);
    EXPECT_EQ(result.status, test.status) << result.err;
    EXPECT_NE(result.err.find(test.message), std::string::npos) << result.err;
  }
  EXPECT_EQ(program.folder.Read("source.mif"), before) << "no refusal writes over a document";
}

TEST(Validate, LineBreakInAValueStaysInItsLine) {
  ValidateProgram program;
  const std::string file = program.folder.Write("v.xml", "<Doc a=\"A\"><P a=\"x&#10;y\">t</P></Doc>");
  const ProgramResult result = program.Validate({file, "--scheme", "Q/Strict", "--rules", "1"});
  EXPECT_NE(result.out.find("\"x\\ny\""), std::string::npos) << result.out;
}

TEST(Validate, NamesOfComponentsAreWithoutDetours) {
  ValidateProgram program;
  const std::string book = program.folder.Write("b.mif", testing::MifBook({"<c>no<c>..<c>gone.mif"}));
  const json object = program.Validate({book, "--scheme", "Q/Strict", "--json"}).Json();
  ASSERT_EQ(object["passed_over"].size(), 1U);
  EXPECT_EQ(object["passed_over"][0], program.folder.File("gone.mif"));
}

TEST(Validate, CancelledWritesNothing) {
  ValidateProgram program;
  std::string text = "<Doc a=\"C\">\n";
  for (int i = 0; i < 200; ++i) text += "<P a=\"C\">x</P>\n";
  const std::string large = program.folder.Write("large.mif", testing::Mif(text + "</Doc>"));
  const std::string before = program.folder.Read("large.mif");
  program.esc = [] { return true; };
  EXPECT_EQ(program.Validate({large, "--scheme", "Q/Strict", "--in-place"}).status, 130);
  EXPECT_EQ(program.folder.Read("large.mif"), before);
}

// XML has its own lines, and more than one encoding.
TEST(Validate, LinesOfXmlAreThoseOfTheTags) {
  ValidateProgram program;
  const std::string xml =
      "<?xml version=\"1.0\"?>\r\n<Doc a=\"A\">\r\n  <P>x</P>\r\n\r\n  <P\r\n a=\"C\">y</P></Doc>";
  std::string wide = "\xFF\xFE";
  for (const char c : xml) wide += std::string{c, '\0'};
  for (const std::string& bytes : {xml, wide}) {
    const std::string path = program.folder.Write("doc.xml", bytes);
    const json object = program.Validate({path, "--scheme", "Q/Strict", "--rules", "1", "--json"}).Json();
    ASSERT_EQ(object["violations"].size(), 1U) << object.dump();
    EXPECT_EQ(object["violations"][0]["line"], 5);
  }
}

// A real document: what is found is what it says, and marking leaves no trace once the marks are gone.
TEST(Validate, RealBill) {
  const std::string bill = QELM_SOURCE_DIR "/../shared/mif/samples/bill/Clauses.mif";
  if (!std::filesystem::exists(bill)) GTEST_SKIP() << "no sample documents here";
  ValidateProgram program;
  const std::string before = program.Dump(bill);
  const auto settings = [&](const std::string& values) {
    return program.folder.Write(
        "bill.xml",
        "<QELM_MainSettings><SchemeCategories><SchemeCategory><CategorySettings><Name>Q</Name>"
        "</CategorySettings><ValidationSchemes><Scheme><SchemeSettings><Name>Quote</Name></SchemeSettings>"
        "<Attribute><Name>Quote</Name>" +
            values +
            "</Attribute></Scheme></ValidationSchemes>"
            "</SchemeCategory></SchemeCategories><SchemeCategories_XPath/></QELM_MainSettings>");
  };
  const auto validate = [&](const std::string& source, const std::string& output, const std::string& values) {
    return program.RunPlain({"validate", source, "--scheme", "Q/Quote", "--rules", "1", "-o", output,
                             "--json", "--profile", program.folder.File("profile"), "--main-settings",
                             settings(values)});
  };
  const std::string marked = program.folder.File("marked.mif");
  const json found = validate(bill, marked, "<Value>Double</Value>").Json();
  std::size_t wrong = 0;
  for (std::size_t at = before.find("Quote=\"None\""); at != std::string::npos;
       at = before.find("Quote=\"None\"", at + 1)) {
    ++wrong;
  }
  EXPECT_GT(wrong, 0U);
  EXPECT_EQ(found["violations"].size(), wrong);
  EXPECT_NE(program.Dump(marked), before);
  const std::string clean = program.folder.File("clean.mif");
  EXPECT_EQ(validate(marked, clean, "<Value>Double</Value><Value>None</Value>").status, 0);
  EXPECT_EQ(program.Dump(clean), before);
}

}  // namespace
}  // namespace qelm
