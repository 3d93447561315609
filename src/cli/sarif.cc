#include "cli/sarif.h"

#include <nlohmann/json.hpp>
#include <ostream>

#include "cli/file_names.h"

namespace qelm::cli {
namespace {

using Json = nlohmann::ordered_json;

constexpr char kSchema[] = "https://json.schemastore.org/sarif-2.1.0.json";

Json Text(std::string_view text) { return {{"text", text}}; }

Json PhysicalLocation(const std::string& file, std::uint32_t line) {
  Json location{{"artifactLocation", {{"uri", FileUri(file)}}}};
  if (line != 0) location["region"] = {{"startLine", line}};
  return location;
}

Json RulesOf(const SarifLog& log) {
  Json rules = Json::array();
  for (const SarifRule& rule : log.rules) {
    rules.push_back({{"id", rule.id},
                     {"name", rule.name},
                     {"shortDescription", Text(rule.summary)},
                     {"defaultConfiguration", {{"level", rule.level}}}});
  }
  return rules;
}

Json ResultOf(const SarifLog& log, const SarifResult& result) {
  const SarifRule& rule = log.rules[result.rule];
  Json object{{"ruleId", rule.id},
              {"ruleIndex", result.rule},
              {"level", rule.level},
              {"message", Text(result.message)}};
  Json location = Json::object();
  if (!result.file.empty()) location["physicalLocation"] = PhysicalLocation(result.file, result.line);
  if (!result.logical_path.empty()) {
    location["logicalLocations"] = {{{"name", result.logical_name},
                                     {"fullyQualifiedName", result.logical_path},
                                     {"kind", result.logical_kind}}};
  }
  if (!location.empty()) object["locations"] = Json::array({std::move(location)});
  return object;
}

Json InvocationOf(const SarifLog& log) {
  Json invocation{{"executionSuccessful", log.notifications.empty()}};
  Json notifications = Json::array();
  for (const SarifLog::Notification& notification : log.notifications) {
    Json object{{"level", "error"}, {"message", Text(notification.message)}};
    object["locations"] = {{{"physicalLocation", PhysicalLocation(notification.file, 0)}}};
    notifications.push_back(std::move(object));
  }
  if (!notifications.empty()) invocation["toolExecutionNotifications"] = std::move(notifications);
  return invocation;
}

}  // namespace

void WriteSarif(const SarifLog& log, std::ostream& out) {
  Json run{{"tool", {{"driver", {{"name", "QELM"}, {"version", log.version}, {"rules", RulesOf(log)}}}}}};
  run["invocations"] = Json::array({InvocationOf(log)});
  Json results = Json::array();
  for (const SarifResult& result : log.results) results.push_back(ResultOf(log, result));
  run["results"] = std::move(results);
  Json object{{"$schema", kSchema}, {"version", "2.1.0"}};
  object["runs"] = Json::array({std::move(run)});
  out << object.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
}

}  // namespace qelm::cli
