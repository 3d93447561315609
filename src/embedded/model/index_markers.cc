#include "embedded/model/index_markers.h"

namespace qelm::embedded::model {
namespace {

struct PagesBlock {
  std::string_view block;
  EntryPages pages;
};
constexpr PagesBlock kPagesBlocks[] = {
    {"$startrange", EntryPages::kRangeBegins},
    {"$endrange", EntryPages::kRangeEnds},
    {"$nopage", EntryPages::kNone},
    {"$singlepage", EntryPages::kOne},
};

bool IsBlank(char c) { return c == ' ' || c == '\t'; }

// Blanks around a level do not count.
void Trim(std::vector<StyledRun>* runs) {
  for (StyledRun& run : *runs) {
    while (!run.text.empty() && IsBlank(run.text.front())) run.text.erase(0, 1);
    if (!run.text.empty()) break;
  }
  for (auto run = runs->rbegin(); run != runs->rend(); ++run) {
    while (!run->text.empty() && IsBlank(run->text.back())) run->text.pop_back();
    if (!run->text.empty()) break;
  }
  std::erase_if(*runs, [](const StyledRun& run) { return run.text.empty(); });
}

class MarkerReader {
 public:
  explicit MarkerReader(std::string_view text) : text_(text) {}
  std::vector<MarkerEntry> Read();

 private:
  void Special(char c);
  void Block();
  void SortText();
  void Put(char c) {
    if (run_.empty()) run_.push_back({{}, format_});
    run_.back().text.push_back(c);
  }
  void EndLevel();
  void EndEntry();

  std::string_view text_;
  std::size_t at_ = 0;
  std::vector<MarkerEntry> entries_;
  MarkerEntry entry_;
  std::vector<StyledRun> run_;  // of the level at hand
  std::optional<std::string> format_;
  EntryPages pages_ = EntryPages::kOne;
};

void MarkerReader::EndLevel() {
  Trim(&run_);
  entry_.levels.push_back(std::move(run_));
  run_.clear();
}

// What a block says of pages holds until another one says otherwise; a character format ends with its entry.
void MarkerReader::EndEntry() {
  EndLevel();
  while (!entry_.levels.empty() && entry_.levels.back().empty()) entry_.levels.pop_back();
  entry_.pages = pages_;
  entry_.page_format = std::move(format_);
  if (!entry_.levels.empty()) entries_.push_back(std::move(entry_));
  entry_ = {};
  format_.reset();
}

void MarkerReader::Block() {
  const std::size_t end = text_.find('>', at_);
  if (end == std::string_view::npos) return Put('<');
  const std::string_view block = text_.substr(at_ + 1, end - at_ - 1);
  at_ = end;
  if (!block.starts_with('$')) {
    format_ = EndsCharacterFormat(block) ? std::string() : std::string(block);
    run_.push_back({{}, format_});
    return;
  }
  for (const PagesBlock& known : kPagesBlocks) {
    if (known.block == block) pages_ = known.pages;
  }
}

// "[as:sorted]": by level, for the whole entry.
void MarkerReader::SortText() {
  std::string text;
  for (++at_; at_ < text_.size() && text_[at_] != ']'; ++at_) {
    if (text_[at_] == ':') {
      entry_.sort_as.push_back(std::move(text));
      text.clear();
      continue;
    }
    if (text_[at_] == '\\' && at_ + 1 < text_.size()) ++at_;
    text.push_back(text_[at_]);
  }
  entry_.sort_as.push_back(std::move(text));
}

void MarkerReader::Special(char c) {
  switch (c) {
    case '\\':
      if (at_ + 1 < text_.size()) Put(text_[++at_]);
      break;
    case '<':
      Block();
      break;
    case '[':
      SortText();
      break;
    case ':':
      EndLevel();
      break;
    case ';':
      EndEntry();
      break;
    default:
      Put(c);
      break;
  }
}

std::vector<MarkerEntry> MarkerReader::Read() {
  for (; at_ < text_.size(); ++at_) Special(text_[at_]);
  EndEntry();
  return std::move(entries_);
}

}  // namespace

std::vector<MarkerEntry> ReadIndexMarker(std::string_view text) { return MarkerReader(text).Read(); }

std::string PlainText(const std::vector<StyledRun>& runs) {
  std::string text;
  for (const StyledRun& run : runs) text += run.text;
  return text;
}

}  // namespace qelm::embedded::model
