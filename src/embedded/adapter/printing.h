// Documents and books on paper: PDF, one page as PNG, and the page numbers that layout finds.
//
// XML is laid out as the MIF that it would be written as. Components of a book are printed one after the
// other, each open only while it is; one that cannot be opened is named in a notice and passed over.
#pragma once

#include <optional>
#include <string>

#include "embedded/adapter/workspace.h"
#include "embedded/model/page_numbering.h"
#include "embedded/render/design/page_maker.h"
#include "host/interface/documents.h"

namespace qelm::embedded::adapter {

// The PDF of a document or book. Nothing, with `why`, when there is none to write.
std::optional<std::string> PrintPdf(Workspace& workspace, host::Documents& documents, OpenFile* file,
                                    const host::SaveOptions& options, std::string* why);

// One page of a document as PNG: its place from 1, and dots an inch.
std::optional<std::string> PrintPage(Workspace& workspace, OpenFile* file, std::size_t page, double dpi,
                                     std::string* why);

// Whether the document's own record of its pages does not hold any more, or there is none.
bool HasStalePages(OpenFile* file);

// Where the pages of a document begin when it is laid out: with page numbers of its own, or those of a book.
// Kept until something moves. Of XML the items are those with which its elements begin. None, with a notice,
// when it cannot be laid out.
const render::FoundPages& LaidPages(Workspace& workspace, OpenFile* file);
const render::FoundPages& LaidPages(Workspace& workspace, OpenFile* file, const model::PageRun& run);

}  // namespace qelm::embedded::adapter
