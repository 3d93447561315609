#include "embedded/adapter/resource_dialogs.h"

#include <filesystem>
#include <istream>
#include <ostream>

#include "embedded/adapter/dialog_fields.h"
#include "embedded/adapter/dialog_prompt.h"
#include "host/interface/entry_points.h"

namespace qelm::embedded::adapter {
namespace {

using nlohmann::ordered_json;

// A resource is a page of text; what is longer is something else.
constexpr std::size_t kLargestResource = std::size_t{1} << 20;

bool IsPlainName(std::string_view name) {
  return !name.empty() && name.find_first_of("/\\") == std::string_view::npos && name.front() != '.';
}

// A message box with one button: it is shown whoever closes it.
bool IsAlert(const DialogState& dialog) {
  return dialog.resource().is_message && dialog.Buttons().size() == 1;
}

}  // namespace

// A resource is read once a session; one that is damaged is named once, not with every alert that needs it.
const DialogResource* ResourceDialogs::Resource(const std::string& name) {
  const auto known = resources_.find(name);
  if (known != resources_.end()) return known->second.get();
  std::unique_ptr<DialogResource>& slot = resources_[name];
  if (folder_.empty() || !IsPlainName(name)) return nullptr;
  const std::string path = folder_ + "/dialogs/" + name + ".json";
  const std::optional<std::string> content = platform_.ReadFile(path);
  std::string error;
  if (!content) {
    error = "cannot be read";
  } else if (content->size() > kLargestResource) {
    error = "is too long for a dialog";
  } else if (std::optional<DialogResource> resource = ParseDialogResource(name, *content, &error)) {
    slot = std::make_unique<DialogResource>(std::move(*resource));
    return slot.get();
  }
  Refuse(name, path + ": " + error);
  return nullptr;
}

void ResourceDialogs::Refuse(const std::string& name, const std::string& problem) {
  events_.Write("dialog", {{"name", name}, {"opened", false}, {"problem", problem}});
  user_.Note("The dialog " + name + " cannot be shown. " + problem);
}

host::Id ResourceDialogs::OpenDialog(std::string_view name) {
  const DialogResource* resource = Resource(std::string(name));
  if (resource == nullptr) return host::kNone;
  open_[++last_id_] = std::make_shared<DialogState>(*resource);
  return last_id_;
}

void ResourceDialogs::CloseDialog(host::Id dialog) { open_.erase(dialog); }

DialogState* ResourceDialogs::Find(host::Id dialog) {
  const auto found = open_.find(dialog);
  return found == open_.end() ? nullptr : found->second.get();
}

ItemState* ResourceDialogs::FindItem(host::Id dialog, std::int32_t item) {
  DialogState* state = Find(dialog);
  return state == nullptr ? nullptr : state->Item(item);
}

std::int32_t ResourceDialogs::ItemCount(host::Id dialog) {
  const DialogState* state = Find(dialog);
  return state == nullptr ? 0 : static_cast<std::int32_t>(state->items().size());
}

void ResourceDialogs::SetLabel(host::Id dialog, std::int32_t item, std::string_view text) {
  DialogState* state = Find(dialog);
  if (state != nullptr && item == host::kDialogTitle) state->title = text;
  if (ItemState* found = FindItem(dialog, item)) found->label = text;
}

std::string ResourceDialogs::LabelOf(host::Id dialog, std::int32_t item) {
  const DialogState* state = Find(dialog);
  if (state != nullptr && item == host::kDialogTitle) return state->title;
  const ItemState* found = FindItem(dialog, item);
  return found == nullptr ? std::string() : found->label;
}

void ResourceDialogs::SetText(host::Id dialog, std::int32_t item, std::string_view text) {
  if (ItemState* found = FindItem(dialog, item)) found->text = text;
}

std::string ResourceDialogs::TextOf(host::Id dialog, std::int32_t item) {
  const ItemState* found = FindItem(dialog, item);
  return found == nullptr ? std::string() : found->text;
}

void ResourceDialogs::SetValue(host::Id dialog, std::int32_t item, std::int32_t value) {
  if (DialogState* state = Find(dialog)) state->SetValue(item, value);
}

std::int32_t ResourceDialogs::ValueOf(host::Id dialog, std::int32_t item) {
  const ItemState* found = FindItem(dialog, item);
  return found == nullptr ? -1 : found->value;
}

void ResourceDialogs::SetList(host::Id dialog, std::int32_t item, const std::vector<std::string>& lines) {
  ItemState* found = FindItem(dialog, item);
  if (found == nullptr) return;
  found->lines = lines;
  if (found->value >= static_cast<std::int32_t>(lines.size())) found->value = -1;
}

void ResourceDialogs::ShowItem(host::Id dialog, std::int32_t item, bool shown) {
  if (ItemState* found = FindItem(dialog, item)) found->shown = shown;
}

std::int32_t ResourceDialogs::SendEvent(const DialogState& dialog, std::int32_t item) {
  return entry_ ? entry_(dialog.number, item, 0) : 0;
}

std::int32_t ResourceDialogs::RunDialog(host::Id dialog, std::int32_t number) {
  const auto found = open_.find(dialog);
  if (found == open_.end() || found->second->DefaultButton() < 0) return -1;
  // An event may close the dialog that it comes from.
  const std::shared_ptr<DialogState> state = found->second;
  state->number = number;
  events_.Write("dialog", state->Describe());
  Showing showing{*state};
  for (;;) {
    const Press press = NextPress(showing);
    const bool stays_open = SendEvent(*state, press.button) == host::kDialogStaysOpen;
    RecordAnswer(showing, press, stays_open);
    // A dialog that refuses even to be closed unanswered would be asked for ever.
    if (!stays_open || press.by == "default" || press.by == "shown") return press.button;
  }
}

void ResourceDialogs::RecordAnswer(Showing& showing, const Press& press, bool stays_open) {
  const ItemState* button = showing.state.Item(press.button);
  ordered_json event{{"name", showing.state.resource().name},
                     {"set", std::exchange(showing.set, ordered_json::object())},
                     {"press", button->label},
                     {"by", press.by}};
  if (stays_open) event["stays_open"] = true;
  events_.Write("dialog answer", std::move(event));
}

void ResourceDialogs::Remember(Showing& showing, std::int32_t item) {
  const ItemState& state = *showing.state.Item(item);
  showing.set[state.resource->name] = showing.state.ValueForRecord(state);
}

const DialogAnswer* ResourceDialogs::NextLine(Showing& showing) {
  const DialogState& state = showing.state;
  for (DialogAnswers* answers : user_.PreparedForDialogs()) {
    const DialogAnswer* line =
        answers->Next(state.resource().name, state.title, state.Words(), &showing.used_lines);
    if (line != nullptr) return line;
  }
  return nullptr;
}

ResourceDialogs::Press ResourceDialogs::NextPress(Showing& showing) {
  DialogState& state = showing.state;
  if (const DialogAnswer* line = NextLine(showing)) return PressByLine(showing, *line);
  if (state.resource().is_message && !showing.for_all_used) return PressForMessage(showing);
  if (user_.AnswerForAll() && !showing.for_all_used) {
    showing.for_all_used = true;
    return {*user_.AnswerForAll() ? state.DefaultButton() : state.CancelButton(), "policy"};
  }
  if (user_.Interactive() && !user_.AnswerForAll()) return PressByPerson(showing);
  return PressNothing(showing);
}

ResourceDialogs::Press ResourceDialogs::PressByLine(Showing& showing, const DialogAnswer& line) {
  // The plug-in may show and hide items, or open another dialog, with each event, and the lines of the
  // answers may be added to meanwhile.
  const DialogAnswer answer = line;
  std::string error;
  for (const auto& [name, value] : answer.values) {
    const std::int32_t item = FindField(showing.state, name);
    std::string why = "there is no such item, or it is not shown";
    if (item < 0 || !SetField(showing.state, item, value, &why)) {
      error.append("\"").append(name).append("\": ").append(why);
      break;
    }
    Remember(showing, item);
    SendEvent(showing.state, item);
  }
  const std::int32_t button = FindButton(showing.state, answer.button);
  if (error.empty() && button < 0) error = "there is no button \"" + answer.button + "\"";
  if (error.empty()) {
    if (IsAlert(showing.state)) user_.Note(showing.state.Words());
    return {button, "file"};
  }
  const std::string place =
      "prepared answers, line " + std::to_string(answer.line) + ": " + showing.state.title;
  events_.Write("notice", {{"text", place + ": " + error}});
  user_.Messages() << place << ": " << error << std::endl;
  return PressNothing(showing);
}

// An alert needs no answer, and a question has its own rules.
ResourceDialogs::Press ResourceDialogs::PressForMessage(Showing& showing) {
  showing.for_all_used = true;
  DialogState& state = showing.state;
  const std::string words = state.Words();
  const bool is_question = !IsAlert(state);
  const auto is_field = [](const ItemState& item) { return item.shown && item.IsField(); };
  const bool has_field = std::any_of(state.items().begin(), state.items().end(), is_field);
  if (is_question ? user_.WouldAskPerson(words) : has_field && user_.Interactive())
    return PressByPerson(showing);
  if (!is_question) return PressNothing(showing);
  return {user_.Question(words) == 0 ? state.DefaultButton() : state.CancelButton(), "question"};
}

ResourceDialogs::Press ResourceDialogs::PressByPerson(Showing& showing) {
  DialogPrompt prompt(user_.In(), user_.Messages());
  while (const std::optional<std::int32_t> item = prompt.Use(showing.state)) {
    if (showing.state.Item(*item)->kind() == ItemKind::kButton) return {*item, "person"};
    Remember(showing, *item);
    SendEvent(showing.state, *item);
  }
  return PressNothing(showing);
}

ResourceDialogs::Press ResourceDialogs::PressNothing(Showing& showing) {
  if (IsAlert(showing.state)) {
    user_.Note(showing.state.Words());
    return {showing.state.DefaultButton(), "shown"};
  }
  const std::int32_t button = showing.state.CancelButton();
  user_.Messages() << "Nobody was there to answer the dialog \"" << showing.state.title
                   << "\"; it was closed with \"" << showing.state.Item(button)->label
                   << "\" (see --yes, --no and --answers).\n"
                   << showing.state.Words() << std::endl;
  return {button, "default"};
}

std::string ResourceDialogs::ChooseFile(std::string_view title, const std::string& start) {
  return Choose("file", title, start);
}

std::string ResourceDialogs::ChooseFolder(std::string_view title, const std::string& start) {
  return Choose("folder", title, start);
}

std::string ResourceDialogs::Choose(std::string_view what, std::string_view title, const std::string& start) {
  std::string_view by = "default";
  std::string path = ChosenPath(what, title, start, &by);
  if (!path.empty()) {
    std::error_code ignored;
    path = std::filesystem::absolute(path, ignored).lexically_normal().string();
    if (what == "file" ? !platform_.FileExists(path) : !platform_.FolderExists(path)) {
      user_.Note(path + ": there is no such " + std::string(what) + ", so none was chosen.");
      path.clear();
    }
  }
  ordered_json event{{"title", title}, {"start", start}, {"chosen", nullptr}, {"by", by}};
  if (!path.empty()) event["chosen"] = path;
  events_.Write(what, std::move(event));
  return path;
}

// What was typed or prepared, as it stands; empty for none.
std::string ResourceDialogs::ChosenPath(std::string_view what, std::string_view title,
                                        const std::string& start, std::string_view* by) {
  for (DialogAnswers* answers : user_.PreparedForDialogs()) {
    if (std::optional<std::string> path = answers->NextFile(title)) {
      *by = "file";
      return *path;
    }
  }
  std::ostream& messages = user_.Messages();
  if (!user_.Interactive() || user_.AnswerForAll()) {
    messages << "Nobody was there to choose a " << what << " (\"" << title
             << "\"); none was chosen (see --answers)." << std::endl;
    return {};
  }
  messages << title << '\n';
  if (!start.empty()) messages << "  beginning at " << start << '\n';
  messages << what << " (nothing for none): " << std::flush;
  std::string line;
  if (!std::getline(user_.In(), line)) return {};
  *by = "person";
  return std::string(Trimmed(line));
}

}  // namespace qelm::embedded::adapter
