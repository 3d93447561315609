#include "config/rewrite_settings.h"

#include <gtest/gtest.h>

#include "common/utf8.h"

namespace qelm::config {
namespace {

TEST(RewriteSettings, TheLineThatCountedIsReplaced) {
  struct Row {
    std::string before;
    std::string after;
  };
  const Row rows[] = {
      {"a\nMAIN_SETTINGS_PATH=x\nb\n",
       "a\n;MAIN_SETTINGS_PATH=x\n;MAIN_SETTINGS_PATH=/p\nMAIN_SETTINGS_PATH=/n\nb\n"},
      {"MAIN_SETTINGS_PATH = x ", ";MAIN_SETTINGS_PATH= x \n;MAIN_SETTINGS_PATH=/p\nMAIN_SETTINGS_PATH=/n"},
      {"MAIN_SETTINGS_PATH\r\n",
       ";MAIN_SETTINGS_PATH=\r\n;MAIN_SETTINGS_PATH=/p\r\nMAIN_SETTINGS_PATH=/n\r\n"},
      {"a\rMAIN_SETTINGS_PATH=x\rb",
       "a\r;MAIN_SETTINGS_PATH=x\r;MAIN_SETTINGS_PATH=/p\rMAIN_SETTINGS_PATH=/n\rb"},
      // A longer word counts where it comes first, and is not lost.
      {"MAIN_SETTINGS_PATH_OLD=x\nMAIN_SETTINGS_PATH=y\n",
       ";MAIN_SETTINGS_PATH_OLD=x\n;MAIN_SETTINGS_PATH=/p\nMAIN_SETTINGS_PATH=/n\nMAIN_SETTINGS_PATH=y\n"},
      // Without a line, behind the last comment about it, else at the end.
      {";MAIN_SETTINGS_PATH=DEFAULT\r\n\r\n;b\r\n",
       ";MAIN_SETTINGS_PATH=DEFAULT\r\n;MAIN_SETTINGS_PATH=/p\r\nMAIN_SETTINGS_PATH=/n\r\n\r\n;b\r\n"},
      {"a\r\nb", "a\r\nb\r\n;MAIN_SETTINGS_PATH=/p\r\nMAIN_SETTINGS_PATH=/n\r\n"},
      {"a\n", "a\n;MAIN_SETTINGS_PATH=/p\nMAIN_SETTINGS_PATH=/n\n"},
      {"", ";MAIN_SETTINGS_PATH=/p\nMAIN_SETTINGS_PATH=/n\n"},
      {"\xEF\xBB\xBFMAIN_SETTINGS_PATH=x\n",
       "\xEF\xBB\xBF;MAIN_SETTINGS_PATH=x\n;MAIN_SETTINGS_PATH=/p\nMAIN_SETTINGS_PATH=/n\n"},
      {"; caf\xE9\nMAIN_SETTINGS_PATH=x\n",
       "; caf\xE9\n;MAIN_SETTINGS_PATH=x\n;MAIN_SETTINGS_PATH=/p\nMAIN_SETTINGS_PATH=/n\n"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(WithMainSettingsPath(row.before, "/p", "/n").value_or("(refused)"), row.after) << row.before;
  }
}

TEST(RewriteSettings, TheEncodingOfTheFileStays) {
  const std::string marks[] = {"\xFF\xFE", "\xFE\xFF"};
  for (const std::string& mark : marks) {
    const std::string before = common::EncodeTextFile("; é €\r\nMAIN_SETTINGS_PATH=x\r\n", mark).value();
    const std::string after = WithMainSettingsPath(before, "/é", "/Ω").value_or("(refused)");
    EXPECT_TRUE(after.starts_with(mark));
    EXPECT_EQ(common::DecodeTextFile(after),
              "; é €\r\n;MAIN_SETTINGS_PATH=x\r\n;MAIN_SETTINGS_PATH=/é\r\nMAIN_SETTINGS_PATH=/Ω\r\n");
  }
  const std::string western = "; caf\xE9\nMAIN_SETTINGS_PATH=x\n";
  EXPECT_EQ(WithMainSettingsPath(western, "", "/\xC3\xA9"),
            "; caf\xE9\n;MAIN_SETTINGS_PATH=x\n;MAIN_SETTINGS_PATH=\nMAIN_SETTINGS_PATH=/\xE9\n");
  EXPECT_FALSE(WithMainSettingsPath(western, "", "/Ω")) << "Windows-1252 has no such letter";
}

TEST(RewriteSettings, APathThatWouldNotBeReadIsRefused) {
  for (const std::string path : {"/a\nb", "/a ", "/a\\b", "/\xFF", ""}) {
    EXPECT_FALSE(WithMainSettingsPath("a\nb\n", "/p", path)) << path;
  }
  EXPECT_FALSE(WithMainSettingsPath("a\nb\n", "/p\nXPATH_MAX_MATCHES=100", "/n"));
}

}  // namespace
}  // namespace qelm::config
