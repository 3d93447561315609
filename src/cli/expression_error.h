// Expressions that the engine refuses, as a failure of the command: what is wrong, and where.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "cli/exit_status.h"

namespace qelm::cli {

class Session;

// The expression with a caret under the character at `position`, in lines as long as those of the report,
// each set in and with a line end.
std::string WithCaret(std::string_view expression, std::int32_t position);

// The failure for an expression for which bw_ParseXPath has just returned `code`. `owner` says where the
// expression is from ("the filter scheme A/B"), empty for one of the command line.
Failure ExpressionFailure(Session& session, std::string_view expression, std::int32_t code,
                          std::string_view owner);

// Parses the expression. Returns its sequence number; throws ExpressionFailure. With `report` a refused one
// goes to the XPath error report as well.
std::int32_t ParseOrFail(Session& session, std::string_view expression, std::string_view owner,
                         bool report = false);

}  // namespace qelm::cli
