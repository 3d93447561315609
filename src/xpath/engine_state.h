// What the engine keeps for a session. For the engine's own sources only.
#pragma once

#include <memory>
#include <string>
#include <unordered_map>

#include "xpath/components.h"
#include "xpath/document_index.h"
#include "xpath/engine.h"
#include "xpath/plan.h"
#include "xpath/search.h"

namespace qelm::xpath {

inline constexpr std::int32_t kDefaultCacheLimit = 1000;
inline constexpr std::int32_t kDefaultExpressionLength = 255;
inline constexpr std::int32_t kDefaultMatches = 10000;

struct Engine::State {
  State(host::Host& host_roles, messages::Messenger& session_messenger)
      : host(host_roles), messenger(session_messenger) {}

  host::Host& host;
  messages::Messenger& messenger;
  ComponentTable table;
  bool initialized = false;
  std::int32_t cache_limit = kDefaultCacheLimit;
  std::int32_t maximum_expression_length = kDefaultExpressionLength;
  std::int32_t maximum_matches = kDefaultMatches;
  std::string report_template_path;
  std::string report_path;
  // What the headings of the report say, and the report that it was read from. Reading makes the host bring
  // its text up to date, so that it is done once a report.
  std::string report_heading;
  host::Id report_of_heading = host::kNone;
  ParseError last_error;
  ParameterMap parameters;
  std::int32_t attribute_values_mode = 1;
  DisplayMode display = DisplayMode::kNone;
  DocumentIndexes indexes;
  std::uint64_t most_steps = kMostSteps;  // of one evaluation
  // The searches under way, by the sequence number of their expression.
  std::unordered_map<Index, std::unique_ptr<Search>> searches;
};

}  // namespace qelm::xpath
