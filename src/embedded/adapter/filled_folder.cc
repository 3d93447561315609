#include "embedded/adapter/filled_folder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

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

void Rename(const std::string& from, const std::string& to, std::set<std::string>* names) {
  names->erase(to);
  if (names->erase(from) != 0) names->insert(to);
}

}  // namespace

bool FilledFolder::MayWait(const std::string& path) const {
  struct stat status {};
  return written_.contains(path) || (::lstat(path.c_str(), &status) != 0 && errno == ENOENT);
}

void FilledFolder::Written(const std::string& path) {
  written_.insert(path);
  waiting_.insert(path);
  folders_.insert(FolderOf(path));
}

void FilledFolder::Moved(const std::string& from, const std::string& to) {
  Rename(from, to, &written_);
  Rename(from, to, &waiting_);
  folders_.insert({FolderOf(from), FolderOf(to)});
}

void FilledFolder::Removed(const std::string& path) {
  written_.erase(path);
  waiting_.erase(path);
  folders_.insert(FolderOf(path));
}

std::string FilledFolder::Flush() {
  for (; Waits() && why_lost_.empty(); waiting_.erase(waiting_.begin())) {
    if (!FlushFile(*waiting_.begin())) why_lost_ = *waiting_.begin() + ": " + std::strerror(errno);
  }
  for (const std::string& folder : folders_) FlushFolder(folder);
  folders_.clear();
  return why_lost_;
}

}  // namespace qelm::embedded::adapter
