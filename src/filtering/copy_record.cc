#include "filtering/copy_record.h"

#include <algorithm>
#include <array>
#include <filesystem>

#include "common/content_hash.h"
#include "common/paths.h"
#include "common/text.h"
#include "common/utf8.h"
#include "filtering/plain_path.h"
#include "host/interface/copy_names.h"

namespace qelm::filtering {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kSourceWord = "source ";
constexpr std::string_view kAsWord = "as ";
constexpr std::string_view kMadeWord = "made ";
constexpr std::string_view kCompleteLine = "complete";
constexpr char kEnding[] = ".txt";  // whatever the copied file's is: ".new" would be that of a file beside
constexpr std::size_t kLongestName = 240;  // in bytes: what the record's name has room for
constexpr std::size_t kCutTo = 50;         // characters, of a longer one
constexpr std::size_t kBlock = 65536;      // bytes of a content that are hashed at a time

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

// A record of nowhere would lie in the folder in which the program was started.
std::string Resolved(host::Platform& platform, const std::string& folder) {
  std::string resolved = platform.ResolvedPath(folder);
  return resolved.empty() ? folder : resolved;
}

bool GoesUp(const fs::path& relative) { return relative.empty() || *relative.begin() == ".."; }

// The rest of a line that begins with this word.
bool Takes(std::string_view word, std::string_view* line) {
  if (!line->starts_with(word)) return false;
  line->remove_prefix(word.size());
  return true;
}

}  // namespace

// Of the hashes of its blocks, whichever pieces they come in.
std::string ContentMark(std::span<const std::string_view> pieces) {
  std::size_t size = 0;
  for (const std::string_view piece : pieces) size += piece.size();
  std::string hashes;
  std::size_t left = size;
  std::size_t in_block = 0;  // bytes of the block so far
  common::ContentHasher block(std::min(left, kBlock));
  for (std::string_view piece : pieces) {
    while (!piece.empty()) {
      const std::string_view part = piece.substr(0, kBlock - in_block);
      block.Add(part);
      piece.remove_prefix(part.size());
      in_block += part.size();
      if (in_block < kBlock) continue;
      hashes += block.Digits();
      left -= kBlock;
      in_block = 0;
      block = common::ContentHasher(std::min(left, kBlock));
    }
  }
  return std::to_string(size) + "-" + common::ContentHash(hashes + block.Digits());
}

CopyRecord::CopyRecord(host::Platform& platform, const std::string& folder, std::string_view name)
    : platform_(platform), folder_(Resolved(platform, folder)), target_(common::JoinPath(folder_, name)) {
  path_ = common::JoinPath(folder_, std::string(host::kCopyRecordName) + KnownAs(name) + kEnding);
}

