// qelm languages, and a session in another language.
#include <gtest/gtest.h>

#include "cli/program.h"

namespace qelm::testing {
namespace {

constexpr char kOwnFolder[] = "profile/Adobe/FrameMaker/18/Brenwick/QELM/languages/";

TEST(Languages, AreMadeCheckedAndCompletedInTheProfile) {
  Program program;
  const std::string own = program.folder.File(std::string(kOwnFolder) + "French.po");
  const nlohmann::json made = program.Run({"languages", "create", "French", "--json"}).Json();
  EXPECT_EQ(made["output"], own);
  const std::string content = program.folder.Read(std::string(kOwnFolder) + "French.po");

  const ProgramResult untranslated = program.Run({"languages", "check", "French", "--json"});
  EXPECT_EQ(untranslated.status, 1);
  EXPECT_EQ(untranslated.Json()["languages"][0]["findings"].size(), made["added"]);

  const std::size_t cut = content.rfind("\n\n");
  program.folder.Write(std::string(kOwnFolder) + "French.po", content.substr(0, cut + 1));
  const ProgramResult missing = program.Run({"languages", "check", "French"});
  EXPECT_NE(missing.out.find("\" is missing\n"), std::string::npos) << missing.out;
  const ProgramResult updated = program.Run({"languages", "update", "French"});
  EXPECT_EQ(updated.out, own + ": texts added, to be translated: 1; translations taken up again: 0\n");
  EXPECT_EQ(program.Run({"languages", "update", "French"}).out, own + ": nothing is missing\n");

  const nlohmann::json listed =
      program.Run({"languages", "list", "--json", "--set", "STARTUP_LANGUAGE=French"}).Json()["languages"];
  ASSERT_EQ(listed.size(), 3U);
  EXPECT_EQ(listed[0]["name"], "English");
  EXPECT_EQ(listed[1], (nlohmann::json{{"name", "French"}, {"path", own}, {"own", true}, {"current", true}}));
}

TEST(Languages, WhatCannotBeDoneIsSaid) {
  Program program;
  program.folder.Write(std::string(kOwnFolder) + "Czech.po", "msgid \"A\"\nmsgstr \"open\n");
  struct Row {
    std::vector<std::string> arguments;
    int status;
    const char* said;
  };
  const Row rows[] = {
      {{"languages", "create", "german"}, 3, "German.po: there is a language of that name already"},
      {{"languages", "create", "a/b"}, 2, "\"a/b\" cannot be the name"},
      {{"languages", "update", "Germn"}, 3, "did you mean \"German\""},
      {{"languages", "update", "Czech"}, 3, "Czech.po:2: "},
      {{"languages", "check"}, 3, "Czech.po:2: "},
  };
  for (const Row& row : rows) {
    const ProgramResult result = program.Run(row.arguments);
    EXPECT_EQ(result.status, row.status) << row.said;
    EXPECT_NE(result.err.find(row.said), std::string::npos) << result.err;
  }
}

TEST(Languages, ASessionSpeaksTheLanguageOfItsSettings) {
  Program program;
  const ProgramResult refused =
      program.Run({"xpath", program.document(), "//Section[@A==1]", "--set", "STARTUP_LANGUAGE=German"});
  EXPECT_NE(refused.err.find("Dies kann nicht auf einen Operator folgen."), std::string::npos) << refused.err;
  const std::string events = program.folder.File("events");
  program.Run({"filter", program.document(), "--scheme", "By/path/Title only", "--set",
               "STARTUP_LANGUAGE=German", "--mode", "source", "--yes", "--events", events});
  const std::string seen = program.folder.Read("events");
  for (const char* text :
       {"Das aktive Filterschema würde das ganze Dokument entfernen", "Dokument wird gefiltert"}) {
    EXPECT_NE(seen.find(text), std::string::npos) << text << " in " << seen;
  }
}

}  // namespace
}  // namespace qelm::testing
