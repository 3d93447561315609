#include "xpath/engine.h"

#include <algorithm>

#include "common/paths.h"
#include "common/utf8.h"
#include "xpath/dump.h"
#include "xpath/engine_messages.h"
#include "xpath/engine_state.h"
#include "xpath/error_report.h"
#include "xpath/errors.h"
#include "xpath/parser.h"
#include "xpath/prechecks.h"

namespace qelm::xpath {
namespace {

constexpr std::string_view kReportTemplate = "XPath_Error_Report_Template.fm";
constexpr std::string_view kReport = "XPath_Error_Report.fm";
// Sequence numbers must stay below the error codes, whatever one more expression adds.
constexpr std::int32_t kMostCached = 30000;

constexpr std::string_view kContextNode = "Context node.";
constexpr std::string_view kMatchedNode = "Matched node.";

std::int32_t LimitOr(std::int32_t limit, std::int32_t otherwise) { return limit < 1 ? otherwise : limit; }

void EmptyTable(Engine::State& state) {
  state.table.Clear();
  state.searches.clear();
}

std::int32_t RejectText(Engine::State& state, std::string_view text, const Rejection& rejection,
                        std::int32_t report) {
  state.last_error = {rejection.code, ErrorId(rejection.code), static_cast<std::int32_t>(rejection.position)};
  if (report == 1) bw_ReportXPathError(state, text, state.last_error);
  return rejection.code;
}

// The search under way on an expression, begun where there is none. Null when there is no such expression.
Search* SearchOf(Engine::State& state, Index sequence, SearchStart start) {
  if (!state.table.IsExpression(sequence)) {
    state.messenger.Alert(kUnknownSequence);
    return nullptr;
  }
  std::unique_ptr<Search>& search = state.searches[sequence];
  if (search == nullptr) {
    start.with_defaults = state.attribute_values_mode != 0;
    search = std::make_unique<Search>(state.host, state.indexes, start);
    search->LimitWork(state.most_steps);
    search->Begin(state.table, sequence, state.parameters, start);
  }
  return search.get();
}

bool NextMatch(Engine::State& state, Search& search, Match* match) {
  if (search.IsSpent()) {
    state.messenger.Alert(kSpentSequence);
    return false;
  }
  if (search.Next(match)) return true;
  if (search.Why() != Failure::kNone && search.Why() != Failure::kLong) {
    ShowFailure(state.messenger, search.Why(), search.Expression());
  }
  return false;
}

void Display(Engine::State& state, DisplayMode mode, const Match& match, std::string_view text) {
  if (state.display != mode || match.element == host::kNone) return;
  state.host.text.SelectElement(match.document, match.element);
  state.messenger.Alert(text);
}

}  // namespace

Engine::Engine(host::Host& host, messages::Messenger& messenger)
    : state_(std::make_unique<State>(host, messenger)) {}

Engine::~Engine() = default;

host::Host& HostOf(Engine& engine) { return engine.state().host; }

host::Id ErrorReportDocument(const Engine& engine) { return OpenErrorReport(engine.state()); }

void bw_XPathEngineInit(Engine& engine, std::int32_t cache_limit, std::int32_t maximum_expression_length,
                        std::int32_t maximum_matches) {
  Engine::State& state = engine.state();
  state.cache_limit = std::min(LimitOr(cache_limit, kDefaultCacheLimit), kMostCached);
  state.maximum_expression_length = LimitOr(maximum_expression_length, kDefaultExpressionLength);
  state.maximum_matches = LimitOr(maximum_matches, kDefaultMatches);
  const std::string_view folder = state.host.session.PluginFolder();
  state.report_template_path = common::JoinPath(folder, kReportTemplate);
  state.report_path = common::JoinPath(folder, kReport);
  if (!state.initialized) EmptyTable(state);
  state.initialized = true;
}

std::int32_t bw_ParseXPath(Engine& engine, std::string_view text, std::int32_t report) {
  Engine::State& state = engine.state();
  state.last_error = ParseError();
  if (const Index known = state.table.Find(text)) return known;
  if (state.table.NextFree() > state.cache_limit) EmptyTable(state);
  const auto alert = [&state](std::string_view guard_text) { state.messenger.Alert(guard_text); };
  if (const Rejection rejection = Precheck(text, state.maximum_expression_length, alert)) {
    return RejectText(state, text, rejection, report);
  }
  Parsing parsing = Parse(text, &state.table);
  if (parsing.rejection) {
    parsing.rejection.position = common::CharacterAtOffset(text, parsing.rejection.position);
    return RejectText(state, text, parsing.rejection, report);
  }
  if (parsing.sequence == 0) {
    state.messenger.Alert(kParserIsEndless);
    return 0;
  }
  state.table.Remember(parsing.sequence, text);
  return parsing.sequence;
}

const ParseError& LastParseError(const Engine& engine) { return engine.state().last_error; }

void bw_DumpParsedXPath(Engine& engine, std::int32_t sequence) {
  Engine::State& state = engine.state();
  if (!state.table.IsExpression(sequence)) {
    state.messenger.Alert(kUnknownSequence);
    return;
  }
  state.host.user.Print(DumpComponents(state.table, sequence));
}

void Reset(Engine& engine, std::int32_t sequence) { engine.state().searches.erase(sequence); }

host::Id bw_FindNextNodeWithXpath(Engine& engine, host::Id document, std::int32_t sequence, host::Id context,
                                  host::Id flow) {
  Engine::State& state = engine.state();
  Search* search = SearchOf(state, sequence, {document, context, flow});
  if (search == nullptr) return host::kNone;
  search->Refresh();
  Match match;
  return NextMatch(state, *search, &match) ? match.element : host::kNone;
}

Match LastMatch(const Engine& engine, std::int32_t sequence) {
  const auto& searches = engine.state().searches;
  const auto found = searches.find(sequence);
  return found == searches.end() ? Match() : found->second->Last();
}

std::int32_t AttributeOfMatch(const Engine& engine, std::int32_t sequence) {
  return LastMatch(engine, sequence).attribute;
}

namespace {

// Match after match, as long as there are any and they are wanted. Returns whether there are more than the
// engine's maximum.
bool CollectEach(Engine::State& state, Search& search, std::int32_t maximum, MatchList* matches) {
  const auto limit = static_cast<std::size_t>(state.maximum_matches);
  Match match;
  while (NextMatch(state, search, &match)) {
    if (matches->size() == limit) return true;
    matches->push_back(match);
    if (maximum >= 1 && matches->size() == static_cast<std::size_t>(maximum)) break;
  }
  return false;
}

// All at once where all are wanted and that pays, which may turn out on the way.
bool Collect(Engine::State& state, Search& search, std::int32_t maximum, MatchList* matches) {
  if (maximum >= 1) return CollectEach(state, search, maximum, matches);
  if (!search.PaysSetBySet()) {
    search.StopWhenLong();
    const bool too_many = CollectEach(state, search, maximum, matches);
    search.TellLength();
    if (search.Why() != Failure::kLong) return too_many;
    matches->clear();
    search.Restart();
  }
  if (!search.All(nullptr, matches)) return CollectEach(state, search, maximum, matches);
  if (search.Why() != Failure::kNone) ShowFailure(state.messenger, search.Why(), search.Expression());
  const auto limit = static_cast<std::size_t>(state.maximum_matches);
  const bool too_many = matches->size() > limit;
  if (too_many) matches->resize(limit);
  return too_many;
}

}  // namespace

bool xpath_MatchAll(Engine& engine, host::Id document, host::Id context, std::int32_t sequence,
                    std::int32_t maximum, MatchList* matches) {
  Engine::State& state = engine.state();
  matches->clear();
  Reset(engine, sequence);
  Search* search = SearchOf(state, sequence, {document, context});
  if (search == nullptr) return false;
  Display(state, DisplayMode::kContext, {context, document}, kContextNode);
  const bool too_many = Collect(state, *search, maximum, matches);
  const bool complete = !too_many && search->Why() == Failure::kNone;
  if (search->Why() == Failure::kWork) matches->clear();
  for (const Match& match : *matches) Display(state, DisplayMode::kMatches, match, kMatchedNode);
  if (too_many) ShowTooBroad(state.messenger, state.maximum_matches, state.table[sequence].expression);
  Reset(engine, sequence);
  return complete;
}

MatchList MatchAllFromText(Engine& engine, host::Id document, host::Id context, std::string_view text,
                           std::int32_t maximum, std::int32_t report, bool* complete) {
  MatchList matches;
  const std::int32_t sequence = bw_ParseXPath(engine, text, report);
  const bool is_valid = sequence > 0 && sequence < kFirstError;
  const bool all = !is_valid || xpath_MatchAll(engine, document, context, sequence, maximum, &matches);
  if (complete != nullptr) *complete = all;
  return matches;
}

Match FindFirst(Engine& engine, host::Id document, host::Id context, std::string_view text,
                std::int32_t report) {
  Match match;
  const std::int32_t sequence = bw_ParseXPath(engine, text, report);
  if (sequence <= 0 || sequence >= kFirstError) return match;
  Reset(engine, sequence);
  Search* search = SearchOf(engine.state(), sequence, {document, context});
  if (search != nullptr) NextMatch(engine.state(), *search, &match);
  Reset(engine, sequence);
  return match;
}

std::vector<std::string> GetValues(Engine& engine, host::Id document, host::Id context, std::string_view text,
                                   std::int32_t report) {
  std::vector<std::string> values;
  for (const Match& match : MatchAllFromText(engine, document, context, text, 0, report)) {
    values.push_back(ValueOfMatch(engine, match));
  }
  return values;
}

std::string ValueOfMatch(Engine& engine, const Match& match) {
  const Engine::State& state = engine.state();
  std::string value;
  if (match.attribute < 0) {
    std::string buffer;
    value = match.property > 0
                ? ReadProperty(state.host.text, match.document, match.element, match.property, &buffer)
                : state.host.text.ElementText(match.document, match.element, kValueCharacters, &buffer);
    return value;
  }
  AttributeSource attributes(state.host.elements, state.host.definitions, state.attribute_values_mode != 0);
  attributes.Load(match.document, match.element);
  const auto index = static_cast<std::size_t>(match.attribute);
  if (index >= attributes.Count()) return value;
  bool is_first = true;
  for (const std::string_view part : attributes.Values(index)) {
    if (!is_first) value.push_back(' ');
    is_first = false;
    value.append(part);
  }
  return value;
}

std::string AttributeNameOfMatch(Engine& engine, const Match& match) {
  if (match.attribute < 0) return {};
  const Engine::State& state = engine.state();
  AttributeSource attributes(state.host.elements, state.host.definitions, state.attribute_values_mode != 0);
  attributes.Load(match.document, match.element);
  const auto index = static_cast<std::size_t>(match.attribute);
  return index < attributes.Count() ? std::string(attributes.Name(index)) : std::string();
}

void SetAttributeValuesMode(Engine& engine, std::int32_t mode) {
  engine.state().attribute_values_mode = mode;
}

void SetMostSteps(Engine& engine, std::uint64_t most) { engine.state().most_steps = most; }

void SetDisplayMode(Engine& engine, DisplayMode mode) { engine.state().display = mode; }

std::map<std::string, std::string, std::less<>>& Parameters(Engine& engine) {
  return engine.state().parameters;
}

}  // namespace qelm::xpath
