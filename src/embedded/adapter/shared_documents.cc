#include "embedded/adapter/shared_documents.h"

#include <sys/stat.h>

#include <chrono>

namespace qelm::embedded::adapter {
namespace {

// Longer than the steps in which any file system counts time.
constexpr std::int64_t kSettledSeconds = 3;

}  // namespace

// By the time of the last change of the file's entry, which programs cannot set, as they can that of its
// content.
std::optional<FileStamp> StampOf(const std::string& path) {
  struct stat state = {};
  if (::stat(path.c_str(), &state) != 0) return std::nullopt;
  const auto now =
      std::chrono::duration_cast<std::chrono::seconds>(std::chrono::system_clock::now().time_since_epoch());
  if (now.count() - state.st_ctim.tv_sec < kSettledSeconds) return std::nullopt;
  return FileStamp{.device = state.st_dev,
                   .file = state.st_ino,
                   .size = state.st_size,
                   .seconds = state.st_ctim.tv_sec,
                   .nanoseconds = state.st_ctim.tv_nsec};
}

}  // namespace qelm::embedded::adapter
