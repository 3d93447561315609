#include "messages/messenger.h"

#include <gtest/gtest.h>

#include "support/memory_platform.h"

namespace qelm::messages {
namespace {

constexpr char kMissing[] =
    "MESSAGING ERROR: A message that should have appeared here could not be retrieved. See your User Guide "
    "and/or "
    "contact Brenwick for assistance. Message ID:";

class MessengerTest : public ::testing::Test {
 protected:
  MessengerTest() {
    platform.files["lang/English.po"] =
        Entry("QELM_MSG_HEADER_1", "QELM says") + Entry("QELM_MSG_GEN_1", "No document.") +
        Entry("QELM_MSG_GEN_4", "Bad file %s (%d)") + Entry("XPATH_ERR_MISPLACED_COMMA", "Comma");
  }
  static std::string Entry(const std::string& id, const std::string& text) {
    return "msgctxt \"General Strings\"\nmsgid \"" + id + "\"\nmsgstr \"" + text + "\"\n\n";
  }

  testing::MemoryPlatform platform;
  testing::RecordingUser user;
  Messenger messenger{user, platform};
};

TEST_F(MessengerTest, IdsAreReplacedByTheirTextAndLiteralsAreNot) {
  ASSERT_TRUE(messenger.LoadLanguage("lang", "English"));
  messenger.Alert("QELM_MSG_GEN_1");
  messenger.Alert("XPATH_ERR_MISPLACED_COMMA");
  messenger.Alert("see QELM_MSG_GEN_1");
  messenger.Alert("qelm_msg_gen_1");
  EXPECT_EQ(user.notes,
            (std::vector<std::string>{"QELM says\n\nNo document.", "QELM says\n\nComma",
                                      "QELM says\n\nsee QELM_MSG_GEN_1", "QELM says\n\nqelm_msg_gen_1"}));
}

TEST_F(MessengerTest, WithoutALanguageTheHeaderIsThePlainOne) {
  messenger.Alert("Plain text.");
  messenger.Alert("QELM_MSG_GEN_1");
  EXPECT_EQ(user.notes[0], "--> QELM message <--\n\nPlain text.");
  EXPECT_EQ(user.notes[1], std::string("--> QELM message <--\n\n") + kMissing + "QELM_MSG_GEN_1");
}

TEST_F(MessengerTest, AMissingTextIsLookedUpOnceMoreInTheFile) {
  ASSERT_TRUE(messenger.LoadLanguage("lang", "English"));
  EXPECT_EQ(messenger.Get("QELM_MSG_GEN_99"), std::string(kMissing) + "QELM_MSG_GEN_99");
  platform.files["lang/English.po"] += Entry("QELM_MSG_GEN_99", "Added later.");
  EXPECT_EQ(messenger.Get("QELM_MSG_GEN_99"), "Added later.");
  const int reads = platform.reads;
  EXPECT_EQ(messenger.Get("QELM_MSG_GEN_99"), "Added later.");
  EXPECT_EQ(platform.reads, reads);
}

TEST_F(MessengerTest, WrongPlaceholdersShowAWrongText) {
  for (const char* text : {"%d", "%s %s", "100% %s", "%q", "%9$s", "%", "%*d", "%.*s", "%-", "%999999999s",
                           "%.99999999999s", "%1$s %s", "%n", "%0$s", "%s%c%p"}) {
    EXPECT_EQ(Messenger::FormatText(text, std::string("x")), text);
  }
  EXPECT_EQ(Messenger::FormatText("%2$s-%1$s", std::string("a"), std::string("b")), "b-a");
}

TEST_F(MessengerTest, ADamagedLanguageLeavesTheOneBefore) {
  ASSERT_TRUE(messenger.LoadLanguage("lang", "English"));
  platform.files["lang/German.po"] = "msgid \"A\"\nmsgstr \"open\n";
  EXPECT_FALSE(messenger.LoadLanguage("lang", "German"));
  EXPECT_NE(messenger.LanguageProblemText().find("lang/German.po:2: "), std::string::npos);
  EXPECT_FALSE(messenger.LoadLanguage("lang", "Klingon"));
  EXPECT_EQ(messenger.LanguageName(), "English");
  EXPECT_EQ(messenger.Get("QELM_MSG_GEN_1"), "No document.");
}

}  // namespace
}  // namespace qelm::messages
