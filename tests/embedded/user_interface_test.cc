#include "embedded/adapter/user_interface.h"

#include <gtest/gtest.h>

#include <sstream>

namespace qelm::embedded::adapter {
namespace {

using nlohmann::json;

// A user interface with its streams, and the events as they were written.
struct Desk {
  explicit Desk(const std::string& typed = "") : in(typed) { log.UseStream(events); }

  ScriptedUserInterface Make() {
    ScriptedUserInterface::Options options{.in = in, .messages = messages, .events = log};
    options.interactive = interactive;
    options.answer = answer;
    options.progress = progress;
    options.esc = [this] { return std::exchange(esc, false); };
    return ScriptedUserInterface(std::move(options));
  }

  json LastEvent() const {
    json last;
    std::istringstream lines(events.str());
    for (std::string line; std::getline(lines, line);) last = json::parse(line);
    return last;
  }

  std::istringstream in;
  std::ostringstream messages;
  std::ostringstream events;
  EventLog log;
  bool interactive = false;
  std::optional<bool> answer;
  ScriptedUserInterface::Progress progress = ScriptedUserInterface::Progress::kNever;
  bool esc = false;
};

Answers Parsed(std::string_view text) {
  std::string error;
  std::optional<Answers> answers = Answers::Parse(text, &error);
  EXPECT_TRUE(answers) << error;
  return answers.value_or(Answers());
}

TEST(Answers, FirstLineThatFitsAnswers) {
  const Answers answers = Parsed(
      "# comment\n\n"
      "the root -> yes -> no\n"
      "restore -> no\r\n"
      "/^save .* first\\?$/i -> yes\n"
      "/save/ -> no\n"
      "* -> yes");
  struct Row {
    const char* question;
    bool yes;
  };
  constexpr Row kRows[] = {{"Shall the root -> yes go?", false},
                           {"restore it?", false},
                           {"SAVE it first?", true},
                           {"save it later?", false},
                           {"something else", true}};
  for (const Row& row : kRows) EXPECT_EQ(answers.Find(row.question), row.yes) << row.question;
  EXPECT_EQ(Parsed("restore -> no").Find("filter?"), std::nullopt);
}

TEST(Answers, BadLinesAreNamed) {
  for (const char* line : {"restore", "restore -> maybe", "-> yes", "/(/ -> yes"}) {
    std::string error;
    EXPECT_FALSE(Answers::Parse(std::string("# first\n") + line, &error)) << line;
    EXPECT_EQ(error.substr(0, 7), "line 2:") << error;
  }
}

TEST(Question, IsAnsweredByTheFirstThatCan) {
  struct Row {
    const char* situation;
    const char* answers;
    std::optional<bool> policy;
    bool interactive;
    const char* typed;
    const char* answer;
    const char* by;
  };
  const Row rows[] = {
      {"a line of the file", "Restore -> yes", false, true, "no\n", "yes", "file"},
      {"the policy, as no line fits", "Filter -> no", true, true, "no\n", "yes", "policy"},
      {"the person, after a slip", "", std::nullopt, true, "what?\n\n Yes\n", "yes", "person"},
      {"the input has ended", "", std::nullopt, true, "what?\n", "no", "default"},
      {"nobody is there", "", std::nullopt, false, "yes\n", "no", "default"},
  };
  for (const Row& row : rows) {
    Desk desk(row.typed);
    desk.answer = row.policy;
    desk.interactive = row.interactive;
    ScriptedUserInterface user = desk.Make();
    user.SetAnswers(Parsed(row.answers));
    EXPECT_EQ(user.Question("Restore?"), std::string(row.answer) == "yes" ? 0 : 1) << row.situation;
    const json expected{{"event", "question"}, {"text", "Restore?"}, {"answer", row.answer}, {"by", row.by}};
    EXPECT_EQ(desk.LastEvent(), expected) << row.situation;
  }
}

TEST(Question, DefaultAnswerIsSaidAloud) {
  Desk desk;
  ScriptedUserInterface user = desk.Make();
  user.Question("Really?");
  EXPECT_NE(desk.messages.str().find("Really?"), std::string::npos);
}

TEST(Question, AfterEscMeansYesWhenNobodyIsThere) {
  Desk desk;
  desk.answer = false;
  ScriptedUserInterface user = desk.Make();
  EXPECT_FALSE(user.EscPressed());
  desk.esc = true;
  EXPECT_TRUE(user.EscPressed());
  EXPECT_EQ(user.Question("Cancel?"), 0);
  EXPECT_EQ(user.Question("And this?"), 1) << "only the question that follows";
  EXPECT_FALSE(user.EscPressed()) << "asking forgets it";
}

TEST(Alert, IsShownCollectedAndRecordedWithoutItsHeader) {
  Desk desk;
  ScriptedUserInterface user = desk.Make();
  user.SetHeader("--> message <--\n\n");
  user.Note("--> message <--\n\nDone.");
  user.Note("bad \xFF byte");
  EXPECT_EQ(user.Alerts(), (std::vector<std::string>{"Done.", "bad \xFF byte"}));
  EXPECT_EQ(desk.messages.str().substr(0, 6), "Done.\n");
  EXPECT_EQ(desk.LastEvent()["text"], "bad \xEF\xBF\xBD byte");
}

TEST(Status, LinesAreNotRepeated) {
  Desk desk;
  desk.progress = ScriptedUserInterface::Progress::kLines;
  ScriptedUserInterface user = desk.Make();
  for (int i = 0; i < 3; ++i) user.ShowStatus({"QELM", "Please wait.", ". . .", "a\nb"});
  EXPECT_EQ(desk.messages.str(), "QELM - Please wait. - a b\n");
}

}  // namespace
}  // namespace qelm::embedded::adapter
