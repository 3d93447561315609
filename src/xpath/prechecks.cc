#include "xpath/prechecks.h"

#include <algorithm>
#include <array>
#include <string>

#include "common/utf8.h"
#include "xpath/components.h"

namespace qelm::xpath {
namespace {

constexpr std::string_view kFiller = "X";

// Where the name of a function or axis begins, read backwards.
constexpr std::string_view kAxisDelimiters = "[]/=<>!.@*,)(: ";
constexpr std::string_view kFunctionDelimiters = "[]/=<>!.@*,)(: '\"";

constexpr std::array<std::string_view, 9> kFunctionNames = {
    "position", "last", "node", "text", "not", "contains", "contains-ci", "starts-with", "starts-with-ci"};

std::size_t NameStart(std::string_view text, std::size_t end, std::string_view delimiters) {
  const std::size_t delimiter = text.substr(0, end).find_last_of(delimiters);
  return delimiter == text.npos ? 0 : delimiter + 1;
}

bool IsAxisName(std::string_view name) {
  return !name.empty() && std::any_of(kAxes.begin(), kAxes.end(), [name](const AxisEntry& entry) {
    return entry.written.size() == name.size() + 2 && entry.written.starts_with(name);
  });
}

// The checks that need only a look for a piece of text give byte offsets into the overwritten text.
Rejection CheckFunctions(std::string_view text) {
  for (std::size_t open = text.find('('); open != text.npos; open = text.find('(', open + 1)) {
    const std::size_t start = NameStart(text, open, kFunctionDelimiters);
    const std::string_view name = text.substr(start, open - start);
    if (!name.empty() &&
        std::find(kFunctionNames.begin(), kFunctionNames.end(), name) == kFunctionNames.end()) {
      return {kUnknownFunction, open - 1};
    }
  }
  return {};
}

Rejection CheckAxes(std::string_view text) {
  for (std::size_t colons = text.find("::"); colons != text.npos; colons = text.find("::", colons + 2)) {
    const std::size_t start = NameStart(text, colons, kAxisDelimiters);
    if (!IsAxisName(text.substr(start, colons - start))) return {kUnknownAxis, start};
  }
  return {};
}

Rejection CheckFor(std::string_view text, std::string_view piece, ErrorCode code, std::size_t shift = 0) {
  const std::size_t found = text.find(piece);
  return found == text.npos ? Rejection() : Rejection{code, found + shift};
}

Rejection CheckEmptyPredicates(std::string_view text) {
  const Rejection without = CheckFor(text, "[]", kEmptyPredicate, 1);
  const Rejection with_blank = CheckFor(text, "[ ]", kEmptyPredicate, 1);
  if (without && with_blank) return without.position < with_blank.position ? without : with_blank;
  return without ? without : with_blank;
}

Rejection CheckClauses(std::string_view text, std::string_view opening, std::string_view closing,
                       ErrorCode code, const common::GuardSink& guard) {
  const std::int32_t at = common::ClausesAreTerminated(text, opening, closing, guard);
  return at < 0 ? Rejection() : Rejection{code, static_cast<std::size_t>(at)};
}

}  // namespace

Rejection Precheck(std::string_view text, std::int32_t maximum_length, const common::GuardSink& guard) {
  const std::size_t length = common::CountCharacters(text);
  if (length > static_cast<std::size_t>(maximum_length)) return {kTooDamnedLong, length - 1};
  std::string masked(text);
  common::bw_XOutLiterals(masked, kFiller, true, true, guard);
  if (const Rejection found = CheckClauses(masked, "(", ")", kBadParentheticalPhrase, guard)) return found;
  if (const Rejection found = CheckClauses(masked, "[", "]", kNoTermBracketForSubexp, guard)) return found;
  Rejection found = CheckFor(masked, "///", kTooManySlashes);
  if (!found && masked == "/") found = {kSingleSlashExpression, 0};
  if (!found) found = CheckFunctions(masked);
  if (!found) found = CheckAxes(masked);
  if (!found) found = CheckFor(masked, "\\", kIllegalBackslash);
  if (!found) found = CheckEmptyPredicates(masked);
  if (found) found.position = common::CharacterAtOffset(masked, found.position);
  return found;
}

}  // namespace qelm::xpath
