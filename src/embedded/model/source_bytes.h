// The bytes that a document was read from, which never change: its copies refer to the same ones. To all who
// look at them they are a text like any other.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace qelm::embedded::model {

class SourceBytes : public std::string_view {
 public:
  SourceBytes() = default;
  SourceBytes(std::string bytes) : SourceBytes(std::make_shared<const std::string>(std::move(bytes))) {}
  SourceBytes(const SourceBytes&) = default;
  SourceBytes& operator=(const SourceBytes&) = default;
  // What was moved from is empty, as a string would be.
  SourceBytes(SourceBytes&& other) noexcept : SourceBytes() { Swap(&other); }
  SourceBytes& operator=(SourceBytes&& other) noexcept {
    SourceBytes moved(std::move(other));
    Swap(&moved);
    return *this;
  }
  ~SourceBytes() = default;

 private:
  explicit SourceBytes(std::shared_ptr<const std::string> bytes)
      : std::string_view(*bytes), bytes_(std::move(bytes)) {}

  void Swap(SourceBytes* other) {
    std::string_view::swap(*other);
    bytes_.swap(other->bytes_);
  }

  std::shared_ptr<const std::string> bytes_;
};

}  // namespace qelm::embedded::model
