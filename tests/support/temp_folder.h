// A folder of a test's own, removed with everything in it, and files in it as strings.
#pragma once

#include <stdlib.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace qelm::testing {

class TempFolder {
 public:
  TempFolder() : path_((std::filesystem::temp_directory_path() / "qelm-test-XXXXXX").string()) {
    if (::mkdtemp(path_.data()) == nullptr) throw std::runtime_error("no folder for tests: " + path_);
  }
  ~TempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;

  const std::string& path() const { return path_; }
  std::string File(std::string_view name) const { return path_ + "/" + std::string(name); }

  // Writes a file and returns its path.
  std::string Write(std::string_view name, std::string_view content) const {
    const std::string path = File(name);
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream(path, std::ios::binary) << content;
    return path;
  }

  std::string Read(std::string_view name) const {
    std::ostringstream content;
    content << std::ifstream(File(name), std::ios::binary).rdbuf();
    return content.str();
  }

  // The names in the folder, sorted.
  std::vector<std::string> Names() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(path_)) {
      names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
  }

 private:
  std::string path_;
};

}  // namespace qelm::testing
