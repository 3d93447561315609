// The state of one validation: which rules are on and what is to become of the text, and what came of it. It
// is set from the settings, a call or the command line before the run; one run is under way at a time.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "host/interface/types.h"

namespace qelm::coloring {

// The rules by their numbers, which reports, calls and the command line show.
enum ValidationRule : std::int32_t {
  kNoViolation = -1,
  kValueNotAllowed = 1,    // a value is not among those that the scheme lists
  kValueNotInherited = 2,  // a value is not among those of the nearest ancestor that has the attribute
  kValueMissing = 3,       // no value, although the nearest ancestor that has the attribute has one
  kNoValueNotAllowed = 4,  // no value, and the scheme does not list "<no value>"
};
inline constexpr std::size_t kValidationRules = 4;

// What a run does to the strikethrough of the text that it checks.
enum class StrikethroughUse : std::uint8_t {
  kMark,    // on where a rule is violated, off elsewhere
  kRemove,  // off everywhere
  kLeave,   // the document is only read
};

enum class ValidationEnding : std::uint8_t {
  kNone,  // not run, or still under way
  kCompleted,
  kByUser,          // cancelled
  kMissingRoot,     // the main flow has no elements, and only that one was to be checked
  kMissingElement,  // nothing is selected
  kMissingDocument,
  kMissingScheme,
};

// One attribute of one element that violates a rule. The texts hold until the sink that takes it returns.
struct Violation {
  std::int32_t rule = kNoViolation;
  host::Id document = host::kNone;
  host::Id element = host::kNone;
  std::string_view attribute;  // as the element has it
  std::string_view value;      // the offending one; empty for rules 3 and 4
};

struct ValidationRun {
  // What was asked for.
  std::array<bool, kValidationRules> rules{true, true, false, true};  // by number - 1
  StrikethroughUse strikethrough = StrikethroughUse::kMark;
  bool prompts = true;  // alerts; the question behind Esc is asked in any case

  // What came of it.
  ValidationEnding ending = ValidationEnding::kNone;
  std::int32_t last_rule = kNoViolation;  // of the violation that was found last
  std::uint64_t elements = 0;             // checked
  std::uint64_t violations = 0;
  std::uint64_t unmarked = 0;            // texts whose strikethrough the host did not change
  std::vector<std::string> passed_over;  // components of a book that could not be opened

  bool Enabled(ValidationRule rule) const { return rules[static_cast<std::size_t>(rule) - 1]; }
};

}  // namespace qelm::coloring
