#include <algorithm>

#include "coloring/element_walk.h"
#include "coloring/uncoloring.h"
#include "messages/document_name.h"
#include "schemes/expressions.h"
#include "schemes/flows.h"

namespace qelm::coloring {
namespace {

using host::Id;
using host::kNone;
using schemes::FlowRoot;

constexpr char kTitle[] = "QELM - Coloring And Validation";

// The document's text selection as it was, put back and brought into view at the end.
class KeptSelection {
 public:
  KeptSelection(host::Text& text, Id document)
      : text_(text),
        document_(document),
        element_(text.SelectedElement(document)),
        selection_(text.Selection(document)) {}
  ~KeptSelection() {
    if (selection_.Empty()) return;
    // The element names itself also where the run made positions in the text stale.
    if (element_ == kNone || !text_.SelectElement(document_, element_)) {
      text_.SetSelection(document_, selection_);
    }
    text_.ScrollTo(document_, text_.Selection(document_));
  }
  KeptSelection(const KeptSelection&) = delete;
  KeptSelection& operator=(const KeptSelection&) = delete;

 private:
  host::Text& text_;
  Id document_;
  Id element_;
  host::TextRange selection_;
};

// One document's run, step by step. What fails sets the run's ending.
class DocumentRun {
 public:
  DocumentRun(ColoringContext& context, Id document)
      : context_(context), host_(context.host), run_(context.run), document_(document) {}

  std::int32_t ColorAll();
  std::int32_t ColorOne(Id element);

 private:
  bool SchemeIsUsable(std::int32_t* result);
  bool ExpressionsAreValid();
  void ResolveColors();
  bool GoOnWithoutColors();
  std::int32_t NoRoot();
  std::int32_t Walk(Id root, WalkMode mode);
  std::int32_t End(Ending ending, std::int32_t result) {
    run_.ending = ending;
    return result;
  }
  std::string Name() { return messages::DocumentName(host_.documents, document_); }

  ColoringContext& context_;
  host::Host& host_;
  ColoringRun& run_;
  Id document_;
  RuleMarks marks_;
};

bool DocumentRun::SchemeIsUsable(std::int32_t* result) {
  run_.cancelled = false;
  run_.rule_elements.resize(context_.scheme.rules.size(), 0);
  if (!context_.scheme.Active()) {
    if (run_.report) context_.messenger.Alert("QELM_MSG_COLORING_8");
    *result = End(Ending::kMissingScheme, common::kNoActiveScheme);
    return false;
  }
  *result = 0;
  return !context_.scheme.is_xpath || ExpressionsAreValid();
}

bool DocumentRun::ExpressionsAreValid() {
  messages::Messenger& messenger = context_.messenger;
  for (const schemes::Rule& rule : context_.scheme.rules) {
    for (const schemes::Condition& condition : rule.conditions) {
      for (const std::string& expression : condition.values) {
        if (schemes::IsValidExpression(context_.engine, expression)) continue;
        run_.ending = Ending::kSchemeRefused;
        if (!run_.report) return false;
        const xpath::ParseError error = xpath::LastParseError(context_.engine);
        const std::string why = error.id.empty() ? std::string() : messenger.Get(error.id);
        messenger.AlertFormatted("QELM_MSG_COLORING_13",
                                 messenger.Format("QELM_MSG_COLORING_13", schemes::FullName(context_.scheme),
                                                  expression, error.position + 1, why));
        return false;
      }
    }
  }
  return true;
}

void DocumentRun::ResolveColors() {
  marks_ = ResolveMarks(host_.catalogs, document_, context_.scheme);
  for (const std::string& name : marks_.missing) {
    const auto known = std::find(run_.missing_colors.begin(), run_.missing_colors.end(), name);
    if (known == run_.missing_colors.end()) run_.missing_colors.push_back(name);
  }
}

bool DocumentRun::GoOnWithoutColors() {
  if (marks_.missing.empty() || !run_.missing_color_prompt || !run_.report) return true;
  std::string names;
  for (const std::string& name : marks_.missing) names += (names.empty() ? "" : "\n") + name;
  return context_.messenger.AskFormatted("QELM_MSG_COLORING_9",
                                         context_.messenger.Format("QELM_MSG_COLORING_9", Name(), names));
}

std::int32_t DocumentRun::NoRoot() {
  if (run_.report) {
    context_.messenger.AlertFormatted("QELM_MSG_COLORING_10",
                                      context_.messenger.Format("QELM_MSG_COLORING_10", Name()));
  }
  return End(Ending::kMissingFlow, common::kNoFlowOrRoot);
}

std::int32_t DocumentRun::Walk(Id root, WalkMode mode) {
  const std::int32_t result = ElementWalk(context_, document_, marks_, mode).Run(root);
  if (result == common::kDone) run_.ending = Ending::kCompleted;
  return result;
}

std::int32_t DocumentRun::ColorAll() {
  std::int32_t result = 0;
  if (!SchemeIsUsable(&result)) return result;
  context_.messenger.ShowStatus(
      {kTitle, "Please wait. Currently processing:", Name(), "Press Esc to cancel"});
  ResolveColors();
  if (!GoOnWithoutColors()) {
    run_.cancelled = true;
    return End(Ending::kColorsMissing, common::kCancelled);
  }
  if (!context_.scheme.process_all_flows && schemes::MainFlow(host_, document_).root == kNone)
    return NoRoot();
  if (!Uncolor(context_, document_)) return 0;
  if (run_.remove_change_bars_before_coloring) RemoveChangeBars(host_, document_);
  run_.ending = Ending::kCompleted;
  for (const FlowRoot& flow : schemes::FlowsOf(host_, context_.scheme, document_)) {
    if (flow.root == kNone) continue;
    result = Walk(flow.root, WalkMode::kDocument);
    if (result != common::kDone) return result;
  }
  return common::kDone;
}

std::int32_t DocumentRun::ColorOne(Id element) {
  std::int32_t result = 0;
  if (!SchemeIsUsable(&result)) return result;
  ResolveColors();
  const KeptSelection selection(host_.text, document_);
  return Walk(element, WalkMode::kSelection);
}

}  // namespace

std::int32_t ColorDocument(ColoringContext& context, Id document) {
  return DocumentRun(context, document).ColorAll();
}

std::int32_t ColorElement(ColoringContext& context, Id document, Id element) {
  return DocumentRun(context, document).ColorOne(element);
}

}  // namespace qelm::coloring
