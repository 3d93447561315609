#include "filtering/copy_record.h"

#include <algorithm>
#include <filesystem>
#include <iterator>

#include "common/paths.h"
#include "common/utf8.h"
#include "filtering/plain_path.h"
#include "host/interface/copy_names.h"

namespace qelm::filtering {
namespace {

constexpr std::string_view kSourceWord = "source ";
constexpr std::string_view kFileWord = "file ";
constexpr char kEnding[] = ".txt";  // whatever the copied file's is: ".new" would be that of a file beside
constexpr std::size_t kLongestName = 240;  // in bytes: what the record's name has room for
constexpr std::size_t kCutTo = 50;         // characters, of a longer one

std::string Escaped(std::string_view name) {
  std::string text;
  for (const char c : name) {
    if (c == '%') {
      text += "%25";
    } else if (c == '\n') {
      text += "%0A";
    } else {
      text += c;
    }
  }
  return text;
}

std::string Unescaped(std::string_view text) {
  std::string name;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const std::string_view code = text.substr(i, 3);
    const bool escape = code == "%25" || code == "%0A";
    name += !escape ? text[i] : code == "%25" ? '%' : '\n';
    i += escape ? 2 : 0;
  }
  return name;
}

}  // namespace

CopyRecord::CopyRecord(host::Platform& platform, const std::string& folder, std::string_view name)
    : platform_(platform), folder_(platform.ResolvedPath(folder)), target_(common::JoinPath(folder_, name)) {
  // Where two long names have one record, the second copy is refused.
  const std::string_view known = name.size() <= kLongestName ? name : common::FirstCharacters(name, kCutTo);
  path_ = common::JoinPath(folder_, std::string(host::kCopyRecordName) + std::string(known) + kEnding);
}

std::string CopyRecord::Shortened(const std::string& file) const {
  const std::string relative = RelativePath(platform_, folder_, file);
  return Escaped(relative.empty() ? file : relative);
}

std::string CopyRecord::Full(std::string_view shortened) const {
  const std::string name = Unescaped(shortened);
  const std::string path = common::IsAbsolutePath(name) ? name : common::JoinPath(folder_, name);
  return std::filesystem::path(path).lexically_normal().string();
}

void CopyRecord::Read() {
  source_.clear();
  files_.clear();
  const std::optional<std::string> text =
      platform_.FileExists(path_) ? platform_.ReadFile(path_) : std::nullopt;
  std::string_view left = text ? std::string_view(*text) : std::string_view();
  while (const std::size_t end = left.find('\n') + 1) {
    const std::string_view line = left.substr(0, end - 1);
    if (line.starts_with(kSourceWord)) source_ = Full(line.substr(kSourceWord.size()));
    if (line.starts_with(kFileWord)) files_.insert(Full(line.substr(kFileWord.size())));
    left.remove_prefix(end);
  }
}

bool CopyRecord::IsCopyOf(const std::string& source, const std::vector<std::string>& files) {
  Read();
  if (source_.empty()) return false;
  if (platform_.SameFile(source_, source)) return true;
  const auto same = static_cast<std::size_t>(
      std::count_if(files.begin(), files.end(), [this](const std::string& file) { return Has(file); }));
  const bool moved = !platform_.FileExists(source_) && same > 0 && same * 2 >= files_.size();
  if (!moved) files_.clear();
  return moved;
}

bool CopyRecord::Has(const std::string& file) const { return files_.contains(file); }

std::string CopyRecord::TextFor(const std::string& source, const std::vector<std::string>& files) const {
  std::set<std::string> all(files.begin(), files.end());
  std::copy_if(files_.begin(), files_.end(), std::inserter(all, all.end()),
               [this](const std::string& file) { return platform_.FileExists(file); });
  std::string text = std::string(kSourceWord) + Shortened(source) + "\n";
  for (const std::string& file : all) text += std::string(kFileWord) + Shortened(file) + "\n";
  return text;
}

}  // namespace qelm::filtering
