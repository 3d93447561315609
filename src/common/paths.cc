#include "common/paths.h"

#include <algorithm>

namespace qelm::common {
namespace {

#ifdef _WIN32
constexpr std::string_view kSeparators = "/\\";
#else
constexpr std::string_view kSeparators = "/";
#endif

}  // namespace

std::string PlatformPath(std::string_view path) {
  std::string result(path);
  if (kPathSeparator == '/' && path.find("://") == path.npos) {
    std::replace(result.begin(), result.end(), '\\', '/');
  }
  return result;
}

std::string JoinPath(std::string_view folder, std::string_view name) {
  std::string result(folder);
  if (!result.empty() && kSeparators.find(result.back()) == kSeparators.npos) result += kPathSeparator;
  return result.append(name);
}

std::string_view FileName(std::string_view path) {
  const std::size_t separator = path.find_last_of(kSeparators);
  return separator == path.npos ? path : path.substr(separator + 1);
}

std::string_view FolderOf(std::string_view path) {
  const std::size_t separator = path.find_last_of(kSeparators);
  if (separator == path.npos) return {};
  return path.substr(0, std::max<std::size_t>(separator, 1));
}

bool IsAbsolutePath(std::string_view path) {
  if (path.empty()) return false;
  return kSeparators.find(path.front()) != kSeparators.npos || (path.size() > 1 && path[1] == ':');
}

}  // namespace qelm::common
