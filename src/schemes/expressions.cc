#include "schemes/expressions.h"

namespace qelm::schemes {
namespace {

bool IsSequence(std::int32_t parsed) { return parsed > 0 && parsed < xpath::kFirstError; }

}  // namespace

bool IsValidExpression(xpath::Engine& engine, std::string_view expression) {
  return IsSequence(xpath::bw_ParseXPath(engine, expression, 0));
}

bool Select(xpath::Engine& engine, host::Id document, host::Id root, std::string_view expression,
            xpath::MatchList* matches) {
  // Parsed anew, which is a look-up: parsing another one may have emptied the table.
  const std::int32_t sequence = xpath::bw_ParseXPath(engine, expression, 0);
  return IsSequence(sequence) && xpath::xpath_MatchAll(engine, document, root, sequence, 0, matches);
}

}  // namespace qelm::schemes
