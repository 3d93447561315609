#include "filtering/copy_record.h"

#include <algorithm>
#include <filesystem>
#include <map>

#include "common/content_hash.h"
#include "common/paths.h"
#include "common/utf8.h"
#include "filtering/plain_path.h"
#include "host/interface/copy_names.h"

namespace qelm::filtering {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kSourceWord = "source ";
constexpr std::string_view kAsWord = "as ";
constexpr std::string_view kMadeWord = "made ";
constexpr std::string_view kFileWord = "file ";
constexpr char kEnding[] = ".txt";  // whatever the copied file's is: ".new" would be that of a file beside
constexpr std::size_t kLongestName = 240;  // in bytes: what the record's name has room for
constexpr std::size_t kCutTo = 50;         // characters, of a longer one
// Reading every output once more would be felt where they are large; those are known by their time.
constexpr std::uintmax_t kLargestRead = 4'000'000;  // bytes

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

// Long names that begin alike have a record each.
std::string KnownAs(std::string_view name) {
  if (name.size() <= kLongestName) return std::string(name);
  return std::string(common::FirstCharacters(name, kCutTo)) + "-" + common::ContentHash(name);
}

// The rest of a line that begins with this word.
bool Takes(std::string_view word, std::string_view* line) {
  if (!line->starts_with(word)) return false;
  line->remove_prefix(word.size());
  return true;
}

}  // namespace

CopyRecord::CopyRecord(host::Platform& platform, const std::string& folder, std::string_view name)
    : platform_(platform), folder_(platform.ResolvedPath(folder)), target_(common::JoinPath(folder_, name)) {
  path_ = common::JoinPath(folder_, std::string(host::kCopyRecordName) + KnownAs(name) + kEnding);
}

std::string CopyRecord::Shortened(const std::string& file) const {
  const std::string relative = RelativePath(platform_, folder_, file);
  return Escaped(relative.empty() ? file : relative);
}

// The folder has no links in it, so that a way from there that keeps those of the file leads back to it.
std::string CopyRecord::Spelled(const std::string& file) const {
  const std::string relative = fs::path(file).lexically_normal().lexically_relative(folder_).string();
  return Escaped(relative.empty() ? file : relative);
}

std::string CopyRecord::Full(std::string_view shortened) const {
  const std::string name = Unescaped(shortened);
  const std::string path = common::IsAbsolutePath(name) ? name : common::JoinPath(folder_, name);
  return fs::path(path).lexically_normal().string();
}

bool CopyRecord::Unreadable(std::string reason) {
  why_ = std::move(reason);
  return false;
}

bool CopyRecord::Read() {
  source_.clear();
  as_.clear();
  files_.clear();
  why_.clear();
  std::error_code error;
  const fs::file_status status = fs::status(path_, error);
  if (status.type() == fs::file_type::not_found) return true;
  // A pipe would never come to its end.
  if (!fs::is_regular_file(status)) return Unreadable(error ? error.message() : "it is not a file");
  if (fs::file_size(path_, error) > kLargestRecord || error)
    return Unreadable("it is too large for a record");
  const std::optional<std::string> text = platform_.ReadFile(path_);
  if (!text) return Unreadable(platform_.LastError());
  std::string_view left = *text;
  while (const std::size_t end = left.find('\n') + 1) {
    std::string_view line = left.substr(0, end - 1);
    left.remove_prefix(end);
    if (Takes(kSourceWord, &line)) {
      source_ = Full(line);
    } else if (Takes(kAsWord, &line)) {
      as_ = Full(line);
    } else if (Takes(kFileWord, &line)) {
      files_[std::string(line)] = {};
    } else if (Takes(kMadeWord, &line) && line.find(' ') != std::string_view::npos) {
      const std::size_t blank = line.find(' ');
      files_[std::string(line.substr(blank + 1))].state = line.substr(0, blank);
    }
  }
  if (source_.empty()) files_.clear();
  return true;
}

bool CopyRecord::IsCopyOf(const std::string& source, const std::vector<std::string>& files) {
  if (source_.empty()) return false;
  if (platform_.SameFile(source_, source) || (!as_.empty() && as_ == Full(Spelled(source)))) return true;
  if (!platform_.FileExists(source_)) {
    const auto same = static_cast<std::size_t>(
        std::count_if(files.begin(), files.end(), [this](const std::string& file) { return Has(file); }));
    if (same > 0 && same * 2 >= std::min(files.size(), files_.size())) return true;
  }
  files_.clear();
  return false;
}

bool CopyRecord::Names(const std::string& file) const { return files_.contains(Shortened(file)); }

