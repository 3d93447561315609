#include "embedded/model/index_list.h"

#include <algorithm>
#include <charconv>
#include <optional>

#include "embedded/model/text_access.h"

namespace qelm::embedded::model {
namespace {

constexpr std::string_view kAutoRange = "<$autorange>";
constexpr std::string_view kUnknownPage = "??";
// What two levels are told apart by ends a level's key; both sort below all texts.
constexpr char kEndOfKey = '\x01';

std::string Without(std::string text, std::string_view part) {
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part)) {
    text.erase(at, part.size());
  }
  return text;
}

std::optional<std::int64_t> AsNumber(const std::string& text) {
  std::int64_t value = 0;
  const auto read = std::from_chars(text.data(), text.data() + text.size(), value);
  if (read.ec != std::errc() || read.ptr != text.data() + text.size()) return std::nullopt;
  return value;
}

}  // namespace

IndexList::IndexList(const Document& list, const ListSettings& settings) : settings_(settings) {
  for (const std::string& type : settings_.tags) page_formats_[type] = {"<$pagenum>", false};
  ReadFormats(list);
}

void IndexList::ReadFormats(const Document& list) {
  std::string order;
  std::string ignored = "-\xE2\x80\x91\xE2\x80\x93\xE2\x80\x94";
  std::string titles;
  ForEachFormatParagraph(list, settings_.suffix, [&](const std::string& name, std::string text) {
    const auto page = page_formats_.find(name);
    if (name == "SortOrder") {
      order = std::move(text);
    } else if (name == "IgnoreChars") {
      ignored = std::move(text);
    } else if (name == "GroupTitles") {
      titles = std::move(text);
    } else if (name == "Separators") {
      ReadSeparators(text);
    } else if (page != page_formats_.end() && !text.empty()) {
      const bool joins = text.find(kAutoRange) != std::string::npos;
      page->second = {Without(std::move(text), kAutoRange), joins};
    }
  });
  order_ = SortOrder(order, ignored);
  // Where a title stands is said in characters that do not count otherwise.
  ReadTitles(titles, SortOrder(order));
}

// " 1, 2-3"; one that is not in this form says nothing.
void IndexList::ReadSeparators(std::string_view text) {
  const std::size_t one = text.find('1');
  const std::size_t two = text.find('2', std::min(one, text.size()));
  const std::size_t three = text.find('3', std::min(two, text.size()));
  if (three == std::string_view::npos) return;
  before_pages_ = text.substr(0, one);
  between_pages_ = text.substr(one + 1, two - one - 1);
  in_range_ = text.substr(two + 1, three - two - 1);
}

void IndexList::ReadTitles(std::string_view text, const SortOrder& order) {
  for (const MarkerEntry& entry : ReadIndexMarker(text)) {
    const std::string title = PlainText(entry.levels.front());
    titles_.push_back({order.Key(entry.sort_as.empty() ? title : entry.sort_as.front()), title});
  }
  std::stable_sort(titles_.begin(), titles_.end(),
                   [](const Title& a, const Title& b) { return a.key < b.key; });
}

void IndexList::Collect(const Document& document, ReferenceTargets* targets, const std::string& file) {
  ++documents_;
  ForEachMarker(document, [&](const ListedMarker& marker) {
    const auto format = page_formats_.find(marker.type);
    if (format == page_formats_.end()) return;
    PageReference page;
    page.runs = targets->ExpandAtItem(format->second.text, marker.item).runs;
    if (settings_.links) page.link = LinkToElement(document, file, marker.item, marker.element);
    page.type = marker.type;
    page.document = documents_;
    page.page = targets->PageOfItem(marker.item);
    for (MarkerEntry& entry : ReadIndexMarker(marker.text)) {
      Record record;
      for (std::size_t i = 0; i < entry.levels.size(); ++i) {
        const std::string plain = PlainText(entry.levels[i]);
        const bool own = i < entry.sort_as.size() && !entry.sort_as[i].empty();
        record.keys.push_back(order_.Key(own ? entry.sort_as[i] : plain) + kEndOfKey + plain);
      }
      record.levels = std::move(entry.levels);
      record.pages = entry.pages;
      record.reference = page;
      for (StyledRun& run : record.reference.runs) {
        if (!run.format) run.format = entry.page_format;
      }
      records_.push_back(std::move(record));
    }
  });
}

// The pages of the records [begin, end), which are of one entry and in the order of the book.
std::vector<IndexList::PageRange> IndexList::Ranges(std::size_t begin, std::size_t end,
                                                    std::vector<std::string>* problems) {
  std::vector<PageRange> ranges;
  std::vector<std::size_t> open;
  for (std::size_t i = begin; i < end; ++i) {
    Record& record = records_[i];
    if (record.pages == EntryPages::kNone) continue;
    PageRange range{record.reference, record.reference};
    if (record.pages == EntryPages::kRangeEnds && !open.empty()) {
      ranges[open.back()].last = std::move(record.reference);
      ranges[open.back()].ends = true;
      open.pop_back();
      continue;
    }
    range.is_range = record.pages != EntryPages::kOne;
    range.begins = record.pages != EntryPages::kRangeEnds;
    range.ends = record.pages != EntryPages::kRangeBegins;
    if (record.pages == EntryPages::kRangeBegins) open.push_back(ranges.size());
    ranges.push_back(std::move(range));
  }
  for (const PageRange& range : ranges) {
    if (range.begins && range.ends) continue;
    problems->push_back("the range of the entry \"" + PlainText(records_[begin].levels.back()) +
                        (range.begins ? "\" does not end" : "\" does not begin"));
  }
  return ranges;
}

