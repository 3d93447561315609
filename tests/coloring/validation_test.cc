// Validation: the four rules attribute by attribute, what is struck through, and what commands say.
#include "coloring/validation.h"

#include <gtest/gtest.h>

#include <sstream>

#include "embedded/adapter/dialogs.h"
#include "embedded/adapter/embedded_host.h"
#include "embedded/adapter/platform.h"
#include "support/checking_host.h"
#include "support/golden_text.h"
#include "support/mif_files.h"
#include "support/temp_folder.h"
#include "support/test_user.h"

namespace qelm::coloring {
namespace {

using testing::CheckingHost;

// "rule attribute value" of everything that was found, with what was done around it.
class Record : public ViolationSink {
 public:
  explicit Record(host::Host& host) : host_(host) {}

  void BeginDocument(host::Id, bool by_command) override {
    lines.emplace_back(by_command ? "document" : "part");
  }
  void Add(const Violation& violation) override {
    const host::Id definition = host_.elements.Definition(violation.document, violation.element);
    std::ostringstream line;
    line << violation.rule << ' ' << host_.definitions.DefinitionName(violation.document, definition) << ' '
         << violation.attribute;
    if (!violation.value.empty()) line << ' ' << violation.value;
    lines.push_back(line.str());
  }
  void EndDocument(host::Id, std::uint64_t violations, bool finished) override {
    lines.push_back((finished ? "end " : "stopped ") + std::to_string(violations));
  }

  std::string Found() const {
    std::string text;
    for (const std::string& line : lines) {
      if (line[0] < '1' || line[0] > '4') continue;
      text += (text.empty() ? "" : ", ") + line;
    }
    return text;
  }
  std::vector<std::string> lines;

 private:
  host::Host& host_;
};

class ValidationTest : public ::testing::Test {
 protected:
  ValidationTest() {
    scheme_.kind = schemes::SchemeKind::kValidation;
    scheme_.category = "Quality";
    scheme_.name = "Values";
    scheme_.attributes = {{"a", {"A", "B"}}};
    run_.rules = {true, true, true, true};
  }
  ~ValidationTest() override { EXPECT_EQ(checking_.violations(), std::vector<std::string>{}); }

  host::Host& host() { return checking_.roles(); }
  host::Host& inner() { return embedded_.roles(); }

  void Open(const testing::MifFile& file) {
    const std::string path = folder_.Write("doc" + std::to_string(++opened_) + ".mif", testing::Mif(file));
    host::OpenStatus status = host::OpenStatus::kOpened;
    document_ = inner().documents.Open(path, {}, &status);
    ASSERT_NE(document_, host::kNone) << inner().documents.LastError();
  }
  void Open(const std::string& text) {
    testing::MifFile file;
    file.flows = {{.text = text}};
    Open(file);
  }

  template <typename Operation>
  std::int32_t Run(const Operation& operation) {
    const CheckingHost::Entry entry(checking_);
    ValidationContext context{host(), messenger_, scheme_, run_, {&record_}, {}};
    return operation(context);
  }
  std::string Found(const std::string& text) {
    Open(text);
    record_.lines.clear();
    EXPECT_EQ(Run(ValidateActiveDocument), common::kDone);
    return record_.Found();
  }
  std::string Text() { return testing::Golden(*embedded_.Find(document_)); }

