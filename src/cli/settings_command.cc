// qelm settings: the local settings in force, and where each value came from.
#include <CLI/CLI.hpp>
#include <algorithm>

#include "cli/command.h"
#include "cli/did_you_mean.h"
#include "cli/session.h"
#include "config/settings_table.h"

namespace qelm::cli {
namespace {

std::string_view SourceName(config::SettingSource source) {
  switch (source) {
    case config::SettingSource::kDefault:
      return "default";
    case config::SettingSource::kFile:
      return "file";
    case config::SettingSource::kCommandLine:
      return "command line";
    case config::SettingSource::kSession:
      return "session";
  }
  return {};
}

class SettingsCommand : public Command {
 public:
  CLI::App* Define(CLI::App& program) override;
  Outcome Run(Session& session) override;

 private:
  std::vector<const config::Setting*> Chosen() const;

  std::vector<std::string> keys_;
};

CLI::App* SettingsCommand::Define(CLI::App& program) {
  CLI::App* command =
      AddCommand(program, {"settings", "Print the local settings in force and where each came from", "",
                           "qelm settings XPATH_MAX_MATCHES --set XPATH_MAX_MATCHES=500"});
  command->add_option("KEY", keys_, "Only these settings");
  return command;
}

std::vector<const config::Setting*> SettingsCommand::Chosen() const {
  std::vector<const config::Setting*> chosen;
  std::vector<std::string_view> names;
  for (const config::Setting& setting : config::AllSettings()) {
    names.push_back(setting.key);
    if (keys_.empty()) chosen.push_back(&setting);
  }
  for (const std::string& key : keys_) {
    chosen.push_back(config::FindSetting(key));
    if (chosen.back() != nullptr) continue;
    throw Failure(ExitStatus::kUsage, "there is no setting \"" + key + "\"" +
                                          DidYouMean(key, std::span<const std::string_view>(names)));
  }
  return chosen;
}

// The value of a setting in JSON: a list stays one.
nlohmann::ordered_json ValueJson(const config::Setting& setting, const std::vector<std::string>& values) {
  const bool list =
      setting.kind == config::SettingKind::kList || setting.kind == config::SettingKind::kPathList;
  if (list) return values;
  return values.empty() ? std::string() : values.front();
}

// One line for each value, with where it came from behind it.
void AppendLines(const config::Setting& setting, std::vector<std::string> values, const std::string& origin,
                 std::string* text) {
  constexpr std::size_t kColumn = 60;
  if (values.empty()) values.emplace_back();
  for (const std::string& value : values) {
    std::string line(setting.key);
    line += setting.separator;
    line += value;
    line.resize(std::max(line.size(), kColumn), ' ');
    text->append(line).append("  ").append(origin).append("\n");
  }
}

Outcome SettingsCommand::Run(Session& session) {
  const config::LocalSettings& settings = session.plugin().settings;
  const config::Setting* first = config::AllSettings().data();
  Outcome outcome;
  nlohmann::ordered_json list = nlohmann::ordered_json::array();
  for (const config::Setting* setting : Chosen()) {
    const auto index = static_cast<std::size_t>(setting - first);
    const config::SettingOrigin origin =
        index < settings.origins.size() ? settings.origins[index] : config::SettingOrigin{};
    const std::vector<std::string> values = config::ValueTexts(*setting, settings);
    nlohmann::ordered_json entry{
        {"key", setting->key}, {"value", ValueJson(*setting, values)}, {"source", SourceName(origin.source)}};
    std::string place(SourceName(origin.source));
    if (origin.source == config::SettingSource::kFile) {
      entry["line"] = origin.line;
      place = "line " + std::to_string(origin.line);
    }
    list.push_back(std::move(entry));
    AppendLines(*setting, values, place, &outcome.text);
  }
  outcome.members = {{"local_settings", settings.paths.local_settings},
                     {"main_settings", settings.paths.main_settings},
                     {"settings", std::move(list)},
                     {"file_notices", nlohmann::ordered_json::array()}};
  if (keys_.empty()) {
    outcome.text = "; local settings: " + settings.paths.local_settings +
                   "\n; main settings: " + settings.paths.main_settings + "\n" + outcome.text;
  }
  for (const config::SettingsNotice& notice : settings.notices) {
    outcome.members["file_notices"].push_back({{"line", notice.line}, {"text", notice.text}});
    if (keys_.empty()) outcome.text += "; line " + std::to_string(notice.line) + ": " + notice.text + "\n";
  }
  return outcome;
}

}  // namespace

std::unique_ptr<Command> MakeSettingsCommand() { return std::make_unique<SettingsCommand>(); }

}  // namespace qelm::cli