// The same page twice counts once, and a page within the range before it is said by that.
void IndexList::Join(std::vector<PageRange>* ranges) const {
  const auto follows = [](const PageReference& before, const PageReference& next) {
    if (before.document == next.document) return before.page >= 0 && before.page + 1 == next.page;
    const auto from = AsNumber(PlainText(before.runs));
    const auto to = AsNumber(PlainText(next.runs));
    return from && to && *from + 1 == *to;
  };
  const auto holds = [](const PageRange& range, const PageReference& page) {
    const PageReference& last = range.last;
    if (last.runs == page.runs) return true;
    return range.is_range && range.first.document == page.document && last.document == page.document &&
           page.page >= range.first.page && page.page <= last.page;
  };
  std::vector<PageRange> joined;
  for (PageRange& range : *ranges) {
    const bool whole = range.begins && range.ends;
    PageRange* before =
        joined.empty() || !joined.back().begins || !joined.back().ends ? nullptr : &joined.back();
    if (whole && before != nullptr && holds(*before, range.first) && holds(*before, range.last)) continue;
    const auto format = page_formats_.find(range.first.type);
    const bool joins = whole && before != nullptr && format != page_formats_.end() && format->second.joins &&
                       (holds(*before, range.first) || follows(before->last, range.first));
    if (joins) {
      before->last = std::move(range.last);
      before->is_range = true;
    } else {
      joined.push_back(std::move(range));
    }
  }
  *ranges = std::move(joined);
}

void IndexList::AddPages(const std::vector<PageRange>& ranges, ListEntry* entry) const {
  const auto add = [&](const PageReference& page, bool known) {
    if (!page.link.empty() && known) entry->run_links.emplace_back(entry->runs.size(), page.link);
    if (!known || page.runs.empty()) {
      entry->runs.push_back({std::string(kUnknownPage), std::string()});
    } else {
      entry->runs.insert(entry->runs.end(), page.runs.begin(), page.runs.end());
    }
  };
  for (const PageRange& range : ranges) {
    const bool first = &range == &ranges.front();
    entry->runs.push_back({first ? before_pages_ : between_pages_, std::string()});
    // A range on one page is that page.
    const bool one = !range.is_range || (range.begins && range.ends && range.first.runs == range.last.runs);
    add(range.first, range.begins);
    if (one) continue;
    entry->runs.push_back({in_range_, std::string()});
    add(range.last, range.ends);
  }
}

// The title of the group in which an entry with that key is, where that is another one than before.
void IndexList::AddTitle(const std::string& key, std::size_t* next, std::vector<ListEntry>* entries) const {
  std::size_t group = *next;
  while (group < titles_.size() && titles_[group].key <= key) ++group;
  if (group == *next) return;
  *next = group;
  ListEntry title;
  title.format = "GroupTitles" + settings_.suffix;
  title.runs.push_back({titles_[group - 1].text, std::nullopt});
  entries->push_back(std::move(title));
}

std::vector<ListEntry> IndexList::Entries(std::vector<std::string>* problems) {
  std::stable_sort(records_.begin(), records_.end(),
                   [](const Record& a, const Record& b) { return a.keys < b.keys; });
  std::vector<ListEntry> entries;
  const std::vector<std::string>* before = nullptr;
  std::size_t title = 0;
  std::size_t unknown = 0;
  for (std::size_t begin = 0; begin < records_.size();) {
    std::size_t end = begin;
    while (end < records_.size() && records_[end].keys == records_[begin].keys) {
      if (records_[end].pages != EntryPages::kNone && records_[end].reference.runs.empty()) ++unknown;
      ++end;
    }
    const Record& record = records_[begin];
    AddTitle(record.keys.front(), &title, &entries);
    std::size_t level = 0;
    while (before != nullptr && level < before->size() && level + 1 < record.keys.size() &&
           (*before)[level] == record.keys[level]) {
      ++level;
    }
    for (; level < record.levels.size(); ++level) {
      ListEntry entry;
      entry.format = "Level" + std::to_string(level + 1) + settings_.suffix;
      entry.runs = record.levels[level];
      if (!entry.runs.empty()) entries.push_back(std::move(entry));
    }
    std::vector<PageRange> ranges = Ranges(begin, end, problems);
    Join(&ranges);
    if (!entries.empty()) AddPages(ranges, &entries.back());
    before = &record.keys;
    begin = end;
  }
  if (unknown != 0) {
    problems->push_back(std::to_string(unknown) + (unknown == 1 ? " entry is" : " entries are") +
                        " on no page that the files record");
  }
  return entries;
}

}  // namespace qelm::embedded::model
