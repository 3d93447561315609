#include "cli/expression_error.h"

#include "cli/session.h"
#include "common/utf8.h"
#include "xpath/engine.h"

namespace qelm::cli {

std::string WithCaret(std::string_view expression, std::int32_t position) {
  std::string lines = "  " + std::string(expression) + "\n  ";
  const std::string_view before =
      common::FirstCharacters(expression, static_cast<std::size_t>(std::max(position, 0)));
  // Tabs stay, so that the caret stands right.
  for (const char byte : before) {
    if (!common::IsContinuation(byte)) lines += byte == '\t' ? '\t' : ' ';
  }
  return lines + "^";
}

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
  return {ExitStatus::kRefused,
          where + " was refused (" + std::string(error.id) + "):\n" + WithCaret(expression, error.position) +
              "\n" + text,
          std::move(fields)};
}

std::int32_t ParseOrFail(Session& session, std::string_view expression, std::string_view owner) {
  const std::int32_t sequence = xpath::bw_ParseXPath(session.plugin().engine, expression, 0);
  if (sequence <= 0 || sequence >= xpath::kFirstError) {
    throw ExpressionFailure(session, expression, sequence, owner);
  }
  return sequence;
}

}  // namespace qelm::cli