CopyRecord::~CopyRecord() {
  if (begun_) platform_.StopListening(this);
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

bool CopyRecord::Covers(const std::string& file) const {
  return !GoesUp(fs::path(platform_.ResolvedPath(file)).lexically_relative(folder_));
}

bool CopyRecord::Fail(std::string reason) {
  why_ = std::move(reason);
  return false;
}

bool CopyRecord::Read() {
  source_.clear();
  as_.clear();
  files_.clear();
  complete_ = false;
  std::error_code error;
  const fs::file_status status = fs::status(path_, error);
  if (status.type() == fs::file_type::not_found) return true;
  // A pipe would never come to its end.
  if (!fs::is_regular_file(status)) return Fail(error ? error.message() : "it is not a file");
  if (fs::file_size(path_, error) > kLargestRecord || error) return Fail("it is too large for a record");
  const std::optional<std::string> text = platform_.ReadFile(path_);
  if (!text) return Fail(platform_.LastError());
  std::string_view left = *text;
  while (const std::size_t end = left.find('\n') + 1) {
    std::string_view line = left.substr(0, end - 1);
    left.remove_prefix(end);
    if (Takes(kSourceWord, &line)) {
      source_ = line;
    } else if (Takes(kAsWord, &line)) {
      as_ = line;
    } else if (Takes(kMadeWord, &line) && line.find(' ') != std::string_view::npos) {
      const std::size_t blank = line.find(' ');
      files_[std::string(line.substr(blank + 1))].emplace_back(line.substr(0, blank));
    } else if (line == kCompleteLine) {
      complete_ = true;
    }
  }
  if (source_.empty()) files_.clear();
  return true;
}

bool CopyRecord::IsCopyOf(const std::string& source) {
  const bool same = !source_.empty() &&
                    (platform_.SameFile(Full(source_), source) || (!as_.empty() && as_ == Spelled(source)));
  if (!same) files_.clear();
  return same;
}

bool CopyRecord::Names(const std::string& file) const { return files_.contains(Shortened(file)); }

// What a link leads to elsewhere, or lies there in another size, is not even opened.
bool CopyRecord::Has(const std::string& file) {
  Look(file);
  const auto found = files_.find(Shortened(file));
  if (found == files_.end() || !Covers(file)) return false;
  std::error_code error;
  if (!fs::is_regular_file(file, error)) return false;
  const std::string size = std::to_string(platform_.FileSize(file).value_or(0)) + "-";
  const std::vector<std::string>& marks = found->second;
  const auto has_size = [&](const std::string& mark) { return mark.starts_with(size); };
  if (std::none_of(marks.begin(), marks.end(), has_size)) return false;
  const std::optional<std::string> content = size == "0-" ? std::string() : platform_.ReadFile(file);
  const std::string_view whole = content ? std::string_view(*content) : std::string_view();
  return content && std::find(marks.begin(), marks.end(), ContentMark({&whole, 1})) != marks.end();
}

bool CopyRecord::IsUnchanged(const std::string& file) const {
  const auto seen = seen_.find(Shortened(file));
  return seen == seen_.end() || seen->second == platform_.FileState(file);
}

bool CopyRecord::HasComplete(const std::string& file) { return complete_ && Has(file); }

void CopyRecord::Begin(const std::string& source) {
  source_ = Shortened(source);
  as_ = Spelled(source);
  complete_ = recorded_ = false;
  if (!begun_) platform_.Listen(this);
  begun_ = true;
}

void CopyRecord::Expect(const std::string& file, const std::string& staged) {
  const std::string name = Shortened(file);
  expected_.insert(name);
  const auto made = staged.empty() ? written_.end() : written_.find(Shortened(staged));
  if (made == written_.end()) return;
  std::vector<std::string>& marks = files_[name];
  if (std::find(marks.begin(), marks.end(), made->second) == marks.end()) marks.push_back(made->second);
  written_[name] = made->second;
}

std::string CopyRecord::Text() const {
  std::string text = std::string(kSourceWord) + source_ + "\n";
  if (!as_.empty() && as_ != source_) text += std::string(kAsWord) + as_ + "\n";
  for (const auto& [name, marks] : files_) {
    for (const std::string& mark : marks) {
      text.append(kMadeWord).append(mark).append(" ").append(name).append("\n");
    }
  }
  return complete_ ? text + std::string(kCompleteLine) + "\n" : text;
}

bool CopyRecord::IsWritten() const {
  std::error_code error;
  return fs::is_regular_file(path_, error) && platform_.ReadFile(path_) == Text();
}

// A record that only lacks lines at its end gets them: only whole lines count, and one that was cut is made
// whole, or written anew, by the next run. What is protected or has other names is replaced like any file. A
// pipe that is to be overwritten would wait for somebody who reads it, and a link that leads nowhere takes no
// content.
bool CopyRecord::Write() const {
  const std::string text = Text();
  std::error_code error;
  const fs::file_status status = fs::status(path_, error);
  const bool is_file = fs::is_regular_file(status);
  const std::optional<std::string> there = is_file ? platform_.ReadFile(path_) : std::nullopt;
  if (there == text) return true;
  const bool may_grow = there && !there->empty() && text.starts_with(*there) &&
                        fs::hard_link_count(path_, error) == 1 &&
                        (status.permissions() & fs::perms::owner_write) != fs::perms::none;
  if (may_grow) return platform_.AppendFile(path_, std::string_view(text).substr(there->size()));
  const bool in_the_way = !is_file && (platform_.FileExists(path_) || fs::is_symlink(path_, error));
  if (in_the_way && !platform_.RemoveFile(path_)) return false;
  return platform_.ReplaceFile(path_, text);
}

// The record is there before the first file, which is when it is written in whole. A line that could not be
// written to its end must not be taken for the beginning of the next.
bool CopyRecord::BeforeWriting(const std::string& path, std::span<const std::string_view> content,
                               std::string* why) {
  const std::string name = Shortened(path);
  const std::string& mark = writing_[name] = ContentMark(content);
  if (!expected_.contains(name)) return true;
  if (!IsUnchanged(path)) {
    *why = "somebody changed it while this run was under way";
    return false;
  }
  recorded_ = recorded_ || IsWritten();
  std::vector<std::string>& marks = files_[name];
  const bool is_new = std::find(marks.begin(), marks.end(), mark) == marks.end();
  if (recorded_ && !is_new) return true;
  if (is_new) marks.push_back(mark);
  const std::string line = std::string(kMadeWord) + mark + " " + name;
  recorded_ = recorded_ ? platform_.AppendFile(path_, "\n" + line + "\n") : Write();
  if (recorded_) return true;
  if (is_new) marks.pop_back();
  *why = common::WithReason(path_, platform_.LastError());
  return false;
}

void CopyRecord::AfterWriting(const std::string& path, bool done) {
  const std::string name = Shortened(path);
  if (!done) return;
  written_[name] = writing_[name];
  Look(path);
}

bool CopyRecord::Seal() {
  platform_.StopListening(this);
  begun_ = false;
  for (const std::string& name : expected_) {
    const auto written = written_.find(name);
    if (written != written_.end()) files_[name] = {written->second};
  }
  std::erase_if(files_, [this](const auto& file) { return !platform_.MayExist(Full(file.first)); });
  complete_ = true;
  return Write() || Fail(common::WithReason(path_, platform_.LastError()));
}

bool CopyRecord::Complete(bool saved) {
  const bool sealed = !saved || Seal();
  const bool ended = platform_.EndFilling(folder_, saved && sealed);
  return sealed && (ended || Fail(common::WithReason(folder_, platform_.LastError())));
}

std::vector<std::string> CopyRecord::LeftOver() {
  std::vector<std::string> left;
  for (const auto& [name, marks] : files_) {
    if (expected_.contains(name)) continue;
    std::string file = Full(name);
    if (Has(file)) left.push_back(std::move(file));
  }
  return left;
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

}  // namespace qelm::filtering
