#include "cli/script_runner.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <ostream>

#include "cli/command_choice.h"
#include "cli/exit_status.h"
#include "cli/expression_error.h"
#include "cli/selection.h"
#include "common/paths.h"
#include "common/text.h"
#include "config/read_settings.h"
#include "xpath/engine.h"

namespace qelm::cli {
namespace {

using host::Id;
using host::kNone;

constexpr std::string_view kWork = "$WORK";

std::int32_t NumberOf(const std::string& text) {
  std::int32_t number = 0;
  const char* end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || rest != end) {
    throw Failure(ExitStatus::kUsage, "\"" + text + "\" is no number");
  }
  return number;
}

std::string TextOf(const nlohmann::ordered_json& event) {
  return event.contains("text") ? event["text"].get<std::string>() : std::string();
}

// What an event says, with the title of a dialog.
std::string WordsOf(const nlohmann::ordered_json& event) {
  std::string title = event.contains("title") ? event["title"].get<std::string>() + "\n" : std::string();
  return title + TextOf(event);
}

// What a dialog was given: its items with their values, the button, and by whom.
std::string AnswerText(const nlohmann::ordered_json& event) {
  std::string text;
  if (event.contains("set")) {
    for (const auto& [item, value] : event["set"].items()) {
      text += item + " = " + (value.is_string() ? value.get<std::string>() : value.dump()) + ", ";
    }
  }
  const auto member = [&event](const char* name) {
    return event.contains(name) && event[name].is_string() ? event[name].get<std::string>() : std::string();
  };
  return text + "press " + member("press") + " (" + member("by") + ")";
}

// The lines of a text, each behind the same number of blanks but the first.
std::string Indented(const std::string& text, std::size_t blanks) {
  std::string result;
  for (const char character : text) {
    result += character;
    if (character == '\n') result.append(blanks, ' ');
  }
  return result;
}

}  // namespace

ScriptRunner::ScriptRunner(Session& session, ScriptPlaces places, bool print)
    : session_(session), places_(std::move(places)), print_(print) {
  session_.events().SetListener([this](const Json& event) {
    if (event["event"] == "step" || event["event"] == "status") return;
    events_.push_back(event);
  });
}

ScriptResult ScriptRunner::Run(const std::vector<Step>& steps) {
  for (const Step& step : steps) {
    try {
      RunStep(step);
    } catch (const Failure& failure) {
      throw Failure(failure.Status(),
                    places_.script + ":" + std::to_string(step.line) + ": " + failure.what(),
                    failure.Fields());
    }
  }
  return std::move(result_);
}

void ScriptRunner::RunStep(const Step& step) {
  std::ostream& out = session_.environment().out;
  if (print_) out << step.line << ": " << step.text << std::endl;
  Json entry{{"line", step.line}, {"step", step.text}};
  if (step.IsExpectation()) {
    Start();
    const std::string problem = Check(step);
    ++result_.expectations;
    if (!problem.empty()) ++result_.failed;
    if (!problem.empty() && print_) out << "    FAILED: " << Indented(problem, 4) << std::endl;
    entry["holds"] = problem.empty();
    if (!problem.empty()) entry["problem"] = problem;
  } else {
    events_.clear();
    session_.events().Write("step", {{"line", step.line}, {"text", step.text}});
    Do(step);
    if (print_) std::for_each(events_.begin(), events_.end(), [this](const Json& event) { Print(event); });
    entry["events"] = events_;
  }
  result_.steps.push_back(std::move(entry));
}

void ScriptRunner::Print(const Json& event) {
  const std::string kind = event["event"];
  std::string text;
  if (kind == "alert" || kind == "console" || kind == "notice") {
    text = kind + ": " + TextOf(event);
  } else if (kind == "question") {
    text = "question: " + TextOf(event) + "\n-> " + event["answer"].get<std::string>() + " (" +
           event["by"].get<std::string>() + ")";
  } else if (kind == "dialog" && event.contains("title")) {
    text = "dialog: " + event["title"].get<std::string>() + " (" + event["name"].get<std::string>() + ")";
    if (!TextOf(event).empty()) text += "\n" + TextOf(event);
  } else if (kind == "dialog answer") {
    text = "-> " + AnswerText(event);
  } else {
    Json rest = event;
    rest.erase("event");
    text = kind + ": " + rest.dump(-1, ' ', false, Json::error_handler_t::replace);
  }
  session_.environment().out << "    " << Indented(text, 6) << std::endl;
}

