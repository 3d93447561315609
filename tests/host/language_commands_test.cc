// The commands for language files, over the plug-in in the embedded host.
#include "host/language_commands.h"

#include <gtest/gtest.h>

#include <sstream>

#include "embedded/adapter/clients.h"
#include "embedded/adapter/embedded_host.h"
#include "embedded/adapter/platform.h"
#include "embedded/adapter/user_interface.h"
#include "support/temp_folder.h"
#include "support/test_dialogs.h"

namespace qelm {
namespace {

using namespace embedded::adapter;

std::string Entry(const std::string& id, const std::string& text) {
  return "\nmsgctxt \"General Strings\"\nmsgid \"" + id + "\"\nmsgstr \"" + text + "\"\n";
}

// Programs that are started are only remembered.
class Starts : public PosixPlatform {
 public:
  std::vector<std::string> started;
  bool Start(const std::string& program, const std::vector<std::string>& arguments) override {
    started.push_back(program + " " + arguments.front());
    return program != "missing";
  }
};

// A user who writes one text wherever one is asked for.
class WrittenDialogs : public testing::TestDialogs {
 public:
  std::string text;
  std::string TextOf(host::Id, std::int32_t) override { return text; }
};

struct Session {
  Session() {
    folder.Write("QELM.ini", "SETTINGS_LOCATION=INSTALL_FOLDER\n");
    folder.Write("QELM_Local_Settings.txt", "; settings\nNOTEPAD_EXE_PATH=editor\n");
    folder.Write("QELM_MainSettings_LocalCopy.fm", "<QELM_MainSettings/>");
    const std::string header = "msgid \"\"\nmsgstr \"Language: en\\n\"\n";
    std::string english = header + Entry("QELM_MSG_GEN_10", "No document.");
    for (const auto& [id, text] : {std::pair{"QELM_MSG_LANG_1", "set %s"},
                                   {"QELM_MSG_LANG_2", "bad %s %s %s"},
                                   {"QELM_MSG_LANG_3", "name %s"},
                                   {"QELM_MSG_LANG_4", "exists %s"},
                                   {"QELM_MSG_LANG_5", "none %s"},
                                   {"QELM_MSG_LANG_6", "damaged %s"},
                                   {"QELM_MSG_LANG_7", "unwritten %s"},
                                   {"QELM_MSG_LANG_8", "made %s %d"},
                                   {"QELM_MSG_LANG_9", "updated %s %d %d"},
                                   {"QELM_MSG_LANG_10", "complete %s"},
                                   {"QELM_MSG_GEN_24", "no editor"}}) {
      english += Entry(id, text);
    }
    folder.Write("languages/English.po", english);
    folder.Write("languages/German.po",
                 header + Entry("QELM_MSG_GEN_10", "Kein Dokument.") + Entry("QELM_MSG_LANG_1", "%s gilt"));
    EmbeddedHost::Options options;
    options.plugin_folder = folder.path();
    host = std::make_unique<EmbeddedHost>(options, user, dialogs, clients, platform);
    plugin = std::make_unique<Plugin>(host->roles());
    plugin->Initialize({});
    said = user.Alerts().size();
  }

  // Whether the last alert says this.
  bool Said(const std::string& text) const {
    return user.Alerts().size() > said && user.Alerts().back().find(text) != std::string::npos;
  }

