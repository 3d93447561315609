#include "cli/session.h"

#include <filesystem>
#include <functional>
#include <ostream>

#include "cli/exit_status.h"
#include "common/text.h"
#include "common/utf8.h"
#include "config/read_settings.h"
#include "filtering/copy_record.h"
#include "host/notifications.h"
#include "messages/document_name.h"
#include "xpath/engine.h"

namespace qelm::cli {
namespace {

using embedded::adapter::Answers;
using embedded::adapter::ScriptedUserInterface;

// The header of alerts while there is no language.
constexpr char kPlainHeader[] = "--> QELM message <--\n\n";
constexpr char kHeaderId[] = "QELM_MSG_HEADER_1";

// What the host says of its last failure, with the file's name in it.
std::string WithPath(const std::string& path, std::string_view error) {
  if (error.find(path) != std::string_view::npos) return std::string(error);
  return path + ": " + (error.empty() ? std::string("failed") : std::string(error));
}

ScriptedUserInterface::Progress ProgressOf(const Options& options, const Environment& environment) {
  using Progress = ScriptedUserInterface::Progress;
  if (options.quiet || options.progress == "never") return Progress::kNever;
  if (environment.err_is_terminal) return Progress::kTerminal;
  return options.progress == "always" ? Progress::kLines : Progress::kNever;
}

// The entry points of the plug-in, with an event for each call of the host.
class RecordedEntries : public host::EntryPoints {
 public:
  // `after_command` is called when a command is done.
  RecordedEntries(host::EntryPoints& entries, host::Host& host, embedded::adapter::EventLog& events,
                  std::function<void()> after_command)
      : entries_(entries), host_(host), events_(events), after_command_(std::move(after_command)) {}

  void Initialize(std::int32_t kind) override { entries_.Initialize(kind); }
  void Command(std::int32_t number) override {
    events_.Write("command", {{"number", number}});
    entries_.Command(number);
    after_command_();
  }
  void Notify(std::int32_t notification, host::Id document, std::string_view text,
              std::int32_t value) override {
    events_.Write("notified", {{"number", notification},
                               {"document", messages::DocumentName(host_.documents, document)},
                               {"text", text},
                               {"value", value}});
    entries_.Notify(notification, document, text, value);
  }
  std::int32_t DialogEvent(std::int32_t dialog, std::int32_t item, std::int32_t modifiers) override {
    return entries_.DialogEvent(dialog, item, modifiers);
  }