  testing::TempFolder folder_;
  testing::TestUser user_;
  embedded::adapter::PosixPlatform platform_;
  embedded::adapter::EventLog events_;
  embedded::adapter::NoDialogs dialogs_{events_};
  testing::TestClients clients_;
  embedded::adapter::EmbeddedHost embedded_{
      {.plugin_folder = QELM_SOURCE_DIR "/assets", .file_error = {}}, user_, dialogs_, clients_, platform_};
  CheckingHost checking_{embedded_.roles()};
  messages::Messenger messenger_{host().user, host().platform};
  schemes::Scheme scheme_;
  ValidationRun run_;
  Record record_{embedded_.roles()};
  host::Id document_ = host::kNone;
  int opened_ = 0;
};

struct RuleCase {
  const char* name;
  const char* document;  // in <Doc>...</Doc>, or with an attribute of its own
  bool space_delimited;
  bool ignore_case;
  const char* found;
  std::int32_t last;
};

constexpr RuleCase kRuleCases[] = {
    // Rule 1: the first value that is not listed.
    {"first bad value", "<Doc a=\"A|C|D\"><P>x</P></Doc>", false, false, "1 Doc a C", 1},
    {"split", "<Doc a=\"A C\"><P>x</P></Doc>", true, false, "1 Doc a C", 1},
    {"not split", "<Doc a=\"A C\"><P>x</P></Doc>", false, false, "1 Doc a A C", 1},
    {"case counts", "<Doc a=\"a|B\"><P>x</P></Doc>", false, false, "1 Doc a a", 1},
    {"case ignored", "<Doc a=\"a|b\"><P>x</P></Doc>", false, true, "", -1},
    {"name in another case", "<Doc A=\"x\"><P>x</P></Doc>", false, false, "", -1},
    {"name, case ignored", "<Doc A=\"x\"><P>x</P></Doc>", false, true, "1 Doc A x", 1},
    {"unlisted attribute", "<Doc b=\"x\"><P>x</P></Doc>", false, false, "", -1},
    // Rule 2: the last value that the nearest ancestor with the attribute does not have.
    {"last value not above", "<Doc a=\"A\"><P a=\"B|A|C\">x</P></Doc>", false, false, "1 P a C, 2 P a C", 2},
    {"value above is split", "<Doc a=\"A B\"><P a=\"B\">x</P></Doc>", true, false, "", -1},
    {"value above in another case", "<Doc a=\"A\"><P a=\"a\">x</P></Doc>", false, true, "", -1},
    {"over elements without it", "<Doc a=\"A\"><S><P a=\"B\">x</P></S></Doc>", false, false, "2 P a B", 2},
    {"empty ancestor ends the search", "<Doc a=\"A\"><S a><P a=\"B\">x</P></S></Doc>", false, false,
     "3 S a, 4 S a", 4},
    {"nearest wins", "<Doc a=\"A\"><S a=\"A\"><P a=\"A\">x</P></S><P a=\"B\">y</P></Doc>", false, false,
     "2 P a B", 2},
    {"siblings are no ancestors", "<Doc><S a=\"A\"><P>x</P></S><P a=\"B\">y</P></Doc>", false, false, "", -1},
    {"both attributes above", "<Doc a=\"A\" A=\"B\"><P a=\"B\">x</P></Doc>", false, true, "2 P a B", 2},
    // Rules 3 and 4: attributes without a value.
    {"empty below a value", "<Doc a=\"A\"><P a>x</P></Doc>", false, false, "3 P a, 4 P a", 4},
    {"empty string", "<Doc a=\"A\"><P a=\"\">x</P></Doc>", false, false, "3 P a, 4 P a", 4},
    {"blanks split to nothing", "<Doc a=\"A\"><P a=\"  \">x</P></Doc>", true, false, "3 P a, 4 P a", 4},
    {"empty, nothing above", "<Doc><P a>x</P></Doc>", false, false, "4 P a", 4},
};

TEST_F(ValidationTest, RulesAttributeByAttribute) {
  for (const RuleCase& test : kRuleCases) {
    SCOPED_TRACE(test.name);
    scheme_.space_delimited = test.space_delimited;
    scheme_.ignore_case = test.ignore_case;
    EXPECT_EQ(Found(test.document), test.found);
    EXPECT_EQ(run_.last_rule, test.last);
  }
}

TEST_F(ValidationTest, SpecialValuesAndRepeatedAttributes) {
  const char* document = "<Doc a=\"C\"><P a>x</P><P a=\"D\">y</P></Doc>";
  run_.rules = {true, false, false, true};
  scheme_.attributes = {{"a", {"C", "<no value>"}}};
  EXPECT_EQ(Found(document), "1 P a D");
  scheme_.attributes = {{"a", {"<any value>"}}};
  EXPECT_EQ(Found(document), "4 P a") << "any value is not no value";
  scheme_.attributes = {{"a", {"C"}}, {"b", {"x"}}, {"a", {"D", "<no value>"}}};
  EXPECT_EQ(Found(document), "");
  scheme_.attributes = {{"a", {}}};
  EXPECT_EQ(Found(document), "1 Doc a C, 4 P a, 1 P a D");
}

TEST_F(ValidationTest, AttributesInTheOrderOfTheElementDecideTheLastRule) {
  scheme_.attributes = {{"b", {"A"}}, {"a", {"A"}}};
  EXPECT_EQ(Found("<Doc a b=\"X\"><P>x</P></Doc>"), "4 Doc a, 1 Doc b X");
  EXPECT_EQ(run_.last_rule, 1) << "the last one that was found, not the highest";
}

TEST_F(ValidationTest, EachRuleCanBeSwitchedOff) {
  const char* document = "<Doc a=\"A\"><P a=\"C\">x</P><P a>y</P></Doc>";
  const std::vector<std::string> found = {"1 P a C", "2 P a C", "3 P a", "4 P a"};
  for (std::size_t rule = 0; rule < found.size(); ++rule) {
    run_.rules = {};
    run_.rules[rule] = true;
    EXPECT_EQ(Found(document), found[rule]);
  }
}

TEST_F(ValidationTest, DefaultsOfTheDefinitionsAreValues) {
  testing::MifFile file;
  file.flows = {{.text = "<Doc a=\"A\"><P a>x</P><P>y</P></Doc>"}};
  file.definitions = {{"P", {{.name = "a", .choices = {}, .defaults = {"B"}}}}};
  Open(file);
  Run(ValidateActiveDocument);
  EXPECT_EQ(record_.Found(), "3 P a, 4 P a");
  record_.lines.clear();
  scheme_.include_edd_defaults = true;
  Run(ValidateActiveDocument);
  EXPECT_EQ(record_.Found(), "2 P a B, 2 P a B");
}

// Long lists of values above are indexed; the answer must not change with that.
TEST_F(ValidationTest, ManyValuesAbove) {
  run_.rules = {false, true, false, false};
  std::string many;
  for (int i = 0; i < 40; ++i) many += (i == 0 ? "v" : "|v") + std::to_string(i);
  EXPECT_EQ(Found("<Doc a=\"" + many + "\"><P a=\"v39|v7\">x</P><P a=\"v40\">y</P></Doc>"), "2 P a v40");
}

TEST_F(ValidationTest, StrikethroughComesAndGoesWithTheViolation) {
  Open("<Doc>\n<P a=\"C\">bad <S>good</S></P>\n<P a=\"A\">good <S a=\"C\">bad</S></P>\n</Doc>");
  run_.rules = {true, false, false, false};
  Run(ValidateActiveDocument);
  EXPECT_EQ(Text(),
            "<Doc><P a=\"C\">{Strikethrough}bad {}<S>good</S></P>\n"
            "<P a=\"A\">good <S a=\"C\">{Strikethrough}bad{}</S></P></Doc>");
  scheme_.attributes[0].values.emplace_back("C");
  Run(ValidateActiveDocument);
  EXPECT_EQ(Text(), "<Doc><P a=\"C\">bad <S>good</S></P>\n<P a=\"A\">good <S a=\"C\">bad</S></P></Doc>");
}

TEST_F(ValidationTest, StrikethroughInTablesFootnotesAndReferences) {
  Open(R"(
<Doc a="C">
<P a="A">see <XRef a="C" .format="Page">page 3</XRef><Footnote a="C">note</Footnote></P>
<Table a="C" .format="Grid">
<TableTitle a="A">title</TableTitle>
<TableBody>
<Row a="C"><Cell a="A">one</Cell><Cell a="C">two</Cell></Row>
</TableBody>
</Table>
</Doc>)");
  run_.rules = {true, false, false, false};
  Run(ValidateActiveDocument);
  const std::string text = Text();
  for (const char* struck : {"page 3", "note", "two"}) {
    EXPECT_NE(text.find(std::string("{Strikethrough}") + struck), std::string::npos) << struck << "\n"
                                                                                     << text;
  }
  for (const char* plain : {"see ", "title", "one"}) {
    EXPECT_EQ(text.find(std::string("{Strikethrough}") + plain), std::string::npos) << plain << "\n" << text;
  }
}

TEST_F(ValidationTest, DocumentIsTouchedOnlyWhereItMustBe) {
  Open("<Doc>\n<P>plain</P>\n<P>{Strikethrough,Red}by hand{}</P>\n</Doc>");
  const auto modified = [&] { return inner().documents.Switch(document_, host::DocumentSwitch::kModified); };
  run_.strikethrough = StrikethroughUse::kLeave;
  Run(ValidateActiveDocument);
  EXPECT_FALSE(modified());
  run_.strikethrough = StrikethroughUse::kRemove;
  Run(ValidateActiveDocument);
  EXPECT_EQ(Text(), "<Doc><P>plain</P>\n<P>{Red}by hand{}</P></Doc>");

  Open("<Doc>\n<P a=\"A\">plain</P>\n</Doc>");
  run_.strikethrough = StrikethroughUse::kMark;
  Run(ValidateActiveDocument);
  EXPECT_FALSE(modified()) << "nothing is struck through, and nothing was";
}

TEST_F(ValidationTest, FlowsAreTheMainOneOrAll) {
  testing::MifFile file;
  file.flows = {{.text = "<Doc a=\"C\"><P>x</P></Doc>"}, {.text = "<Doc a=\"D\"><P>y</P></Doc>", .tag = "B"}};
  Open(file);
  Run(ValidateActiveDocument);
  EXPECT_EQ(record_.Found(), "1 Doc a C");
  record_.lines.clear();
  scheme_.process_all_flows = true;
  Run(ValidateActiveDocument);
  EXPECT_EQ(record_.Found(), "1 Doc a C, 1 Doc a D");
}

TEST_F(ValidationTest, EscIsLookedForAtEvery102ndElement) {
  std::string text = "<Doc a=\"C\">\n";
  for (int i = 0; i < 300; ++i) text += "<P a=\"C\">x</P>\n";
  Open(text + "</Doc>");
  run_.rules = {true, false, false, false};
  Run(ValidateActiveDocument);
  EXPECT_EQ(user_.polls, 2);
  EXPECT_EQ(run_.elements, 301U);

  user_ = testing::TestUser();
  user_.esc_at_poll = 1;
  record_.lines.clear();
  EXPECT_EQ(Run(ValidateActiveDocument), common::kCancelled);
  EXPECT_EQ(run_.elements, 101U);
  EXPECT_EQ(record_.lines.back(), "stopped 101");
  EXPECT_EQ(user_.shown, (std::vector<std::string>{"QELM_MSG_GEN_14", "QELM_MSG_VAL_GEN_4"}));
}

TEST_F(ValidationTest, SingleElementShowsAnAlertForEachRule) {
  run_.rules = {true, true, true, true};
  Open("<Doc a=\"A\">\n<P a=\"C\">one <S>two</S></P>\n<P a>three</P>\n</Doc>");
  const host::Id root = inner().elements.Root(document_, inner().elements.MainFlow(document_));
  const host::Id first = inner().elements.FirstChild(document_, root);
  const auto validate = [&](host::Id element) {
    return Run([&](ValidationContext& context) { return ValidateElement(context, document_, element); });
  };
  EXPECT_EQ(validate(first), 2);
  EXPECT_EQ(validate(inner().elements.NextSibling(document_, first)), 4);
  EXPECT_EQ(validate(root), kNoViolation) << "only the element itself";
  EXPECT_EQ(user_.shown, (std::vector<std::string>{"QELM_MSG_VAL_REP_16", "QELM_MSG_VAL_REP_17",
                                                   "QELM_MSG_VAL_REP_18", "QELM_MSG_VAL_REP_19"}));
  EXPECT_TRUE(record_.lines.empty());
}

TEST_F(ValidationTest, BookTakesItsComponentsInOrderAndPassesOverWhatIsMissing) {
  folder_.Write("one.mif", testing::Mif("<Doc a=\"C\"><P>x</P></Doc>"));
  folder_.Write("two.mif", testing::Mif("<Doc a=\"D\"><P>x</P></Doc>"));
  const std::string path =
      folder_.Write("book.mif", testing::MifBook({"<c>two.mif", "<c>gone.mif", "<c>book.mif", "<c>one.mif"}));
  host::OpenStatus status = host::OpenStatus::kOpened;
  const host::Id book = inner().documents.Open(path, {}, &status);
  ASSERT_NE(book, host::kNone) << inner().documents.LastError();
  EXPECT_EQ(Run(ValidateActiveBook), common::kDone);
  EXPECT_EQ(record_.lines,
            (std::vector<std::string>{"part", "1 Doc a D", "end 1", "part", "1 Doc a C", "end 1"}));
  ASSERT_EQ(run_.passed_over.size(), 2U);
  EXPECT_NE(run_.passed_over[0].find("gone.mif"), std::string::npos);
  EXPECT_NE(run_.passed_over[1].find("book.mif"), std::string::npos) << "the book names itself";
  EXPECT_EQ(user_.shown, (std::vector<std::string>{"QELM_MSG_VAL_GEN_8", "QELM_MSG_VAL_GEN_3"}));
}

}  // namespace
}  // namespace qelm::coloring
