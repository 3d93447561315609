// What the evaluation of an expression took, step by step and predicate by predicate.
#pragma once

#include <chrono>
#include <cstddef>
#include <vector>

namespace qelm::xpath {

// Measures wall time from when it was made.
class Stopwatch {
 public:
  double Milliseconds() const {
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start_).count();
  }

 private:
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

// A count of nodes, and the time that it took to get there.
struct ProfileEntry {
  std::size_t asked = 0;  // predicates: of how many nodes
  std::size_t kept = 0;
  double elapsed_ms = 0;

  void Add(std::size_t more_asked, std::size_t more_kept, double more_ms) {
    asked += more_asked;
    kept += more_kept;
    elapsed_ms += more_ms;
  }
};

// Entries by the number of the step, and by that of the step and the predicate's place in it. What is
// evaluated several times, once a flow, adds up.
class Profile {
 public:
  void AddStep(std::size_t step, std::size_t kept, double elapsed_ms) {
    EntryIn(steps_, step).Add(0, kept, elapsed_ms);
  }
  void AddPredicate(std::size_t step, std::size_t place, std::size_t asked, std::size_t kept,
                    double elapsed_ms) {
    if (step >= predicates_.size()) predicates_.resize(step + 1);
    EntryIn(predicates_[step], place).Add(asked, kept, elapsed_ms);
  }

  ProfileEntry Step(std::size_t step) const { return step < steps_.size() ? steps_[step] : ProfileEntry(); }
  ProfileEntry Predicate(std::size_t step, std::size_t place) const {
    const bool known = step < predicates_.size() && place < predicates_[step].size();
    return known ? predicates_[step][place] : ProfileEntry();
  }

  void AddIndex(double elapsed_ms) { index_ms_ += elapsed_ms; }
  double IndexMilliseconds() const { return index_ms_; }

 private:
  static ProfileEntry& EntryIn(std::vector<ProfileEntry>& entries, std::size_t number) {
    if (number >= entries.size()) entries.resize(number + 1);
    return entries[number];
  }

  double index_ms_ = 0;
  std::vector<ProfileEntry> steps_;
  std::vector<std::vector<ProfileEntry>> predicates_;
};

}  // namespace qelm::xpath
