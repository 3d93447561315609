#include "cli/batch_records.h"

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "cli/file_names.h"
#include "common/content_hash.h"
#include "common/paths.h"
#include "filtering/batch_names.h"
#include "filtering/copy_record.h"

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

// What lies beside the output folders is written with the same care as what lies in them.
BatchRecords::BatchRecords(std::string folder, std::string batch, Json inputs)
    : folder_(std::move(folder)), batch_(std::move(batch)), inputs_(std::move(inputs)) {
  platform_.KeepInside(std::string(common::FolderOf(folder_)));
}

// Schemes of other batches and categories may have the same number and name.
std::string BatchRecords::PathOf(const BatchScheme& scheme) const {
  const std::string whose = batch_ + '\n' + scheme.category + '\n' + scheme.name + '\n' + scheme.folder;
  const std::string name = std::to_string(scheme.number) + "-" + filtering::SafeName(scheme.name) + "-";
  return common::JoinPath(folder_, name + common::ContentHash(whose) + ".json");
}

std::vector<std::string> BatchRecords::Troubles() const {
  const std::scoped_lock lock(mutex_);
  return troubles_;
}

// Nothing for a record that is damaged: the scheme is done again.
std::optional<Json> BatchRecords::Read(const BatchScheme& scheme) const {
  const std::string path = PathOf(scheme);
  std::error_code error;
  // A pipe would never come to its end.
  if (!fs::is_regular_file(path, error) || fs::file_size(path, error) > filtering::kLargestRecord || error) {
    return std::nullopt;
  }
  std::ifstream file(path, std::ios::binary);
  if (!file) return std::nullopt;
  Json record = Json::parse(file, nullptr, /*allow_exceptions=*/false);
  return record.is_object() ? std::optional(std::move(record)) : std::nullopt;
}

std::optional<BatchOutcome> BatchRecords::Find(const BatchScheme& scheme) const {
  const std::optional<Json> record = Read(scheme);
  if (!record) return std::nullopt;
  try {
    if (record->at("inputs") != inputs_) return std::nullopt;
    const Json& outcome = record->at("outcome");
    for (const Json& known : outcome.at("files")) {
      if (!known.is_object() || FileState(known.at("path")) != known) return std::nullopt;
    }
    return OutcomeOf(outcome);
  } catch (const Json::exception&) {
    return std::nullopt;
  }
}

void BatchRecords::Forget(const BatchScheme& scheme) {
  const std::string path = PathOf(scheme);
  const std::scoped_lock lock(mutex_);
  if (!platform_.MayExist(path) || platform_.RemoveFile(path)) return;
  troubles_.push_back(path + ": the record of an earlier run cannot be removed (" + platform_.LastError() +
                      "); a run with --resume may take the scheme for complete");
}

// A record only spares work: one of which a cut run or a power cut left a piece is damaged, and its scheme is
// done again. So it is not worth waiting for the disk.
void BatchRecords::Keep(const BatchScheme& scheme, const BatchOutcome& outcome) {
  const std::string path = PathOf(scheme);
  const Json record = {{"inputs", inputs_}, {"outcome", RecordJson(outcome)}};
  const std::string text = record.dump(1, ' ', false, Json::error_handler_t::replace) + '\n';
  const std::scoped_lock lock(mutex_);
  const bool is_free = !platform_.MayExist(path) || platform_.RemoveFile(path);
  if (is_free && platform_.MakeFolder(folder_) && platform_.AppendFile(path, text)) return;
  troubles_.push_back(path + ": the record of the scheme cannot be written (" + platform_.LastError() +
                      "); a run with --resume will do it again");
}

}  // namespace qelm::cli
