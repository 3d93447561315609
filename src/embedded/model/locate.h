// Finds a file that is not where it is said to be.
//
// A book keeps the paths of its chapters as they were on the machine of whoever made it, drive letter and
// all, and calls them `.fm` where they were since saved as MIF. So a file that does not exist, or lies where
// the user may not look, is looked for, in this order, at the place that the path names and then beside the
// book, there under as much of the path as exists: as it is called; with `.mif` for its own ending, or after
// it; and last without regard to case.
#pragma once

#include <string>
#include <string_view>

namespace qelm::embedded::model {

struct Located {
  std::string path;  // where nothing was found, the path where it should be
  bool exists = false;
  bool elsewhere = false;  // it is not at the path that was asked for
};

// A path that exists is itself, whatever it is. Only files are looked for.
Located LocateFile(const std::string& path);

// The file of a book's component. `path` may be of another system ("M:/Docs/ch1.fm", "M:\Docs\ch1.fm"); a
// relative one counts from the book's folder.
Located LocateComponent(const std::string& book, const std::string& path);

}  // namespace qelm::embedded::model
