// Real documents written by FrameMaker, where they are at hand. They are no part of the project, so tests
// that use them are skipped where there are none.
#pragma once

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace qelm::testing {

inline std::vector<std::filesystem::path> Samples() {
  std::vector<std::filesystem::path> paths;
  const std::filesystem::path folder = std::filesystem::path(QELM_SOURCE_DIR) / "../shared/mif/samples";
  std::error_code error;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder, error)) {
    if (entry.path().extension() == ".mif") paths.push_back(entry.path());
  }
  std::sort(paths.begin(), paths.end());
  return paths;
}

// Calls `test(path, bytes)` with each sample document. One sample is damaged and is no document.
template <typename Function>
void EachSample(Function&& test) {
  for (const auto& path : Samples()) {
    std::ifstream file(path, std::ios::binary);
    std::stringstream bytes;
    bytes << file.rdbuf();
    if (!bytes.str().starts_with("<MIFFile") || path.stem() == "CommA20040102DummyFM7") continue;
    test(path, bytes.str());
  }
}

}  // namespace qelm::testing
