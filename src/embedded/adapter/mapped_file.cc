#include "embedded/adapter/mapped_file.h"

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/vfs.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <csignal>
#include <cstdint>
#include <memory>
#include <mutex>

#include "embedded/adapter/descriptor.h"

namespace qelm::embedded::adapter {
namespace {

constexpr off_t kLarge = off_t{1} << 22U;
constexpr int kFileError = 3;  // the program's exit status

// The mappings of the process, for a signal handler, which can take no lock and allocate nothing.
struct Mapping {
  std::atomic<bool> taken = false;
  std::atomic<std::uintptr_t> begin = 0;  // 0: none
  std::atomic<std::uintptr_t> end = 0;
  std::string_view path;
  std::atomic<int> file = -1;
  struct stat state {};
};
std::array<Mapping, 64> mappings;
std::atomic<std::size_t> mappings_used = 0;  // those behind never were
struct sigaction before_ours;
std::mutex changed_lock;
std::string changed_before;  // of those that are not mapped any more

std::uintptr_t AddressOf(const void* at) { return reinterpret_cast<std::uintptr_t>(at); }

std::uintptr_t PageSize() {
  static const auto size = static_cast<std::uintptr_t>(::sysconf(_SC_PAGESIZE));
  return size;
}

// Where other machines may write to a file, whether one did is seen only after some time.
bool IsOfThisMachine(int file) {
  constexpr std::uint32_t kLocal[] = {EXT4_SUPER_MAGIC, XFS_SUPER_MAGIC,       BTRFS_SUPER_MAGIC,
                                      TMPFS_MAGIC,      OVERLAYFS_SUPER_MAGIC, F2FS_SUPER_MAGIC};
  struct statfs system {};
  return ::fstatfs(file, &system) == 0 &&
         std::find(std::begin(kLocal), std::end(kLocal), static_cast<std::uint32_t>(system.f_type)) !=
             std::end(kLocal);
}

Mapping* MappingAt(std::uintptr_t at) {
  for (std::size_t i = 0; i < mappings_used; ++i) {
    const std::uintptr_t begin = mappings[i].begin;
    if (begin != 0 && at >= begin && at < mappings[i].end) return &mappings[i];
  }
  return nullptr;
}

bool IsIntact(const Mapping& mapping) {
  struct stat now {};
  const struct stat& then = mapping.state;
  return ::fstat(mapping.file, &now) == 0 && now.st_size == then.st_size &&
         now.st_mtim.tv_sec == then.st_mtim.tv_sec && now.st_mtim.tv_nsec == then.st_mtim.tv_nsec;
}

// The file ends before the byte that was read. What stands on the disk is whole: files are written beside.
void OnLostBytes(int signal, siginfo_t* info, void* context) {
  if (const Mapping* const mapping = MappingAt(AddressOf(info->si_addr))) {
    const std::array<std::string_view, 3> message = {
        "qelm: ", mapping->path, ": the file was made shorter while it was read. Run the command again.\n"};
    for (const std::string_view part : message) {
      if (::write(STDERR_FILENO, part.data(), part.size()) < 0) break;
    }
    ::_exit(kFileError);
  }
  if ((before_ours.sa_flags & SA_SIGINFO) != 0) {
    before_ours.sa_sigaction(signal, info, context);
  } else if (before_ours.sa_handler != SIG_DFL && before_ours.sa_handler != SIG_IGN) {
    before_ours.sa_handler(signal);
  } else {
    ::signal(signal, SIG_DFL);  // comes again, and ends the process
  }
}

// Once a process.
bool Watch() {
  static const bool watches = [] {
    PageSize();
    struct sigaction ours {};
    ours.sa_sigaction = OnLostBytes;
    ours.sa_flags = SA_SIGINFO | SA_ONSTACK;
    ::sigemptyset(&ours.sa_mask);
    return ::sigaction(SIGBUS, &ours, &before_ours) == 0;
  }();
  return watches;
}

class MappedFile : public model::BytesPlace {
 public:
  MappedFile(Mapping* mapping, std::string path) : mapping_(*mapping), path_(std::move(path)) {}
  ~MappedFile() override {
    NoteChange();
    const std::uintptr_t begin = mapping_.begin;
    const std::uintptr_t size = mapping_.end - begin;
    mapping_.begin = 0;  // first: without a beginning it is no mapping
    mapping_.end = 0;
    if (begin != 0) ::munmap(reinterpret_cast<void*>(begin), size);
    ::close(mapping_.file);
    mapping_.taken = false;
  }
  MappedFile(const MappedFile&) = delete;
  MappedFile& operator=(const MappedFile&) = delete;

