// Dialogs without a window: read from resource files, answered by an answers file, a policy, a person or
// nobody, and recorded.
#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>

#include "embedded/adapter/platform.h"
#include "embedded/adapter/resource_dialogs.h"
#include "host/interface/entry_points.h"
#include "support/temp_folder.h"

namespace qelm::embedded::adapter {
namespace {

using nlohmann::json;

// Items by number: 0 a line of text, 1 and 2 radio buttons, 3 a check box, 4 an edit field, 5 a list, 6 a
// hidden edit field, 7 OK, 8 Apply, 9 Cancel.
constexpr char kSample[] = R"({
  "title": "Sample", "size": [300, 200], "items": [
  {"name": "words", "kind": "text", "label": "Some words", "position": [0, 0], "size": [1, 1]},
  {"name": "left", "kind": "radio", "label": "Left", "group": "side", "position": [0, 0], "size": [1, 1]},
  {"name": "right", "kind": "radio", "label": "Right", "group": "side", "position": [0, 0], "size": [1, 1]},
  {"name": "save", "kind": "check box", "label": "Save first...", "position": [0, 0], "size": [1, 1]},
  {"name": "folder", "kind": "edit", "label": "Folder:", "position": [0, 0], "size": [1, 1]},
  {"name": "scheme", "kind": "drop-down", "label": "Scheme", "position": [0, 0], "size": [1, 1]},
  {"name": "hidden", "kind": "edit", "label": "Hidden", "position": [0, 0], "size": [1, 1]},
  {"name": "ok", "kind": "button", "label": "OK", "role": "default", "position": [0, 0], "size": [1, 1]},
  {"name": "apply", "kind": "button", "label": "Apply", "position": [0, 0], "size": [1, 1]},
  {"name": "cancel", "kind": "button", "label": "Cancel", "role": "cancel", "position": [0, 0], "size": [1, 1]}]})";

constexpr char kMessage[] = R"({
  "title": "", "kind": "message", "size": [300, 200], "items": [
  {"name": "line_1", "kind": "text", "position": [0, 0], "size": [1, 1]},
  {"name": "line_2", "kind": "text", "position": [0, 0], "size": [1, 1]},
  {"name": "check_box", "kind": "check box", "position": [0, 0], "size": [1, 1]},
  {"name": "first", "kind": "button", "label": "Yes", "role": "default", "position": [0, 0], "size": [1, 1]},
  {"name": "second", "kind": "button", "label": "No", "role": "cancel", "position": [0, 0], "size": [1, 1]}]})";

class DialogsTest : public ::testing::Test {
 protected:
  DialogsTest() {
    folder.Write("dialogs/Sample.json", kSample);
    folder.Write("dialogs/Message.json", kMessage);
    log.UseStream(events);
  }

  // Begins a session in which this is typed and prepared.
  void Start(const std::string& typed, const std::string& answers, bool interactive,
             std::optional<bool> policy = {}) {
    in.clear();
    in.str(typed);
    ScriptedUserInterface::Options options{.in = in, .messages = messages, .events = log};
    options.interactive = interactive;
    options.answer = policy;
    user = std::make_unique<ScriptedUserInterface>(std::move(options));
    std::string error;
    std::optional<Answers> parsed = Answers::Parse(answers, &error);
    ASSERT_TRUE(parsed) << error;
    user->SetAnswers(std::move(*parsed));
    dialogs = std::make_unique<ResourceDialogs>(*user, platform, log);
    dialogs->SetFolder(folder.path());
    dialogs->SetEventEntry([this](std::int32_t number, std::int32_t item, std::int32_t) {
      used.push_back(number * 100 + item);
      return handler ? handler(item) : 0;
    });
    used.clear();
  }

  // Shows the sample under number 7 with an item hidden and a list filled. Returns the item that closed it.
  std::int32_t ShowSample() {
    id = dialogs->OpenDialog("Sample");
    dialogs->ShowItem(id, 6, false);
    dialogs->SetValue(id, 1, 1);
    dialogs->SetList(id, 5, {"first", "second", "a, \"b\""});
    return dialogs->RunDialog(id, 7);
  }