 private:
  host::EntryPoints& entries_;
  host::Host& host_;
  embedded::adapter::EventLog& events_;
  std::function<void()> after_command_;
};

}  // namespace

Session::Session(const Options& options, const Environment& environment)
    : options_(options), environment_(environment), user_(UserOptions()) {}

ScriptedUserInterface::Options Session::UserOptions() {
  ScriptedUserInterface::Options user{.in = environment_.in, .messages = environment_.err, .events = events_};
  user.progress = ProgressOf(options_, environment_);
  user.interactive = environment_.interactive;
  user.quiet = options_.quiet;
  user.esc = environment_.esc;
  if (options_.yes || options_.no) user.answer = options_.yes;
  return user;
}

void Session::Start(bool install) {
  OpenEvents();
  ReadAnswers();
  if (!options_.profile.empty()) platform_.SetEnvironment("APPDATA", options_.profile);
  embedded::adapter::EmbeddedHost::Options host;
  host.plugin_folder = PluginFolder();
  host.major_version = options_.host_version;
  host.documents = environment_.documents;
  host.map_large_files = options_.map_large_files;
  host.overwrite_changed = options_.overwrite;
  host.of_complete_copy = [this](const std::string& folder, const std::string& file) {
    return filtering::IsOfCompleteCopy(platform_, folder, file);
  };
  platform_.SetIgnoreLocks(options_.ignore_lock);
  host.file_error = [this] { return platform_.LastError(); };
  host_ = std::make_unique<embedded::adapter::EmbeddedHost>(host, user_, dialogs_, clients_, platform_);
  roles_ = environment_.around_host ? &environment_.around_host(host_->roles()) : &host_->roles();
  plugin_ = std::make_unique<Plugin>(roles());
  plugin_->filter_run.overwrite = options_.overwrite;
  dialogs_.SetFolder(host.plugin_folder);
  dialogs_.SetEventEntry([this](std::int32_t dialog, std::int32_t item, std::int32_t modifiers) {
    return recorded_entries_->DialogEvent(dialog, item, modifiers);
  });
  user_.SetHeader(kPlainHeader);
  StartOptions start = PluginOptions();
  start.install = install || options_.install;
  entries_ = std::make_unique<Entries>(*plugin_, std::move(start));
  recorded_entries_ = std::make_unique<RecordedEntries>(*entries_, roles(), events_, [this] { SetHeader(); });
  if (tell_plugin_) host_->Attach(recorded_entries_.get());
  entries_->Initialize(0);
  if (!entries_->started()) {
    const std::string path = options_.main_settings;
    throw Failure(ExitStatus::kFile, path.empty() ? std::string("the plug-in could not be started")
                                                  : path + ": cannot be used as the main settings document");
  }
  SetHeader();
  SetParameters();
  ShowNotices();
  Say("local settings: " + plugin_->settings.paths.local_settings);
  Say("main settings: " + plugin_->settings.paths.main_settings);
}

calls::Answer Session::Call(std::string_view text) {
  entries_->Notify(kClientCall, host::kNone, text, 0);
  calls::Answer answer = plugin_->calls.last;
  answer.value = clients_.TakeReturned().value_or(calls::kFailed);
  if (events_.Wanted()) {
    events_.Write("call",
                  {{"text", text}, {"result", answer.value}, {"from", calls::SourceName(answer.source)}});
  }
  return answer;
}

// The header of alerts in the language in force, which a command may have changed.
void Session::SetHeader() {
  if (plugin_->messenger.LanguageActive()) user_.SetHeader(plugin_->messenger.Get(kHeaderId));
}

void Session::TellPlugin() {
  tell_plugin_ = true;
  if (host_) host_->Attach(recorded_entries_.get());
}

void Session::Say(const std::string& text) {
  if (options_.verbose) environment_.err << text << std::endl;
}

void Session::OpenEvents() {
  if (options_.events == "-") {
    events_.UseStream(environment_.err);
  } else if (!options_.events.empty() && !events_.OpenFile(options_.events)) {
    throw Failure(ExitStatus::kFile,
                  options_.events + ": events cannot be appended to this file; name a new one");
  }
}

void Session::ReadAnswers() {
  if (options_.answers.empty()) return;
  const std::optional<std::string> text = platform_.ReadFile(options_.answers);
  if (!text) throw Failure(ExitStatus::kFile, options_.answers + ": " + platform_.LastError());
  std::string error;
  std::optional<Answers> answers = Answers::Parse(common::DecodeTextFile(*text), &error);
  if (!answers) throw Failure(ExitStatus::kUsage, options_.answers + ": " + error);
  user_.SetAnswers(std::move(*answers));
}

void Session::UseAnswers(const std::string& lines) {
  std::string error;
  std::optional<Answers> answers = Answers::Parse(lines, &error);
  if (!answers) throw Failure(ExitStatus::kUsage, error);
  user_.SetFirstAnswers(std::move(*answers));
}

std::string Session::PluginFolder() {
  if (!options_.plugin_folder.empty()) {
    if (platform_.FolderExists(options_.plugin_folder)) return options_.plugin_folder;
    throw Failure(ExitStatus::kFile, options_.plugin_folder + ": there is no such folder (--plugin-dir)");
  }
  for (const std::string& folder : environment_.plugin_folders) {
    if (platform_.FolderExists(folder)) return folder;
  }
  throw Failure(ExitStatus::kFile, "the plug-in's folder was not found; name it by --plugin-dir");
}

StartOptions Session::PluginOptions() {
  StartOptions start;
  start.local_settings_path = options_.local_settings;
  start.main_settings_path = options_.main_settings;
  if (!options_.local_settings.empty() && !platform_.ReadFile(options_.local_settings)) {
    throw Failure(ExitStatus::kFile, options_.local_settings + ": " + platform_.LastError());
  }
  if (!options_.main_settings.empty() && !platform_.FileExists(options_.main_settings)) {
    throw Failure(ExitStatus::kFile, options_.main_settings + ": there is no such file (--main-settings)");
  }
  for (const std::string& text : options_.settings) {
    config::SettingOverride setting;
    std::string error;
    if (!config::ParseOverride(text, &setting, &error)) throw Failure(ExitStatus::kUsage, "--set: " + error);
    start.settings.push_back(std::move(setting));
  }
  return start;
}

void Session::SetParameters() {
  auto& parameters = xpath::Parameters(plugin_->engine);
  for (const std::string& text : options_.parameters) {
    const std::size_t equals = text.find('=');
    const std::size_t start = text.starts_with('$') ? 1 : 0;
    if (equals == std::string::npos || equals == start) {
      throw Failure(ExitStatus::kUsage, "--param: expected NAME=VALUE, found \"" + text + "\"");
    }
    parameters[text.substr(start, equals - start)] = text.substr(equals + 1);
  }
}

void Session::ShowNotices() {
  if (!host_) return;  // nothing was started: a session file without a step that needs it
  const std::vector<std::string>& notices = host_->notices();
  for (; notices_shown_ < notices.size(); ++notices_shown_) {
    events_.Write("notice", {{"text", notices[notices_shown_]}});
    if (!options_.quiet) environment_.err << "note: " << notices[notices_shown_] << std::endl;
  }
}

host::Id Session::Open(const std::string& path) {
  target_ = path;
  host::OpenOptions options;
  options.suppress_alerts = plugin_->settings.suppress_file_opening_alerts;
  host::OpenStatus status = host::OpenStatus::kOpened;
  const std::int64_t start = platform_.Milliseconds();
  const host::Id id = roles().documents.Open(path, options, &status);
  ShowNotices();
  if (id == host::kNone) throw Failure(ExitStatus::kFile, WithPath(path, roles().documents.LastError()));
  Say("opened " + path + " in " + std::to_string(platform_.Milliseconds() - start) + " ms");
  return id;
}

host::Id Session::OpenDocument(const std::string& path) {
  const host::Id id = Open(path);
  if (!roles().books.IsBook(id)) return id;
  throw Failure(ExitStatus::kUsage, path + ": this is a book; this command works on documents only");
}

namespace {

// Whoever gives such a name wants pages, and would find a document under it.
bool NamesPages(const std::string& path) {
  const std::string ending = common::AsciiLower(std::filesystem::path(path).extension().string());
  return ending == ".pdf" || ending == ".png";
}

}  // namespace

std::string Session::Save(host::Id document, const std::string& path, host::SaveFormat format) {
  if (environment_.esc && environment_.esc()) {
    throw Failure(ExitStatus::kCancelled, "cancelled; nothing was written");
  }
  host::Documents& documents = roles().documents;
  const std::string name = path.empty() ? NameOf(document) : path;
  if (format == host::SaveFormat::kDocument && NamesPages(path)) {
    throw Failure(ExitStatus::kUsage, path + ": a document is not saved as pages; qelm convert prints it");
  }
  if (!options_.events.empty() && SameFile(name, options_.events)) {
    throw Failure(ExitStatus::kUsage, name + ": this is the file of --events");
  }
  host::SaveOptions options;
  options.path = path;
  options.format = format;
  const std::int64_t start = platform_.Milliseconds();
  if (!documents.Save(document, options)) {
    throw Failure(ExitStatus::kFile, WithPath(name, documents.LastError()));
  }
  Say("wrote " + name + " in " + std::to_string(platform_.Milliseconds() - start) + " ms");
  return name;
}

std::string Session::SavePage(host::Id document, const std::string& path, std::size_t page, double dpi) {
  std::string why;
  if (!host_->SavePage(document, path, page, dpi, &why)) {
    throw Failure(ExitStatus::kFile, WithPath(path, why));
  }
  return path;
}

std::string Session::NameOf(host::Id document) {
  const std::string path(roles().documents.Path(document));
  return SameFile(path, target_) ? target_ : path;
}

void Session::RefuseFileOf(host::Id target, const std::string& path, const std::string& option) {
  const auto refuse = [&](const char* what) {
    throw Failure(ExitStatus::kUsage, path + ": " + option + " names " + what);
  };
  if (SameFile(path, target_)) refuse("the target itself");
  const std::pair<const std::string&, const char*> own[] = {
      {options_.events, "the file of --events"},
      {options_.answers, "the file of --answers"},
      {options_.local_settings, "the local settings file"},
      {options_.main_settings, "the main settings document"},
  };
  for (const auto& [file, what] : own) {
    if (!file.empty() && SameFile(path, file)) refuse(what);
  }
  host::Books& books = roles().books;
  for (host::Id component = books.IsBook(target) ? books.FirstComponent(target) : host::kNone;
       component != host::kNone; component = books.NextComponent(target, component)) {
    if (SameFile(path, std::string(books.ComponentPath(target, component)))) refuse("a file of the book");
  }
}

bool Session::SameFile(const std::string& left, const std::string& right) {
  std::error_code error;
  if (std::filesystem::equivalent(left, right, error) && !error) return true;
  return std::filesystem::weakly_canonical(left, error) == std::filesystem::weakly_canonical(right, error);
}

}  // namespace qelm::cli
