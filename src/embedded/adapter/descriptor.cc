#include "embedded/adapter/descriptor.h"

#include <cerrno>
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
