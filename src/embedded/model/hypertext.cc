#include "embedded/model/hypertext.h"

#include <algorithm>

#include "embedded/model/book.h"

namespace qelm::embedded::model {
namespace {

enum class Form : unsigned char { kPlace, kName, kPage, kObject };
struct Command {
  std::string_view word;
  Form form;
};
constexpr Command kCommands[] = {
    {"newlink", Form::kPlace},
    {"gotolink", Form::kName},
    {"gotolinkfitwin", Form::kName},
    {"openlink", Form::kName},
    {"openlinkfitwin", Form::kName},
    {"gotonew", Form::kPage},
    {"opennew", Form::kPage},
    {"gotopage", Form::kPage},
    {"openpage", Form::kPage},
    {"gotoObjectId", Form::kObject},
    {"gotoObjectIdFitWin", Form::kObject},
    {"openObjectId", Form::kObject},
    {"openObjectIdFitWin", Form::kObject},
};

std::string_view Trimmed(std::string_view text) {
  while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
  while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
  return text;
}

std::string_view TakeWord(std::string_view* text) {
  const std::size_t end = std::min(text->find(' '), text->size());
  const std::string_view word = text->substr(0, end);
  *text = Trimmed(text->substr(end));
  return word;
}

// What names a scheme holds no blank, so that a command with an address among its words is none.
bool IsAddress(std::string_view text) {
  const std::size_t scheme_end = text.find("://");
  const bool has_scheme = scheme_end != std::string_view::npos && text.find(' ') > scheme_end;
  return text.starts_with("mailto:") || has_scheme;
}

// Where the name of a file ends that is written with the codes of device-independent paths: at the first
// colon behind them. A volume has a colon of its own before the next code.
std::size_t IndependentFileEnd(std::string_view rest) {
  std::size_t codes_end = 0;
  for (std::size_t at = 0; at + 2 < rest.size(); ++at) {
    const bool is_code =
        rest[at] == '<' && rest[at + 2] == '>' && std::string_view("rvhcu").find(rest[at + 1]) < 5;
    if (is_code) codes_end = at + 3;
  }
  return rest.find(':', codes_end);
}

// Whether a path ends in an extension of letters and digits (".fm").
bool EndsInExtension(std::string_view path) {
  const std::size_t dot = path.find_last_of("./\\");
  if (dot == std::string_view::npos || path[dot] != '.' || dot == 0 || dot + 1 == path.size()) return false;
  return std::all_of(path.begin() + static_cast<std::ptrdiff_t>(dot) + 1, path.end(), [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
  });
}

// Where the file in front of a name ends: at the first colon behind its extension, as names may have colons
// too; of a file without one at the last colon. That of a drive is none.
std::size_t FileEnd(std::string_view rest) {
  if (rest.starts_with('<')) return IndependentFileEnd(rest);
  const bool has_drive = rest.size() > 2 && rest[1] == ':' && (rest[2] == '\\' || rest[2] == '/');
  std::size_t last = std::string_view::npos;
  for (std::size_t colon = rest.find(':', has_drive ? 2 : 0); colon != std::string_view::npos;
       colon = rest.find(':', colon + 1)) {
    last = colon;
    if (EndsInExtension(rest.substr(0, colon))) break;
  }
  return last;
}

// `message URL ADDRESS` and `message openfile FILE`.
Hypertext ReadMessage(std::string_view rest) {
  Hypertext result;
  const std::string_view word = TakeWord(&rest);
  if (word == "openfile" && !rest.empty()) {
    result.kind = Hypertext::Kind::kLink;
    result.command = word;
    result.file = rest;
  } else if (word == "URL" || word == "url") {
    result.kind = Hypertext::Kind::kAddress;
    result.command = "URL";
    result.target = rest;
  }
  return result;
}

}  // namespace

Hypertext ReadHypertext(std::string_view text) {
  std::string_view rest = Trimmed(text);
  Hypertext result;
  if (IsAddress(rest) && !rest.starts_with("message ")) {
    result.kind = Hypertext::Kind::kAddress;
    result.command = "URL";
    result.target = rest;
    return result;
  }
  const std::string_view word = TakeWord(&rest);
  if (word == "message") return ReadMessage(rest);
  for (const Command& command : kCommands) {
    if (command.word != word) continue;
    if (rest.empty()) return result;
    result.command = word;
    result.kind = command.form == Form::kPlace ? Hypertext::Kind::kPlace : Hypertext::Kind::kLink;
    result.target = rest;
    if (command.form == Form::kPlace) return result;
    const std::size_t end = FileEnd(rest);
    const bool names_file = end != std::string_view::npos;
    if (names_file) {
      result.file = rest.substr(0, end);
      result.target = Trimmed(rest.substr(end + 1));
    } else if (word == "gotonew" || word == "opennew") {
      result.file = rest;
    }
    if (command.form == Form::kPage) result.target = {};
    return result;
  }
  return result;
}

std::string WithFile(std::string_view text, std::string_view path) {
  const Hypertext hypertext = ReadHypertext(text);
  if (hypertext.kind != Hypertext::Kind::kLink) return {};
  const bool device_independent = hypertext.file.starts_with('<');
  const std::string file = device_independent ? DeviceIndependentPath(path) : std::string(path);
  std::string result(text);
  if (!hypertext.file.empty()) {
    return result.replace(static_cast<std::size_t>(hypertext.file.data() - text.data()),
                          hypertext.file.size(), file);
  }
  // The place of the name, which a page's number has too.
  const std::size_t word_end =
      static_cast<std::size_t>(hypertext.command.data() - text.data()) + hypertext.command.size();
  const std::size_t name = std::min(text.find_first_not_of(' ', word_end), text.size());
  return result.insert(name, file + ":");
}

bool IsPageName(std::string_view target) { return target == "firstpage" || target == "lastpage"; }

}  // namespace qelm::embedded::model