  // The events of that kind so far.
  std::vector<json> Events(std::string_view kind) const {
    std::vector<json> found;
    std::istringstream lines(events.str());
    for (std::string line; std::getline(lines, line);) {
      json event = json::parse(line);
      if (event["event"] == kind) found.push_back(std::move(event));
    }
    return found;
  }

  testing::TempFolder folder;
  PosixPlatform platform;
  std::istringstream in;
  std::ostringstream messages;
  std::ostringstream events;
  EventLog log;
  std::unique_ptr<ScriptedUserInterface> user;
  std::unique_ptr<ResourceDialogs> dialogs;
  std::function<std::int32_t(std::int32_t)> handler;
  std::vector<std::int32_t> used;  // number of the dialog * 100 + item
  host::Id id = host::kNone;
};

TEST_F(DialogsTest, DamagedResourceIsNamedWithItsPlaceAndOnlyOnce) {
  struct Row {
    std::string content;
    const char* problem;
  };
  const std::string item = R"("position": [0, 0], "size": [1, 1])";
  const auto with_items = [](const std::string& items) {
    return R"({"title": "T", "size": [1, 1], "items": [)" + items + "]}";
  };
  const Row rows[] = {
      {"{\n  \"title\": \"T\",,\n}", "line 2, column 16: the text is not JSON from here on"},
      {std::string(kSample).substr(0, 300), "the text is not JSON"},
      {"", "line 1, column 1"},
      {std::string(100000, '['), "the text is not JSON"},
      {"[]", "not an object"},
      {R"({"size": [1, 1]})", "\"title\" is missing"},
      {R"({"title": "T", "size": [1]})", "\"size\" is not a pair of numbers"},
      {R"({"title": "T", "size": [1, 1], "items": {}})", "\"items\" is not a list"},
      {R"({"title": "T", "kind": "box", "size": [1, 1], "items": []})", "there is no \"box\""},
      {with_items("3"), "item 0: not an object"},
      {with_items(R"({"name": "a", "kind": "knob", )" + item + "}"),
       "item 0: \"kind\": there is no \"knob\""},
      {with_items(R"({"name": 3, "kind": "edit", )" + item + "}"), "item 0: \"name\" is not a string"},
      {with_items(R"({"name": "a", "kind": "edit", )" + item + R"(}, {"name": "a", "kind": "edit", )" + item +
                  "}"),
       "item 1: \"a\" is the name"},
      {with_items(R"({"name": "a", "kind": "edit", "role": "cancel", )" + item + "}"), "only a button"},
      {with_items(R"({"name": "a", "kind": "button", )" + item + "}"), "the role \"default\""},
      {with_items("{\"name\": \"\xFF\", \"kind\": \"edit\", " + item + "}"), "the text is not JSON"},
  };
  for (const Row& row : rows) {
    Start("", "", false);
    const std::string path = folder.Write("dialogs/Bad.json", row.content);
    EXPECT_EQ(dialogs->OpenDialog("Bad"), host::kNone) << row.content;
    EXPECT_EQ(dialogs->OpenDialog("Bad"), host::kNone);
    ASSERT_EQ(user->Alerts().size(), 1U) << row.content;
    EXPECT_NE(user->Alerts()[0].find(path + ": "), std::string::npos) << user->Alerts()[0];
    EXPECT_NE(user->Alerts()[0].find(row.problem), std::string::npos) << user->Alerts()[0];
  }
  Start("", "", false);
  EXPECT_EQ(dialogs->OpenDialog("Missing"), host::kNone);
  EXPECT_EQ(dialogs->OpenDialog("../dialogs/Sample"), host::kNone) << "a name is no path";
  EXPECT_EQ(user->Alerts().size(), 1U);
}

