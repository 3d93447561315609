#include "cli/settings_conversion.h"

#include "cli/file_names.h"
#include "cli/session.h"
#include "schemes/format_conversion.h"
#include "schemes/main_settings.h"

namespace qelm::cli {
namespace {

using schemes::SettingsFormat;

// Each conversion, and the formats that need it.
struct Step {
  const char* version;
  SettingsFormat from;
  schemes::ConversionResult (*convert)(host::Host&, messages::Messenger&, const schemes::ConversionOptions&,
                                       host::Id*);
};
constexpr Step kSteps[] = {
    {"3.00", SettingsFormat::kBefore300, schemes::ConvertTo300},
    {"3.04", SettingsFormat::k300, schemes::ConvertTo304},
};

class Run {
 public:
  Run(Session& session, const SettingsConversion& conversion)
      : session_(session), conversion_(conversion), name_(ShownPath(conversion.file)) {}

  Outcome Do();

 private:
  void OpenSettings();
  void Convert(const Step& step);
  nlohmann::ordered_json Members() const {
    return {{"file", conversion_.file}, {"conversions", conversions_}};
  }

  Session& session_;
  const SettingsConversion& conversion_;
  std::string name_;
  host::Id document_ = host::kNone;
  std::string text_;
  nlohmann::ordered_json conversions_ = nlohmann::ordered_json::array();
};

void Run::OpenSettings() {
  document_ = session_.OpenDocument(conversion_.file);
  if (!conversion_.output.empty() && Session::SameFile(conversion_.output, conversion_.file)) {
    throw Failure(ExitStatus::kUsage,
                  conversion_.output + ": this is the file itself; without -o it is converted in place");
  }
  if (schemes::IsMainSettings(session_.roles(), session_.plugin().engine, document_)) return;
  throw Failure(
      ExitStatus::kFile,
      name_ + ": this is no main settings document; its highest element would be <QELM_MainSettings>");
}

void Run::Convert(const Step& step) {
  Plugin& plugin = session_.plugin();
  host::Documents& documents = session_.roles().documents;
  const bool in_place = conversion_.output.empty();
  const schemes::ConversionOptions options{.backup = in_place && !conversion_.no_backup,
                                           .save = in_place,
                                           .plugin_folder = plugin.settings.paths.plugin_folder};
  const bool is_ours = plugin.main_settings == document_;
  const std::string error_before(documents.LastError());
  const schemes::ConversionResult result =
      step.convert(session_.roles(), plugin.messenger, options, &document_);
  if (is_ours) plugin.main_settings = document_;
  session_.ShowNotices();
  const std::string backup = result.backup.empty() ? std::string() : ShownPath(result.backup);
  const std::string kept = backup.empty() ? std::string() : "; the file before: " + backup;
  if (!result.Done()) {
    std::string message = name_ + ": not converted to format " + step.version + ": " + result.error;
    const std::string reason(documents.LastError());
    const bool is_new = reason != error_before && result.error.find(reason) == std::string::npos;
    if (is_new) message += "\n" + reason;
    throw Failure(ExitStatus::kOperation, message + kept, Members());
  }
  text_ += name_ + ": converted to format " + step.version + kept + "\n";
  nlohmann::ordered_json entry{{"to", step.version}, {"backup", nullptr}};
  if (!backup.empty()) entry["backup"] = backup;
  conversions_.push_back(std::move(entry));
}

Outcome Run::Do() {
  OpenSettings();
  for (const Step& step : kSteps) {
    if (schemes::FormatOf(session_.roles(), document_) == step.from) Convert(step);
  }
  if (conversions_.empty()) text_ = name_ + ": the format is that of today; there is nothing to convert\n";
  Outcome outcome;
  if (!conversion_.output.empty()) {
    outcome.output = session_.Save(document_, conversion_.output);
    text_ += name_ + " -> " + ShownPath(outcome.output) + "\n";
  } else if (!conversions_.empty()) {
    outcome.output = conversion_.file;
  }
  outcome.text = std::move(text_);
  outcome.members = Members();
  return outcome;
}

}  // namespace

Outcome ConvertSettings(Session& session, const SettingsConversion& conversion) {
  return Run(session, conversion).Do();
}

}  // namespace qelm::cli
