// Has the system give a large array that is being filled its memory some way ahead of what is in it: page by
// page, when each is touched first, the same memory costs a quarter more.
#pragma once

#include <cstddef>

namespace qelm::embedded::model {

class RoomAhead {
 public:
  // Called before an element is added to an array whose room was reserved before. A small array is left
  // alone.
  template <typename Array>
  void Need(const Array& array) {
    if (array.size() < limit_) return;
    constexpr std::size_t kElements = kStep / sizeof(*array.data());
    limit_ = array.size() + kElements;
    if (array.capacity() < array.size() + kElements) return;
    BringIn(array.data() + array.size());
  }

  // The step: so many bytes, of which those that are whole pages are brought in. Where the system has no such
  // call, the memory comes as it always does.
  static constexpr std::size_t kStep = std::size_t{1} << 19U;
  static void BringIn(const void* begin);

 private:
  std::size_t limit_ = 0;  // elements
};

}  // namespace qelm::embedded::model
