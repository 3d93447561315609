#include "embedded/model/large_pages.h"

#include <sys/mman.h>

#include <cstdint>

namespace qelm::embedded::model {

void AdviseLargePages(const void* begin, std::size_t bytes) {
  constexpr std::size_t kWorthIt = std::size_t{4} << 20;
  constexpr std::uintptr_t kPage = 4096;
  if (bytes < kWorthIt) return;
  const auto first = (reinterpret_cast<std::uintptr_t>(begin) + kPage - 1) / kPage * kPage;
  const auto last = (reinterpret_cast<std::uintptr_t>(begin) + bytes) / kPage * kPage;
#ifdef MADV_HUGEPAGE
  ::madvise(reinterpret_cast<void*>(first), last - first, MADV_HUGEPAGE);
#endif
}

}  // namespace qelm::embedded::model
