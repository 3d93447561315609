// Uncoloring by both methods, change bars, and books.
#include <gtest/gtest.h>

#include "coloring/coloring_session.h"

namespace qelm::coloring {
namespace {

using host::Id;
using testing::Classic;
using testing::ColoringSession;
using testing::RuleOf;

constexpr const char* kLocal =
    R"(<Doc><P A="x">one {Overline,Strikethrough}two{} {Hidden}three{}</P><P>{ChangeBar}four{}</P></Doc>)";

TEST(Uncoloring, DefinitionsGiveBackWhatFormatsSay) {
  ColoringSession session;
  const Id document = session.OpenMif(kLocal);
  session.Color(Classic({RuleOf("A", {"x"}, "Red", 7, "Yellow")}));
  EXPECT_EQ(session.Uncolor(), common::kDone);
  EXPECT_EQ(
      session.Golden(document),
      "<Doc><P A=\"x\">{ChangeBar}one two {}{ChangeBar,Hidden}three{}</P><P>{ChangeBar}four{}</P></Doc>")
      << "overrides of what formats define go, change bars stay";
}

TEST(Uncoloring, PropertiesGoBackOneByOne) {
  ColoringSession session;
  const Id document = session.OpenMif(kLocal);
  session.wanted.import_definitions_to_uncolor = false;
  const std::string before = session.Saved(document);
  session.Color(Classic({RuleOf("A", {"x"}, "Red", 3, "Yellow")}));
  session.Uncolor();
  EXPECT_EQ(session.Saved(document), before)
      << "other overrides stay, and nothing is written that holds already";

  session.wanted.remove_underlining = session.wanted.remove_highlighting = false;
  session.Color(Classic({RuleOf("A", {"x"}, "Red", 3, "Yellow")}));
  session.Uncolor();
  EXPECT_EQ(
      session.Golden(document),
      "<Doc><P A=\"x\">{Underline,Background=Yellow}one {}{Underline,Overline,Strikethrough,"
      "Background=Yellow}two{}{Underline,Background=Yellow} {}{Underline,Background=Yellow,Hidden}three{}"
      "</P><P>{ChangeBar}four{}</P></Doc>");
}

TEST(Uncoloring, ReachesTablesFootnotesAndReferences) {
  const std::string source = R"(<Doc><P>a<Footnote>b</Footnote> <XRef .format="Page">c</XRef></P>
    <Table><TableTitle>d</TableTitle><TableBody><Row><Cell>e<P>f</P></Cell></Row></TableBody></Table></Doc>)";
  for (const bool by_definitions : {true, false}) {
    ColoringSession session;
    const Id document = session.OpenMif(source);
    const std::string before = session.Saved(document);
    session.wanted.import_definitions_to_uncolor = by_definitions;
    session.wanted.remove_change_bars_on_uncoloring = true;
    session.Color(testing::XPath({testing::Selecting({"//node()"}, "Red", 7)}));
    EXPECT_EQ(session.run.colored, session.run.visited);
    session.Uncolor();
    EXPECT_EQ(session.Saved(document), before);
  }
}

TEST(Uncoloring, ChangeBarsGoWhereTheSettingsSaySo) {
  ColoringSession session;
  const Id document = session.OpenMif(kLocal);
  session.wanted.remove_change_bars_before_coloring = true;
  session.Color(Classic({RuleOf("A", {"x"}, "None", 5)}));
  EXPECT_EQ(session.Golden(document),
            "<Doc><P A=\"x\">{ChangeBar}one two {}{ChangeBar,Hidden}three{}</P><P>four</P></Doc>");
}

TEST(Uncoloring, WithoutBlackItSaysSoAndStops) {
  ColoringSession session;
  std::string text = testing::Mif("<Doc><P A=\"x\">{Red}one{}</P></Doc>");
  for (std::size_t at; (at = text.find("`Black'")) != std::string::npos;) text.replace(at, 7, "`Ink'");
  const Id document = session.Open("doc.mif", text);
  session.wanted.import_definitions_to_uncolor = false;
  for (const Command command : {Command::kUncolorDocument, Command::kColorDocument}) {
    EXPECT_EQ(session.Run(command, Classic({RuleOf("A", {"x"}, "Blue")})), 0);
    EXPECT_EQ(session.run.ending, Ending::kNoBlack);
    ASSERT_FALSE(session.user.texts.empty());
    EXPECT_NE(session.user.texts.back().find("does not exist in the template. Cannot continue."),
              std::string::npos);
  }
  EXPECT_NE(session.Golden(document).find("Red}one"), std::string::npos);
}

class Books : public ::testing::Test {
 protected:
  // Three components, of which the second has no file.
  void OpenBook() {
    session.folder.Write("a.mif", testing::Mif(R"(<Doc A="x">one</Doc>)"));
    session.folder.Write("c.mif", testing::Mif("two"));
    book = session.Open("book.mif", testing::MifBook({"<c>a.mif", "<c>b.mif", "<c>c.mif"}));
  }
  ColoringSession session;
  Id book = host::kNone;
  schemes::Scheme scheme = Classic({RuleOf("A", {"x"}, "Red")});
};

TEST_F(Books, AreAskedAboutWhenAFileCannotBeOpened) {
  OpenBook();
  session.user.no = {"QELM_MSG_COLORING_5"};
  EXPECT_EQ(session.Run(Command::kColorBook, scheme), common::kCancelled);
  EXPECT_EQ(session.run.ending, Ending::kBookDeclined);
  EXPECT_NE(session.user.texts[0].find("QELM_MSG_COLORING_5"), std::string::npos);
  EXPECT_TRUE(session.run.components.empty());
}

TEST_F(Books, ColorEachComponentAndComeBackToTheFront) {
  OpenBook();
  EXPECT_EQ(session.Run(Command::kColorBook, scheme), common::kNoFlowOrRoot) << "that of the last one";
  EXPECT_EQ(session.user.shown,
            (std::vector<std::string>{"QELM_MSG_COLORING_5", "QELM_MSG_COLORING_10", "QELM_MSG_COLORING_7"}));
  ASSERT_EQ(session.run.components.size(), 3U);
  EXPECT_EQ(session.run.components[1].document, host::kNone);
  EXPECT_EQ(session.Golden(session.run.components[0].document), "<Doc A=\"x\">{Red}one{}</Doc>");
  EXPECT_EQ(session.inner().documents.ActiveBook(), book);

  EXPECT_EQ(session.Run(Command::kUncolorBook, {}, false), common::kDone);
  EXPECT_EQ(session.Golden(session.run.components[0].document), "<Doc A=\"x\">one</Doc>");
}

TEST_F(Books, StopAtEscBetweenTwoComponents) {
  OpenBook();
  session.user.esc_at_poll = 1;
  EXPECT_EQ(session.Run(Command::kColorBook, scheme), common::kCancelled);
  EXPECT_EQ(session.run.components.size(), 1U);
  EXPECT_TRUE(session.Shown("QELM_MSG_GEN_14"));
  EXPECT_TRUE(session.Shown("QELM_MSG_COLORING_6"));
}

}  // namespace
}  // namespace qelm::coloring
