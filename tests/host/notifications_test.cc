// What the plug-in does when its host tells it of something.
#include "host/notifications.h"

#include <gtest/gtest.h>

#include "host/host_session.h"

namespace qelm {
namespace {

using testing::HostSession;

constexpr char kFiltered[] = "<Doc>\n<P>seen</P>\n<P>{Hidden}unseen{}</P>\n</Doc>";
constexpr char kAudience[] = R"(<Doc><P Audience="admin">right</P><P Audience="nobody">wrong</P></Doc>)";

TEST(Notifications, AreAskedFor) {
  HostSession session;
  EXPECT_EQ(session.embedded().requested_notifications(),
            (std::set<std::int32_t>{2, 13, 40, 42, 43, 53, 55, 57, 59, 63}));
}

TEST(OpenedDocument, IsOfferedToBeRestoredWhenItIsFiltered) {
  struct Row {
    const char* what;
    const char* text;
    std::vector<std::string> hidden;
    bool show_all;
    bool offered;
  };
  const Row rows[] = {
      {"filtered", kFiltered, {"Hidden"}, false, true},
      {"the condition is shown", kFiltered, {}, false, false},
      {"everything is shown", kFiltered, {"Hidden"}, true, false},
      {"another condition", "<Doc>\n<P>{Secret}unseen{}</P>\n</Doc>", {"Secret"}, false, false},
      {"no condition", "<Doc>\n<P>seen</P>\n</Doc>", {}, false, false}};
  for (const Row& row : rows) {
    HostSession session;
    testing::MifFile file;
    file.flows.push_back({row.text});
    file.hidden = row.hidden;
    file.show_all = row.show_all;
    const host::Id document = session.Open(session.folder.Write("doc.mif", testing::Mif(file)));
    ASSERT_NE(document, host::kNone);
    EXPECT_EQ(session.Shown(), row.offered ? "QELM_MSG_GEN_26" : "") << row.what;
    if (!row.offered) continue;
    const host::Id tag = session.inner().catalogs.FindCondition(document, "Hidden");
    host::TextRange found;
    const host::Id flow = session.inner().elements.MainFlow(document);
    EXPECT_EQ(session.inner().text.FindCondition(document, session.inner().text.FlowStart(document, flow),
                                                 tag, &found),
              host::Text::FindResult::kNotFound)
        << "restored";
  }
}

TEST(OpenedDocument, StaysAsItIsAfterANoAndWithTheSettingOff) {
  HostSession session;
  session.user.no = {"QELM_MSG_GEN_26"};
  const host::Id document = session.OpenMif("doc.mif", kFiltered, {"Hidden"});
  EXPECT_EQ(session.Shown(), "QELM_MSG_GEN_26");
  EXPECT_FALSE(session.inner().documents.Switch(document, host::DocumentSwitch::kModified));

  HostSession silent(testing::Settings{{"PROMPT_OPENED_PREVIOUSLY_FILTERED_DOC_WARNING", "0"}});
  silent.OpenMif("doc.mif", kFiltered, {"Hidden"});
  EXPECT_EQ(silent.Shown(), "");
}

// A command that opens a book's documents on screen knows what it opens.
TEST(OpenedDocument, IsPassedOverWhileACommandRuns) {
  HostSession session;
  session.OpenMif("doc.mif", kFiltered, {"Hidden"});
  session.inner().documents.Close(session.inner().documents.ActiveDocument(), true);
  session.Open(session.folder.Write("book.mif", testing::MifBook({"<c>doc.mif"})));
  session.ActivateAll();
  session.Shown();
  const std::string shown = session.Command(7);
  EXPECT_EQ(shown.find("QELM_MSG_GEN_26"), std::string::npos) << shown;
}

TEST(AutoValidation, ChecksTheObjectOrTheSelection) {
  HostSession session(testing::Settings{{"VAL_AUTO_VALIDATION_ENABLED", "1"}});
  const host::Id document = session.OpenMif("doc.mif", kAudience);
  session.ActivateAll();
  host::Elements& elements = session.inner().elements;
  const host::Id root = elements.Root(document, elements.MainFlow(document));
  const auto right = static_cast<std::int32_t>(elements.FirstChild(document, root));
  const auto wrong = static_cast<std::int32_t>(elements.LastChild(document, root));
  for (const std::int32_t number : {53, 57, 59, 63}) {
    EXPECT_EQ(session.Notify(number, document, "Audience", wrong), "QELM_MSG_VAL_REP_16") << number;
    EXPECT_EQ(session.Notify(number, 0, "Audience", wrong), "QELM_MSG_VAL_REP_16") << number;
    EXPECT_EQ(session.Notify(number, document, "Audience", right), "") << number;
    EXPECT_EQ(session.Notify(number, document, "Audience", -1), "") << number;
  }
  session.inner().text.SelectElement(document, static_cast<host::Id>(wrong));
  EXPECT_EQ(session.Notify(55, document, "", right), "QELM_MSG_VAL_REP_16");
  for (const std::int32_t number : {40, 42, 43, 1, 99}) {
    EXPECT_EQ(session.Notify(number, document, "", wrong), "") << number;
  }
}

TEST(AutoValidation, NothingHappensWithTheSettingOff) {
  HostSession session;
  const host::Id document = session.OpenMif("doc.mif", kAudience);
  session.ActivateAll();
  const std::string before = session.Saved(document);
  for (const std::int32_t number : {53, 55, 57, 59, 63}) {
    for (std::int32_t element = 0; element < 6; ++element) {
      EXPECT_EQ(session.Notify(number, document, "Audience", element), "");
    }
  }
  EXPECT_EQ(session.Saved(document), before);
}

TEST(Notification26, LetsGoOfTheMainSettings) {
  HostSession session;
  session.Notify(26, 0);
  EXPECT_EQ(session.plugin().main_settings, host::kNone);
  EXPECT_EQ(session.inner().documents.FirstOpenDocument(), host::kNone);
}

// An exception is the worst that can happen inside an entry.
TEST(Entries, AnExceptionIsToldAndStopsThere) {
  HostSession session;
  session.user.answer = [](const std::string& text) -> bool {
    if (text.find("QELM_MSG_STGS_EDIT_33") != std::string::npos) throw std::runtime_error("out of luck");
    return true;
  };
  const std::string shown = session.Command(36);
  EXPECT_TRUE(shown.ends_with("QELM_MSG_GEN_35")) << shown;
  EXPECT_EQ(session.entries().last_result(), 0);
  EXPECT_EQ(session.Command(26), "QELM_MSG_GEN_25");
}

}  // namespace
}  // namespace qelm
