// An array that a copy shares with the array that it is a copy of, until it is changed. That one must neither
// change nor go while the copy lives.
#pragma once

#include <cstddef>
#include <span>
#include <utility>
#include <vector>

namespace qelm::embedded::model {

template <typename T>
class SharedArray {
 public:
  SharedArray() = default;
  explicit SharedArray(std::size_t size) : own_(size), data_(own_.data()), size_(size) {}
  SharedArray(const SharedArray& from) : data_(from.data_), size_(from.size_), shares_(true) {}
  SharedArray(SharedArray&& from) noexcept { *this = std::move(from); }
  SharedArray& operator=(const SharedArray&) = delete;
  SharedArray& operator=(SharedArray&& from) noexcept {
    own_ = std::move(from.own_);
    data_ = std::exchange(from.data_, nullptr);
    size_ = std::exchange(from.size_, 0);
    shares_ = std::exchange(from.shares_, false);
    return *this;
  }
  ~SharedArray() = default;

  std::size_t size() const { return size_; }
  bool empty() const { return size_ == 0; }
  std::size_t capacity() const { return own_.capacity(); }
  const T* data() const { return data_; }
  const T* begin() const { return data_; }
  const T* end() const { return data_ + size_; }
  const T& operator[](std::size_t i) const { return data_[i]; }
  const T& back() const { return data_[size_ - 1]; }

  // What follows is for whoever changes the array: from here on it has all of it for itself, and what came of
  // the functions above before is of the other one.
  T& operator[](std::size_t i) {
    Detach();
    return own_[i];
  }
  T& back() { return (*this)[size_ - 1]; }
  std::span<T> All() {
    Detach();
    return own_;
  }
  void reserve(std::size_t size) {
    Detach();
    own_.reserve(size);
    data_ = own_.data();
  }
  void resize(std::size_t size) {
    Detach();
    own_.resize(size);
    data_ = own_.data();
    size_ = size;
  }
  void clear() { resize(0); }
  void push_back(const T& element) {
    Detach();
    own_.push_back(element);
    data_ = own_.data();
    ++size_;
  }
  T& emplace_back() {
    push_back(T{});
    return own_.back();
  }

 private:
  void Detach() {
    if (shares_) [[unlikely]]
      TakeAll();
  }
  [[gnu::noinline]] void TakeAll() {
    own_.assign(begin(), end());
    data_ = own_.data();
    shares_ = false;
  }

  std::vector<T> own_;
  const T* data_ = nullptr;
  std::size_t size_ = 0;  // so that nobody divides for it
  bool shares_ = false;
};

}  // namespace qelm::embedded::model
