// The chapter on XPath says what expressions come to: every line of it is tried.
#include <gtest/gtest.h>

#include <fstream>
#include <set>
#include <sstream>

#include "cli/program.h"
#include "xpath/errors.h"

namespace qelm::testing {
namespace {

struct Tried {
  std::string file;
  std::string parameter;
  std::string expression;
  std::string result;
  int line = 0;
};

// Blocks whose first line is `qelm xpath FILE --param NAME=VALUE`; the others are `EXPRESSION   RESULT`.
std::vector<Tried> ReadManual() {
  std::ifstream manual(QELM_SOURCE_DIR "/docs/manual/xpath.md");
  std::vector<Tried> tried;
  Tried block;
  bool in_fence = false;
  bool first = false;
  int number = 0;
  for (std::string line; std::getline(manual, line);) {
    ++number;
    if (line.starts_with("```")) {
      in_fence = !in_fence;
      first = in_fence;
      block = Tried();
      continue;
    }
    if (!in_fence) continue;
    if (first) {
      std::istringstream words(line);
      std::string program, command, option;
      words >> program >> command >> block.file >> option >> block.parameter;
      if (program != "qelm" || command != "xpath" || option != "--param" ||
          line.find('"') != std::string::npos) {
        block.file.clear();
      }
      first = false;
    } else if (!block.file.empty()) {
      const std::size_t gap = line.rfind("  ");
      EXPECT_NE(gap, std::string::npos) << "line " << number;
      block.expression = line.substr(0, line.find_last_not_of(' ', gap) + 1);
      block.result = line.substr(gap + 2);
      block.line = number;
      tried.push_back(block);
    }
  }
  return tried;
}

TEST(Manual, WhatItSaysOfExpressionsIsSo) {
  Program program;
  std::set<std::string> errors;
  const std::vector<Tried> lines = ReadManual();
  EXPECT_GT(lines.size(), 90U);
  for (const Tried& one : lines) {
    const ProgramResult result = program.Run({"xpath", std::string(QELM_SOURCE_DIR "/") + one.file,
                                              one.expression, "--param", one.parameter, "--json"});
    const auto json = result.Json();
    const std::string found = json.contains("error") ? json["error"]["id"].get<std::string>()
                                                     : std::to_string(json["count"].get<int>());
    EXPECT_EQ(found, one.result) << "docs/manual/xpath.md:" << one.line << ": " << one.expression;
    if (found.starts_with("XPATH")) errors.insert(found);
  }
  EXPECT_EQ(errors.size(), xpath::kErrors.size() - 2)
      << "all but the two that need long expressions have an example";
}

}  // namespace
}  // namespace qelm::testing
