// The plug-in's dialogs with the resources that are shipped, in a host without a window.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "embedded/adapter/clients.h"
#include "embedded/adapter/embedded_host.h"
#include "embedded/adapter/platform.h"
#include "embedded/adapter/resource_dialogs.h"
#include "host/active_scheme_dialog.h"
#include "host/dialog_events.h"
#include "host/filter_dialog.h"
#include "host/interface/entry_points.h"
#include "host/list_editor.h"
#include "messages/dialog.h"
#include "messages/message_box.h"
#include "support/temp_folder.h"

namespace qelm {
namespace {

using namespace embedded::adapter;
using filtering::HideAfter;
using filtering::LaunchMode;
using filtering::TargetKind;
using nlohmann::json;

constexpr char kAssets[] = QELM_SOURCE_DIR "/assets";

std::string Category(const std::string& name, const std::string& schemes) {
  return "<SchemeCategory><CategorySettings><Name>" + name + "</Name></CategorySettings>" + schemes +
         "</SchemeCategory>";
}
std::string Scheme(const std::string& name) {
  return "<Scheme><SchemeSettings><Name>" + name + "</Name></SchemeSettings></Scheme>";
}
std::string MainSettings() {
  return "<QELM_MainSettings><SchemeCategories_XPath>" +
         Category("Audience", "<ColoringSchemes>" + Scheme("By audience") +
                                  "</ColoringSchemes><FilterSchemes>" + Scheme("Beginner") +
                                  Scheme("Expert") + "</FilterSchemes>") +
         Category("Review", "<ColoringSchemes>" + Scheme("Changes") + "</ColoringSchemes>") +
         Category("Quality", "<ValidationSchemes>" + Scheme("Strict") + "</ValidationSchemes>") +
         "</SchemeCategories_XPath></QELM_MainSettings>";
}

class HostDialogs : public ::testing::Test {
 protected:
  // Starts the plug-in; its dialogs are answered by these lines.
  void Start(const std::string& answers) {
    folder.Write("QELM.ini", "SETTINGS_LOCATION=INSTALL_FOLDER\n");
    folder.Write("QELM_Local_Settings.txt", "DEFAULT_SCHEME_CATEGORY=Audience\n" + local_settings);
    folder.Write("QELM_MainSettings_LocalCopy.fm", main_settings);
    Answer(answers);
    log.UseStream(events);
    dialogs.SetFolder(kAssets);
    dialogs.SetEventEntry([this](std::int32_t dialog, std::int32_t item, std::int32_t modifiers) {
      return RouteDialogEvent(*plugin, dialog, item, modifiers);
    });
    EmbeddedHost::Options options;
    options.plugin_folder = folder.path();
    host = std::make_unique<EmbeddedHost>(options, user, dialogs, clients, platform);
    plugin = std::make_unique<Plugin>(host->roles());
    ASSERT_TRUE(plugin->Initialize({}));
    ASSERT_TRUE(plugin->messenger.LoadLanguage(std::string(kAssets) + "/languages", "English"));
    events.str("");
    alerts = user.Alerts().size();
  }

  void Answer(const std::string& answers) {
    std::string error;
    std::optional<Answers> parsed = Answers::Parse(answers, &error);
    ASSERT_TRUE(parsed) << error;
    user.SetAnswers(std::move(*parsed));
  }

  // How many alerts came since the start, and the last one.
  std::size_t Alerts() const { return user.Alerts().size() - alerts; }
  std::string LastAlert() const { return user.Alerts().empty() ? "" : user.Alerts().back(); }
  // The items of the first dialog that was shown, by name.
  json FirstShown() const {
    std::istringstream lines(events.str());
    for (std::string line; std::getline(lines, line);) {
      const json event = json::parse(line);
      if (event["event"] == "dialog") return event;
    }
    return {};
  }
  json Shown(const std::string& name) const {
    const json shown = FirstShown();
    for (const json& item : shown["items"]) {
      if (item["item"] == name) return item["value"];
    }
    return "not shown";
  }

