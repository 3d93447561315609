#include "xpath/comparison.h"

#include <algorithm>

#include "common/numbers.h"
#include "common/strings.h"
#include "common/text.h"

namespace qelm::xpath {
namespace {

// Up to here, looking at each value is faster than an index.
constexpr std::size_t kFew = 8;

// Equality of two values, as "=" and "!=" mean it.
bool AreEqual(std::string_view left, std::string_view right) {
  if (left == right) return true;
  std::int64_t left_number = 0;
  std::int64_t right_number = 0;
  return common::IsInteger(left, &left_number) && common::IsInteger(right, &right_number) &&
         left_number == right_number;
}

template <typename Value>
bool Ordered(Test test, const Value& left, const Value& right) {
  switch (test) {
    case Test::kGreater:
      return left > right;
    case Test::kLess:
      return left < right;
    case Test::kGreaterOrEqual:
      return left >= right;
    case Test::kLessOrEqual:
      return left <= right;
    case Test::kEqual:
      return left == right;
    default:
      return left != right;
  }
}

bool TextTest(Test test, std::string_view left, std::string_view right) {
  switch (test) {
    case Test::kContains:
      return left.find(right) != left.npos;
    case Test::kContainsCi:
      return common::ContainsIgnoreCase(left, right);
    case Test::kStartsWith:
      return common::StartsWith(left, right, true);
    default:
      return common::StartsWith(left, right, false);
  }
}

// Whether the greatest of the other side decides: "x is less than one of them".
bool AsksGreatest(Test test) { return test == Test::kLess || test == Test::kLessOrEqual; }

}  // namespace

Test Mirrored(Test test) {
  switch (test) {
    case Test::kGreater:
      return Test::kLess;
    case Test::kLess:
      return Test::kGreater;
    case Test::kGreaterOrEqual:
      return Test::kLessOrEqual;
    case Test::kLessOrEqual:
      return Test::kGreaterOrEqual;
    default:
      return test;
  }
}

bool CompareIntegers(Test test, std::int64_t left, std::int64_t right) { return Ordered(test, left, right); }

bool CompareEmpty(Test test, bool left_empty, bool right_empty) {
  switch (test) {
    case Test::kEqual:
      return left_empty && right_empty;
    case Test::kNotEqual:
      return !(left_empty && right_empty);
    case Test::kGreater:
      return !left_empty && right_empty;
    case Test::kLess:
      return left_empty && !right_empty;
    case Test::kGreaterOrEqual:
      return right_empty;
    case Test::kLessOrEqual:
      return left_empty;
    default:
      return false;
  }
}

void ValueSet::Clear() {
  count_ = 0;
  texts_ = Range();
  no_integers_ = Range();
  any_integer_ = false;
  DropIndex();
}

void ValueSet::DropIndex() {
  if (!indexed_) return;
  known_texts_.clear();
  known_integers_.clear();
  indexed_ = false;
}

void ValueSet::Add(std::string_view value) {
  DropIndex();
  if (count_ == values_.size()) values_.emplace_back();
  const std::size_t index = count_++;
  values_[index] = value;
  Widen(index, &texts_);
  std::int64_t number = 0;
  if (!common::IsInteger(value, &number)) {
    Widen(index, &no_integers_);
    return;
  }
  least_integer_ = any_integer_ ? std::min(least_integer_, number) : number;
  greatest_integer_ = any_integer_ ? std::max(greatest_integer_, number) : number;
  any_integer_ = true;
}

void ValueSet::Widen(std::size_t index, Range* range) const {
  if (!range->any) {
    *range = {true, index, index};
    return;
  }
  if (values_[index] < values_[range->least]) range->least = index;
  if (values_[range->greatest] < values_[index]) range->greatest = index;
}

bool ValueSet::AnyPair(Test test, std::string_view other, bool other_is_left) {
  switch (test) {
    case Test::kEqual:
    case Test::kNotEqual:
      return AnyEqual(other);
    case Test::kContains:
    case Test::kContainsCi:
    case Test::kStartsWith:
    case Test::kStartsWithCi:
      return AnyText(test, other, other_is_left);
    default:
      return AnyOrdered(other_is_left ? test : Mirrored(test), other);
  }
}

bool ValueSet::AnyEqual(std::string_view other) {
  if (count_ <= kFew) {
    return std::any_of(values_.begin(), values_.begin() + static_cast<std::ptrdiff_t>(count_),
                       [other](const std::string& value) { return AreEqual(value, other); });
  }
  std::int64_t number = 0;
  if (!indexed_) {
    indexed_ = true;
    for (std::size_t index = 0; index < count_; ++index) {
      if (common::IsInteger(values_[index], &number)) {
        known_integers_.insert(number);
      } else {
        known_texts_.insert(values_[index]);
      }
    }
  }
  if (common::IsInteger(other, &number)) return known_integers_.contains(number);
  return known_texts_.contains(other);
}

// Whether `other` stands in that order to one of the values.
bool ValueSet::AnyOrdered(Test test, std::string_view other) {
  std::int64_t number = 0;
  if (!common::IsInteger(other, &number)) return InText(test, other, texts_);
  const std::int64_t extreme = AsksGreatest(test) ? greatest_integer_ : least_integer_;
  return (any_integer_ && Ordered(test, number, extreme)) || InText(test, other, no_integers_);
}

bool ValueSet::InText(Test test, std::string_view other, const Range& range) const {
  if (!range.any) return false;
  const std::string_view extreme = values_[AsksGreatest(test) ? range.greatest : range.least];
  return Ordered(test, other, extreme);
}

bool ValueSet::AnyText(Test test, std::string_view other, bool other_is_left) const {
  return std::any_of(values_.begin(), values_.begin() + static_cast<std::ptrdiff_t>(count_),
                     [&](const std::string& value) {
                       return other_is_left ? TextTest(test, other, value) : TextTest(test, value, other);
                     });
}

bool RunningComparison::Take(std::string_view value) {
  if (!any_value_) {
    any_value_ = true;
    one_is_empty_ = value.empty() || other_.IsEmpty();
    if (one_is_empty_) outcome_of_empty_ = OfEmpty(value.empty());
  }
  if (one_is_empty_) return true;
  any_pair_ = other_.AnyPair(test_, value, !other_is_left_);
  return any_pair_;
}

bool RunningComparison::Outcome() const {
  if (!any_value_) return OfEmpty(true);
  return one_is_empty_ ? outcome_of_empty_ : any_pair_ != (test_ == Test::kNotEqual);
}

}  // namespace qelm::xpath
