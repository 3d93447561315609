#include "cli/expression_error.h"

#include <span>
#include <vector>

#include "cli/did_you_mean.h"
#include "cli/session.h"
#include "common/utf8.h"
#include "xpath/components.h"
#include "xpath/engine.h"
#include "xpath/error_report.h"
#include "xpath/errors.h"

namespace qelm::cli {

std::string WithCaret(std::string_view expression, std::int32_t position) {
  std::string text;
  for (const xpath::MarkedLine& line : xpath::MarkPosition(expression, position)) {
    text += "  " + line.text + "\n  " + line.marker + "\n";
  }
  return text;
}

namespace {

// The names of the dialect that may have been meant, by the error.
std::vector<std::string> NamesFor(std::int32_t code) {
  std::vector<std::string> names;
  switch (code) {
    case xpath::kUnknownAxis:
    case xpath::kColonInElementName:
      for (const xpath::AxisEntry& axis : xpath::kAxes) {
        if (!axis.written.empty()) names.emplace_back(axis.written.substr(0, axis.written.size() - 2));
      }
      break;
    case xpath::kUnknownFunction:
      names = {"position",    "last",           "not",  "contains", "contains-ci",
               "starts-with", "starts-with-ci", "node", "text"};
      break;
    case xpath::kUnknownFmProp:
      names.assign(xpath::kFmProperties.begin(), xpath::kFmProperties.end());
      break;
    default:
      break;
  }
  return names;
}

bool IsNameByte(char c) {
  constexpr std::string_view kDelimiters = " /[](),=<>!@*:'\"";
  return kDelimiters.find(c) == std::string_view::npos;
}

// The name that the error is about: around the position, or directly before it.
std::string_view NameAt(std::string_view expression, std::int32_t position) {
  std::size_t at =
      common::FirstCharacters(expression, static_cast<std::size_t>(std::max(position, 0))).size();
  while (at > 0 && (at >= expression.size() || !IsNameByte(expression[at]))) --at;
  std::size_t begin = at;
  while (begin > 0 && IsNameByte(expression[begin - 1])) --begin;
  std::size_t end = at;
  while (end < expression.size() && IsNameByte(expression[end])) ++end;
  return expression.substr(begin, end - begin);
}

std::string Hint(std::string_view expression, const xpath::ParseError& error) {
  const std::vector<std::string> names = NamesFor(error.code);
  if (names.empty()) return {};
  const std::string_view name = NameAt(expression, error.position);
  const std::string hint = DidYouMean(name, std::span<const std::string>(names));
  return hint.empty() ? hint : "\n" + std::string(name) + hint;
}

}  // namespace

Failure ExpressionFailure(Session& session, std::string_view expression, std::int32_t code,
                          std::string_view owner) {
  std::string where = "the expression";
  if (!owner.empty()) where += " of " + std::string(owner);
  if (code < xpath::kFirstError) {
    return {ExitStatus::kRefused,
            where + " could not be parsed: " + std::string(expression),
            {{"result", code}, {"expression", expression}}};
  }
  const xpath::ParseError& error = xpath::LastParseError(session.plugin().engine);
  const std::string text = session.plugin().messenger.Get(error.id);
  nlohmann::ordered_json fields{{"result", code}, {"expression", expression}};
  fields["error"] = {{"id", error.id}, {"code", error.code}, {"position", error.position}, {"message", text}};
  const std::string hint = Hint(expression, error);
  return {ExitStatus::kRefused,
          where + " was refused (" + std::string(error.id) + "):\n" + WithCaret(expression, error.position) +
              text + hint,
          std::move(fields)};
}

std::int32_t ParseOrFail(Session& session, std::string_view expression, std::string_view owner, bool report) {
  const std::int32_t sequence = xpath::bw_ParseXPath(session.plugin().engine, expression, report ? 1 : 0);
  if (sequence <= 0 || sequence >= xpath::kFirstError) {
    throw ExpressionFailure(session, expression, sequence, owner);
  }
  return sequence;
}

}  // namespace qelm::cli
