#include "embedded/model/room_ahead.h"

#include <sys/mman.h>

#include <cstdint>

namespace qelm::embedded::model {

void RoomAhead::BringIn([[maybe_unused]] const void* begin) {
#if defined(MADV_POPULATE_WRITE)
  constexpr std::uintptr_t kPage = 4096;
  const auto at = reinterpret_cast<std::uintptr_t>(begin);
  const std::uintptr_t first = (at + kPage - 1) / kPage * kPage;
  ::madvise(reinterpret_cast<void*>(first), (at + kStep) / kPage * kPage - first, MADV_POPULATE_WRITE);
#endif
}

}  // namespace qelm::embedded::model
