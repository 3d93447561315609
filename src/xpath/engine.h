// The XPath engine: parses expressions of the plug-in's XPath dialect into one table of components, and
// evaluates them lazily over the element tree of an open document.
//
// A parsed expression is named by its sequence number, the index of its root component. Sequence numbers
// become invalid when the table is emptied, which happens only inside bw_ParseXPath; callers parse again
// rather than keep them across operations (parsing the same text again is a look-up).
//
//   const std::int32_t sequence = bw_ParseXPath(engine, "//Section[@Audience='expert']", 0);
//   MatchList matches;
//   if (sequence > 0 && sequence < kFirstError) xpath_MatchAll(engine, document, 0, sequence, 0, &matches);
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "host/interface/host.h"
#include "messages/messenger.h"

namespace qelm::xpath {

// Results of bw_ParseXPath from here on are error ids (errors.h), smaller ones above 0 are sequence numbers.
inline constexpr std::int32_t kFirstError = 50099;

// A node that an expression selected: an element or text node, or an attribute of `element` by its index in
// the element's attribute list. Attributes that only the element definition gives stand behind the element's
// own.
struct Match {
  host::Id element = host::kNone;
  host::Id document = host::kNone;  // the one that was searched, unless the expression leads to another
  std::int32_t attribute = -1;
  std::int32_t property = 0;  // the code of the FrameMaker property on which the path ended, 0 for none
  friend bool operator==(const Match&, const Match&) = default;
};
using MatchList = std::vector<Match>;

// What a rejected expression was rejected for. `code` 0: it was not rejected.
struct ParseError {
  std::int32_t code = 0;
  std::string_view id;         // "XPATH_ERR_..."
  std::int32_t position = -1;  // a character index into the expression
};

// The engine's whole state. Defined by the engine's own sources; a session has one.
class Engine {
 public:
  Engine(host::Host& host, messages::Messenger& messenger);
  ~Engine();
  Engine(const Engine&) = delete;
  Engine& operator=(const Engine&) = delete;

  struct State;
  State& state() { return *state_; }
  const State& state() const { return *state_; }

 private:
  std::unique_ptr<State> state_;
};

// The host over which the engine works. For callers that walk on from a match themselves, where the limits on
// the length of a value and the number of matches must not hold.
host::Host& HostOf(Engine& engine);

// Sets the engine's limits; an argument below 1 takes the default: 1000 components in the cache, 255
// characters an expression, 10000 matches. The table is emptied only by the first call.
void bw_XPathEngineInit(Engine& engine, std::int32_t cache_limit, std::int32_t maximum_expression_length,
                        std::int32_t maximum_matches);

// Parses `text`. Returns its sequence number, 0 when the parser's loop guard fired, or an error code of
// kFirstError or more. With `report` 1 a rejection goes to the error report as well.
std::int32_t bw_ParseXPath(Engine& engine, std::string_view text, std::int32_t report);

// Why the last call of bw_ParseXPath rejected its text.
const ParseError& LastParseError(const Engine& engine);

// The document into which rejections were reported, 0 when it is not open.
host::Id ErrorReportDocument(const Engine& engine);

// Prints the components of a parsed expression on the host's console.
void bw_DumpParsedXPath(Engine& engine, std::int32_t sequence);

// Puts an expression back to the start of a search, and frees what the search kept.
void Reset(Engine& engine, std::int32_t sequence);

// The next node of a search from `context` (0: the root of the flow named "Main", or the main flow's root
// where no flow is named so), 0 when there is none left. `flow` is the flow to search for expressions that
// begin with a flow axis, 0 for all others. AttributeOfMatch then gives the attribute index of that match.
// The document's structure must not be edited while a search is under way. A call after the one that returned
// 0, without a Reset between them, is an error and says so.
host::Id bw_FindNextNodeWithXpath(Engine& engine, host::Id document, std::int32_t sequence, host::Id context,
                                  host::Id flow);
std::int32_t AttributeOfMatch(const Engine& engine, std::int32_t sequence);
// All of the match that the search on the expression gave last.
Match LastMatch(const Engine& engine, std::int32_t sequence);

// Collects the matches of a parsed expression, each once, up to `maximum` (below 1: all) or to the engine's
// maximum, at which it says so with a message. Returns false when matches were left out because of the
// engine's maximum, or because the search failed, which it has then said as well.
bool xpath_MatchAll(Engine& engine, host::Id document, host::Id context, std::int32_t sequence,
                    std::int32_t maximum, MatchList* matches);

// Parses and collects; empty when the expression is rejected. `complete`, where given, is what xpath_MatchAll
// returned.
MatchList MatchAllFromText(Engine& engine, host::Id document, host::Id context, std::string_view text,
                           std::int32_t maximum, std::int32_t report, bool* complete = nullptr);

// The first match only; element 0 when there is none.
Match FindFirst(Engine& engine, host::Id document, host::Id context, std::string_view text,
                std::int32_t report = 0);

// The text (at most 1000 characters) of every match, or the value of a matched attribute (values of a
// multi-valued one are joined by blanks).
std::vector<std::string> GetValues(Engine& engine, host::Id document, host::Id context, std::string_view text,
                                   std::int32_t report = 0);
std::string ValueOfMatch(Engine& engine, const Match& match);
// The name of a matched attribute; empty for other matches.
std::string AttributeNameOfMatch(Engine& engine, const Match& match);

// 1 (default): attributes are read with the defaults of the element definition; 0: only what the element
// itself carries.
void SetAttributeValuesMode(Engine& engine, std::int32_t mode);

// How many elements an evaluation may move over before it is given up, which it says with the expression.
void SetMostSteps(Engine& engine, std::uint64_t most);

// What xpath_MatchAll shows of its work, for those who look for what is wrong with an expression: it selects
// the context, or each match, in the document and stops there with an alert.
enum class DisplayMode : std::uint8_t { kNone, kContext, kMatches };
void SetDisplayMode(Engine& engine, DisplayMode mode);

// The values of "$name" parameters, by name without the "$". One without a value is the empty string.
std::map<std::string, std::string, std::less<>>& Parameters(Engine& engine);

}  // namespace qelm::xpath
