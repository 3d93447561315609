#include "filtering/batch_names.h"

#include <algorithm>
#include <array>

#include "common/paths.h"
#include "common/text.h"
#include "common/utf8.h"

namespace qelm::filtering {
namespace {

constexpr std::string_view kUnsafe = "/\\:*?\"<>|";
// File systems end names at 255 bytes; an extension and what a copy needs have to fit behind it.
constexpr std::size_t kNameBytes = 200;
constexpr std::size_t kYearDigits = 4;

std::string Digits(std::int32_t number, std::size_t width) {
  std::string digits = std::to_string(number);
  if (digits.size() < width) digits.insert(0, width - digits.size(), '0');
  return digits;
}

using Placeholders = std::array<std::pair<std::string_view, std::string>, 13>;

Placeholders ValuesOf(const NameValues& values) {
  const host::LocalTime& time = values.time;
  return {{
      {"<scheme_name>", SafeName(values.scheme_name)},
      {"<scheme_num>", std::to_string(values.scheme_number)},
      {"<folder_name>", SafeName(values.folder_name)},
      {"<book_name>", SafeName(values.source_name)},
      {"<src_file_name>", SafeName(values.source_name)},
      {"<year>", Digits(time.year, kYearDigits)},
      {"<month>", Digits(time.month, 2)},
      {"<day>", Digits(time.day, 2)},
      {"<hour>", Digits(time.hour, 2)},
      {"<min>", Digits(time.minute, 2)},
      {"<minute>", Digits(time.minute, 2)},
      {"<sec>", Digits(time.second, 2)},
      {"<second>", Digits(time.second, 2)},
  }};
}

// In one pass, so that a scheme whose name looks like a placeholder is not taken for one.
std::string Filled(std::string_view pattern, const NameValues& values) {
  const Placeholders placeholders = ValuesOf(values);
  std::string text;
  for (std::size_t at = 0; at < pattern.size();) {
    const auto* found = std::find_if(placeholders.begin(), placeholders.end(), [&](const auto& placeholder) {
      return pattern.substr(at).starts_with(placeholder.first);
    });
    if (found == placeholders.end()) {
      text += pattern[at++];
    } else {
      text += found->second;
      at += found->first.size();
    }
  }
  return text;
}

}  // namespace

std::string NameWithoutExtension(std::string_view path) {
  const std::string_view name = common::FileName(path);
  const std::size_t dot = name.rfind('.');
  return std::string(dot == std::string_view::npos || dot == 0 ? name : name.substr(0, dot));
}

std::string SafeName(std::string_view text) {
  std::string name;
  for (const char c : text) {
    const bool unsafe = static_cast<unsigned char>(c) < ' ' || kUnsafe.find(c) != std::string_view::npos;
    name += unsafe ? '_' : c;
  }
  if (name.size() > kNameBytes) {
    std::size_t end = kNameBytes;
    while (end > 0 && (static_cast<unsigned char>(name[end]) & 0xC0U) == 0x80U) --end;
    name.resize(end);
  }
  // One system drops blanks and dots at the end, so that two names would be one.
  while (!name.empty() && (name.back() == ' ' || name.back() == '.')) name.pop_back();
  return name.empty() ? "_" : name;
}

std::string PathByPattern(std::string_view pattern, const NameValues& values) {
  std::string path = common::PlatformPath(Filled(pattern, values));
  std::replace_if(
      path.begin(), path.end(),
      [](char c) { return c == '<' || c == '>' || static_cast<unsigned char>(c) < ' '; }, '_');
  return path;
}

std::string_view UnknownPlaceholder(std::string_view pattern) {
  const Placeholders known = ValuesOf({});
  for (std::size_t at = 0; (at = pattern.find('<', at)) != std::string_view::npos; ++at) {
    const std::size_t end = pattern.find('>', at);
    if (end == std::string_view::npos) break;
    const std::string_view word = pattern.substr(at, end + 1 - at);
    if (std::none_of(known.begin(), known.end(), [&](const auto& one) { return one.first == word; }))
      return word;
  }
  return {};
}

std::string FileNameByPattern(std::string_view pattern, const NameValues& values,
                              std::string_view extension) {
  std::string name = Filled(common::Trim(pattern), values);
  if (name.empty()) name = values.source_name;
  if (common::AsciiLower(name).ends_with(extension)) name.resize(name.size() - extension.size());
  return SafeName(name) + std::string(extension);
}

std::string FixedFolder(std::string_view pattern) {
  const std::string fixed = common::PlatformPath(pattern.substr(0, pattern.find('<')));
  return std::string(common::FolderOf(fixed));
}

std::string WithoutStrings(std::string_view text, const std::vector<std::string>& strings) {
  std::string rest(text);
  for (const std::string& string : strings) rest = common::ReplaceAll(rest, string, "");
  return std::string(common::Trim(rest));
}

}  // namespace qelm::filtering
