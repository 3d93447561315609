// An array to which elements are added, and whose elements stay as they are. A copy keeps for itself only
// what is added to it; for the others it refers to the array that it is a copy of, which must neither change
// nor go while the copy lives. So copies of documents share what no edit changes where it stands.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace qelm::embedded::model {

template <typename T>
class GrownArray {
 public:
  GrownArray() = default;
  explicit GrownArray(std::size_t size) : own_(size) {}
  GrownArray(const GrownArray& from)
      : shared_(from.shared_.empty() ? std::span<const T>(from.own_) : from.shared_),
        own_(from.shared_.empty() ? std::vector<T>() : from.own_) {}
  GrownArray(GrownArray&&) noexcept = default;
  GrownArray& operator=(const GrownArray&) = delete;
  GrownArray& operator=(GrownArray&&) noexcept = default;
  ~GrownArray() = default;

  std::size_t size() const { return shared_.size() + own_.size(); }
  const T& operator[](std::size_t i) const {
    return i < shared_.size() ? shared_[i] : own_[i - shared_.size()];
  }
  // Elements that were added to the same array, so that they lie one after the other.
  std::span<const T> Run(std::size_t first, std::size_t count) const {
    const bool is_shared = first < shared_.size();
    return is_shared ? shared_.subspan(first, count)
                     : std::span<const T>(own_).subspan(first - shared_.size(), count);
  }

  void push_back(const T& element) { own_.push_back(element); }
  // For whoever fills an array that is no copy: all of it.
  std::vector<T>& Own() { return own_; }

 private:
  std::span<const T> shared_;
  std::vector<T> own_;
};

}  // namespace qelm::embedded::model
