#include "cli/batch_records.h"

#include <filesystem>
#include <fstream>

#include "cli/file_names.h"
#include "common/paths.h"
#include "filtering/batch_names.h"

namespace qelm::cli {
namespace {

namespace fs = std::filesystem;
using filtering::BatchOutcome;
using filtering::BatchScheme;
using filtering::BatchStep;
using Json = nlohmann::ordered_json;

Json StepJson(const BatchStep& step) {
  return {{"format", step.format},
          {"link", step.link},
          {"failure", step.failure},
          {"message", step.message},
          {"text", step.text}};
}

BatchStep StepOf(const Json& json) {
  return {json.at("format"), json.at("link"), json.at("failure"), json.at("message"), json.at("text")};
}

BatchOutcome OutcomeOf(const Json& json) {
  BatchOutcome outcome;
  outcome.number = json.at("number");
  outcome.name = json.at("name");
  outcome.folder = json.at("folder");
  outcome.output = json.at("output");
  outcome.result = json.at("result");
  outcome.complete = true;
  outcome.elapsed_ms = json.at("elapsed_ms");
  for (const Json& file : json.at("files")) outcome.files.push_back(file.at("path"));
  for (const Json& step : json.at("steps")) outcome.steps.push_back(StepOf(step));
  return outcome;
}

// What a record keeps of an outcome, which is more than a reader of results wants to see.
Json RecordJson(const BatchOutcome& outcome) {
  Json json{{"number", outcome.number}, {"name", outcome.name},     {"folder", outcome.folder},
            {"output", outcome.output}, {"result", outcome.result}, {"elapsed_ms", outcome.elapsed_ms}};
  json["files"] = Json::array();
  for (const std::string& file : outcome.files) json["files"].push_back(FileState(file));
  json["steps"] = Json::array();
  for (const BatchStep& step : outcome.steps) json["steps"].push_back(StepJson(step));
  return json;
}

}  // namespace

Json OutcomeJson(const BatchOutcome& outcome) {
  Json json{
      {"number", outcome.number}, {"name", outcome.name}, {"output", nullptr}, {"result", outcome.result}};
  if (!outcome.output.empty()) json["output"] = ShownPath(outcome.output);
  json["files"] = Json::array();
  for (const std::string& file : outcome.files) json["files"].push_back(ShownPath(file));
  json["steps"] = Json::array();
  for (const BatchStep& step : outcome.steps) {
    Json entry{{"message", step.message.empty() ? Json(nullptr) : Json(step.message)}, {"text", step.text}};
    if (step.failure) entry["failure"] = true;
    json["steps"].push_back(std::move(entry));
  }
  json["elapsed_ms"] = outcome.elapsed_ms;
  return json;
}

Json FileState(const std::string& path) {
  std::error_code error;
  const std::uintmax_t size = fs::file_size(path, error);
  if (error) return nullptr;
  const fs::file_time_type time = fs::last_write_time(path, error);
  if (error) return nullptr;
  return {{"path", path}, {"size", size}, {"time", time.time_since_epoch().count()}};
}

std::string BatchRecords::PathOf(const BatchScheme& scheme) const {
  const std::string number = std::to_string(scheme.number);
  return common::JoinPath(folder_, number + "-" + filtering::SafeName(scheme.name) + ".json");
}

std::optional<BatchOutcome> BatchRecords::Find(const BatchScheme& scheme) const {
  std::ifstream file(PathOf(scheme), std::ios::binary);
  if (!file) return std::nullopt;
  try {
    const Json record = Json::parse(file);
    if (record.at("inputs") != inputs_) return std::nullopt;
    const Json& outcome = record.at("outcome");
    if (outcome.at("name") != scheme.name || outcome.at("folder") != scheme.folder) return std::nullopt;
    for (const Json& known : outcome.at("files")) {
      if (!known.is_object() || FileState(known.at("path")) != known) return std::nullopt;
    }
    return OutcomeOf(outcome);
  } catch (const Json::exception&) {
    return std::nullopt;  // damaged: the scheme is done again
  }
}

bool BatchRecords::Forget(const BatchScheme& scheme) const {
  std::error_code error;
  fs::remove(PathOf(scheme), error);
  return !error;
}

void BatchRecords::Keep(const BatchScheme& scheme, const BatchOutcome& outcome) const {
  std::error_code error;
  fs::create_directories(folder_, error);
  const std::string path = PathOf(scheme);
  const std::string beside = path + ".new";
  std::ofstream file(beside, std::ios::binary | std::ios::trunc);
  file << Json{{"inputs", inputs_}, {"outcome", RecordJson(outcome)}}.dump(1, ' ', false,
                                                                           Json::error_handler_t::replace)
       << '\n';
  file.close();
  if (file) fs::rename(beside, path, error);
  if (!file || error) fs::remove(beside, error);
}

}  // namespace qelm::cli
