// Files that come into a folder all together or not at all.
//
//   StagedFiles staged(platform, folder);
//   if (!staged.Begin()) ...
//   const std::string copy = staged.Add(source);   // beside the place where it will be
//   ... change it ...
//   staged.Place(copy, target); ...
//   staged.Keep();
//
// Files are made in a folder of their own inside the folder, and moved when all of them are ready. What lay
// at their targets is kept until the end. Without Keep, the destructor puts everything back as it was: what
// was there before, and only that, is there again. A process that is killed leaves that one inner folder;
// killed while files are moved, it leaves in it the files that were replaced and a list of where all of them
// belong, by which the next run puts everything back in its stead. What somebody has put in the place of such
// a file meanwhile, or made of it, stays.
#pragma once

#include <string>
#include <vector>

#include "host/interface/platform.h"

namespace qelm::filtering {

class StagedFiles {
 public:
  // `folder` is absolute and without detours.
  StagedFiles(host::Platform& platform, std::string folder)
      : platform_(platform), folder_(std::move(folder)) {}
  ~StagedFiles();
  StagedFiles(const StagedFiles&) = delete;
  StagedFiles& operator=(const StagedFiles&) = delete;

  // Makes the folder in which the files are to lie. False when that is not possible.
  bool MakeFolders() { return MakeFolder(folder_); }

  // Makes the folders. False when that is not possible.
  bool Begin();

  // Copies a file; returns where the copy is, empty when it could not be made.
  std::string Add(const std::string& source);

  // Makes a file with this content; returns where it is, empty when it could not be made.
  std::string AddText(std::string_view content);

  // Moves a file to its target, which lies in the folder or in one below that is made. False when it could
  // not be done.
  bool Place(const std::string& staged, const std::string& target);

  // The folders that were made for the files, outer ones first.
  const std::vector<std::string>& made_folders() const { return made_folders_; }

  // The files stay where they were placed.
  void Keep();

  // Puts back at once what was there before; false when something could not be, which stays in the inner
  // folder for the next run. The folders that were made go with this.
  bool Undo();

 private:
  struct Placed {
    std::string target;
    std::string before;  // where the file is that was there; empty: there was none
    std::string state;   // of the file that was placed (Platform::FileState)
  };

  bool MakeFolder(const std::string& folder);
  std::string NextStaged();
  bool List(const std::string& staged, const Placed& placed);
  void Remove(const std::string& file);
  void RemoveStage();

  host::Platform& platform_;
  std::string folder_;
  std::string stage_;                      // empty: not begun
  std::vector<std::string> staged_;        // files that were made in the stage
  std::vector<std::string> made_folders_;  // outer ones first
  std::vector<Placed> placed_;
  bool kept_ = false;
};

// Whether there is something for UndoAbandoned to look at.
bool HasAbandoned(host::Platform& platform, const std::string& folder);

// Undoes in the folder what processes that were killed had begun: takes back the files that they had placed,
// as far as not all of them were, and removes what they left of inner folders. Only of what was last changed
// before this program began; an inner folder of which not everything can be put back stays as it is. Call it
// while the folder is kept from others (Platform::BeginFilling) and before Begin().
void UndoAbandoned(host::Platform& platform, const std::string& folder);

}  // namespace qelm::filtering
