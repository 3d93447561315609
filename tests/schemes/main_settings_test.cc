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

TEST(OpenMainSettings, LeavesADocumentOpenThatWasOpenBefore) {
  SettingsSession session;
  const host::Id manual = session.Open("/manual.xml", E("Manual", "text"));
  EXPECT_EQ(OpenMainSettings(session.host(), session.engine, session.messenger, "/manual.xml", false),
            host::kNone);
  EXPECT_EQ(session.host().documents.FirstOpenDocument(), manual);
  EXPECT_TRUE(session.user.notes.empty());
}

}  // namespace
}  // namespace qelm::schemes
