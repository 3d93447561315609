#include "schemes/main_settings.h"

#include <gtest/gtest.h>

#include "schemes/settings_session.h"

namespace qelm::schemes {
namespace {

using namespace testing;  // the notation of settings_session.h

TEST(MainSettings, AreKnownByTheirRootOrTheirCategories) {
  SettingsSession session;
  const std::string category = Category("A", "");
  struct Row {
    std::string content;
    bool expected;
  };
  const std::vector<Row> rows = {
      {MainSettings("", ""), true},
      {E("TSP_MainSettings", ""), true},
      {E("OurSettings", E("SchemeCategories_XPath", category)), true},
      {E("OurSettings", E("SchemeCategories", category)), false},
      {E("Manual", E("OurSettings", E("SchemeCategories_XPath", category))), false},
      {E("Manual", "text"), false},
  };
  for (std::size_t index = 0; index < rows.size(); ++index) {
    const host::Id document = session.Open("/" + std::to_string(index) + ".xml", rows[index].content);
    EXPECT_EQ(IsMainSettings(session.host(), session.engine, document), rows[index].expected) << index;
  }
  EXPECT_TRUE(IsMainSettings(session.host(), session.engine,
                             session.OpenSource("assets/QELM_MainSettings_Template.fm")));
}

TEST(OpenMainSettings, SaysWhatIsWrongAndWhere) {
  SettingsSession session;
  session.platform.files["/manual.xml"] = E("Manual", "text");
  session.platform.files["/broken.xml"] = "<QELM_MainSettings><SchemeCategories>";
  session.platform.files["/good.xml"] = MainSettings("", "");
  const auto open = [&session](const std::string& path) {
    return OpenMainSettings(session.host(), session.engine, session.messenger, path, true);
  };
  const host::Id good = open("/good.xml");
  EXPECT_NE(good, host::kNone);
  EXPECT_EQ(open("/good.xml"), good) << "it stays open";
  EXPECT_FALSE(session.host().documents.Switch(good, host::DocumentSwitch::kOnScreen));
  EXPECT_TRUE(session.user.notes.empty());
  for (const std::string path : {"/manual.xml", "/broken.xml", "/missing.fm"}) {
    EXPECT_EQ(open(path), host::kNone);
    EXPECT_NE(session.user.notes.back().find(path), std::string::npos) << session.user.notes.back();
  }
  EXPECT_NE(session.user.notes[0].find("<QELM_MainSettings>"), std::string::npos);
  EXPECT_EQ(session.user.notes.size(), 3U);
  EXPECT_EQ(session.host().documents.NextOpenDocument(good), host::kNone)
      << "what was refused is closed again";
}

TEST(OpenMainSettings, LeavesADocumentOpenThatWasOpenBefore) {
  SettingsSession session;
  const host::Id manual = session.Open("/manual.xml", E("Manual", "text"));
  EXPECT_EQ(OpenMainSettings(session.host(), session.engine, session.messenger, "/manual.xml", false),
            host::kNone);
  EXPECT_EQ(session.host().documents.FirstOpenDocument(), manual);
  EXPECT_TRUE(session.user.notes.empty());
}

TEST(NameLiteral, ChoosesTheQuotationMark) {
  EXPECT_EQ(NameLiteral("plain"), "'plain'");
  EXPECT_EQ(NameLiteral("Ann's"), "\"Ann's\"");
  EXPECT_EQ(NameLiteral("12\""), "'12\"'");
  EXPECT_EQ(NameLiteral("'\""), "");
}

}  // namespace
}  // namespace qelm::schemes