TEST_F(DialogsTest, IsAnsweredByTheFirstThatCan) {
  struct Row {
    const char* situation;
    const char* answers;
    std::optional<bool> policy;
    bool interactive;
    const char* typed;
    std::int32_t button;
    const char* by;
  };
  const Row rows[] = {
      {"a line with its name", "dialog Sample: press Apply", true, true, "", 8, "file"},
      {"a line with its title", "dialog /^sam/i: press Apply", true, true, "", 8, "file"},
      {"a line with its words", "dialog me wo: press Apply", true, true, "", 8, "file"},
      {"no line fits", "dialog Other: press Apply\nSample -> yes", true, true, "c\n", 7, "policy"},
      {"no for all", "", false, true, "o\n", 9, "policy"},
      {"the person", "", std::nullopt, true, "a\n", 8, "person"},
      {"Enter", "", std::nullopt, true, "\n", 7, "person"},
      {"the input ends", "", std::nullopt, true, "3\n", 9, "default"},
      {"nobody", "", std::nullopt, false, "\n", 9, "default"},
  };
  for (const Row& row : rows) {
    Start(row.typed, row.answers, row.interactive, row.policy);
    messages.str("");
    EXPECT_EQ(ShowSample(), row.button) << row.situation;
    const json answer = Events("dialog answer").back();
    EXPECT_EQ(answer["by"], row.by) << row.situation;
    EXPECT_EQ(used.back(), 700 + row.button) << row.situation;
    const bool said =
        messages.str().find("Nobody was there to answer the dialog \"Sample\"") != std::string::npos;
    EXPECT_EQ(said, std::string_view(row.by) == "default") << row.situation;
  }
}

TEST_F(DialogsTest, LineSetsItemsAndIsRecorded) {
  Start("",
        R"(dialog Sample: RIGHT = on, save first = yes, folder = "x, ""y""", Scheme = "a, ""b""", press ok)",
        false);
  EXPECT_EQ(ShowSample(), 7);
  EXPECT_EQ(dialogs->ValueOf(id, 1), 0) << "the other radio button of the group";
  EXPECT_EQ(dialogs->ValueOf(id, 2), 1);
  EXPECT_EQ(dialogs->ValueOf(id, 3), 1);
  EXPECT_EQ(dialogs->TextOf(id, 4), "x, \"y\"");
  EXPECT_EQ(dialogs->ValueOf(id, 5), 2);
  EXPECT_EQ(used, (std::vector<std::int32_t>{702, 703, 704, 705, 707})) << "each use is an event";
  const json shown = Events("dialog").back();
  EXPECT_EQ(shown["name"], "Sample");
  EXPECT_EQ(shown["number"], 7);
  EXPECT_EQ(shown["text"], "Some words");
  EXPECT_EQ(shown["items"].size(), 5U) << "what is hidden is not shown";
  EXPECT_EQ(shown["items"][0],
            json({{"item", "left"}, {"kind", "radio"}, {"label", "Left"}, {"value", true}}));
  EXPECT_EQ(shown["items"][4]["lines"][1], "second");
  EXPECT_EQ(shown["items"][4]["value"], nullptr);
  const json expected = {
      {"event", "dialog answer"},
      {"name", "Sample"},
      {"set", {{"right", true}, {"save", true}, {"folder", "x, \"y\""}, {"scheme", "a, \"b\""}}},
      {"press", "OK"},
      {"by", "file"}};
  EXPECT_EQ(Events("dialog answer").back(), expected);
}

TEST_F(DialogsTest, LineThatDoesNotFitTheDialogIsNamedAndClosesIt) {
  struct Row {
    const char* use;
    const char* problem;
  };
  constexpr Row kRows[] = {{"Colour = red, press OK", "\"Colour\": there is no such item"},
                           {"hidden = x, press OK", "\"hidden\": there is no such item, or it is not shown"},
                           {"save = maybe, press OK", "\"save\": is either on or off, not \"maybe\""},
                           {"scheme = third, press OK", "\"scheme\": has no line \"third\""},
                           {"scheme = #4, press OK", "\"scheme\": has no line \"#4\""},
                           {"press Help", "there is no button \"Help\""}};
  for (const Row& row : kRows) {
    Start("", std::string("# first\ndialog Sample: ") + row.use, true);
    messages.str("");
    EXPECT_EQ(ShowSample(), 9) << row.use;
    EXPECT_NE(messages.str().find(std::string("prepared answers, line 2: Sample: ") + row.problem),
              std::string::npos)
        << messages.str();
  }
}

