// Dialogs of a whole run: alerts and questions in the plug-in's own message box.
#include <gtest/gtest.h>

#include "cli/program.h"

namespace qelm::testing {
namespace {

TEST(MessageBox, IsAnsweredAsTheQuestionThatItIs) {
  Program program;
  const std::string before = program.folder.Read("doc.mif");
  program.folder.Write("question", "* -> yes\n");
  program.folder.Write("dialog", "dialog highest element: press Yes\n");
  program.folder.Write("other", "dialog highest element: press Maybe\n");
  struct Row {
    std::vector<std::string> options;
    bool yes;
    const char* event;
  };
  const Row rows[] = {
      {{}, false, R"("answer":"no","by":"default")"},
      {{"--yes"}, true, R"("answer":"yes","by":"policy")"},
      {{"--answers", program.folder.File("question")}, true, R"("press":"Yes","by":"question")"},
      {{"--no", "--answers", program.folder.File("dialog")}, true, R"("press":"Yes","by":"file")"},
      {{"--yes", "--answers", program.folder.File("other")}, false, "there is no button \\\"Maybe\\\""},
  };
  for (const Row& row : rows) {
    program.folder.Write("doc.mif", before);
    std::vector<std::string> arguments = {"filter",   program.document(),
                                          "--scheme", "By/path/Title only",
                                          "--mode",   "source",
                                          "--events", "-",
                                          "--set",    "USE_ALTERNATE_ALERTS=1"};
    arguments.insert(arguments.end(), row.options.begin(), row.options.end());
    const ProgramResult result = program.Run(arguments);
    EXPECT_EQ(result.status, row.yes ? 0 : 5) << result.err;
    EXPECT_NE(result.err.find("\"name\":\"bw_Dialog_Msg_"), std::string::npos) << result.err;
    EXPECT_NE(result.err.find(row.event), std::string::npos) << result.err;
  }
}

TEST(MessageBox, AlertsAreAmongTheAlertsOfTheResult) {
  Program program;
  const std::vector<std::string> arguments = {"filter", program.document(), "--scheme", "By/path/Title only",
                                              "--mode", "source",           "--yes",    "--json"};
  std::vector<std::string> boxed = arguments;
  boxed.insert(boxed.end(), {"--set", "USE_ALTERNATE_ALERTS=1"});
  const std::string before = program.folder.Read("doc.mif");
  const ProgramResult plain = program.Run(arguments);
  program.folder.Write("doc.mif", before);
  EXPECT_EQ(program.Run(boxed).Json()["alerts"].size(), plain.Json()["alerts"].size());
  EXPECT_FALSE(plain.Json()["alerts"].empty());
}

}  // namespace
}  // namespace qelm::testing