  const char* Map(int file, const struct stat& state) const {
    mapping_.path = path_;
    mapping_.file = file;
    mapping_.state = state;
    const auto size = static_cast<std::size_t>(state.st_size);
    void* const begin = ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE, file, 0);
    if (begin == MAP_FAILED) return nullptr;
    mapping_.end = AddressOf(begin) + size;
    mapping_.begin = AddressOf(begin);
    return static_cast<const char*>(begin);
  }
  bool Intact() const override { return IsIntact(mapping_); }
  void Rest(std::string_view bytes) const override { RestMapped(bytes); }
  void GiveUp() const override { given_up_ = true; }

 private:
  void NoteChange() const {
    if (given_up_ || mapping_.begin == 0 || IsIntact(mapping_)) return;
    const std::scoped_lock lock(changed_lock);
    changed_before = path_;
  }

  Mapping& mapping_;
  std::string path_;
  mutable bool given_up_ = false;
};

std::shared_ptr<const MappedFile> MakeMappedFile(const std::string& path) {
  for (std::size_t i = 0; i < mappings.size(); ++i) {
    if (mappings[i].taken.exchange(true)) continue;
    std::size_t used = mappings_used;
    while (used <= i && !mappings_used.compare_exchange_weak(used, i + 1)) {
    }
    return std::make_shared<const MappedFile>(&mappings[i], path);
  }
  return nullptr;
}

}  // namespace

std::optional<model::SourceBytes> MapLargeFile(const std::string& path) {
  Descriptor file(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  struct stat state {};
  if (!file.Valid() || ::fstat(file.Get(), &state) != 0) return std::nullopt;
  if (!S_ISREG(state.st_mode) || state.st_size < kLarge) return std::nullopt;
  if (!IsOfThisMachine(file.Get()) || !Watch()) return std::nullopt;
  std::shared_ptr<const MappedFile> mapped = MakeMappedFile(path);
  const char* const bytes = mapped == nullptr ? nullptr : mapped->Map(file.Release(), state);
  if (bytes == nullptr) return std::nullopt;
  return model::SourceBytes(std::move(mapped), {bytes, static_cast<std::size_t>(state.st_size)});
}

std::string ChangedMappedFile() {
  for (std::size_t i = 0; i < mappings_used; ++i) {
    if (mappings[i].begin != 0 && !IsIntact(mappings[i])) return std::string(mappings[i].path);
  }
  const std::scoped_lock lock(changed_lock);
  return changed_before;
}

bool MappedPiecesIntact(std::span<const std::string_view> pieces) {
  const Mapping* checked = nullptr;
  for (const std::string_view piece : pieces) {
    const Mapping* const mapping = MappingAt(AddressOf(piece.data()));
    if (mapping == nullptr || mapping == checked) continue;
    if (!IsIntact(*mapping)) return false;
    checked = mapping;
  }
  return true;
}

// Only the file's own pages: the others at both ends may hold what somebody else needs.
void RestMapped(std::string_view bytes) {
  const std::uintptr_t begin = AddressOf(bytes.data());
  const Mapping* const mapping = MappingAt(begin);
  if (mapping == nullptr) return;
  const std::uintptr_t page = PageSize();
  const std::uintptr_t first = (begin + page - 1) / page * page;
  const std::uintptr_t end = (begin + bytes.size()) / page * page;
  if (first < end && end <= mapping->end) {
    ::madvise(reinterpret_cast<void*>(first), end - first, MADV_DONTNEED);
  }
}

void RestBehind::Pass(std::string_view piece) {
  constexpr std::uintptr_t kStep = std::uintptr_t{1} << 23U;
  const std::uintptr_t begin = AddressOf(piece.data());
  const std::uintptr_t end = begin + piece.size();
  if (piece.empty() || begin < from_ || end > limit_) {
    const Mapping* const mapping = MappingAt(begin);
    if (mapping == nullptr) return;
    from_ = begin;
    limit_ = mapping->end;
  }
  if (end - from_ < kStep) return;
  RestMapped({reinterpret_cast<const char*>(from_), end - from_});
  from_ = end;
}

}  // namespace qelm::embedded::adapter
