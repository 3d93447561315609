// Updating a book: the numbers of paragraphs and the texts of cross-references in all its components.
//
// One component is in memory at a time, unless it is open already. The components are gone over twice: the
// first time they are numbered, references into the component itself are renewed, and it is noted what the
// others point to; then the files that are pointed to are asked, each once; and components whose references
// show something else now are gone over again. A component that was open is changed and not saved, the others
// are saved.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "embedded/adapter/workspace.h"
#include "host/interface/books.h"
#include "host/interface/documents.h"

namespace qelm::embedded::adapter {

// The error code of a book's update of which the findings tell the rest. Where a file could not be read or
// written, the code is another one.
inline constexpr std::int32_t kNotAllUpdatedCode = static_cast<std::int32_t>(Error::kNotAllUpdated);
inline constexpr std::int32_t kNoTargetsCode = static_cast<std::int32_t>(Error::kNoTargets);

inline std::vector<std::int32_t> FindingsCodes() { return {kNotAllUpdatedCode, kNoTargetsCode}; }

struct UpdateOutcome {
  bool complete = true;               // everything that was asked for could be updated
  std::string file_error;             // the first file of the book that could not be read or written, and why
  std::vector<std::string> findings;  // what could not, each with its file; the first ones for the whole book
  std::size_t no_targets = 0;         // of these, references whose targets are not there
};

// `flags` are host::BookUpdate values.
UpdateOutcome UpdateBook(Workspace& workspace, host::Documents& documents, host::Books& books, Id book,
                         std::uint32_t flags);

// A document that shows the findings of an update, not saved anywhere yet.
std::unique_ptr<model::Document> ErrorLog(const std::string& book, const std::vector<std::string>& findings);

}  // namespace qelm::embedded::adapter
