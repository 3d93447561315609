#include "cli/selection.h"

#include "cli/exit_status.h"
#include "cli/expression_error.h"
#include "cli/session.h"
#include "common/result_codes.h"
#include "xpath/engine.h"

namespace qelm::cli {
namespace {

bool IsElement(host::Host& host, host::Id document, const xpath::Match& match) {
  return match.element != host::kNone && match.document == document && match.attribute < 0 &&
         match.property == 0 && host.elements.Kind(document, match.element) != host::ElementKind::kText;
}

}  // namespace

void SelectOrFail(Session& session, host::Id document, const std::string& expression,
                  const std::string& owner) {
  ParseOrFail(session, expression, owner);
  const xpath::Match match = xpath::FindFirst(session.plugin().engine, document, host::kNone, expression);
  host::Host& host = session.roles();
  if (IsElement(host, document, match) && host.text.SelectElement(document, match.element)) return;
  throw Failure(
      ExitStatus::kOperation,
      session.NameOf(document) + ": " + owner + " " + expression + " selects no element; nothing was done",
      {{"result", common::kNoElementSelected}});
}

}  // namespace qelm::cli
