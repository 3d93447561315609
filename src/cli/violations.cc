#include "cli/violations.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "cli/file_names.h"

namespace qelm::cli {
namespace {

// Longer paths are cut: a document may be as deep as it is long, and each of its elements may be wrong.
constexpr std::size_t kPathSteps = 100;

// What is wrong, in the order of the rules' numbers.
constexpr std::string_view kFaults[] = {
    ": this value is not allowed (rule 1)",
    ": the nearest element above with this attribute does not have this value (rule 2)",
    ": no value, although the nearest element above with this attribute has one (rule 3)",
    ": no value, which is not allowed (rule 4)",
};

bool IsControl(char c) {
  const auto code = static_cast<unsigned char>(c);
  return code < 0x20U || code == 0x7FU;
}

// Of eight bytes, whether one is a control character. A subtraction that borrows from the next byte does so
// where one was found.
bool EightHaveControl(const char* bytes) {
  constexpr std::uint64_t kEach = 0x0101010101010101U;
  const auto has_below = [](std::uint64_t eight, std::uint64_t limit) {
    return (eight - kEach * limit) & ~eight & (kEach * 0x80U);
  };
  std::uint64_t eight = 0;
  std::memcpy(&eight, bytes, sizeof eight);
  return (has_below(eight, 0x20) | has_below(eight ^ (kEach * 0x7FU), 1)) != 0;
}

// Hardly a text has any.
bool HasControl(std::string_view text) {
  constexpr std::size_t kStep = sizeof(std::uint64_t);
  if (text.size() < kStep) return std::any_of(text.begin(), text.end(), IsControl);
  for (std::size_t at = 0; at + kStep < text.size(); at += kStep) {
    if (EightHaveControl(text.data() + at)) return true;
  }
  return EightHaveControl(text.data() + text.size() - kStep);
}

std::size_t IndexOf(std::int32_t rule) { return static_cast<std::size_t>(rule) - 1; }

}  // namespace

const std::vector<SarifRule>& ValidationSarifRules() {
  static const std::vector<SarifRule> rules = {
      {"QELM-VAL-1", "ValueNotAllowed", "The value is not among those that the validation scheme lists."},
      {"QELM-VAL-2", "ValueNotInherited",
       "The value is not among those of the nearest element above that has the attribute."},
      {"QELM-VAL-3", "ValueMissing",
       "The attribute has no value, although the nearest element above that has it has one."},
      {"QELM-VAL-4", "EmptyValueNotAllowed",
       "The attribute has no value, and the validation scheme does not allow that."},
  };
  return rules;
}

void AppendOneLine(std::string_view text, std::string* line) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  if (!HasControl(text)) {
    *line += text;
    return;
  }
  for (const char c : text) {
    const auto code = static_cast<unsigned char>(c);
    if (!IsControl(c)) {
      *line += c;
    } else if (c == '\n') {
      *line += "\\n";
    } else {
      line->append("\\x").append(1, kDigits[code >> 4U]).append(1, kDigits[code & 15U]);
    }
  }
}

void AppendDescription(const FoundViolation& violation, std::string* line) {
  AppendOneLine(violation.attribute, line);
  if (violation.has_value) {
    *line += "=\"";
    AppendOneLine(violation.value, line);
    *line += '"';
  }
  line->append(kFaults[IndexOf(violation.rule)]);
}

std::string Describe(const FoundViolation& violation) {
  std::string text;
  AppendDescription(violation, &text);
  return text;
}

void Violations::BeginDocument(host::Id document, bool) {
  files_.push_back(ShownPath(session_.NameOf(document)));
}

void Violations::Add(const coloring::Violation& violation) {
  host::Host& host = session_.roles();
  const host::Id document = violation.document;
  if (!places_) {
    places_ = std::make_unique<Places>(host, document, *session_.host().Find(document));
  }
  FoundViolation found;
  found.rule = violation.rule;
  found.file = files_.size() - 1;
  found.line = places_->lines.LineOf(violation.element);
  if (numbered_) found.element = places_->elements.Number(violation.element);
  found.tag =
      Keep(host.definitions.DefinitionName(document, host.elements.Definition(document, violation.element)));
  path_.clear();
  places_->elements.AppendPath(violation.element, &path_, kPathSteps);
  found.path = Keep(path_);
  found.attribute = Keep(violation.attribute);
  found.value = Keep(violation.value);
  found.has_value =
      violation.rule == coloring::kValueNotAllowed || violation.rule == coloring::kValueNotInherited;
  all_.push_back(found);
}

std::string_view Violations::Keep(std::string_view text) {
  if (text.empty()) return {};
  auto* kept = static_cast<char*>(texts_.allocate(text.size(), 1));
  std::copy(text.begin(), text.end(), kept);
  return {kept, text.size()};
}

void Violations::EndDocument(host::Id, std::uint64_t, bool) { places_.reset(); }

}  // namespace qelm::cli
