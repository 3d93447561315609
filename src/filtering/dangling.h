// References that a filter left without their target: what they point to was hidden or deleted, and they
// themselves were not.
//
// The documents of a run are added one after the other, each when it was filtered and while it is open; what
// is kept of one are its references to other files and the names of what went. A name that is still there
// once more counts as there. A reference that pointed to nothing before the run is not listed.
#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "host/interface/host.h"

namespace qelm::filtering {

struct DanglingReference {
  host::LinkKind kind = host::LinkKind::kCrossReference;
  std::string source;   // the document's path
  std::string element;  // the path of the element that it is or stands in; empty outside the structure, and
                        // where nobody asks for it
  std::string path;     // the file that it points to
  std::string target;   // the name in it; empty when the whole file went
};

// What such a reference is called ("cross-reference").
std::string_view LinkKindName(host::LinkKind kind);

class DanglingReferences {
 public:
  // `single`: only one document is added, so that references to other files need not be kept. `with_places`:
  // the elements are named.
  DanglingReferences(host::Host& host, bool single, bool with_places)
      : host_(host), single_(single), with_places_(with_places) {}

  // Adds a document that was filtered. `would_go` are elements that a run that changes nothing would have
  // taken away. Takes time by the size of the document.
  void Add(host::Id document, const std::vector<host::Id>& would_go = {});

  // Adds a file of the run that is no more.
  void AddRemovedFile(const std::string& path);

  // All that were found, in the order of the documents. Called once, after the last document.
  std::vector<DanglingReference> Find();

 private:
  struct Names {
    std::unordered_set<std::string> gone;  // the kind before the name
    bool file_gone = false;
  };
  struct Kept {
    DanglingReference reference;
    bool dangling = false;
  };

  host::Host& host_;
  bool single_;
  bool with_places_;
  std::unordered_map<std::string, Names> files_;  // by path
  std::vector<Kept> kept_;
};

}  // namespace qelm::filtering