TEST_F(DialogsTest, DialogThatStaysOpenTakesTheNextLine) {
  const char* answers =
      "once dialog Sample: folder = once, press Apply\n"
      "dialog Sample: folder = standing, press Apply\n"
      "dialog Sample: press OK\n";
  Start("", answers, false);
  handler = [](std::int32_t item) { return item == 7 ? 0 : host::kDialogStaysOpen; };
  EXPECT_EQ(ShowSample(), 7);
  EXPECT_EQ(used, (std::vector<std::int32_t>{704, 708, 704, 708, 707}));
  EXPECT_EQ(Events("dialog answer")[0]["stays_open"], true);
  used.clear();
  EXPECT_EQ(ShowSample(), 7);
  EXPECT_EQ(used, (std::vector<std::int32_t>{704, 708, 707})) << "the first line is spent";
  used.clear();
  user->SetFirstAnswers(*Answers::Parse("dialog Sample: press Cancel", nullptr));
  EXPECT_EQ(ShowSample(), 7);
  EXPECT_EQ(used, (std::vector<std::int32_t>{709, 704, 708, 707})) << "others come first, and leave it spent";
}

TEST_F(DialogsTest, DialogThatRefusesEveryButtonEnds) {
  handler = [](std::int32_t) { return host::kDialogStaysOpen; };
  for (const char* answers : {"", "dialog *: press OK"}) {
    for (const std::optional<bool> policy : {std::optional<bool>(), std::optional<bool>(true)}) {
      Start("\n\n\n", answers, true, policy);
      EXPECT_EQ(ShowSample(), 9);
    }
  }
}

TEST_F(DialogsTest, PersonSetsItemsByNumber) {
  Start("2\n3\n4 some folder\n5\n2\n9\nx\n?\nap\n", "", true);
  handler = [](std::int32_t item) { return item == 8 ? 0 : host::kDialogStaysOpen; };
  EXPECT_EQ(ShowSample(), 8);
  EXPECT_EQ(dialogs->ValueOf(id, 1), 0);
  EXPECT_EQ(dialogs->ValueOf(id, 2), 1);
  EXPECT_EQ(dialogs->ValueOf(id, 3), 1);
  EXPECT_EQ(dialogs->TextOf(id, 4), "some folder");
  EXPECT_EQ(dialogs->ValueOf(id, 5), 1);
  const std::string first =
      "Sample\n"
      "  Some words\n"
      "  1 (*) Left\n"
      "  2 ( ) Right\n"
      "  3 [ ] Save first...\n"
      "  4 Folder:: \n"
      "  5 Scheme:  (3 lines)\n"
      "      1  first\n"
      "      2  second\n"
      "      3  a, \"b\"\n"
      "o = OK (Enter), a = Apply, c = Cancel, ? = help\n"
      "> ";
  EXPECT_EQ(messages.str().substr(0, first.size()), first);
  EXPECT_NE(messages.str().find("there is no 9 here"), std::string::npos);
  EXPECT_NE(messages.str().find("    * 2  second\n"), std::string::npos);
}

TEST_F(DialogsTest, DialogOpenedByAnEventIsAnsweredInBetween) {
  Start("", "dialog Message: press No\ndialog Sample: press Apply\ndialog Sample: press OK", false);
  std::int32_t inner = -1;
  handler = [&](std::int32_t item) {
    if (item != 8) return 0;
    const host::Id message = dialogs->OpenDialog("Message");
    inner = dialogs->RunDialog(message, 1001);
    dialogs->CloseDialog(message);
    return host::kDialogStaysOpen;
  };
  EXPECT_EQ(ShowSample(), 7);
  EXPECT_EQ(inner, 4);
  EXPECT_EQ(used, (std::vector<std::int32_t>{708, 100104, 707}));
}

