#include "coloring/validation.h"

#include "coloring/validation_marks.h"
#include "coloring/validation_rules.h"
#include "common/utf8.h"
#include "messages/document_name.h"
#include "messages/esc_poll.h"
#include "messages/status_shown.h"
#include "schemes/flows.h"
#include "schemes/tree_walk.h"

namespace qelm::coloring {
namespace {

using host::Id;
using host::kNone;

constexpr char kTitle[] = "QELM - Coloring And Validation";
constexpr char kWait[] = "Please wait...";
constexpr char kEsc[] = "Press Esc to cancel";
constexpr std::size_t kStatusNameLimit = 50;

void ShowCommand(ValidationContext& context, const char* text) {
  context.messenger.ShowStatus({kTitle, text, kWait, kEsc});
}

bool Cancelled(ValidationContext& context) {
  if (!context.host.user.EscPressed() || !context.messenger.Ask("QELM_MSG_GEN_14")) return false;
  context.run.ending = ValidationEnding::kByUser;
  return true;
}

void Clear(ValidationRun* run) {
  run->ending = ValidationEnding::kNone;
  run->last_rule = kNoViolation;
  run->elements = run->violations = run->unmarked = 0;
  run->passed_over.clear();
}

// Ends a command before it began, with an alert.
std::int32_t End(ValidationContext& context, ValidationEnding ending, std::int32_t result,
                 std::string_view message) {
  context.run.ending = ending;
  if (context.run.prompts) context.messenger.Alert(message);
  return result;
}

std::int32_t ResultOf(ValidationEnding ending) {
  switch (ending) {
    case ValidationEnding::kCompleted:
      return common::kDone;
    case ValidationEnding::kMissingScheme:
      return common::kNoActiveScheme;
    default:
      return common::kCancelled;
  }
}

void TellViolations(ValidationContext& context, const std::vector<Violation>& violations) {
  for (const Violation& violation : violations) {
    for (ViolationSink* sink : context.sinks) sink->Add(violation);
  }
}

// The last message of a command with a summary; what was passed over is told before it.
void Summarize(ValidationContext& context) {
  const ValidationRun& run = context.run;
  if (!run.prompts) return;
  messages::Messenger& messenger = context.messenger;
  if (!run.passed_over.empty()) {
    std::string names;
    for (const std::string& path : run.passed_over) names += (names.empty() ? "" : "\n") + path;
    messenger.AlertFormatted("QELM_MSG_VAL_GEN_8", messenger.Format("QELM_MSG_VAL_GEN_8", names));
  }
  if (run.ending == ValidationEnding::kByUser) {
    messenger.Alert("QELM_MSG_VAL_GEN_4");
  } else if (run.ending == ValidationEnding::kCompleted && run.violations == 0) {
    messenger.AlertFormatted("QELM_MSG_VAL_GEN_2",
                             messenger.Format("QELM_MSG_VAL_GEN_2", context.scheme.name, run.elements));
  } else if (run.ending == ValidationEnding::kCompleted) {
    messenger.AlertFormatted("QELM_MSG_VAL_GEN_3",
                             messenger.Format("QELM_MSG_VAL_GEN_3", run.violations, context.scheme.name));
  }
}

// One run over the components of a book.
class BookRun {
 public:
  BookRun(ValidationContext& context, Id book) : context_(context), host_(context.host), book_(book) {}

  void Run() {
    for (Id component = host_.books.FirstComponent(book_); component != kNone;
         component = host_.books.NextComponent(book_, component)) {
      // Small components may be over before the walk looks for Esc.
      if (Cancelled(context_) || !Validate(component)) return;
    }
    context_.run.ending = ValidationEnding::kCompleted;
  }

 private:
  bool Validate(Id component) {
    const std::string path(host_.books.ComponentPath(book_, component));
    Id document = host_.books.ComponentDocument(book_, component);
    host::OpenStatus status = host::OpenStatus::kAlreadyOpen;
    if (document == kNone) {
      document = host_.documents.Open(path, {.visible = false, .suppress_alerts = true}, &status);
    }
    const bool opened = document != kNone && status != host::OpenStatus::kAlreadyOpen;
    if (host_.books.IsBook(document)) {
      // A book in a book has no text of its own; the one that is being checked may even name itself.
      if (opened) host_.documents.Close(document, true);
      document = kNone;
    }
    if (document == kNone) {
      // What the host generates is made anew from the others, and has nothing of its own to check.
      if (!host_.books.IsGenerated(book_, component)) context_.run.passed_over.push_back(path);
      return true;
    }
    const bool finished = ValidateDocument(context_, document, false);
    if (context_.component_done) context_.component_done(document, opened);
    return finished;
  }

