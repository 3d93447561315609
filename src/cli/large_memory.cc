// Memory for large documents comes in large pages, where the system has them to give.
//
// A document of a million elements is some hundred megabytes that are all touched once: in pages of 4 kB the
// system is asked a hundred thousand times for the next one, which takes a third of the whole run. So what is
// asked for in one piece of some megabytes is aligned to a large page, and the system is told (madvise(2),
// MADV_HUGEPAGE). Where it has none, nothing is lost.
#include <sys/mman.h>

#include <cstdlib>
#include <new>

namespace {

constexpr std::size_t kLargePage = std::size_t{2} << 20U;  // of x86-64 and, with pages of 4 kB, of arm64
constexpr std::size_t kLarge = 2 * kLargePage;

void* AllocateLarge(std::size_t size) {
  void* memory = nullptr;
  if (::posix_memalign(&memory, kLargePage, size) != 0) return nullptr;
  ::madvise(memory, size, MADV_HUGEPAGE);
  return memory;
}

}  // namespace

void* operator new(std::size_t size) {
  for (;;) {
    void* const memory = size < kLarge ? std::malloc(size == 0 ? 1 : size) : AllocateLarge(size);
    if (memory != nullptr) return memory;
    const std::new_handler handler = std::get_new_handler();
    if (handler == nullptr) throw std::bad_alloc();
    handler();
  }
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
