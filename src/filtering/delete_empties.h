// Taking out of a new book what a filter left empty.
//
// A component is emptied when the filter deleted something in it and its main flow has no element left below
// the highest one, and no text. Its entry and its element leave the book. Then files of the new book go to
// which nothing refers any more: those of the components that were taken out, and graphics and insets that
// stood only in what was deleted. A file goes only when it came with this copy of the book, and a folder that
// was made for the copy goes when nothing is left in it.
#pragma once

#include <unordered_set>

#include "filtering/document_filter.h"

namespace qelm::filtering {

class EmptyComponents {
 public:
  EmptyComponents(FilterContext& context, host::Id book) : context_(context), book_(book) {}

  // Looks at a component that has just been filtered, while its document is open: whether it was emptied, and
  // what it still refers to.
  void Look(host::Id document, FilteredComponent* entry);

  // Takes out what was emptied, saves the book, and removes the files. False when the book could not be
  // changed or saved; then no file was removed.
  bool Remove();

 private:
  bool IsEmptied(host::Id document, const FilteredComponent& entry);
  bool RemoveEntries(bool* changed);
  void Keep(const std::string& path);
  void KeepWhatIsShown();
  void RemoveFiles();
  bool CloseAndRemove(const std::string& path);
  void RemoveFolders();

  FilterContext& context_;
  host::Id book_;
  std::unordered_set<std::string> emptied_;    // files of components that were, with links resolved
  std::unordered_set<std::string> referred_;   // files that something still refers to, with links resolved
  std::unordered_set<std::string> generated_;  // files of components that are not filtered
  std::unordered_set<std::string> removed_;    // files of components that were taken out
  bool complete_ = true;                       // all references are known
};

}  // namespace qelm::filtering