  testing::TempFolder folder;
  std::string local_settings;
  std::string main_settings = MainSettings();
  PosixPlatform platform;
  std::istringstream in;
  std::ostringstream messages;
  std::ostringstream events;
  EventLog log;
  ScriptedUserInterface user{{.in = in, .messages = messages, .events = log}};
  ResourceDialogs dialogs{user, platform, log};
  RecordedClients clients{log};
  std::unique_ptr<EmbeddedHost> host;
  std::unique_ptr<Plugin> plugin;
  std::size_t alerts = 0;
};

TEST_F(HostDialogs, ShippedResourcesOpenAndTheirLabelsCanBeTranslated) {
  Start("");
  const std::string english = *platform.ReadFile(std::string(kAssets) + "/languages/English.po");
  const std::vector<std::string> names = platform.FolderNames(std::string(kAssets) + "/dialogs");
  EXPECT_EQ(names.size(), 12U);
  for (const std::string& name : names) {
    const host::Id id = dialogs.OpenDialog(name.substr(0, name.size() - 5));
    ASSERT_NE(id, host::kNone) << name << ": " << LastAlert();
    for (std::int32_t item = host::kDialogTitle; item < dialogs.ItemCount(id); ++item) {
      const std::string label = dialogs.LabelOf(id, item);
      if (label.empty()) continue;
      EXPECT_NE(english.find("msgctxt \"Dialogs\"\nmsgid \"" + label + "\"\n"), std::string::npos)
          << name << ": \"" << label << "\"";
    }
    dialogs.CloseDialog(id);
  }
}

TEST_F(HostDialogs, MessageBoxResourcesHaveTheItemsThatTheBoxCountsOn) {
  local_settings = "USE_ALTERNATE_ALERTS=1\n";
  Start("dialog QELM Alert: press No");
  for (const int lines : {1, 5, 11, 19, 31}) {
    events.str("");
    std::string text;
    for (int line = 0; line < lines; ++line) text += "line\n";
    EXPECT_FALSE(plugin->messenger.Ask(text));
    const json shown = FirstShown();
    EXPECT_EQ(shown["name"].get<std::string>().substr(0, 14), "bw_Dialog_Msg_") << lines;
    EXPECT_EQ(shown["number"], 1001);
    EXPECT_EQ(shown["buttons"], json({"Yes", "No"}));
    EXPECT_TRUE(shown["items"].empty()) << "the check box is hidden";
  }
  plugin->messenger.Alert("Just so you know.");
  EXPECT_NE(LastAlert().find("Just so you know."), std::string::npos);
}

TEST_F(HostDialogs, ActiveSchemeIsChosenAndLoaded) {
  struct Row {
    const char* situation;
    std::int32_t kind;
    const char* category;
    const char* scheme;
    const char* expected;  // category/scheme afterwards
  };
  constexpr Row kRows[] = {
      {"a coloring scheme", 18, "Review", "Changes", "Review/Changes"},
      {"a validation scheme", 24, "Quality", "Strict", "Quality/Strict"},
      {"a filter scheme", 25, "Audience", "Expert", "Audience/Expert"},
      {"no scheme of a category", 25, "Audience", "<none>", "<none>/<none>"},
      {"no category", 18, "<none>", nullptr, "<none>/<none>"},
      {"a category without schemes of the kind is not offered", 25, "Review", "Changes", "Audience/Beginner"},
      {"cancelled at the scheme", 25, "Audience", nullptr, "Audience/Beginner"},
      {"cancelled at once", 25, nullptr, nullptr, "Audience/Beginner"},
  };
  for (const Row& row : kRows) {
    std::string answers;
    if (row.category != nullptr)
      answers += std::string("dialog Category: entries = ") + row.category + ", press OK\n";
    if (row.scheme != nullptr)
      answers += std::string("dialog Set Active: entries = ") + row.scheme + ", press OK\n";
    Start(answers);
    const schemes::SchemeKind kind = row.kind == 18   ? schemes::SchemeKind::kColoring
                                     : row.kind == 24 ? schemes::SchemeKind::kValidation
                                                      : schemes::SchemeKind::kFilter;
    schemes::Scheme& active = plugin->schemes.Of(kind);
    active.category = "Audience";
    active.name = "Beginner";
    ChooseActiveScheme(*plugin, row.kind);
    EXPECT_EQ(active.category + "/" + active.name, row.expected) << row.situation;
    EXPECT_EQ(Alerts(), 0U) << row.situation;
    EXPECT_EQ(FirstShown()["number"], 1226);
    const std::string name = row.kind == 18   ? plugin->settings.color_default_coloring_scheme
                             : row.kind == 24 ? plugin->settings.val_default_validation_scheme
                                              : active.name;
    EXPECT_EQ(name, active.name) << row.situation;
  }
}

TEST_F(HostDialogs, ActiveSchemeDialogBeginsAtWhatIsActive) {
  Start("dialog Category: press OK\ndialog Set Active: press OK");
  plugin->settings.coloring_category = "Review";
  plugin->settings.color_default_coloring_scheme = "Changes";
  ChooseActiveScheme(*plugin, kSetColoringScheme);
  EXPECT_EQ(plugin->schemes.coloring.name, "Changes") << "what the settings name, as none was loaded";
  EXPECT_EQ(Shown("entries"), "Review");
}

TEST_F(HostDialogs, ActiveSchemeFailuresAreSaid) {
  main_settings = "<QELM_MainSettings><SchemeCategories_XPath>" +
                  Category("", "<FilterSchemes>" + Scheme("Nameless") + "</FilterSchemes>") +
                  "</SchemeCategories_XPath></QELM_MainSettings>";
  Start("dialog Category: entries = #2, press OK\ndialog Set Active: entries = Nameless, press OK");
  ChooseActiveScheme(*plugin, 99);
  EXPECT_EQ(Alerts(), 0U);
  ChooseActiveScheme(*plugin, kSetFilterScheme);
  EXPECT_EQ(Alerts(), 1U);
  EXPECT_NE(LastAlert().find("Nameless"), std::string::npos);
  EXPECT_FALSE(plugin->schemes.filter.Active());
  ChooseActiveScheme(*plugin, kSetColoringScheme);
  EXPECT_EQ(Alerts(), 2U) << "there is no coloring scheme at all";
  plugin->main_settings = host::kNone;
  ChooseActiveScheme(*plugin, kSetFilterScheme);
  EXPECT_EQ(Alerts(), 3U);
}

TEST_F(HostDialogs, FilterDialogIsPresetAndFillsTheRun) {
  local_settings = "FILT_DEFAULT_FILTER_TYPE=SOURCE\nFILT_DEFAULT_SAVE_FILES=1\n";
  Start(
      "dialog Filter Document: No restore = no, source_nr = on, save_first = off, remove_coloring = on,"
      " hide_after = Ask, show_before = off, press Filter\n"
      "dialog Filter Document: source_nr = on, save_first = off, remove_coloring = on,"
      " hide_after = Ask, show_before = off, press Filter");
  EXPECT_FALSE(AskFilter(*plugin, TargetKind::kDocument)) << "the first line names an item that there is not";
  EXPECT_EQ(Shown("source"), true);
  EXPECT_EQ(Shown("save_first"), true);
  EXPECT_EQ(Shown("hide_after"), "not shown") << "only for a filter that does not restore";
  EXPECT_EQ(Shown("output_folder"), "not shown");
  EXPECT_EQ(plugin->filter_run.mode, LaunchMode::kDuplicate) << "cancelled: the run is as it was";
  plugin->filter_run.notify = true;

  Answer(
      "dialog Filter Document: source_nr = on, save_first = off, remove_coloring = on, hide_after = Ask,"
      " show_before = off, press Filter");
  ASSERT_TRUE(AskFilter(*plugin, TargetKind::kDocument));
  const filtering::FilterRun& run = plugin->filter_run;
  EXPECT_EQ(run.mode, LaunchMode::kSourceNoRestore);
  EXPECT_EQ(run.target, TargetKind::kDocument);
  EXPECT_FALSE(run.save_first);
  EXPECT_TRUE(run.remove_coloring);
  EXPECT_EQ(run.hide_after_no_restore, HideAfter::kAsk);
  EXPECT_FALSE(run.show_before_no_restore);
  EXPECT_TRUE(run.notify) << "who is told of the run stays";
}

TEST_F(HostDialogs, FilterDialogOfABookRefusesFoldersThatCannotBe) {
  const std::string book = folder.Write("pump/pump.book.mif", "<Book 8.0>\n");
  folder.Write("pump/taken", "a file");
  Start(
      "dialog Filter Book: press Filter\n"
      "dialog Filter Book: output_folder = \" \", press Filter\n"
      "dialog Filter Book: output_folder = ., press Filter\n"
      "dialog Filter Book: output_folder = taken, press Filter\n"
      "dialog Filter Book: output_folder = out/../copy/, delete_empties = off, press Filter\n");
  host::OpenStatus status = host::OpenStatus::kOpened;
  const host::Id id = host->roles().documents.Open(book, {}, &status);
  ASSERT_NE(id, host::kNone) << host->roles().documents.LastError();
  ASSERT_TRUE(host->roles().documents.Activate(id));
  ASSERT_TRUE(AskFilter(*plugin, TargetKind::kBook));
  EXPECT_EQ(Alerts(), 4U);
  EXPECT_NE(LastAlert().find(folder.File("pump/taken")), std::string::npos);
  EXPECT_EQ(plugin->filter_run.output_folder, folder.File("pump/copy"));
  EXPECT_EQ(plugin->filter_run.target, TargetKind::kBook);
  EXPECT_FALSE(plugin->filter_run.delete_empties);
}

TEST_F(HostDialogs, ListIsEditedItemByItem) {
  Start(
      "dialog Patterns: press New Item\n"          // behind the first
      "dialog Patterns: press Move Down\n"         // to the end
      "dialog Patterns: items = #1, press Edit\n"  // no such button: named, and the dialog is closed
      "dialog New Item: item = \"  \", press New Item\n"
      "dialog New Item: item = \" new \", press New Item\n");
  std::vector<std::string> items{"a", "b"};
  EXPECT_FALSE(EditList(plugin->messenger, "Patterns", &items));
  EXPECT_EQ(items, (std::vector<std::string>{"a", "b"})) << "cancelled";
  EXPECT_EQ(Alerts(), 1U) << "an item must not be empty";

  Answer(
      "dialog Patterns: press New Item\n"
      "dialog Patterns: press Move Down\n"
      "dialog Patterns: items = #1, press Edit Item\n"
      "dialog Patterns: items = b, press Delete Item\n"
      "dialog Patterns: items = #1, press Move Up\n"
      "dialog Patterns: press OK\n"
      "dialog bw_Dialog_ItemEntry: item = new, press New Item\n"
      "dialog bw_Dialog_ItemEdit: item = changed, press Edit Item\n");
  EXPECT_TRUE(EditList(plugin->messenger, "Patterns", &items));
  EXPECT_EQ(items, (std::vector<std::string>{"changed", "new"}));
  items.clear();
  Answer("dialog Empty: press Delete Item\ndialog Empty: press OK");
  EXPECT_TRUE(EditList(plugin->messenger, "Empty", &items));
  EXPECT_EQ(Alerts(), 2U) << "nothing is selected";
}

TEST_F(HostDialogs, EventsGoToTheDialogThatIsOpen) {
  Start("");
  for (const std::int32_t number : {-1, 0, 4, 12, 13, 1000, 1001, 1222, 1223, 1224, 1225, 1226}) {
    EXPECT_EQ(RouteDialogEvent(*plugin, number, 0, 0), 0) << number << ": none is open";
  }
  // The message box and the list editor have the same number: the one opened last is meant.
  int outer = 0;
  int inner = 0;
  messages::Dialog list(plugin->messenger, "bw_Dialog_ListEditor", 1);
  list.Run(kListEditorNumber, [&](std::int32_t) {
    ++outer;
    messages::Dialog box(plugin->messenger, "bw_Dialog_Msg_5_Lines_wChkBox", 1);
    box.Run(messages::kMessageBoxNumber, [&](std::int32_t) { return ++inner, 0; });
    return 0;
  });
  EXPECT_EQ(outer, 1);
  EXPECT_EQ(inner, 1);
}

}  // namespace
}  // namespace qelm
