// Indexes: entries out of markers, sorted, with the pages on which they stand.
//
// The list's own file says on a reference page, in the flow that is called like the file's suffix (here IX),
// how it reads:
//   SeparatorsIX   " 1, 2-3": what stands before the first page, between pages, and in a range
//   SortOrderIX    <$symbols><$numerics><$alphabetics>
//   IgnoreCharsIX  characters that do not count when entries are sorted
//   GroupTitlesIX  "Symbols[\ ];Numerics[0];A;B": titles above groups of entries, each with where it sorts
//   IndexIX        <$autorange><$pagenum>: how a page reads of a marker of the type Index
// The entries become paragraphs of the formats Level1IX, Level2IX and so on, titles of GroupTitlesIX.
//
// Entries are gathered document by document as small records and sorted once, by keys.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "embedded/model/generated_list.h"
#include "embedded/model/index_markers.h"
#include "embedded/model/sort_key.h"

namespace qelm::embedded::model {

class IndexList {
 public:
  // Reads how the index reads from the file of the list, which need not stay.
  IndexList(const Document& list, const ListSettings& settings);

  // Adds what the markers of a document say. `file` is its path from the list.
  void Collect(const Document& document, ReferenceTargets* targets, const std::string& file);

  // The paragraphs of the index. Adds to `problems` what did not come out, each in words.
  std::vector<ListEntry> Entries(std::vector<std::string>* problems);

 private:
  struct PageFormat {
    std::string text;
    bool joins = false;  // pages that follow each other become a range
  };
  struct Title {
    std::string key;
    std::string text;
  };
  // A page on which an entry stands.
  struct PageReference {
    std::vector<StyledRun> runs;
    std::string link;
    std::string type;            // of the marker
    std::uint32_t document = 0;  // the pages of a document are numbered in their order
    std::int32_t page = -1;
  };
  // The runs of the levels are in `levels`; the keys tell whether two entries are the same.
  struct Record {
    std::vector<std::string> keys;
    std::vector<std::vector<StyledRun>> levels;
    EntryPages pages = EntryPages::kOne;
    PageReference reference;
  };
  struct PageRange {
    PageReference first;
    PageReference last;
    bool is_range = false;
    bool begins = true;  // both ends of a range are known
    bool ends = true;
  };

  void ReadFormats(const Document& list);
  void ReadTitles(std::string_view text, const SortOrder& order);
  void ReadSeparators(std::string_view text);
  std::vector<PageRange> Ranges(std::size_t begin, std::size_t end, std::vector<std::string>* problems);
  void Join(std::vector<PageRange>* ranges) const;
  void AddPages(const std::vector<PageRange>& ranges, ListEntry* entry) const;
  void AddTitle(const std::string& key, std::size_t* next, std::vector<ListEntry>* entries) const;

  ListSettings settings_;
  SortOrder order_;
  std::string before_pages_ = " ";
  std::string between_pages_ = ", ";
  std::string in_range_ = "\xE2\x80\x93";
  std::unordered_map<std::string, PageFormat> page_formats_;  // by marker type
  std::vector<Title> titles_;
  std::vector<Record> records_;
  std::uint32_t documents_ = 0;
};

}  // namespace qelm::embedded::model
