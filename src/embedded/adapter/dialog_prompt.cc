#include "embedded/adapter/dialog_prompt.h"

#include <algorithm>
#include <charconv>
#include <istream>
#include <ostream>

#include "embedded/adapter/answer_pattern.h"
#include "embedded/adapter/dialog_fields.h"

namespace qelm::embedded::adapter {
namespace {

constexpr std::string_view kHelp =
    "A number switches a box or changes a field (\"4 new text\"; a list takes the number of a line), a "
    "letter\n"
    "presses a button, Enter the first one named.";
// More lines than that are shown only when the list is asked for.
constexpr std::size_t kLinesShown = 20;

std::vector<std::int32_t> FieldsOf(const DialogState& dialog) {
  std::vector<std::int32_t> fields;
  for (std::size_t item = 0; item < dialog.items().size(); ++item) {
    const ItemState& state = dialog.items()[item];
    if (state.shown && state.IsField()) fields.push_back(static_cast<std::int32_t>(item));
  }
  return fields;
}

char Lower(char letter) {
  return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

bool StartsWith(std::string_view text, std::string_view start) {
  return text.size() >= start.size() && std::equal(start.begin(), start.end(), text.begin(),
                                                   [](char a, char b) { return Lower(a) == Lower(b); });
}

// The letter of each button: the first one of its label that no button before it has; 0 where none is left.
// Only ASCII letters: what is typed at a terminal must not depend on how it was set up.
std::vector<char> LettersOf(const DialogState& dialog, const std::vector<std::int32_t>& buttons) {
  std::vector<char> letters;
  for (const std::int32_t button : buttons) {
    char letter = 0;
    for (const char candidate : dialog.items()[static_cast<std::size_t>(button)].label) {
      const char lower = Lower(candidate);
      if (lower < 'a' || lower > 'z' || std::find(letters.begin(), letters.end(), lower) != letters.end())
        continue;
      letter = lower;
      break;
    }
    letters.push_back(letter);
  }
  return letters;
}

// The number at the start of the words, with a blank or nothing behind it; 0 when there is none. `words` is
// moved behind it.
std::size_t TakeNumber(std::string_view* words) {
  std::size_t number = 0;
  const char* end = words->data() + words->size();
  const auto read = std::from_chars(words->data(), end, number);
  if (read.ec != std::errc() || (read.ptr != end && *read.ptr != ' ')) return 0;
  *words = Trimmed({read.ptr, static_cast<std::size_t>(end - read.ptr)});
  return number;
}

// A line of a list by its number; a line that is a number itself is still found by its text.
std::string AsLine(const ItemState& field, std::string value) {
  std::string_view rest = value;
  if (std::find(field.lines.begin(), field.lines.end(), value) == field.lines.end() &&
      TakeNumber(&rest) > 0 && rest.empty()) {
    return "#" + value;
  }
  return value;
}

void ShowLines(const ItemState& field, std::ostream& out) {
  for (std::size_t line = 0; line < field.lines.size(); ++line) {
    const bool selected = static_cast<std::int32_t>(line) == field.value;
    out << (selected ? "    * " : "      ") << line + 1 << "  " << field.lines[line] << '\n';
  }
}

}  // namespace

std::optional<std::int32_t> DialogPrompt::Use(DialogState& dialog) {
  Show(dialog);
  std::string line;
  while (ReadLine("> ", &line)) {
    if (const std::optional<std::int32_t> item = UseWords(dialog, Trimmed(line))) return item;
    if (!in_) break;
  }
  out_ << '\n';
  return std::nullopt;
}

void DialogPrompt::Show(const DialogState& dialog) {
  if (!dialog.title.empty()) out_ << dialog.title << '\n';
  std::size_t number = 0;
  std::size_t blank = 0;
  for (const ItemState& item : dialog.items()) {
    if (!item.shown || item.kind() == ItemKind::kButton) continue;
    if (item.IsField()) {
      ShowField(dialog, ++number, item);
    } else if (item.IsBlank()) {
      ++blank;
      continue;
    } else {
      for (; blank > 0; --blank) out_ << '\n';
      out_ << "  " << item.label << '\n';
    }
    blank = 0;
  }
  ShowButtons(dialog);
}

void DialogPrompt::ShowField(const DialogState& dialog, std::size_t number, const ItemState& field) {
  out_ << (number < 10 ? "  " : " ") << number << ' ';
  if (field.kind() == ItemKind::kCheckBox) {
    out_ << (field.value != 0 ? "[x] " : "[ ] ") << field.label << '\n';
  } else if (field.kind() == ItemKind::kRadio) {
    out_ << (field.value != 0 ? "(*) " : "( ) ") << field.label << '\n';
  } else {
    const nlohmann::ordered_json value = dialog.ValueForRecord(field);
    out_ << field.label << (field.label.empty() ? "" : ": ")
         << (value.is_null() ? "" : value.get<std::string>());
    if (field.IsList()) out_ << " (" << field.lines.size() << " lines)";
    out_ << '\n';
    if (field.lines.size() <= kLinesShown) ShowLines(field, out_);
  }
}

void DialogPrompt::ShowButtons(const DialogState& dialog) {
  const std::vector<std::int32_t> buttons = dialog.Buttons();
  const std::vector<char> letters = LettersOf(dialog, buttons);
  for (std::size_t index = 0; index < buttons.size(); ++index) {
    const ItemState& button = dialog.items()[static_cast<std::size_t>(buttons[index])];
    if (letters[index] != 0) out_ << letters[index] << " = ";
    out_ << button.label << (button.resource->role == ButtonRole::kDefault ? " (Enter), " : ", ");
  }
  out_ << "? = help\n";
}

bool DialogPrompt::ReadLine(std::string_view prompt, std::string* line) {
  out_ << prompt << std::flush;
  return static_cast<bool>(std::getline(in_, *line));
}

bool DialogPrompt::UseField(DialogState& dialog, std::int32_t item, std::string value) {
  const ItemState& field = *dialog.Item(item);
  const bool is_switch = field.kind() == ItemKind::kCheckBox || field.kind() == ItemKind::kRadio;
  if (value.empty() && is_switch) {
    value = field.kind() == ItemKind::kRadio || field.value == 0 ? "on" : "off";
  } else if (value.empty()) {
    if (field.lines.size() > kLinesShown) ShowLines(field, out_);
    if (!ReadLine(field.IsList() ? "line: " : "text: ", &value)) return false;
    value = Trimmed(value);
  }
  if (field.IsList()) value = AsLine(field, value);
  std::string error;
  if (SetField(dialog, item, value, &error)) return true;
  out_ << (field.label.empty() ? "the list" : field.label) << ' ' << error << '\n';
  return false;
}

// Nothing when the words mean no item, or one that cannot be used so; that is said.
std::optional<std::int32_t> DialogPrompt::UseWords(DialogState& dialog, std::string_view words) {
  if (words.empty()) return dialog.DefaultButton();
  const std::vector<std::int32_t> fields = FieldsOf(dialog);
  if (const std::size_t number = TakeNumber(&words); number > 0) {
    if (number <= fields.size()) {
      const std::int32_t item = fields[number - 1];
      if (UseField(dialog, item, std::string(words))) return item;
    } else {
      out_ << "there is no " << number << " here; ? = help\n";
    }
    return std::nullopt;
  }
  const std::vector<std::int32_t> buttons = dialog.Buttons();
  const std::vector<char> letters = LettersOf(dialog, buttons);
  for (std::size_t index = 0; index < buttons.size(); ++index) {
    if (words.size() == 1 && Lower(words[0]) == letters[index]) return buttons[index];
  }
  for (const std::int32_t button : buttons) {
    if (words.size() > 1 && StartsWith(dialog.Item(button)->label, words)) return button;
  }
  out_ << kHelp << '\n';
  return std::nullopt;
}

}  // namespace qelm::embedded::adapter