// Empty for what cannot be read, or is no file.
std::string CopyRecord::StateOf(const std::string& file) const {
  std::error_code error;
  if (!fs::is_regular_file(file, error)) return {};
  const std::uintmax_t size = fs::file_size(file, error);
  if (!error && size > kLargestRead) {
    const fs::file_time_type time = fs::last_write_time(file, error);
    return error ? std::string()
                 : std::to_string(size) + "-at" + std::to_string(time.time_since_epoch().count());
  }
  const std::optional<std::string> content = platform_.ReadFile(file);
  return content ? std::to_string(content->size()) + "-" + common::ContentHash(*content) : std::string();
}

bool CopyRecord::Has(const std::string& file) {
  const auto found = files_.find(Shortened(file));
  if (found == files_.end()) return false;
  Made& made = found->second;
  if (!made.looked_at) {
    made.looked_at = true;
    const std::string size = std::to_string(platform_.FileSize(file).value_or(0)) + "-";
    made.same = platform_.FileExists(file) &&
                (made.state.empty() || (made.state.starts_with(size) && made.state == StateOf(file)));
  }
  return made.same;
}

bool CopyRecord::HasComplete(const std::string& file) {
  const auto found = files_.find(Shortened(file));
  return found != files_.end() && !found->second.state.empty() && Has(file);
}

std::string CopyRecord::Text(const std::string& source, const std::string& as) const {
  std::string text = std::string(kSourceWord) + source + "\n";
  if (as != source) text += std::string(kAsWord) + as + "\n";
  std::map<std::string_view, const Made*> sorted;
  for (const auto& [name, made] : files_) sorted.emplace(name, &made);
  for (const auto& [name, made] : sorted) {
    text += made->state.empty() ? std::string(kFileWord) : std::string(kMadeWord) + made->state + " ";
    text.append(name) += '\n';
  }
  return text;
}

std::string CopyRecord::TextFor(const std::string& source, const std::vector<std::string>& files) const {
  CopyRecord next(*this);
  std::erase_if(next.files_, [this](const auto& file) { return !platform_.FileExists(Full(file.first)); });
  for (const std::string& file : files) next.files_[Shortened(file)] = {};
  return next.Text(Shortened(source), Spelled(source));
}

// A pipe that is to be overwritten would wait for somebody who reads it.
bool CopyRecord::Write(const std::string& text) const {
  std::error_code error;
  const bool is_file = fs::is_regular_file(path_, error);
  if (is_file && platform_.ReadFile(path_) == text) return true;
  if (!is_file && platform_.FileExists(path_) && !platform_.RemoveFile(path_)) return false;
  return platform_.ReplaceFile(path_, text);
}

bool CopyRecord::Begin(const std::string& source, const std::vector<std::string>& files) const {
  return Write(TextFor(source, files));
}

bool CopyRecord::Add(const std::string& file) {
  files_[Shortened(file)] = {};
  return Write(Text(Shortened(source_), as_.empty() ? Shortened(source_) : Spelled(as_)));
}

bool CopyRecord::Seal(host::Documents& documents) {
  std::erase_if(files_, [this](const auto& file) { return !platform_.FileExists(Full(file.first)); });
  for (auto& [name, made] : files_) {
    if (!made.state.empty()) continue;
    const std::string file = Full(name);
    const host::Id open = documents.FindOpen(file);
    if (open != host::kNone && documents.Switch(open, host::DocumentSwitch::kModified)) continue;
    made.state = StateOf(file);
    if (made.state.empty()) return false;
  }
  return Write(Text(Shortened(source_), as_.empty() ? Shortened(source_) : Spelled(as_)));
}

bool IsOfCompleteCopy(host::Platform& platform, const std::string& folder, const std::string& file) {
  const std::vector<std::string> names = platform.FolderNames(folder);
  return std::any_of(names.begin(), names.end(), [&](std::string_view name) {
    if (!name.starts_with(host::kCopyRecordName) || !name.ends_with(kEnding)) return false;
    name.remove_prefix(host::kCopyRecordName.size());
    name.remove_suffix(sizeof(kEnding) - 1);
    CopyRecord record(platform, folder, name);
    return record.Read() && record.HasComplete(file);
  });
}

bool CompleteCopy(host::Host& host, const std::string& main, bool saved) {
  const std::string folder(common::FolderOf(main));
  const host::KeptFolder kept(host.platform, folder);
  CopyRecord record(host.platform, folder, common::FileName(main));
  const bool sealed = !saved || (record.Read() && !record.source().empty() && record.Seal(host.documents));
  return host.platform.EndFilling(folder, saved && sealed) && sealed;
}

}  // namespace qelm::filtering