// ---- Steps

void ScriptRunner::Start() {
  if (started_) return;
  started_ = true;
  session_.user().SetQuiet(true);  // alerts and the console are printed with their step
  session_.user().SetConsole(&nowhere_);
  session_.TellPlugin();
  session_.UseAnswers(answers_);
  session_.Start(/*install=*/true);
}

// Prepared answers are for one step, and come before those of the command line.
void ScriptRunner::UseAnswers() {
  session_.UseAnswers(answers_);
  answers_.clear();
}

void ScriptRunner::Do(const Step& step) {
  const std::string first = step.arguments.empty() ? std::string() : step.arguments.front();
  switch (step.form->kind) {
    case StepKind::kSet:
      if (started_) throw Failure(ExitStatus::kUsage, "the session has started; use edit-settings");
      session_.options().settings.push_back(first);
      return;
    case StepKind::kAnswer:
      answers_ += WithWork(first) + "\n";
      return;
    case StepKind::kCopy:
      return Copy(step);
    default:
      break;
  }
  Start();
  UseAnswers();
  switch (step.form->kind) {
    case StepKind::kStart:
      return;
    case StepKind::kCommand:
      answer_.reset();
      return session_.entries().Command(CommandNumber(first));
    case StepKind::kCall:
      answer_ = session_.Call(WithWork(first)).value;
      return;
    case StepKind::kNotify:
      return session_.entries().Notify(NumberOf(first), Active(),
                                       step.arguments.size() > 2 ? step.arguments[2] : std::string(),
                                       step.arguments.size() > 1 ? NumberOf(step.arguments[1]) : 0);
    case StepKind::kEditSettings:
      return EditSettings(first);
    case StepKind::kEnd:
      return Finish();
    case StepKind::kOpen:
    case StepKind::kActivate:
    case StepKind::kSave:
    case StepKind::kClose:
      return DoWithFile(step);
    case StepKind::kSelect:
      return SelectOrFail(session_, ActiveDocument(), first, "select");
    default:
      break;
  }
  const Id document = ActiveDocument();
  Edit(step, document, SelectedElement(document));
}

void ScriptRunner::DoWithFile(const Step& step) {
  const std::string path = step.arguments.empty() ? std::string() : Path(step.arguments.front());
  host::Documents& documents = session_.roles().documents;
  if (step.form->kind == StepKind::kOpen) {
    session_.Open(path);
    return;
  }
  if (step.form->kind == StepKind::kActivate) {
    documents.Activate(FindOpen(path));
    return;
  }
  if (Active() == kNone) throw Failure(ExitStatus::kOperation, "no document or book is active");
  if (step.form->kind == StepKind::kSave) {
    session_.Save(Active(), path);
  } else {
    documents.Close(Active(), /*discard=*/true);
  }
}

void ScriptRunner::Copy(const Step& step) {
  const std::string from = Path(step.arguments[0]);
  const std::string to = Path(step.arguments[1]);
  embedded::adapter::PosixPlatform& platform = session_.platform();
  platform.MakeFolder(std::string(common::FolderOf(to)));
  if (platform.CopyFile(from, to)) return;
  throw Failure(ExitStatus::kFile, "cannot copy " + from + " to " + to + ": " + platform.LastError());
}

// What a user does to the file in a text editor: the line with the key says the new value, or there is a new
// line at the end. Only a file of the work folder is changed: whoever writes a script means no other.
void ScriptRunner::EditSettings(const std::string& setting) {
  config::SettingOverride parsed;
  std::string error;
  if (!config::ParseOverride(setting, &parsed, &error)) throw Failure(ExitStatus::kUsage, error);
  const std::string path = session_.plugin().settings.paths.local_settings;
  const std::string in_work = std::filesystem::relative(path, places_.work).string();
  if (in_work.empty() || in_work.starts_with("..")) {
    throw Failure(ExitStatus::kFile, path + ": the local settings file is not in the work folder");
  }
  embedded::adapter::PosixPlatform& platform = session_.platform();
  const std::optional<std::string> content = platform.ReadFile(path);
  if (!content) throw Failure(ExitStatus::kFile, path + ": " + platform.LastError());
  std::string text;
  bool replaced = false;
  for (const std::string_view line : common::SplitLines(*content)) {
    const bool same = !replaced && line.starts_with(parsed.first + "=");
    text.append(same ? std::string_view(setting) : line).append("\n");
    replaced = replaced || same;
  }
  if (!replaced) text += setting + "\n";
  if (!platform.ReplaceFile(path, text)) {
    throw Failure(ExitStatus::kFile, path + ": " + platform.LastError());
  }
}

