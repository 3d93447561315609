// Gives back the memory of a large array some way behind the place up to which it was used, so that what is
// made of it can have that memory.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <span>

namespace qelm::embedded::model {

class RoomBehind {
 public:
  // What comes before stays as it is.
  void Begin(std::size_t index) { from_ = index; }
  // From where it began to `index` nobody will look again: what is there is lost.
  template <typename T>
  void Pass(std::span<T> array, std::size_t index) {
    if (index < from_ + kStep / sizeof(T)) return;
    GiveBack(reinterpret_cast<std::uintptr_t>(array.data() + from_), (index - from_) * sizeof(T));
    from_ = index;
  }

 private:
  static constexpr std::size_t kStep = std::size_t{1} << 20U;

  // Only whole pages: others share those at both ends.
  static void GiveBack(std::uintptr_t begin, std::size_t bytes) {
    const auto page = static_cast<std::uintptr_t>(::sysconf(_SC_PAGESIZE));
    const std::uintptr_t first = (begin + page - 1) / page * page;
    const std::uintptr_t end = (begin + bytes) / page * page;
    if (first < end) ::madvise(reinterpret_cast<void*>(first), end - first, MADV_DONTNEED);
  }

  std::size_t from_ = 0;
};

}  // namespace qelm::embedded::model
