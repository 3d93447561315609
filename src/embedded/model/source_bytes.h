// The bytes that a document was read from, which never change: its copies refer to the same ones. To all who
// look at them they are a text like any other.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace qelm::embedded::model {

// Where the bytes lie. Whoever opens a document may leave them in its file, as long as that stays as it is.
class BytesPlace {
 public:
  BytesPlace() = default;
  BytesPlace(const BytesPlace&) = delete;
  BytesPlace& operator=(const BytesPlace&) = delete;
  virtual ~BytesPlace() = default;
  // Whether the bytes are still those that were read first.
  virtual bool Intact() const { return true; }
  // These bytes will not be looked at soon: the memory that they take may go until they are.
  virtual void Rest(std::string_view /*bytes*/) const {}
  // Whether they may become others at all.
  virtual bool CanChange() const { return true; }
  // What was read of them is not used.
  virtual void GiveUp() const {}
};

class SourceBytes : public std::string_view {
 public:
  SourceBytes() = default;
  SourceBytes(std::string bytes) : SourceBytes(std::make_shared<const OwnString>(std::move(bytes))) {}
  SourceBytes(const char* text) : SourceBytes(std::string(text)) {}
  SourceBytes(std::shared_ptr<const BytesPlace> place, std::string_view bytes)
      : std::string_view(bytes), place_(std::move(place)) {}
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

  // False also where these bytes were made of others (MadeOf) that are not what they were.
  bool Intact() const {
    return (place_ == nullptr || place_->Intact()) && (origin_ == nullptr || origin_->Intact());
  }
  void MadeOf(const SourceBytes& origin) {
    origin_ = origin.origin_ != nullptr ? origin.origin_ : origin.place_;
    if (origin_ != nullptr && !origin_->CanChange()) origin_.reset();
  }
  // Says that what was read of these bytes is not used, so that it does not matter what becomes of them.
  void GiveUp() const {
    if (place_ != nullptr) place_->GiveUp();
  }
  void Rest(std::size_t begin, std::size_t end) const {
    if (place_ != nullptr) place_->Rest(substr(begin, end - begin));
  }

 private:
  struct OwnString : BytesPlace {
    explicit OwnString(std::string text) : bytes(std::move(text)) {}
    bool CanChange() const override { return false; }
    const std::string bytes;
  };
  explicit SourceBytes(std::shared_ptr<const OwnString> own)
      : std::string_view(own->bytes), place_(std::move(own)) {}

  void Swap(SourceBytes* other) {
    std::string_view::swap(*other);
    place_.swap(other->place_);
    origin_.swap(other->origin_);
  }

  std::shared_ptr<const BytesPlace> place_;
  std::shared_ptr<const BytesPlace> origin_;
};

}  // namespace qelm::embedded::model
