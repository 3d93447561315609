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

std::string OneLine(std::string_view text) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  const auto is_control = [](char c) {
    const auto code = static_cast<unsigned char>(c);
    return code < 0x20U || code == 0x7FU;
  };
  std::string line;
  for (auto at = text.begin(); at != text.end(); ++at) {
    const auto end = std::find_if(at, text.end(), is_control);
    line.append(at, end);
    if ((at = end) == text.end()) break;
    const auto code = static_cast<unsigned char>(*at);
    if (*at == '\n') {
      line += "\\n";
    } else {
      line += "\\x";
      line += kDigits[code >> 4U];
      line += kDigits[code & 15U];
    }
  }
  return line;
}

std::string Describe(const FoundViolation& violation) {
  std::string text = violation.attribute;
  if (violation.has_value) text += "=\"" + violation.value + "\"";
  text.append(": ").append(kFaults[IndexOf(violation.rule)]);
  return OneLine(text) + " (rule " + std::to_string(violation.rule) + ")";
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
  found.element = places_->elements.Number(violation.element);
  found.tag =
      host.definitions.DefinitionName(document, host.elements.Definition(document, violation.element));
  places_->elements.AppendPath(violation.element, &found.path, kPathSteps);
  found.attribute = violation.attribute;
  found.value = violation.value;
  found.has_value =
      violation.rule == coloring::kValueNotAllowed || violation.rule == coloring::kValueNotInherited;
  all_.push_back(std::move(found));
}

void Violations::EndDocument(host::Id, std::uint64_t, bool) { places_.reset(); }

}  // namespace qelm::cli
