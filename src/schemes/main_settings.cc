#include "schemes/main_settings.h"

#include <algorithm>
#include <array>

#include "schemes/settings_tree.h"

namespace qelm::schemes {
namespace {

// The name of today, and the one of documents from before format 3.00.
constexpr std::array<std::string_view, 2> kRoots = {"QELM_MainSettings", "TSP_MainSettings"};
constexpr std::string_view kCheckExpression = "/*/SchemeCategories_XPath/SchemeCategory/FilterSchemes";

constexpr char kMessageId[] = "QELM_MSG_GEN_7";
// Shown while there is no language file to take the message from.
constexpr char kPlainText[] = "The main settings file at:\n\n%s\n\n...cannot be used:\n\n%s";
constexpr char kWrongContent[] =
    "It holds no scheme categories: a main settings file is a structured document whose highest element is "
    "<QELM_MainSettings>.";

void Report(messages::Messenger& messenger, const std::string& path, const std::string& reason) {
  if (messenger.LanguageActive()) {
    messenger.AlertFormatted(kMessageId, messenger.Format(kMessageId, path, reason));
  } else {
    messenger.Alert(messages::Messenger::FormatText(kPlainText, path, reason));
  }
}

}  // namespace

bool IsMainSettings(host::Host& host, xpath::Engine& engine, host::Id document) {
  SettingsTree tree(host, document);
  const host::Id root = tree.Root();
  if (root == host::kNone) return false;
  if (std::find(kRoots.begin(), kRoots.end(), tree.Tag(root)) != kRoots.end()) return true;
  return HasXPathCategories(engine, document);
}

bool HasXPathCategories(xpath::Engine& engine, host::Id document) {
  return xpath::FindFirst(engine, document, host::kNone, kCheckExpression).element != host::kNone;
}

host::Id OpenMainSettings(host::Host& host, xpath::Engine& engine, messages::Messenger& messenger,
                          const std::string& path, bool report, host::OpenStatus* status) {
  host::OpenStatus outcome = host::OpenStatus::kOpened;
  host::OpenOptions options;
  options.visible = false;
  options.suppress_alerts = true;
  const host::Id document = host.documents.Open(path, options, &outcome);
  if (status != nullptr) *status = outcome;
  if (document == host::kNone) {
    if (report) Report(messenger, path, std::string(host.documents.LastError()));
    return host::kNone;
  }
  if (!host.books.IsBook(document) && IsMainSettings(host, engine, document)) return document;
  if (outcome != host::OpenStatus::kAlreadyOpen) host.documents.Close(document, true);
  if (report) Report(messenger, path, messenger.Translated(messages::kWords, kWrongContent));
  return host::kNone;
}

config::MainSettingsCheck CheckMainSettingsFile(host::Host& host, xpath::Engine& engine,
                                                messages::Messenger& messenger, bool report) {
  return [&host, &engine, &messenger, report](const std::string& path) {
    return OpenMainSettings(host, engine, messenger, path, report) != host::kNone;
  };
}

std::string NameLiteral(std::string_view name) {
  const char mark = name.find('\'') == name.npos ? '\'' : '"';
  if (name.find(mark) != name.npos) return {};
  return std::string(1, mark).append(name) + mark;
}

}  // namespace qelm::schemes