void ScriptRunner::Edit(const Step& step, Id document, Id element) {
  host::Host& host = session_.roles();
  const std::string first = step.arguments.empty() ? std::string() : step.arguments.front();
  const auto value = [](Id id) { return static_cast<std::int32_t>(id); };
  bool done = false;
  switch (step.form->kind) {
    case StepKind::kSetAttribute:
    case StepKind::kRemoveAttribute:
      return SetAttribute(step, document, element);
    case StepKind::kInsert: {
      const Id definition = host.definitions.FindDefinition(document, first);
      const Id inserted = host.editing.InsertElement(document, element, kNone, definition);
      if (inserted == kNone) break;
      host.text.SelectElement(document, inserted);
      return session_.host().Tell(embedded::adapter::kElementInserted, document, "", value(inserted));
    }
    case StepKind::kRetag:
      done = host.editing.SetDefinition(document, element, host.definitions.FindDefinition(document, first));
      if (!done) break;
      return session_.host().Tell(embedded::adapter::kDefinitionChanged, document, "", value(element));
    case StepKind::kText:
      done = host.editing.SetText(document, element, first);
      if (!done) break;
      return session_.host().Tell(embedded::adapter::kTextChanged, document, "", value(element));
    case StepKind::kDelete: {
      const Id parent = host.elements.Parent(document, element);
      done = host.editing.DeleteElement(document, element);
      if (!done) break;
      if (parent != kNone) host.text.SelectElement(document, parent);
      return session_.host().Tell(embedded::adapter::kElementDeleted, document, "", value(parent));
    }
    default:
      break;
  }
  throw Failure(ExitStatus::kOperation, std::string(host.documents.LastError()));
}

void ScriptRunner::SetAttribute(const Step& step, Id document, Id element) {
  host::Host& host = session_.roles();
  const std::string& name = step.arguments.front();
  host::AttributeBuffer carried;
  host.definitions.ReadAttributes(document, element, &carried);
  std::vector<host::AttributeValue> attributes;
  const host::AttributeValue wanted{name, {step.arguments.begin() + 1, step.arguments.end()}};
  bool found = step.form->kind == StepKind::kRemoveAttribute;
  for (const host::AttributeView& view : carried.attributes) {
    if (view.name == name) {
      if (!found) attributes.push_back(wanted);
      found = true;
      continue;
    }
    const auto begin = carried.values.begin() + view.first_value;
    attributes.push_back({std::string(view.name), {begin, begin + view.value_count}});
  }
  if (!found) attributes.push_back(wanted);
  if (!host.editing.SetAttributes(document, element, attributes)) {
    throw Failure(ExitStatus::kOperation, std::string(host.documents.LastError()));
  }
  session_.host().Tell(embedded::adapter::kAttributeChanged, document, name,
                       static_cast<std::int32_t>(element));
}

// The user leaves: everything is closed, and what was not saved is told.
void ScriptRunner::Finish() {
  host::Documents& documents = session_.roles().documents;
  while (Active() != kNone) {
    const Id id = Active();
    if (documents.Switch(id, host::DocumentSwitch::kModified)) {
      session_.events().Write("notice", {{"text", std::string(documents.Path(id)) +
                                                      ": closed with changes that were not saved"}});
    }
    documents.Close(id, /*discard=*/true);
  }
}

// ---- Expectations

// Alerts and questions may come in a message box: a dialog with words, and one button or two.
bool ScriptRunner::IsOfKind(const Json& event, std::string_view kind) {
  const std::string actual = event["event"];
  if (actual == kind) return true;
  if (actual != "dialog" || TextOf(event).empty()) return false;
  const std::size_t buttons = event.contains("buttons") ? event["buttons"].size() : 0;
  return (kind == "alert" && buttons == 1) || (kind == "question" && buttons == 2);
}

std::string ScriptRunner::EventTexts(std::string_view kind) const {
  std::string texts;
  for (const Json& event : events_) {
    if (IsOfKind(event, kind)) texts += "\n  \"" + Indented(WordsOf(event), 3) + "\"";
  }
  return texts.empty() ? "none" : texts;
}