  ValidationContext& context_;
  host::Host& host_;
  Id book_;
};

// What is wrong with a single element, an alert for each violation.
void ShowViolations(ValidationContext& context, Id document, Id element,
                    const std::vector<Violation>& violations) {
  host::Host& host = context.host;
  const std::string tag = schemes::ElementTag(host, document, element);
  const std::string& scheme = context.scheme.name;
  messages::Messenger& messenger = context.messenger;
  for (const Violation& violation : violations) {
    const std::string value(violation.value);
    switch (violation.rule) {
      case kValueNotAllowed:
        messenger.AlertFormatted("QELM_MSG_VAL_REP_16",
                                 messenger.Format("QELM_MSG_VAL_REP_16", value, tag, scheme));
        break;
      case kValueNotInherited:
        messenger.AlertFormatted("QELM_MSG_VAL_REP_17",
                                 messenger.Format("QELM_MSG_VAL_REP_17", value, tag, scheme));
        break;
      case kValueMissing:
        messenger.AlertFormatted("QELM_MSG_VAL_REP_18", messenger.Format("QELM_MSG_VAL_REP_18", tag, scheme));
        break;
      default:
        messenger.AlertFormatted("QELM_MSG_VAL_REP_19", messenger.Format("QELM_MSG_VAL_REP_19", tag, scheme));
        break;
    }
  }
}

}  // namespace

void PrepareValidation(const config::LocalSettings& settings, ValidationRun* run) {
  ValidationRun fresh;
  fresh.rules = {settings.val_rule_1_enabled, settings.val_rule_2_enabled, settings.val_rule_3_enabled,
                 settings.val_rule_4_enabled};
  fresh.strikethrough =
      settings.val_apply_strikethrough_text ? StrikethroughUse::kMark : StrikethroughUse::kRemove;
  *run = std::move(fresh);
}

std::int32_t ValidateTree(ValidationContext& context, Id document, Id start) {
  ValidationRun& run = context.run;
  ElementRules rules(context.host, document, context.scheme, run);
  schemes::TextNodes text_nodes(context.host.definitions, document);
  VerdictMarks marks(context.host, document);
  std::vector<Violation> violations;
  std::int32_t last_rule = kNoViolation;
  messages::EscPoll poll;
  rules.EnterAncestors(start);
  schemes::TreeWalk walk(context.host.elements, document, start);
  while (const host::WalkedNode* node = walk.Next()) {
    if (text_nodes.Has(node->definition)) continue;
    if (poll.Due() && Cancelled(context)) break;
    violations.clear();
    rules.Enter(*node, &violations);
    if (run.strikethrough != StrikethroughUse::kLeave) marks.Set(node->element, !violations.empty());
    ++run.elements;
    if (violations.empty()) continue;
    run.violations += violations.size();
    last_rule = violations.back().rule;
    TellViolations(context, violations);
  }
  marks.Write(start, run.strikethrough, &run);
  if (last_rule != kNoViolation) run.last_rule = last_rule;
  return last_rule;
}

bool ValidateDocument(ValidationContext& context, Id document, bool by_command) {
  ValidationRun& run = context.run;
  if (!context.scheme.Active()) {
    End(context, ValidationEnding::kMissingScheme, 0, "QELM_MSG_VAL_GEN_5");
    return false;
  }
  const std::uint64_t before = run.violations;
  for (ViolationSink* sink : context.sinks) sink->BeginDocument(document, by_command);
  const std::string name = messages::DocumentName(context.host.documents, document);
  context.messenger.ShowStatus({kTitle, "Please wait. Currently processing:",
                                std::string(common::FirstCharacters(name, kStatusNameLimit)), kEsc});
  const std::vector<schemes::FlowRoot> flows = schemes::FlowsOf(context.host, context.scheme, document);
  const bool no_root = !context.scheme.process_all_flows && (flows.empty() || flows.front().root == kNone);
  if (no_root && by_command) {
    run.ending = ValidationEnding::kMissingRoot;
    if (run.prompts) {
      context.messenger.AlertFormatted("QELM_MSG_VAL_GEN_6",
                                       context.messenger.Format("QELM_MSG_VAL_GEN_6", name));
    }
  }
  for (const schemes::FlowRoot& flow : flows) {
    if (flow.root != kNone) ValidateTree(context, document, flow.root);
    if (run.ending != ValidationEnding::kNone) break;
  }
  const bool finished = run.ending == ValidationEnding::kNone;
  for (ViolationSink* sink : context.sinks) sink->EndDocument(document, run.violations - before, finished);
  return finished;
}

std::int32_t ValidateSelection(ValidationContext& context) {
  Clear(&context.run);
  host::Host& host = context.host;
  const Id document = host.documents.ActiveDocument();
  if (document == kNone) {
    return End(context, ValidationEnding::kMissingDocument, common::kNoDocument, "QELM_MSG_GEN_1");
  }
  if (!context.scheme.Active()) {
    return End(context, ValidationEnding::kMissingScheme, common::kNoActiveScheme, "QELM_MSG_VAL_GEN_1");
  }
  const Id element = host.text.SelectedElement(document);
  if (element == kNone) {
    return End(context, ValidationEnding::kMissingElement, common::kNoElementSelected, "QELM_MSG_VAL_GEN_9");
  }
  const messages::StatusShown status(host.user);
  ShowCommand(context, "Validating Selection...");
  for (ViolationSink* sink : context.sinks) sink->BeginDocument(document, false);
  ValidateTree(context, document, element);
  const bool finished = context.run.ending == ValidationEnding::kNone;
  for (ViolationSink* sink : context.sinks) {
    sink->EndDocument(document, context.run.violations, finished);
  }
  if (finished) context.run.ending = ValidationEnding::kCompleted;
  host.documents.Activate(document);
  return ResultOf(context.run.ending);
}

std::int32_t ValidateActiveDocument(ValidationContext& context) {
  Clear(&context.run);
  const Id document = context.host.documents.ActiveDocument();
  if (document == kNone) {
    return End(context, ValidationEnding::kMissingDocument, common::kNoDocument, "QELM_MSG_GEN_1");
  }
  {
    const messages::StatusShown status(context.host.user);
    ShowCommand(context, "Validating Document...");
    if (ValidateDocument(context, document, true)) context.run.ending = ValidationEnding::kCompleted;
  }
  Summarize(context);
  return ResultOf(context.run.ending);
}

std::int32_t ValidateActiveBook(ValidationContext& context) {
  Clear(&context.run);
  const Id book = context.host.documents.ActiveBook();
  if (book == kNone) {
    return End(context, ValidationEnding::kMissingDocument, common::kNoDocument, "QELM_MSG_GEN_1");
  }
  if (!context.scheme.Active()) {
    return End(context, ValidationEnding::kMissingScheme, common::kNoActiveScheme, "QELM_MSG_VAL_GEN_1");
  }
  {
    const messages::StatusShown status(context.host.user);
    ShowCommand(context, "Validating Book...");
    BookRun(context, book).Run();
  }
  Summarize(context);
  return ResultOf(context.run.ending);
}

std::int32_t ValidateElement(ValidationContext& context, Id document, Id element) {
  Clear(&context.run);
  host::Host& host = context.host;
  if (!context.scheme.Active() || schemes::IsTextNode(host, document, element)) return kNoViolation;
  ValidationRun& run = context.run;
  std::vector<Violation> violations;
  ElementRules rules(host, document, context.scheme, run);
  rules.EnterAncestors(element);
  rules.Enter({.element = element, .definition = host.elements.Definition(document, element)}, &violations);
  run.elements = 1;
  run.violations = violations.size();
  run.ending = ValidationEnding::kCompleted;
  if (!violations.empty()) run.last_rule = violations.back().rule;
  if (run.prompts) ShowViolations(context, document, element, violations);
  VerdictMarks::WriteWhole(host, document, element, !violations.empty(), &run);
  return run.last_rule;
}

std::int32_t AutoValidate(ValidationContext& context, Id document, Id object) {
  const bool usable = document != kNone && context.host.elements.IsElement(document, object);
  return usable ? ValidateElement(context, document, object) : kNoViolation;
}

}  // namespace qelm::coloring
