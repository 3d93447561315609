// Every command by its number, in every state of the session, and what the handlers do beyond their messages.
#include "host/commands.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>

#include "host/host_session.h"

namespace qelm {
namespace {

using testing::HostSession;

constexpr char kText[] = R"(
<Doc>
  <P Audience="admin">for admins</P>
  <P Audience="nobody">for nobody</P>
</Doc>)";

const std::vector<std::pair<std::string, std::string>> kInternal = {{"QELM_LICENSE_TYPE", "INTERNAL"}};
constexpr std::int32_t kOtherHost = 17;

enum class Target { kNone, kDocument, kBook };

void OpenTarget(HostSession& session, Target target) {
  if (target == Target::kNone) return;
  const host::Id document = session.OpenMif("doc.mif", kText);
  ASSERT_NE(document, host::kNone);
  if (target == Target::kDocument) return;
  session.inner().documents.Close(document, true);
  ASSERT_NE(session.Open(session.folder.Write("book.mif", testing::MifBook({"<c>doc.mif"}))), host::kNone);
}

// What a command shows, by the active target and whether schemes are active. A cell that is missing is as the
// one before it.
struct Row {
  std::int32_t number;
  std::vector<std::string> without;  // no target, a document, a book
  std::vector<std::string> with;
};

const std::vector<Row> kRows = {
    {1, {""}, {}},
    {27, {"STGS_EDIT_13"}, {}},
    {36, {"STGS_EDIT_33"}, {}},
    {37, {"STGS_EDIT_34"}, {}},
    {2, {"STGS_EDIT_36"}, {}},
    {22, {"STGS_EDIT_36"}, {}},
    {3, {"STGS_EDIT_36"}, {}},
    {4, {"STGS_EDIT_36"}, {}},
    {26, {"GEN_25"}, {}},
    {15, {"GEN_23 GEN_24"}, {}},
    {5, {"GEN_1", "COLORING_1", "GEN_1"}, {"GEN_1", "COLORING_3", "GEN_1"}},
    {6, {"GEN_1", "COLORING_1", "GEN_1"}, {"GEN_1", "", "GEN_1"}},
    {7, {"GEN_1", "GEN_1", "COLORING_1"}, {"GEN_1", "GEN_1", "COLORING_7"}},
    {20, {"GEN_22 GEN_1", "GEN_22", "GEN_22 GEN_1"}, {}},
    {21, {"GEN_22 GEN_1", "GEN_22 GEN_1", "GEN_22 COLORING_7"}, {}},
    {8, {"DIALOG_1"}, {}},
    {35, {"GEN_29"}, {""}},
    {9, {"FILTER_30", "FILTER_44", "FILTER_30"}, {"FILTER_30", "DIALOG_1", "FILTER_30"}},
    {10, {"GEN_11", "GEN_11", "FILTER_44"}, {"GEN_11", "GEN_11", "DIALOG_1"}},
    {39, {"DIALOG_1"}, {}},
    {32, {"DIALOG_1"}, {}},
    {33, {"GEN_29"}, {""}},
    {11, {"GEN_1", "VAL_GEN_1", "GEN_1"}, {"GEN_1", "VAL_GEN_9", "GEN_1"}},
    {12, {"GEN_1", "VAL_GEN_5", "GEN_1"}, {"GEN_1", "VAL_GEN_3", "GEN_1"}},
    {13, {"GEN_1", "GEN_1", "VAL_GEN_1"}, {"GEN_1", "GEN_1", "VAL_GEN_3"}},
    {14, {"DIALOG_1"}, {}},
    {34, {"GEN_29"}, {""}},
    {16, {"GEN_10", "FILTER_34", "GEN_10"}, {}},
    {17, {"GEN_11", "GEN_11", "FILTER_33"}, {}},
    {25, {"GEN_10", "STGS_CHECK_1", "GEN_10"}, {}},
    {18, {"GEN_38"}, {}},
    {24, {"GEN_38"}, {}},
    {28, {"LANG_5"}, {}},
    {29, {"DIALOG_1"}, {}},
    {30, {"LANG_5"}, {}},
    {31, {"LANG_5"}, {}},
    {38, {"GEN_31"}, {}},
    {0, {""}, {}},
    {23, {""}, {}},
    {40, {""}, {}},
    {-1, {""}, {}},
    {2147483647, {""}, {}},
};

std::string Expected(const Row& row, bool schemes, std::size_t target) {
  const std::vector<std::string>& cells = schemes && !row.with.empty() ? row.with : row.without;
  std::string text = cells[std::min(target, cells.size() - 1)];
  for (std::size_t at = 0; !text.empty() && at != std::string::npos;
       at = text.find(' ', at) == std::string::npos ? std::string::npos : text.find(' ', at) + 1) {
    text.insert(at, "QELM_MSG_");
  }
  return text;
}

TEST(Commands, EachTellsWhatItShouldInEveryState) {
  for (const Row& row : kRows) {
    for (const bool schemes : {false, true}) {
      for (const Target target : {Target::kNone, Target::kDocument, Target::kBook}) {
        HostSession session(kInternal, kOtherHost);
        OpenTarget(session, target);
        if (schemes) session.ActivateAll();
        EXPECT_EQ(session.Command(row.number), Expected(row, schemes, static_cast<std::size_t>(target)))
            << row.number << " target " << static_cast<int>(target) << (schemes ? " with" : " without");
      }
    }
  }
}

TEST(Commands, TheRightOnesExist) {
  struct Case {
    const char* licence;
    std::int32_t host;
    std::set<std::int32_t> missing;
  };
  const Case cases[] = {{"NORMAL", 18, {1, 18, 24, 38, 39}},
                        {"internal", 18, {1, 18, 24, 38, 39}},
                        {"NORMAL", 17, {1, 18, 24, 39}},
                        {"BATCH", 18, {1, 18, 24, 38}},
                        {"INTERNAL", 19, {}}};
  for (const Case& one : cases) {
    HostSession session(testing::Settings{{"QELM_LICENSE_TYPE", one.licence}}, one.host);
    for (const CommandRow& command : AllCommands()) {
      const bool defined = session.plugin().defined_commands[static_cast<std::size_t>(command.number)];
      EXPECT_EQ(defined, !one.missing.contains(command.number)) << one.licence << " " << command.number;
    }
    for (const std::int32_t number : one.missing) EXPECT_EQ(session.Command(number), "") << number;
  }
}

TEST(About, TellsVersionAndWarnsOfWhatIsNotForUsers) {
  struct Case {
    std::vector<std::pair<std::string, std::string>> settings;
    const char* told;
    bool warning;
  };
  const Case cases[] = {
      {{}, "QELM plugin version 1.0 for Adobe(R) FrameMaker(R), built on ", false},
      {{{"QELM_DEBUG_MODE", "DoPrompts"}}, "*** !WARNING!  Debug mode is on! ***\n\n", true},
      {{{"QELM_LICENSE_TYPE", "INTERNAL"}}, "*** !WARNING!  Internal version! ***\n\n", true}};
  for (const Case& row : cases) {
    HostSession session(row.settings);
    const std::string shown = session.Command(19);
    EXPECT_NE(shown.find(row.told), std::string::npos) << shown;
    EXPECT_EQ(shown.find("!WARNING!") != std::string::npos, row.warning) << shown;
  }
}

TEST(UncolorPrompt, IsAskedOnceInASession) {
  HostSession session;
  OpenTarget(session, Target::kDocument);
  session.user.no = {"QELM_MSG_GEN_22"};
  EXPECT_EQ(session.Command(20), "QELM_MSG_GEN_22");
  EXPECT_EQ(session.Command(20), "QELM_MSG_GEN_22") << "a no does not count";
  session.user.no = {};
  EXPECT_EQ(session.Command(20), "QELM_MSG_GEN_22");
  EXPECT_EQ(session.Command(20), "");
  EXPECT_EQ(session.Command(26), "QELM_MSG_GEN_25");
  EXPECT_EQ(session.Command(20), "") << "nor when the settings are read again";
  EXPECT_EQ(session.folder.Read("QELM_Local_Settings.txt").find("PROMPT"), std::string::npos);
}

TEST(OpenMasterCopy, IsTriedTwice) {
  for (const auto& [failures, told] :
       std::map<int, std::string>{{0, ""}, {1, " QELM_MSG_GEN_34"}, {2, " QELM_MSG_STGS_EDIT_35"}}) {
    HostSession session;
    session.Command(0);
    if (failures == 1) session.failing().FailAt("Documents::Open", 1);
    if (failures == 2) {
      std::filesystem::remove(session.folder.File("QELM_MainSettings_LocalCopy.fm"));
      session.inner().documents.Close(session.plugin().main_settings, true);
      session.Shown();
    }
    const std::string shown = session.Command(36);
    EXPECT_TRUE(shown.ends_with("QELM_MSG_STGS_EDIT_33" + told)) << shown;
  }
}

TEST(OpenMasterCopy, NoLeavesItClosed) {
  HostSession session;
  session.user.no = {"QELM_MSG_STGS_EDIT_33", "QELM_MSG_STGS_EDIT_34"};
  EXPECT_EQ(session.Command(36), "QELM_MSG_STGS_EDIT_33");
  EXPECT_EQ(session.Command(37), "QELM_MSG_STGS_EDIT_34");
  EXPECT_EQ(session.inner().documents.ActiveDocument(), host::kNone);
}

TEST(SchemeEditors, OnlyOneIsOpen) {
  HostSession session;
  EXPECT_EQ(session.Command(2), "QELM_MSG_STGS_EDIT_36");
  EXPECT_EQ(session.inner().documents.ActiveDocument(), session.plugin().main_settings);
  EXPECT_EQ(session.Command(22), "QELM_MSG_STGS_EDIT_37");
}

// The user edits the schemes in the host and goes on working.
TEST(MainSettings, AreReadAgainWhenTheyWereEdited) {
  HostSession session;
  session.ActivateAll();
  session.Command(2);
  const host::Id settings = session.plugin().main_settings;
  host::Host& host = session.inner();
  for (host::Id element = 1; element < host.elements.IdLimit(settings); ++element) {
    std::string buffer;
    if (host.text.ElementText(settings, element, 20, &buffer) == "Red") {
      ASSERT_TRUE(host.editing.SetText(settings, element, "Blue"));
      break;
    }
  }
  session.Command(35);
  EXPECT_EQ(session.plugin().schemes.coloring.rules.at(0).color, "Blue");
}

TEST(MainSettings, AreOpenedAgainWhenTheUserClosedThem) {
  HostSession session;
  session.ActivateAll();
  session.Command(2);
  session.inner().documents.Close(session.plugin().main_settings, true);
  EXPECT_EQ(session.Command(35), "");
  EXPECT_FALSE(
      session.inner().documents.Switch(session.plugin().main_settings, host::DocumentSwitch::kOnScreen));
}

TEST(Validate, TheReportIsSavedAndTheDocumentStaysActive) {
  HostSession session;
  const host::Id document = session.OpenMif("doc.mif", kText);
  session.ActivateAll();
  for (int run = 0; run < 2; ++run) {
    EXPECT_EQ(session.Command(12), "QELM_MSG_VAL_GEN_3");
    EXPECT_EQ(session.inner().documents.ActiveDocument(), document);
    EXPECT_NE(session.folder.Read("QELM_Plugin_Report.fm").find("openObjectId"), std::string::npos);
  }
  const std::string report = session.folder.Read("QELM_Plugin_Report.fm");
  session.inner().documents.Close(document, true);
  EXPECT_EQ(session.Command(12), "QELM_MSG_GEN_10") << "the report itself is in front now";
  EXPECT_EQ(session.folder.Read("QELM_Plugin_Report.fm"), report);
}

// Whatever the host refuses, once a call: no command ends without a word when it did not do its work.
void FailEach(std::int32_t number, Target target) {
  const std::set<std::string> must_be_told = {"Documents::Open", "Documents::Save",
                                              "Editing::AppendParagraph", "Text::WriteProperties",
                                              "Platform::Start"};
  std::map<std::string, std::int64_t> calls;
  std::string unharmed;
  for (bool counting = true;; counting = false) {
    for (const auto& [operation, count] : counting ? std::map<std::string, std::int64_t>{{"", 0}} : calls) {
      const std::int64_t last = must_be_told.contains(operation) ? std::min<std::int64_t>(count, 3) : 1;
      for (std::int64_t n = 1; n <= last; ++n) {
        SCOPED_TRACE(std::to_string(number) + " " + operation + " " + std::to_string(n));
        HostSession session(kInternal, kOtherHost);
        OpenTarget(session, target);
        session.ActivateAll();
        session.failing().FailAt(operation, counting ? 0 : n);
        const std::string shown = session.Command(number);
        if (counting) {
          unharmed = shown;
          calls = session.failing().calls();
        } else if (!session.failing().failed().empty() && must_be_told.contains(operation)) {
          EXPECT_TRUE(shown != unharmed || session.entries().last_result() != common::kDone);
        }
      }
    }
    if (!counting) return;
  }
}

TEST(Commands, EveryFailureOfTheHostEndsInAMessage) {
  // One of those that share a handler.
  for (const std::int32_t number : {1, 27, 36, 37, 2, 26, 15, 6, 20, 8, 35, 9, 12, 16, 25, 28, 30}) {
    FailEach(number, Target::kDocument);
  }
  for (const std::int32_t number : {7, 13, 17, 21}) FailEach(number, Target::kBook);
}

}  // namespace
}  // namespace qelm