std::string ScriptRunner::MissingEvent(std::string_view kind, const std::string& text) const {
  for (const Json& event : events_) {
    if (IsOfKind(event, kind) && WordsOf(event).find(text) != std::string::npos) return {};
  }
  return "no " + std::string(kind) + " says that; there was: " + EventTexts(kind);
}

std::string ScriptRunner::UnexpectedEvent(std::string_view kind) const {
  const std::string texts = EventTexts(kind);
  return texts == "none" ? std::string() : "there was: " + texts;
}

std::string ScriptRunner::Check(const Step& step) {
  const std::string first = step.arguments.empty() ? std::string() : step.arguments.front();
  switch (step.form->kind) {
    case StepKind::kExpectAlert:
      return MissingEvent("alert", first);
    case StepKind::kExpectNoAlert:
      return UnexpectedEvent("alert");
    case StepKind::kExpectQuestion:
      return MissingEvent("question", first);
    case StepKind::kExpectNoQuestion:
      return UnexpectedEvent("question");
    case StepKind::kExpectDialog:
      return MissingEvent("dialog", first);
    case StepKind::kExpectConsole:
      return MissingEvent("console", first);
    case StepKind::kExpectResult: {
      const std::int32_t result = answer_.value_or(session_.last_result());
      return result == NumberOf(first) ? "" : "the last result is " + std::to_string(result);
    }
    case StepKind::kExpectActive: {
      const std::string active(session_.roles().documents.Path(Active()));
      if (!active.empty() && Session::SameFile(active, Path(first))) return {};
      return active.empty() ? "nothing with a name is active" : "active is " + active;
    }
    case StepKind::kExpectCount: {
      ParseOrFail(session_, step.arguments[1], "expect count");
      const std::size_t found =
          xpath::MatchAllFromText(session_.plugin().engine, ActiveDocument(), kNone, step.arguments[1], 0, 0)
              .size();
      return found == static_cast<std::size_t>(NumberOf(first)) ? "" : "it selects " + std::to_string(found);
    }
    default:
      return CheckFile(step);
  }
}

std::string ScriptRunner::CheckFile(const Step& step) {
  const std::string path = Path(step.arguments.front());
  const bool there = session_.platform().FileExists(path);
  if (step.form->kind == StepKind::kExpectNoFile) return there ? path + " is there" : "";
  if (!there) return path + " is not there";
  if (step.form->kind == StepKind::kExpectFile) return {};
  const std::optional<std::string> content = session_.platform().ReadFile(path);
  if (!content) return path + ": " + session_.platform().LastError();
  return content->find(step.arguments[1]) != std::string::npos ? "" : path + " does not hold that text";
}

// ---- Names

std::string ScriptRunner::Path(std::string_view written) const {
  if (written.starts_with(kWork) && (written.size() == kWork.size() || written[kWork.size()] == '/')) {
    return places_.work + std::string(written.substr(kWork.size()));
  }
  const std::string path = common::PlatformPath(written);
  return common::IsAbsolutePath(path) ? path : common::JoinPath(places_.folder, path);
}

// A line of an answers file may name a file, somewhere in it.
std::string ScriptRunner::WithWork(std::string line) const {
  for (std::size_t at = line.find(kWork); at != std::string::npos; at = line.find(kWork, at)) {
    line.replace(at, kWork.size(), places_.work);
    at += places_.work.size();
  }
  return line;
}

Id ScriptRunner::Active() {
  host::Documents& documents = session_.roles().documents;
  return documents.ActiveDocument() != kNone ? documents.ActiveDocument() : documents.ActiveBook();
}

Id ScriptRunner::ActiveDocument() {
  const Id document = session_.roles().documents.ActiveDocument();
  if (document == kNone) throw Failure(ExitStatus::kOperation, "no document is active");
  return document;
}

Id ScriptRunner::SelectedElement(Id document) {
  const Id element = session_.roles().text.SelectedElement(document);
  if (element == kNone) throw Failure(ExitStatus::kOperation, "no element is selected");
  return element;
}

// Opening a file that is open gives it back as it is.
Id ScriptRunner::FindOpen(const std::string& path) {
  host::OpenStatus status = host::OpenStatus::kOpened;
  host::OpenOptions options;
  options.visible = false;
  const Id id = session_.roles().documents.Open(path, options, &status);
  if (id != kNone && status == host::OpenStatus::kAlreadyOpen) return id;
  if (id != kNone) session_.roles().documents.Close(id, true);
  throw Failure(ExitStatus::kOperation, path + ": this file is not open");
}

}  // namespace qelm::cli
