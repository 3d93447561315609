// Memory for a million things: a vector that is filled to tens of megabytes costs a page fault for every 4
// KB, and later a miss of the address cache for nearly every jump in it. Large pages save both.
#pragma once

#include <cstddef>
#include <vector>

namespace qelm::embedded::model {

// Asks the system to back the memory with large pages where it can. Only advice: nothing happens for small
// blocks and on systems that have none.
void AdviseLargePages(const void* begin, std::size_t bytes);

// Makes room for `count` elements and asks for large pages for it.
template <typename T>
void ReserveLarge(std::vector<T>* vector, std::size_t count) {
  vector->reserve(count);
  AdviseLargePages(vector->data(), vector->capacity() * sizeof(T));
}

}  // namespace qelm::embedded::model
