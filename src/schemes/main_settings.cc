#include "schemes/main_settings.h"

#include "schemes/element_forms.h"
#include "schemes/settings_tree.h"

namespace qelm::schemes {
namespace {

constexpr std::string_view kCheckExpression = "/*/SchemeCategories_XPath/SchemeCategory/FilterSchemes";

constexpr char kMessageId[] = "QELM_MSG_GEN_7";
constexpr char kOldFormatId[] = "QELM_MSG_CONVERT_10";
// Shown while there is no language file to take the message from.
constexpr char kPlainText[] = "The main settings file at:\n\n%s\n\n...cannot be used:\n\n%s";
constexpr char kPlainOldFormat[] =
    "The main settings file at:\n\n%s\n\n...has the format of before version 3.00. Please convert it:\n\n"
    "qelm schemes convert \"%s\"";
constexpr char kWrongContent[] =
    "It holds no scheme categories: a main settings file is a structured document whose highest element is "
    "<QELM_MainSettings>.";

// An alert of the id, or of the plain text, with its two arguments.
void Report(messages::Messenger& messenger, const char* id, const char* plain, const std::string& path,
            const std::string& other) {
  if (messenger.LanguageActive()) {
    messenger.AlertFormatted(id, messenger.Format(id, path, other));
  } else {
    messenger.Alert(messages::Messenger::FormatText(plain, path, other));
  }
}

void ReportUnusable(messages::Messenger& messenger, const std::string& path, const std::string& reason) {
  Report(messenger, kMessageId, kPlainText, path, reason);
}

}  // namespace

bool IsOldMainSettings(host::Host& host, host::Id document) {
  SettingsTree tree(host, document);
  const host::Id root = tree.Root();
  return root != host::kNone && tree.Tag(root) == kOldRootTag;
}

bool IsMainSettings(host::Host& host, xpath::Engine& engine, host::Id document) {
  SettingsTree tree(host, document);
  const host::Id root = tree.Root();
  if (root == host::kNone) return false;
  const std::string_view tag = tree.Tag(root);
  if (tag == kRootTag || tag == kOldRootTag) return true;
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
    if (report) ReportUnusable(messenger, path, std::string(host.documents.LastError()));
    return host::kNone;
  }
  if (!host.books.IsBook(document) && IsMainSettings(host, engine, document)) {
    const bool is_new = outcome == host::OpenStatus::kOpened;
    if (report && is_new && IsOldMainSettings(host, document)) {
      Report(messenger, kOldFormatId, kPlainOldFormat, path, path);
    }
    return document;
  }
  if (outcome != host::OpenStatus::kAlreadyOpen) host.documents.Close(document, true);
  if (report) ReportUnusable(messenger, path, messenger.Translated(messages::kWords, kWrongContent));
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
