// Calls of other clients as the host delivers them: as notification 13.
#include <gtest/gtest.h>

#include "host/host_session.h"
#include "host/notifications.h"

namespace qelm::testing {
namespace {

constexpr char kDocument[] = R"(
<Doc>
  <P Audience="admin">for admins</P>
  <P Audience="user">for users</P>
  <P>for <I Audience="user">all</I> of them</P>
</Doc>)";

// A session that is called, with one document open.
class Called : public ::testing::Test {
 protected:
  Called() : document_(session_.OpenMif("doc.mif", kDocument)), path_(session_.folder.File("doc.mif")) {}

  // The answer with who gave it: "1 filter".
  std::string Call(const std::string& call) {
    shown_ = session_.Notify(kClientCall, host::kNone, call);
    return std::to_string(session_.clients.returned) + " " +
           std::string(calls::SourceName(session_.plugin().calls.last.source));
  }
  std::string UniqueId(std::size_t nth) {
    host::Host& host = session_.inner();
    host::Id element =
        host.elements.FirstChild(document_, host.elements.Root(document_, host.elements.MainFlow(document_)));
    for (; nth > 0; --nth) element = host.elements.NextSibling(document_, element);
    return std::to_string(host.elements.UniqueId(document_, element));
  }
  std::string Element(std::size_t nth) { return path_ + "---" + UniqueId(nth); }

