#include "config/rewrite_settings.h"

#include <algorithm>

#include "common/text.h"
#include "common/utf8.h"
#include "config/read_settings.h"
#include "config/settings_table.h"

namespace qelm::config {
namespace {

constexpr std::string_view kKey = kMainSettingsKey;

std::string Line(std::string_view path) { return std::string(kKey).append("=").append(path); }

// The line that counted, as a comment. One whose key is a longer word keeps that word.
std::string Commented(std::string_view line) {
  const std::string_view behind = line.substr(kKey.size());
  const std::size_t at = behind.find('=');
  const std::string_view between = behind.substr(0, at);
  if (!common::Trim(between).empty()) return ";" + std::string(line);
  return ";" + Line(at == behind.npos ? std::string_view() : behind.substr(at + 1));
}

// Where the new lines go, as offsets in the text: in place of [begin, end), which is a line without its end.
struct Place {
  std::size_t begin = 0;
  std::size_t end = 0;
  bool replaces = false;
};

Place FindPlace(std::string_view text) {
  Place place{text.size(), text.size()};
  for (const std::string_view line : common::SplitLines(text)) {
    const auto begin = static_cast<std::size_t>(line.data() - text.data());
    if (line.starts_with(kKey)) return {begin, begin + line.size(), true};
    const bool about = line.starts_with(';') && line.substr(1).starts_with(kKey);
    if (about) place.begin = place.end = begin + line.size();
  }
  return place;
}

// The line end at or after an offset, else the first one of the text.
std::string_view LineEnd(std::string_view text, std::size_t offset) {
  std::size_t at = text.find_first_of("\r\n", offset);
  if (at == text.npos) at = text.find_first_of("\r\n");
  if (at == text.npos) return "\n";
  return text.substr(at, text.substr(at).starts_with("\r\n") ? 2 : 1);
}

std::string Rewritten(std::string_view text, std::string_view previous, std::string_view path) {
  const Place place = FindPlace(text);
  const std::string_view end = LineEnd(text, place.begin);
  const std::string_view before = text.substr(0, place.begin);
  std::string lines = place.replaces ? Commented(text.substr(place.begin, place.end - place.begin)) : "";
  const bool at_line_start = before.empty() || before.ends_with('\n') || before.ends_with('\r');
  if (place.replaces || !at_line_start) lines.append(end);
  lines.append(";").append(Line(previous)).append(end).append(Line(path));
  if (place.begin == text.size()) lines.append(end);
  return std::string(before).append(lines).append(text.substr(place.end));
}

}  // namespace

std::optional<std::string> WithMainSettingsPath(std::string_view bytes, std::string_view previous,
                                                const std::string& path) {
  const std::string text = common::DecodeTextFile(bytes);
  if (previous.find_first_of("\r\n") != previous.npos) return std::nullopt;
  if (common::EncodeTextFile(text, bytes) != std::string(bytes)) return std::nullopt;
  std::optional<std::string> changed = common::EncodeTextFile(Rewritten(text, previous, path), bytes);
  if (!changed) return std::nullopt;
  LocalSettings read;
  ReadSettingsText(common::DecodeTextFile(*changed), &read);
  if (read.main_settings_path != path) return std::nullopt;
  return changed;
}

}  // namespace qelm::config
