// An open file, closed on every way out, and reading and writing it as a whole.
#pragma once

#include <unistd.h>

#include <span>
#include <string>
#include <string_view>
#include <utility>

namespace qelm::embedded::adapter {

class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  ~Descriptor() {
    if (number_ >= 0) ::close(number_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  int Get() const { return number_; }
  bool Valid() const { return number_ >= 0; }
  // The file stays open, and is the caller's to close.
  int Release() { return std::exchange(number_, -1); }
  // Closing can be what reports that the device is full, so a writer has to ask.
  bool Close() {
    const int result = ::close(number_);
    number_ = -1;
    return result == 0;
  }

 private:
  int number_;
};

// Writes the pieces in their order. False, with errno set, on failure.
bool WriteAll(int file, std::span<const std::string_view> pieces);
inline bool WriteAll(int file, const std::string_view& content) {
  return WriteAll(file, std::span(&content, 1));
}

// Reads to the end, at most `most` bytes. False, with errno set, on failure and when there is more. The size
// is only a hint: a pipe has none, and a file may grow or shrink while it is read.
bool ReadAll(int file, std::size_t size, std::size_t most, std::string* content);

}  // namespace qelm::embedded::adapter
