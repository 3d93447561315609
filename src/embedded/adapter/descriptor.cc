#include "embedded/adapter/descriptor.h"

#include <sys/mman.h>
#include <sys/uio.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>

#include "embedded/adapter/mapped_file.h"

namespace qelm::embedded::adapter {
namespace {

constexpr std::size_t kBlock = 262144;

// Writes the vectors, whose bytes it takes off them.
bool WriteVectors(int file, std::span<iovec> vectors) {
  while (!vectors.empty()) {
    const ssize_t written = ::writev(file, vectors.data(), static_cast<int>(vectors.size()));
    if (written < 0) {
      if (errno == EINTR) continue;
      return false;
    }
    auto left = static_cast<std::size_t>(written);
    while (!vectors.empty() && vectors.front().iov_len <= left) {
      left -= vectors.front().iov_len;
      vectors = vectors.subspan(1);
    }
    if (left == 0) continue;
    vectors.front().iov_base = static_cast<char*>(vectors.front().iov_base) + left;
    vectors.front().iov_len -= left;
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
  const int error = errno;
  if (::madvise(memory + before, (size - before) / page * page, MADV_POPULATE_WRITE) != 0) errno = error;
#else
  static_cast<void>(memory);
  static_cast<void>(size);
#endif
}

}  // namespace

// Long pieces as they lie, many at a time and in steps: for a larger request the system looks for large pages
// of its cache, which takes it several times as long as the copying. Short ones are put together in a block,
// as each piece of a request costs the system as much as copying some hundred bytes.
bool WriteAll(int file, std::span<const std::string_view> pieces) {
  constexpr std::size_t kShort = 512;
  std::array<iovec, 512> vectors;
  std::unique_ptr<char[]> block;
  char* block_end = nullptr;  // of what is in the block
  std::size_t count = 0;
  std::size_t size = 0;
  const auto flush = [&] {
    const bool done = WriteVectors(file, std::span(vectors).first(count));
    count = size = 0;
    block_end = block.get();
    return done;
  };
  const auto put_into_block = [&](std::string_view piece) {
    if (block == nullptr) {
      block = std::make_unique_for_overwrite<char[]>(kBlock);
      block_end = block.get();
    }
    char* const begin = block_end;
    block_end = std::copy(piece.begin(), piece.end(), begin);
    iovec* const last = count == 0 ? nullptr : &vectors[count - 1];
    if (last != nullptr && static_cast<char*>(last->iov_base) + last->iov_len == begin) {
      last->iov_len += piece.size();
    } else {
      vectors[count++] = {begin, piece.size()};
    }
  };
  RestBehind passed;
  for (std::string_view piece : pieces) {
    while (!piece.empty()) {
      const std::string_view done = piece.substr(0, kBlock - size);
      if (done.size() < kShort) {
        put_into_block(done);
      } else {
        vectors[count++] = {const_cast<char*>(done.data()), done.size()};
      }
      size += done.size();
      piece.remove_prefix(done.size());
      if (size < kBlock && count < vectors.size()) continue;
      if (!flush()) return false;
      passed.Pass(done);
    }
  }
  return flush();
}

// In steps: a string that is made larger is filled with zeros first, which costs least where the processor's
// cache still has them when they are read over. The last step, which finds the end, is a byte.
bool ReadAll(int file, std::size_t size, std::size_t most, std::string* content) {
  constexpr std::size_t kStep = 131072;
  content->reserve(size + 1);
  Prepare(content->data(), size);
  for (;;) {
    const std::size_t had = content->size();
    const std::size_t room = had < size ? std::min(kStep, size - had) : had == size ? 1 : kStep;
    content->resize(had + room);
    const ssize_t count = ::read(file, content->data() + had, room);
    content->resize(had + static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    if (count == 0) return true;
    if (count < 0 && errno != EINTR) return false;
    if (content->size() > most) {
      errno = EFBIG;
      return false;
    }
  }
}

}  // namespace qelm::embedded::adapter
