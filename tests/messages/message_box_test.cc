#include "messages/message_box.h"

#include <gtest/gtest.h>

#include "host/interface/entry_points.h"
#include "messages/wrap.h"
#include "support/memory_platform.h"
#include "support/test_dialogs.h"

namespace qelm::messages {
namespace {

using Dialog = testing::TestDialogs::Dialog;

std::string Repeated(std::string_view text, int count) {
  std::string result;
  for (int i = 0; i < count; ++i) result += text;
  return result;
}

TEST(WrapLines, BreaksAtBlanksAndCutsLongWords) {
  struct Row {
    const char* situation;
    std::string text;
    std::vector<std::string> lines;
  };
  const Row rows[] = {
      {"nothing", "", {}},
      {"just fits", "1234567890", {"1234567890"}},
      {"the blank behind the line goes", "1234567890 x", {"1234567890", "x"}},
      {"the last fitting blank breaks", "aa bb cc dd", {"aa bb cc", "dd"}},
      {"a run of blanks breaks as one", "12345    1234567", {"12345", "1234567"}},
      {"a long word is cut", "a 12345678901234", {"a", "1234567890", "1234"}},
      {"line ends are kept", "a\r\n\n  b\n", {"a", "", "  b"}},
      {"indentation is no place to break", "    1234567890", {"    123456", "7890"}},
      {"nothing but blanks", Repeated(" ", 25), {""}},
      {"characters count, not bytes", Repeated("ä", 12), {Repeated("ä", 10), "ää"}},
      {"four bytes", Repeated("\U0001F600", 11), {Repeated("\U0001F600", 10), "\U0001F600"}},
  };
  for (const Row& row : rows) EXPECT_EQ(WrapLines(row.text, 10), row.lines) << row.situation;
}

class BoxTest : public ::testing::Test {
 protected:
  BoxTest() {
    for (const int lines : {5, 12, 20, 30}) {
      std::vector<std::string>& items = dialogs.resources[Name(lines)];
      items.resize(static_cast<std::size_t>(lines) + 2);
      items.insert(items.end(), {"Yes", "No"});
    }
    dialogs.user = [this](Dialog& dialog) { return FirstButton(dialog) + pressed; };
  }
  static std::string Name(int lines) { return "bw_Dialog_Msg_" + std::to_string(lines) + "_Lines_wChkBox"; }
  static std::int32_t FirstButton(const Dialog& dialog) {
    return static_cast<std::int32_t>(dialog.labels.size()) - 2;
  }
  const Dialog& Last() const { return dialogs.dialogs.back(); }
  std::string LabelFromEnd(std::size_t item) const { return Last().labels[Last().labels.size() - item]; }
  bool ShownFromEnd(std::int32_t item) const {
    return Last().shown.at(static_cast<std::int32_t>(Last().labels.size()) - item);
  }