TEST_F(DialogsTest, MessageBoxIsAnAlertOrAQuestion) {
  struct Row {
    const char* situation;
    bool two_buttons;
    const char* answers;
    std::optional<bool> policy;
    bool interactive;
    const char* typed;
    std::int32_t button;
    std::int32_t checked;
    const char* kind;  // of the event that stands for it among alerts and questions
  };
  const Row rows[] = {
      {"an alert waits for nobody", false, "", std::nullopt, false, "", 3, 0, "alert"},
      {"an alert is shown though a line closes it", false, "dialog *: press Yes", std::nullopt, false, "", 3,
       0, "alert"},
      {"a line for questions fits over the line end", true, "first second -> yes", false, false, "", 3, 0,
       "question"},
      {"yes for all", true, "", true, false, "", 3, 0, "question"},
      {"nobody", true, "", std::nullopt, false, "", 4, 0, "question"},
      {"a line ticks the box", true, "dialog *: not again = on, press No", true, true, "", 4, 1, nullptr},
      {"the person ticks the box", true, "", std::nullopt, true, "1\ny\n", 3, 1, nullptr},
  };
  for (const Row& row : rows) {
    Start(row.typed, row.answers, row.interactive, row.policy);
    events.str("");
    id = dialogs->OpenDialog("Message");
    dialogs->SetLabel(id, host::kDialogTitle, "QELM Alert");
    dialogs->SetLabel(id, 0, "The first");
    dialogs->SetLabel(id, 1, "second line");
    dialogs->SetLabel(id, 2, "Not again");
    dialogs->ShowItem(id, 4, row.two_buttons);
    EXPECT_EQ(dialogs->RunDialog(id, 1001), row.button) << row.situation;
    EXPECT_EQ(dialogs->ValueOf(id, 2), row.checked) << row.situation;
    EXPECT_EQ(Events("dialog").size(), 1U);
    EXPECT_EQ(Events("dialog answer").size(), 1U);
    EXPECT_EQ(Events("alert").size() + Events("question").size(), row.kind != nullptr ? 1U : 0U)
        << row.situation;
    if (row.kind != nullptr) {
      ASSERT_EQ(Events(row.kind).size(), 1U) << row.situation;
      EXPECT_EQ(Events(row.kind)[0]["text"], "The first\nsecond line");
    }
  }
}

TEST_F(DialogsTest, FileIsChosenOrNone) {
  const std::string path = folder.Write("settings.fm", "x");
  struct Row {
    const char* situation;
    std::string answers;
    bool interactive;
    std::string typed;
    std::string chosen;
    const char* by;
  };
  const Row rows[] = {
      {"a line", "file main settings -> " + path, true, "", path, "file"},
      {"a relative path", "file * -> " + std::filesystem::relative(path).string(), false, "", path, "file"},
      {"a line for another title", "file report -> " + path, false, "", "", "default"},
      {"a file that is not there", "file * -> " + path + "x", false, "", "", "file"},
      {"a folder", "file * -> " + folder.path(), false, "", "", "file"},
      {"the person", "", true, " " + path + " \n", path, "person"},
      {"the person wants none", "", true, "\n", "", "person"},
      {"the input ends", "", true, "", "", "default"},
      {"nobody", "", false, path + "\n", "", "default"},
  };
  for (const Row& row : rows) {
    Start(row.typed, row.answers, row.interactive);
    EXPECT_EQ(dialogs->ChooseFile("Choose the main settings file", "start"), row.chosen) << row.situation;
    const json event = Events("file").back();
    EXPECT_EQ(event["by"], row.by) << row.situation;
    EXPECT_EQ(event["chosen"], row.chosen.empty() ? json() : json(row.chosen)) << row.situation;
  }
  Start("", "once file * -> " + path, false);
  EXPECT_EQ(dialogs->ChooseFile("First", ""), path);
  EXPECT_EQ(dialogs->ChooseFile("Second", ""), "");
}

TEST(DialogAnswers, BadLinesAreNamed) {
  constexpr const char* kLines[] = {
      "dialog Filter",
      "dialog Filter: ",
      "dialog Filter: save = on",
      "dialog : press OK",
      "dialog Filter: press ",
      "dialog Filter: press OK, save = on",
      "dialog X: save on, press OK",
      "dialog X: = on, press OK",
      "dialog X: a = \"b, press OK",
      "dialog X: a = \"b\"c\", press OK",
      "dialog /(/: press OK",
      "file settings",
      "file -> x",
      "file x -> ",
      "once dialog X",
  };
  for (const char* line : kLines) {
    std::string error;
    EXPECT_FALSE(Answers::Parse(std::string("# first\n") + line, &error)) << line;
    EXPECT_EQ(error.substr(0, 8), "line 2: ") << line;
  }
}

TEST(DialogAnswers, QuestionsMayBeginWithTheSameWords) {
  std::string error;
  const std::optional<Answers> answers = Answers::Parse("dialog strings -> yes\nfile is old -> no", &error);
  ASSERT_TRUE(answers) << error;
  EXPECT_EQ(answers->Find("Update the dialog strings?"), true);
  EXPECT_EQ(answers->Find("The file is old. Go on?"), false);
}

}  // namespace
}  // namespace qelm::embedded::adapter
