#include "filtering/plain_path.h"

#include <algorithm>
#include <filesystem>

namespace qelm::filtering {
namespace {

namespace fs = std::filesystem;

bool GoesUp(const fs::path& path) { return std::find(path.begin(), path.end(), "..") != path.end(); }

}  // namespace

std::string PlainPath(host::Platform& platform, const std::string& path) {
  const fs::path spelled(path);
  const std::string plain = spelled.lexically_normal().string();
  if (!GoesUp(spelled)) return plain;
  const std::string resolved = platform.ResolvedPath(path);
  return platform.ResolvedPath(plain) == resolved ? plain : resolved;
}

std::string RelativePath(host::Platform& platform, const std::string& folder, const std::string& file) {
  const fs::path relative = fs::path(file).lexically_relative(folder);
  if (!GoesUp(relative)) return relative.string();
  return fs::path(platform.ResolvedPath(file)).lexically_relative(platform.ResolvedPath(folder)).string();
}

}  // namespace qelm::filtering
