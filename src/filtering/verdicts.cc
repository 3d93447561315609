#include "filtering/verdicts.h"

#include "schemes/expressions.h"

namespace qelm::filtering {

using host::Id;
using host::kNone;

Verdicts::Verdicts(FilterContext& context, Id document)
    : context_(context),
      document_(document),
      reader_(context.host.definitions, context.host.elements, document, context.scheme) {}

bool Verdicts::Prepare(const std::vector<FlowRoot>& flows) {
  if (!context_.scheme.is_xpath) {
    rules_.emplace(context_.scheme);
    return true;
  }
  if (!ExpressionsAreValid()) return false;
  selected_.Reset(context_.host.elements.IdLimit(document_));
  const schemes::AttributeMode mode(context_.engine, context_.scheme.include_edd_defaults);
  for (const FlowRoot& flow : flows) {
    if (flow.root != kNone && !Evaluate(flow.root)) return false;
  }
  return true;
}

bool Verdicts::ExpressionsAreValid() {
  messages::Messenger& messenger = context_.messenger;
  if (context_.scheme.expressions.empty()) {
    return Refuse(Ending::kSchemeRefused, "QELM_MSG_FILTER_39",
                  messenger.Format("QELM_MSG_FILTER_39", FullName(context_.scheme)));
  }
  for (const std::string& expression : context_.scheme.expressions) {
    if (schemes::IsValidExpression(context_.engine, expression)) continue;
    const xpath::ParseError error = xpath::LastParseError(context_.engine);
    const std::string why = error.id.empty() ? std::string() : messenger.Get(error.id);
    return Refuse(Ending::kSchemeRefused, "QELM_MSG_FILTER_38",
                  messenger.Format("QELM_MSG_FILTER_38", FullName(context_.scheme), expression,
                                   error.position + 1, why));
  }
  return true;
}

bool Verdicts::Evaluate(Id root) {
  xpath::MatchList matches;
  for (const std::string& expression : context_.scheme.expressions) {
    matches.clear();
    if (!EvaluateOne(root, expression, &matches)) return false;
    for (const xpath::Match& match : matches) {
      // An attribute that was selected does not select the element that carries it.
      if (match.document != document_ || match.attribute >= 0) continue;
      selected_.Add(match.element);
    }
  }
  return true;
}

bool Verdicts::EvaluateOne(Id root, const std::string& expression, xpath::MatchList* matches) {
  if (schemes::Select(context_.engine, document_, root, expression, matches)) return true;
  // Everything that was not reached would be taken for not selected, and go.
  return Refuse(Ending::kNodeSetCut, "QELM_MSG_FILTER_40",
                context_.messenger.Format("QELM_MSG_FILTER_40", FullName(context_.scheme), matches->size(),
                                          expression));
}

bool Verdicts::Refuse(Ending ending, std::string_view id, const std::string& text) {
  context_.run.ending = ending;
  context_.run.cancel_flag = 1;
  context_.run.why = text;
  if (context_.run.prompts) context_.messenger.AlertFormatted(id, text);
  return false;
}

bool Verdicts::Fails(Id element, Id definition, bool may_have_attributes) {
  if (context_.scheme.is_xpath) return selected_.Holds(element) == context_.scheme.use_negative_logic;
  if (may_have_attributes) return rules_->Fails(reader_.Read(element));
  if (passing_.Holds(definition)) return false;
  if (failing_.Holds(definition)) return true;
  const bool fails = rules_->Fails(reader_.Read(element));
  (fails ? failing_ : passing_).Add(definition);
  return fails;
}

std::int32_t FilterCheck(FilterContext& context, Id document, Id element) {
  if (document == kNone || element == kNone) return 0;
  const Id flow = context.host.elements.FlowOf(document, element);
  Verdicts verdicts(context, document);
  if (!verdicts.Prepare({{flow, context.host.elements.Root(document, flow)}})) return 0;
  return verdicts.Fails(element) ? 1 : 0;
}

std::int32_t RootWouldBeFiltered(FilterContext& context, Id document) {
  const FlowRoot main = MainFlow(context.host, document);
  return main.root == kNone ? 0 : FilterCheck(context, document, main.root);
}

}  // namespace qelm::filtering
