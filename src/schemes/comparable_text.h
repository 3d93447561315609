// Names and values as a scheme compares them: as they stand, or without regard to letter case.
#pragma once

#include <string>
#include <string_view>

namespace qelm::schemes {

class TextComparison {
 public:
  explicit TextComparison(bool ignore_case) : ignore_case_(ignore_case) {}

  bool IgnoresCase() const { return ignore_case_; }

  // The text in the form that is compared: the text itself, or a folded one that is kept in `buffer`.
  std::string_view Comparable(std::string_view text, std::string* buffer) const;

 private:
  bool ignore_case_;
};

}  // namespace qelm::schemes