  testing::MemoryPlatform platform;
  testing::RecordingUser user;
  testing::TestDialogs dialogs;
  std::int32_t pressed = 0;  // 0 the first button, 1 the second
  Messenger messenger{user, platform, &dialogs};
};

TEST_F(BoxTest, TheSmallestDialogThatHoldsTheTextIsTaken) {
  struct Row {
    int lines;
    int dialog;
  };
  constexpr Row kRows[] = {{0, 5},   {5, 5},   {6, 12},  {12, 12}, {13, 20},
                           {20, 20}, {21, 30}, {30, 30}, {31, 30}, {500, 30}};
  for (const Row& row : kRows) {
    MessageBox(messenger, {.text = Repeated("line\n", row.lines)});
    EXPECT_EQ(Last().name, Name(row.dialog)) << row.lines;
    EXPECT_EQ(Last().number, 1001);
    const bool cut = row.lines > 30;
    for (int line = 0; line < row.dialog; ++line) {
      const char* expected =
          line >= row.lines   ? " "
          : cut && line == 29 ? "<-- WARNING! This message was too long and has been partially truncated! -->"
                              : "line";
      EXPECT_EQ(Last().labels[static_cast<std::size_t>(line)], expected) << row.lines << " lines, " << line;
    }
  }
  EXPECT_EQ(dialogs.open, 0);
}

TEST_F(BoxTest, CheckBoxTextHasTwoLinesAndIsCutThere) {
  const std::string line(69, 'x');
  struct Row {
    const char* situation;
    std::string text;
    std::string first, second;
  };
  const Row rows[] = {
      {"one line", "Do not ask again", "Do not ask again", " "},
      {"two lines of 70", line + "1 " + line + "2", line + "1", line + "2"},
      {"three", line + " " + line + " x", line, std::string(24, 'x') + " <-- WARNING, TRUNCATED!"},
      {"a short second of three", "a\nb\nc", "a", "b <-- WARNING, TRUNCATED!"},
  };
  for (const Row& row : rows) {
    MessageBox(messenger, {.text = "Text", .check_box = row.text, .buttons = BoxButtons::kYesNo});
    EXPECT_EQ(LabelFromEnd(4), row.first) << row.situation;
    EXPECT_EQ(LabelFromEnd(3), row.second) << row.situation;
    EXPECT_TRUE(ShownFromEnd(4) && ShownFromEnd(3)) << row.situation;
  }
  MessageBox(messenger, {.text = "Text"});
  EXPECT_FALSE(ShownFromEnd(4) || ShownFromEnd(3));
}

TEST_F(BoxTest, ReturnsTheButtonAndTheStateOfTheCheckBox) {
  const MessageBoxText box{"Mine", "Text", "Not again", BoxButtons::kYesNo};
  bool checked = true;
  EXPECT_EQ(MessageBox(messenger, box, &checked), 1);
  EXPECT_FALSE(checked);
  EXPECT_EQ(Last().title, "Mine");
  dialogs.user = [this](Dialog& dialog) {
    dialog.values[FirstButton(dialog) - 2] = 1;
    EXPECT_EQ(messenger.Open().Route(1001, FirstButton(dialog) - 2), host::kDialogStaysOpen);
    EXPECT_EQ(messenger.Open().Route(1001, FirstButton(dialog) + 1), 0);
    EXPECT_EQ(messenger.Open().Route(1226, 0), 0) << "a dialog that is not open";
    return FirstButton(dialog) + 1;
  };
  EXPECT_EQ(MessageBox(messenger, box, &checked), 0);
  EXPECT_TRUE(checked);
  MessageBox(messenger, {.text = "Text"});
  EXPECT_EQ(Last().title, "Brenwick Plugin Alert");
}

TEST_F(BoxTest, ButtonsAreTranslatedByTheSectionOfTheCaller) {
  platform.files["lang/German.po"] = "msgctxt \"Dialogs\"\nmsgid \"Yes\"\nmsgstr \"Ja\"\n";
  ASSERT_TRUE(messenger.LoadLanguage("lang", "German"));
  MessageBox(messenger, {.text = "Text", .buttons = BoxButtons::kYesNo});
  EXPECT_EQ(LabelFromEnd(2), "Ja");
  EXPECT_EQ(LabelFromEnd(1), "No");
  MessageBox(messenger, {.text = "Text", .buttons = BoxButtons::kYesNo, .section = "no such section"});
  EXPECT_EQ(LabelFromEnd(2), "Yes");
}

TEST_F(BoxTest, AlternateAlertsAreShownInIt) {
  messenger.Alert("Host");
  messenger.SetAlternateAlerts(true);
  messenger.Alert("Box");
  EXPECT_EQ(Last().labels[2], "Box") << "behind the header and an empty line";
  EXPECT_EQ(Last().title, "QELM Alert");
  EXPECT_TRUE(messenger.Ask("Really?"));
  pressed = 1;
  EXPECT_FALSE(messenger.Ask("Really?"));
  EXPECT_EQ(user.notes.size(), 1U);
  EXPECT_TRUE(user.questions.empty());
}

TEST_F(BoxTest, WithoutItsResourceTheHostAlertsAndAsks) {
  dialogs.resources.clear();
  dialogs.resources[Name(5)] = {"too", "few"};
  messenger.SetAlternateAlerts(true);
  messenger.Alert("Note");
  EXPECT_EQ(user.notes.size(), 1U);
  user.answer = 0;
  EXPECT_TRUE(messenger.Ask("Really?"));
  bool checked = true;
  user.answer = 1;
  EXPECT_EQ(MessageBox(messenger, {.text = "?", .check_box = "c", .buttons = BoxButtons::kYesNo}, &checked),
            0);
  EXPECT_FALSE(checked);
  EXPECT_EQ(dialogs.open, 0);
}

}  // namespace
}  // namespace qelm::messages
