// Comparing the values of two operands, each a list of strings.
//
// A test holds as soon as one pair of a left and a right string satisfies it; "!=" holds when no pair is
// equal. Two integers compare as numbers, anything else by bytes. An operand without strings, or whose first
// one is empty, is empty as a whole, and then only emptiness decides.
//
// The strings of one operand are gathered in a ValueSet, against which those of the other are held one by
// one; the set answers at once whatever its size, since equality is a look-up and order only asks for the
// least and the greatest.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace qelm::xpath {

enum class Test : std::uint8_t {
  kEqual,
  kNotEqual,
  kGreater,
  kLess,
  kGreaterOrEqual,
  kLessOrEqual,
  kContains,
  kContainsCi,
  kStartsWith,
  kStartsWithCi,
};

// The test with its sides exchanged; only for the six operators.
Test Mirrored(Test test);

// The outcome of a test of two integers.
bool CompareIntegers(Test test, std::int64_t left, std::int64_t right);

// The outcome when one side or both are empty.
bool CompareEmpty(Test test, bool left_empty, bool right_empty);

class ValueSet {
 public:
  void Clear();
  void Add(std::string_view value);

  // Whether the operand counts as empty.
  bool IsEmpty() const { return count_ == 0 || values_.front().empty(); }
  std::size_t Size() const { return count_; }
  const std::string& operator[](std::size_t index) const { return values_[index]; }

  // Whether a pair of `other` and one of these values satisfies the test (for "!=": whether a pair is equal).
  // `other` is the left side when `other_is_left`.
  bool AnyPair(Test test, std::string_view other, bool other_is_left);

 private:
  bool AnyEqual(std::string_view other);
  bool AnyOrdered(Test test, std::string_view other);
  bool AnyText(Test test, std::string_view other, bool other_is_left) const;

  // The least and the greatest of some values, as indexes into values_.
  struct Range {
    bool any = false;
    std::size_t least = 0;
    std::size_t greatest = 0;
  };
  void DropIndex();
  void Widen(std::size_t index, Range* range) const;
  bool InText(Test test, std::string_view other, const Range& range) const;

  // Strings are kept when the set is cleared, so that their memory is used again.
  std::vector<std::string> values_;
  std::size_t count_ = 0;
  Range texts_;        // of all values, as text
  Range no_integers_;  // of those that are no integers, as text
  bool any_integer_ = false;
  std::int64_t least_integer_ = 0;
  std::int64_t greatest_integer_ = 0;
  // For equality, when there are many: made at the first question.
  std::unordered_set<std::string_view> known_texts_;
  std::unordered_set<std::int64_t> known_integers_;
  bool indexed_ = false;
};

// A comparison whose one side comes value by value, until its outcome is certain.
class RunningComparison {
 public:
  RunningComparison(Test test, ValueSet& other, bool other_is_left)
      : test_(test), other_(other), other_is_left_(other_is_left) {}

  // Takes the next value; true when no further one can change the outcome.
  bool Take(std::string_view value);
  // The outcome when there are no more values.
  bool Outcome() const;

 private:
  bool OfEmpty(bool is_empty) const {
    return other_is_left_ ? CompareEmpty(test_, other_.IsEmpty(), is_empty)
                          : CompareEmpty(test_, is_empty, other_.IsEmpty());
  }

  Test test_;
  ValueSet& other_;
  bool other_is_left_;
  bool any_value_ = false;
  bool any_pair_ = false;
  bool one_is_empty_ = false;
  bool outcome_of_empty_ = false;
};

}  // namespace qelm::xpath
