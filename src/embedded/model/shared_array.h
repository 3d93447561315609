// An array that a copy shares with the array that it is a copy of, until it is changed. That one must neither
// change nor go while the copy lives.
//
// Documents have millions of these elements, so they are trivial, room for more has no content until they
// are there, and adding one asks a single question.
#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <span>
#include <type_traits>
#include <utility>

#include "embedded/model/room_ahead.h"

namespace qelm::embedded::model {

template <typename T>
class SharedArray {
  static_assert(std::is_trivial_v<T>);

 public:
  SharedArray() = default;
  explicit SharedArray(std::size_t size) { resize(size); }
  SharedArray(const SharedArray& from) : data_(from.data_), size_(from.size_), shares_(true) {}
  SharedArray(SharedArray&& from) noexcept { *this = std::move(from); }
  SharedArray& operator=(const SharedArray&) = delete;
  SharedArray& operator=(SharedArray&& from) noexcept {
    own_ = std::move(from.own_);
    data_ = std::exchange(from.data_, nullptr);
    size_ = std::exchange(from.size_, 0);
    ready_ = std::exchange(from.ready_, 0);
    capacity_ = std::exchange(from.capacity_, 0);
    shares_ = std::exchange(from.shares_, false);
    return *this;
  }
  ~SharedArray() = default;

  std::size_t size() const { return size_; }
  bool empty() const { return size_ == 0; }
  const T* data() const { return data_; }
  const T* begin() const { return data_; }
  const T* end() const { return data_ + size_; }
  const T& operator[](std::size_t i) const { return data_[i]; }
  const T& back() const { return data_[size_ - 1]; }

  // What follows is for whoever changes the array: from here on it has all of it for itself, and what came of
  // the functions above before is of the other one.
  T& operator[](std::size_t i) {
    Detach();
    return data_[i];
  }
  T& back() { return (*this)[size_ - 1]; }
  std::span<T> All() {
    Detach();
    return {data_, size_};
  }
  void reserve(std::size_t capacity) {
    if (shares_ || capacity > capacity_) Move(std::max(capacity, size_));
  }
  void resize(std::size_t size) {
    reserve(size);
    if (size > size_) std::fill(data_ + size_, data_ + size, T{});
    size_ = ready_ = size;
  }
  void clear() { resize(0); }
  // The last one, good until the next one is added. An element is best filled in where it is: to copy what
  // was only just written costs more than both.
  T& push_back(const T& element) {
    if (size_ >= ready_) [[unlikely]]
      return PushCopy(element);
    return data_[size_++] = element;
  }
  T& emplace_back() {
    if (size_ >= ready_) [[unlikely]]
      MakeRoom();
    return data_[size_++] = T{};
  }

 private:
  void Detach() {
    if (shares_) [[unlikely]]
      Move(size_);
  }
  // To memory of its own, and with room for so many.
  [[gnu::noinline]] void Move(std::size_t capacity) {
    auto own = std::make_unique_for_overwrite<T[]>(capacity);
    std::copy(begin(), end(), own.get());
    own_ = std::move(own);
    data_ = own_.get();
    ready_ = size_;
    capacity_ = capacity;
    shares_ = false;
  }
  // For one more at least.
  [[gnu::noinline]] void MakeRoom() {
    constexpr std::size_t kStep = RoomAhead::kStep / sizeof(T);
    constexpr std::size_t kLeast = 16;
    reserve(size_ < capacity_ ? capacity_ : std::max(2 * size_, kLeast));
    const bool is_large = capacity_ - size_ >= kStep;
    ready_ = is_large ? size_ + kStep : capacity_;
    if (is_large) RoomAhead::BringIn(data_ + size_);
  }
  // The element may be one of the array.
  [[gnu::noinline]] T& PushCopy(T element) {
    MakeRoom();
    return data_[size_++] = element;
  }

  std::unique_ptr<T[]> own_;
  T* data_ = nullptr;
  std::size_t size_ = 0;
  std::size_t ready_ = 0;  // up to here there is room that the system has given already, if it is large
  std::size_t capacity_ = 0;
  bool shares_ = false;
};

}  // namespace qelm::embedded::model