  HostSession session_;
  host::Id document_;
  std::string path_;
  std::string shown_;  // by the last call
};

// Each word with as many arguments as it takes at least and at most, and what all "x" come to.
TEST_F(Called, WordsTakeTheirCountsAndNoOthers) {
  struct Row {
    const char* word;
    std::size_t least;
    std::size_t most;
    const char* answer;
  };
  const Row rows[] = {{"SetScheme", 3, 4, "12 call"},
                      {"ColorElement", 2, 4, "104 call"},
                      {"ColorFile", 1, 2, "104 call"},
                      {"GetParm", 1, 1, "109 call"},
                      {"SetParm", 2, 2, "109 call"},
                      {"FilterCheckElement", 2, 2, "104 call"},
                      {"FilterFile", 1, 2, "104 call"},
                      {"RestoreFile", 1, 1, "104 call"},
                      {"ValidateElement", 2, 2, "106 call"},
                      {"ReadLocalSettings", 0, 1, "1 call"},
                      {"SetNotificationClient", 1, 1, "1 call"},
                      {"SetNotificationStatus", 1, 1, "1 call"}};
  for (const Row& row : rows) {
    std::string call = row.word;
    for (std::size_t count = 0; count < 6; ++count, call += "---x") {
      const bool taken = count >= row.least && count <= row.most;
      EXPECT_EQ(Call(call), taken ? row.answer : "103 call") << call;
    }
  }
}

TEST_F(Called, WordsAreTakenExactly) {
  struct Row {
    const char* call;
    const char* answer;
  };
  const Row rows[] = {{"Hello", "1 call"},
                      {"Hello---", "101 call"},
                      {"hello", "101 call"},
                      {" Hello", "101 call"},
                      {"", "101 call"},
                      {"getparm---QELMVersionMajor", "101 call"},
                      {"GetParm---QELMVersionMajor", "1 call"},
                      {"GetParm---QELMVersionMinor", "0 call"},
                      {"GetParm---", "109 call"},
                      {"GetParm----QELMVersionMajor", "109 call"},
                      {"ChangeCallDelimiter", "103 call"},
                      {"ChangeCallDelimiter|", "1 call"},
                      {"GetParm---QELMVersionMajor", "101 call"},
                      {"GetParm|QELMVersionMajor", "1 call"},
                      {"ChangeCallDelimiter---", "1 call"},
                      {"GetParm---QELMVersionMajor", "1 call"}};
  for (const Row& row : rows) EXPECT_EQ(Call(row.call), row.answer) << row.call;
}

TEST_F(Called, ParametersAreSetForTheSession) {
  using config::LocalSettings;
  config::LocalSettings& settings = session_.plugin().settings;
  const std::pair<const char*, bool LocalSettings::*> switches[] = {
      {"Filter_SaveFirst", &LocalSettings::filt_default_save_files},
      {"Filter_RemoveOverrides", &LocalSettings::filt_default_remove_coloring},
      {"Filter_ShowBeforeNRFilt", &LocalSettings::filt_show_all_before_restore_filter},
      {"Val_Rule1Active", &LocalSettings::val_rule_1_enabled},
      {"Val_Rule2Active", &LocalSettings::val_rule_2_enabled},
      {"Val_Rule3Active", &LocalSettings::val_rule_3_enabled},
      {"Val_Rule4Active", &LocalSettings::val_rule_4_enabled},
      {"Val_ApplyStrikethrough", &LocalSettings::val_apply_strikethrough_text}};
  for (const auto& [name, setting] : switches) {
    const bool before = settings.*setting;
    EXPECT_EQ(Call(std::string("SetParm---") + name + "---" + (before ? "False" : "True")), "1 call");
    EXPECT_NE(settings.*setting, before) << name;
    EXPECT_EQ(Call(std::string("SetParm---") + name + "---perhaps"), "1 call");
    EXPECT_FALSE(settings.*setting) << name;
  }
  struct Type {
    const char* value;
    const char* answer;
    int type;
  };
  const Type types[] = {
      {"Duplicate", "1 call", 3}, {"Source", "1 call", 1},      {"S_NRx", "1 call", 2},
      {"S_N", "1 call", 1},       {"Source_NR", "1 call", 2},   {"duplicate", "110 call", 2},
      {"", "110 call", 2},        {"source_nr", "110 call", 2}, {"D", "1 call", 3}};
  for (const Type& type : types) {
    EXPECT_EQ(Call(std::string("SetParm---Filter_Type---") + type.value), type.answer) << type.value;
    EXPECT_EQ(settings.filter_type, type.type) << type.value;
  }
  for (const auto& [value, flag] : {std::pair("0", 0), {"2", 2}, {"", 1}, {"False", 0}, {"True", 1}}) {
    EXPECT_EQ(Call(std::string("SetParm---Filter_HideAfterNRFilt---") + value), "1 call");
    EXPECT_EQ(settings.filt_hide_content_after_no_restore_filter, flag) << value;
  }
  EXPECT_EQ(Call("SetParm---Filter_Path---/out/a/b"), "1 call");
  EXPECT_EQ(session_.plugin().calls.filter_path, "\\out\\a\\b");
  EXPECT_EQ(session_.folder.Read("QELM_Local_Settings.txt").find("FILT"), std::string::npos);
}

TEST_F(Called, MainSettingsPathIsWrittenOrNothingIs) {
  const std::string settings = session_.folder.Read("QELM_Local_Settings.txt");
  const std::string before = session_.plugin().settings.paths.main_settings;
  const std::string set = "SetParm---Gen_MainSettingsPath---";
  EXPECT_EQ(Call(set + session_.folder.File("missing.xml")), "115 call");
  EXPECT_EQ(Call(set + path_), "122 call");  // open, but no such document
  EXPECT_EQ(session_.plugin().settings.paths.main_settings, before);
  EXPECT_EQ(session_.folder.Read("QELM_Local_Settings.txt"), settings);
  const std::string other =
      session_.folder.Write("other.xml", session_.folder.Read("QELM_MainSettings_LocalCopy.fm"));
  EXPECT_EQ(Call(set + other), "1 call");
  EXPECT_EQ(shown_, "");
  EXPECT_EQ(session_.plugin().settings.paths.main_settings, other);
  EXPECT_NE(session_.folder.Read("QELM_Local_Settings.txt").find("MAIN_SETTINGS_PATH=" + other),
            std::string::npos);
}

TEST_F(Called, SettingsThatCannotBeReadAreToldOnlyIfWanted) {
  EXPECT_EQ(Call("ReadLocalSettings---True"), "1 call");
  EXPECT_EQ(shown_, "QELM_MSG_GEN_25");
  session_.folder.Write("QELM_Local_Settings.txt", "");
  EXPECT_EQ(Call("ReadLocalSettings"), "115 call");
  EXPECT_EQ(shown_, "");
  EXPECT_EQ(Call("ReadLocalSettings---T"), "115 call");
  EXPECT_NE(shown_, "");
}

TEST_F(Called, SchemesAreSetByKindAndStayUntilOthersAre) {
  struct Row {
    const char* call;
    const char* answer;
    const char* shown;
    const char* coloring;  // the active scheme then
  };
  const Row rows[] = {
      {"SetScheme---coloring---Audience---Color", "1 call", "", "Color"},
      {"SetScheme---Coloring---Audience---Color", "12 call", "", "Color"},
      {"SetScheme---coloring---Audience---", "12 call", "", "Color"},
      {"SetScheme---coloring---Audience---<none>", "12 call", "", "Color"},
      {"SetScheme---filter---Audience---Filter", "1 call", "", "Color"},
      {"SetScheme---validation---Audience---Check", "1 call", "", "Color"},
      {"SetScheme---coloring---Audience---Nothing", "11 call", "", "<none>"},
      {"SetScheme---coloring---Nowhere---Color---True", "11 call", "QELM_MSG_COLORING_11", "<none>"}};
  for (const Row& row : rows) {
    EXPECT_EQ(Call(row.call), row.answer) << row.call;
    EXPECT_EQ(shown_, row.shown) << row.call;
    EXPECT_EQ(session_.plugin().schemes.coloring.name, row.coloring) << row.call;
  }
  EXPECT_EQ(session_.plugin().schemes.filter.name, "Filter");
  EXPECT_EQ(session_.plugin().schemes.validation.name, "Check");
}

// The same number comes from the call and from the operation.
TEST_F(Called, ElementsAndFilesThatAreNotThere) {
  const std::string closed = session_.folder.File("closed.mif");
  EXPECT_EQ(Call("ColorFile---" + path_), "104 coloring");
  EXPECT_EQ(Call("FilterFile---" + path_), "104 filter");
  EXPECT_EQ(Call("FilterCheckElement---" + Element(0)), "104 filter");
  EXPECT_EQ(Call("ColorElement---" + Element(0)), "104 coloring");
  EXPECT_EQ(Call("ValidateElement---" + closed + "---1"), "106 call");
  session_.ActivateAll();
  for (const auto& [word, source] : {std::pair("ColorElement", "coloring"),
                                     {"FilterCheckElement", "filter"},
                                     {"ValidateElement", "validation"}}) {
    EXPECT_EQ(Call(std::string(word) + "---" + closed + "---1"), "104 call") << word;
    for (const char* id : {"---", "---x", "---999999", "---1e3"}) {
      EXPECT_EQ(Call(word + ("---" + path_) + id), std::string("103 ") + source) << word << id;
    }
  }
}

TEST_F(Called, ElementsAreColoredWithOrWithoutWhatTheyHold) {
  session_.ActivateAll();
  EXPECT_EQ(Call("ColorElement---" + Element(0)), "1 coloring");
  EXPECT_EQ(session_.plugin().coloring_run.colored, 1U);
  EXPECT_EQ(session_.plugin().coloring_run.visited, 2U);  // with its text
  EXPECT_EQ(Call("ColorElement---" + Element(2) + "---False---False"), "1 coloring");
  EXPECT_EQ(session_.plugin().coloring_run.visited, 1U);
  EXPECT_EQ(Call("ColorFile---" + path_), "1 coloring");
  EXPECT_NE(session_.Saved(document_).find("<FUnderlining FSingle>"), std::string::npos);
}

TEST_F(Called, AnElementIsKeptOrNot) {
  session_.ActivateAll();
  EXPECT_EQ(Call("FilterCheckElement---" + Element(0)), "0 filter");
  EXPECT_EQ(Call("FilterCheckElement---" + Element(1)), "1 filter");
  EXPECT_EQ(Call("FilterCheckElement---" + Element(2)), "0 filter");
}

TEST_F(Called, AnElementIsValidatedWithAlerts) {
  session_.ActivateAll();
  EXPECT_EQ(Call("ValidateElement---" + Element(0)), "-1 validation");
  const host::Id bad = session_.OpenMif("bad.mif", "<Doc><P Audience=\"nobody\">x</P></Doc>");
  document_ = bad;
  path_ = session_.folder.File("bad.mif");
  EXPECT_EQ(Call("ValidateElement---" + Element(0)), "1 validation");
  EXPECT_EQ(shown_, "QELM_MSG_VAL_REP_16");
  EXPECT_EQ(Call("SetParm---Val_Rule1Active---False"), "1 call");
  EXPECT_EQ(Call("ValidateElement---" + Element(0)), "-1 validation");
}

// What is active stays so, nothing is asked, and the client hears of each step in order.
TEST_F(Called, AFilterAndItsRestoreTellTheRegisteredClient) {
  session_.ActivateAll();
  const host::Id other = session_.OpenMif("other.mif", kDocument);
  Call("SetNotificationClient---CMS");
  Call("SetParm---Filter_Type---Source");
  EXPECT_EQ(Call("FilterFile---" + path_), "1 filter");
  EXPECT_TRUE(session_.clients.sent.empty());
  EXPECT_EQ(Call("SetNotificationStatus---1"), "1 call");
  EXPECT_EQ(Call("FilterFile---" + path_), "1 filter");
  EXPECT_EQ(shown_, "");
  EXPECT_EQ(session_.inner().documents.ActiveDocument(), other);
  EXPECT_EQ(session_.plugin().filter_run.hidden, 2U);
  EXPECT_EQ(Call("RestoreFile---" + path_), "1 filter");
  EXPECT_EQ(
      session_.clients.sent,
      (std::vector<std::string>{"CMS:QELM_Filter_Start", "CMS:QELM_Filter_RestoreDoc_Start",
                                "CMS:QELM_Filter_RestoreDoc_Complete", "CMS:QELM_Filter_Complete",
                                "CMS:QELM_Filter_RestoreDoc_Start", "CMS:QELM_Filter_RestoreDoc_Complete"}));
  EXPECT_FALSE(session_.inner().documents.Switch(other, host::DocumentSwitch::kModified));
  session_.clients.sent.clear();
  for (const char* status : {"0", "2", "-1", "", "yes"}) {
    EXPECT_EQ(Call(std::string("SetNotificationStatus---") + status), "1 call");
    Call("RestoreFile---" + path_);
    EXPECT_TRUE(session_.clients.sent.empty()) << status;
  }
}

TEST_F(Called, ACancelledFilterSaysSo) {
  session_.ActivateAll();
  std::string many = "<Doc>";
  for (int i = 0; i < 300; ++i) many += "<P Audience=\"user\">x</P>";
  session_.OpenMif("many.mif", many + "</Doc>");
  Call("SetParm---Filter_Type---Source");
  Call("SetNotificationClient---CMS");
  Call("SetNotificationStatus---1");
  session_.user.esc_at_poll = session_.user.polls + 1;
  EXPECT_EQ(Call("FilterFile---" + session_.folder.File("many.mif")), "108 filter");
  EXPECT_TRUE(session_.plugin().calls.last.broken_off);
  EXPECT_EQ(session_.clients.sent.back(), "CMS:QELM_Filter_Cancelled");
}

}  // namespace
}  // namespace qelm::testing
