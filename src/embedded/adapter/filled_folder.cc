#include "embedded/adapter/filled_folder.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "embedded/adapter/file_places.h"
#include "embedded/adapter/file_replacing.h"

namespace qelm::embedded::adapter {
namespace {

// Some files may only be written.
int OpenToFlush(const std::string& path) {
  constexpr int kFlags = O_NONBLOCK | O_CLOEXEC;
  const int file = ::open(path.c_str(), O_RDONLY | kFlags);
  return file < 0 && errno == EACCES ? ::open(path.c_str(), O_WRONLY | kFlags) : file;
}

// One that somebody has taken away needs none. False with errno set.
bool FlushFile(const std::string& path) {
  const Descriptor file(OpenToFlush(path));
  return file.Valid() ? ::fsync(file.Get()) == 0 : errno == ENOENT;
}

}  // namespace

void FilledFolder::Written(const std::string& path, bool waits, int error) {
  files_[path] = {.waits = waits, .error = error};
  if (waits) folders_.insert(FolderOf(path));
}

void FilledFolder::Appended(const std::string& path) {
  if (const auto file = files_.find(path); file != files_.end()) file->second.waits = true;
}

void FilledFolder::Moved(const std::string& from, const std::string& to) {
  files_.erase(to);
  if (auto file = files_.extract(from)) {
    file.key() = to;
    files_.insert(std::move(file));
  }
  folders_.insert(FolderOf(to));
}

std::string FilledFolder::Flush(const std::string& path) {
  const auto found = files_.find(path);
  if (found == files_.end()) return {};
  File& file = found->second;
  if (file.waits && file.error == 0) {
    if (FlushFile(path)) {
      file.waits = false;
    } else {
      file.error = errno;
    }
  }
  return file.error == 0 ? std::string() : path + ": " + std::strerror(file.error);
}

std::string FilledFolder::FlushAll() {
  std::string why;
  for (const auto& [path, file] : files_) {
    if (std::string lost = Flush(path); why.empty()) why = std::move(lost);
  }
  for (const std::string& folder : folders_) FlushFolder(folder);
  folders_.clear();
  return why;
}

}  // namespace qelm::embedded::adapter