  testing::TempFolder folder;
  Starts platform;
  std::istringstream in;
  std::ostringstream messages;
  EventLog events;
  ScriptedUserInterface user{{.in = in, .messages = messages, .events = events}};
  WrittenDialogs dialogs;
  RecordedClients clients{events};
  std::unique_ptr<EmbeddedHost> host;
  std::unique_ptr<Plugin> plugin;
  std::size_t said = 0;
};

TEST(SetLanguage, TheUserChoosesAmongTheFiles) {
  Session session;
  session.folder.Write("languages/notes.txt", "");
  session.dialogs.resources["bw_Dialog_DropDown"] = {"", "OK", "Cancel"};
  const auto choose = [&session](std::int32_t entry, std::int32_t button) {
    session.dialogs.user = [=](testing::TestDialogs::Dialog& dialog) {
      EXPECT_EQ(dialog.number, 1226);
      EXPECT_EQ(dialog.lines, (std::vector<std::string>{"English", "German"}));
      EXPECT_EQ(dialog.values[0], 0) << "English is the language now";
      dialog.values[0] = entry;
      return button;
    };
    return SetLanguage(*session.plugin);
  };
  EXPECT_EQ(choose(1, 2), 0);
  EXPECT_EQ(session.plugin->messenger.LanguageName(), "English");
  EXPECT_EQ(choose(1, 1), 1);
  EXPECT_EQ(session.plugin->messenger.LanguageName(), "German");
}

TEST(CreateLanguageFile, TheUserWritesTheName) {
  Session session;
  EXPECT_EQ(CreateLanguageFile(*session.plugin), 0) << "without the dialog";
  session.dialogs.resources["bw_Dialog_ItemEntry"] = {"Item", "New Item", "Close"};
  session.dialogs.text = " Czech ";
  session.dialogs.user = [](testing::TestDialogs::Dialog& dialog) {
    EXPECT_EQ(dialog.title, "Create Language File");
    return 2;
  };
  EXPECT_EQ(CreateLanguageFile(*session.plugin), 0);
  EXPECT_FALSE(std::filesystem::exists(session.folder.File("languages/Czech.po")));
  session.dialogs.user = [](testing::TestDialogs::Dialog&) { return 1; };
  EXPECT_EQ(CreateLanguageFile(*session.plugin), 1);
  EXPECT_TRUE(std::filesystem::exists(session.folder.File("languages/Czech.po")));
  EXPECT_EQ(session.dialogs.open, 0);
}

// What was missing is in force without a new start, and so is what the translator changed meanwhile.
TEST(UpdateLanguageFile, CompletesTheCurrentLanguageAndReadsItAgain) {
  Session session;
  ASSERT_TRUE(UseLanguage(*session.plugin, "German"));
  EXPECT_TRUE(session.plugin->messenger.Get("QELM_MSG_GEN_24").starts_with("MESSAGING ERROR"));
  std::string german = session.folder.Read("languages/German.po");
  german.replace(german.find("Kein Dokument."), 4, "Nein");
  session.folder.Write("languages/German.po", german);
  UpdateLanguageFile(*session.plugin);
  EXPECT_TRUE(session.Said("updated " + session.folder.File("languages/German.po") + " 10 0"));
  EXPECT_EQ(session.plugin->messenger.Get("QELM_MSG_GEN_24"), "no editor");
  EXPECT_EQ(session.plugin->messenger.Get("QELM_MSG_GEN_10"), "Nein Dokument.");

  UpdateLanguageFile(*session.plugin);
  EXPECT_TRUE(session.Said("complete "));
  session.folder.Write("languages/German.po", "msgid");
  UpdateLanguageFile(*session.plugin);
  EXPECT_TRUE(session.Said("languages/German.po:1: "));
  EXPECT_EQ(session.plugin->messenger.Get("QELM_MSG_GEN_10"), "Nein Dokument.");
}

TEST(OpenLanguageFiles, OpensEnglishBesideTheCurrentOne) {
  Session session;
  const std::string english = "editor " + session.folder.File("languages/English.po");
  OpenLanguageFiles(*session.plugin);
  EXPECT_EQ(session.platform.started, (std::vector<std::string>{english}));
  ASSERT_TRUE(UseLanguage(*session.plugin, "German"));
  session.platform.started.clear();
  OpenLanguageFiles(*session.plugin);
  EXPECT_EQ(session.platform.started,
            (std::vector<std::string>{english, "editor " + session.folder.File("languages/German.po")}));

  session.plugin->settings.notepad_exe_path = "missing";
  UpdateLanguageFile(*session.plugin);
  OpenLanguageFiles(*session.plugin);
  EXPECT_TRUE(session.Said("no editor"));
}

}  // namespace
}  // namespace qelm
