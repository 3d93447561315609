#include "cli/violations.h"

#include <algorithm>

#include "cli/file_names.h"

namespace qelm::cli {
namespace {

// Longer paths are cut: a document may be as deep as it is long, and each of its elements may be wrong.
constexpr std::size_t kPathSteps = 100;

// What is wrong, in the order of the rules' numbers.
constexpr std::string_view kFaults[] = {
    "this value is not allowed",
    "the nearest element above with this attribute does not have this value",
    "no value, although the nearest element above with this attribute has one",
    "no value, which is not allowed",
};

bool IsControl(char c) {
  const auto code = static_cast<unsigned char>(c);
  return code < 0x20U || code == 0x7FU;
}

// Hardly a text has any, so this does not stop where it finds one: steps of one length the compiler turns
// into operations on sixteen bytes.
bool HasControl(std::string_view text) {
  constexpr std::size_t kStep = 16;
  unsigned char found = 0;
  for (; text.size() >= kStep; text.remove_prefix(kStep)) {
    for (std::size_t i = 0; i < kStep; ++i) found = static_cast<unsigned char>(found | IsControl(text[i]));
  }
  return found != 0 || std::any_of(text.begin(), text.end(), IsControl);
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
  line->append(": ").append(kFaults[IndexOf(violation.rule)]);
  line->append(" (rule ").append(std::to_string(violation.rule)).append(")");
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
