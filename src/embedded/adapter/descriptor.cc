#include "embedded/adapter/descriptor.h"

#include <sys/mman.h>

#include <cerrno>
#include <cstdint>
#include <memory>

namespace qelm::embedded::adapter {
namespace {

constexpr std::size_t kBlock = 262144;

bool WritePiece(int file, std::string_view content) {
  while (!content.empty()) {
    const ssize_t written = ::write(file, content.data(), content.size());
    if (written < 0) {
      if (errno == EINTR) continue;
      return false;
    }
    content.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

// Asks for the memory of a large file at once: a fault for each of its pages takes longer than reading it. A
// system that does not know the request gives the pages one by one.
void Prepare(char* memory, std::size_t size) {
#if defined(MADV_POPULATE_WRITE)
  constexpr std::size_t kLarge = std::size_t{1} << 22U;
  if (size < kLarge) return;
  const auto page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
  const std::size_t before = (page - reinterpret_cast<std::uintptr_t>(memory) % page) % page;
  const std::size_t whole = (size - before) / page * page;
  const int error = errno;
  if (::madvise(memory + before, whole, MADV_POPULATE_WRITE) != 0) errno = error;
#else
  static_cast<void>(memory);
  static_cast<void>(size);
#endif
}

}  // namespace

// Small pieces are gathered into blocks, long ones go out as they lie.
bool WriteAll(int file, std::span<const std::string_view> pieces) {
  std::string block;
  const auto flush = [&] {
    const bool done = WritePiece(file, block);
    block.clear();
    return done;
  };
  for (const std::string_view piece : pieces) {
    if (block.size() + piece.size() > kBlock && !flush()) return false;
    if (piece.size() > kBlock) {
      if (!WritePiece(file, piece)) return false;
    } else {
      block.append(piece);
    }
  }
  return flush();
}

// By way of a block, because a string that is made larger is filled with zeros first.
bool ReadAll(int file, std::size_t size, std::size_t most, std::string* content) {
  const auto block = std::make_unique_for_overwrite<char[]>(kBlock);
  content->reserve(size);
  Prepare(content->data(), size);
  for (;;) {
    const ssize_t count = ::read(file, block.get(), kBlock);
    if (count == 0) return true;
    if (count > 0) {
      content->append(block.get(), static_cast<std::size_t>(count));
      if (content->size() > most) {
        errno = EFBIG;
        return false;
      }
    } else if (errno != EINTR) {
      return false;
    }
  }
}

}  // namespace qelm::embedded::adapter
