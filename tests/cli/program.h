// The whole program run in the test's process, over files in a folder of the test's own.
#pragma once

#include <functional>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "support/temp_folder.h"

namespace qelm::testing {

struct ProgramResult {
  int status = 0;
  std::string out;
  std::string err;

  nlohmann::json Json() const { return nlohmann::json::parse(out); }
};

class Program {
 public:
  Program();

  // Runs `qelm ARGUMENTS` with the shipped plug-in folder, an empty profile and the settings of this fixture.
  ProgramResult Run(std::vector<std::string> arguments, const std::string& input = "");
  // The same without any of these options.
  ProgramResult RunPlain(std::vector<std::string> arguments, const std::string& input = "");

  // The document of the fixture, written once: eight elements, of which one Section is for admins, one for
  // users.
  const std::string& document() const { return document_; }

  // What a document says, in the normal form.
  std::string Dump(const std::string& path);

  TempFolder folder;
  std::function<bool()> esc;
  std::vector<std::string> plugin_folders;

 private:
  std::string document_;
  std::string main_settings_;
};

// What batches left in a folder of the test's: everything but their records, with times and the folder's own
// name blanked.
std::map<std::string, std::string> BatchOutput(const TempFolder& folder, const std::string& out);

}  // namespace qelm::testing
