// Where links lead in a print: to places in the documents that are printed, to PDFs beside it, to addresses.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "embedded/model/document.h"

namespace qelm::embedded::render {

class LinkTable {
 public:
  // A document of the print, with what may be named in it. Returns its index.
  std::size_t Add(const model::Document& document, const std::string& path);
  // The index of the document at a path; npos when it is none of the print.
  std::size_t Find(const std::string& path) const;
  static constexpr std::size_t npos = static_cast<std::size_t>(-1);

  // Whether some link of the print leads to a place. All documents have to be there.
  bool IsWanted(std::size_t document, std::string_view target);

  // The attributes of a link tag for a link in document `from`; empty where the link leads to nothing that is
  // shown. `file` is empty for the document itself, "URL" for an address.
  std::string Attributes(std::size_t from, std::string_view file, std::string_view target);
  // The name in the PDF of a place; of the document's beginning for an empty target.
  static std::string PlaceName(std::size_t document, std::string_view target);
  // The names that links led to.
  const std::unordered_set<std::string>& used() const { return used_; }

 private:
  struct Printed {
    std::string path;
    std::unordered_set<std::string> targets;  // that are shown
  };
  struct Asked {
    std::size_t from;
    std::string file;
    std::string target;
  };
  void FindWanted();
  std::size_t Locate(std::size_t from, std::string_view file);

  std::vector<Printed> documents_;
  std::unordered_map<std::string, std::size_t> by_path_;
  std::unordered_map<std::string, std::size_t> located_;  // by document and name of the file
  std::vector<Asked> asked_;                              // by links, until the documents are all there
  std::unordered_set<std::string> wanted_;                // names of places
  std::unordered_set<std::string> used_;
};

}  // namespace qelm::embedded::render
