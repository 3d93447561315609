// Making pages, as whoever wants some sees it: documents as PDF, one page of one as PNG, and where the pages
// of a document begin.
//
// What makes them stands on libraries - fonts, drawing, pictures, PDF - that take longer to load than most
// runs take from start to end. So it is a module of its own, loaded when a run wants its first page, and this
// interface is all that both sides see of each other. It has copies of its own of the rooms below it: they
// must be of one build, which the stamp says. Nothing is thrown through this interface; what fails has a
// reason, in words. What one side made, the other only uses: objects of the module are destroyed by it.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "embedded/model/document.h"
#include "embedded/model/numbering.h"
#include "embedded/render/design/variables.h"

namespace qelm::embedded::render {

struct PrintOptions {
  double page_width = 0;  // points; 0: the document's own
  double page_height = 0;
  PrintTime time;
  std::string title;  // of the PDF; empty: none
};

// A document to print. It must be MIF; XML is converted first.
struct PrintSource {
  const model::Document* document = nullptr;
  std::string path;                             // that links and relative images count from
  std::vector<model::ParagraphNumber> numbers;  // by paragraph
  model::PlaceNumbers places;                   // volume, chapter, ...
  std::int64_t first_page = 1;
  std::string page_style = "Arabic";  // as model::NumberIn takes it
};

// Where the pages of a document begin as it would be printed, by item, flow after flow. Where a flow ends,
// and what is behind stands on no page, the ordinal is 0.
struct PageAt {
  std::uint32_t item = 0;
  std::size_t ordinal = 0;  // from 1 in the document
  std::int64_t number = 0;
  std::string text;
};
struct FoundPages {
  std::vector<PageAt> starts;
  std::size_t count = 0;  // of pages
};

// One PDF, in which documents come one after the other.
class PdfMaker {
 public:
  virtual ~PdfMaker() = default;

  // Every document is announced before the first one is added, so that links know where they may lead.
  virtual void Announce(const model::Document& document, const std::string& path) = 0;
  // Returns how many pages were made; 0 when the PDF cannot be made.
  virtual std::size_t Add(const PrintSource& source) = 0;
  // Why the PDF cannot be made.
  virtual std::string Status() const = 0;
  // The PDF; empty when it could not be made, and `why` says so.
  virtual std::string Finish(std::string* why) = 0;
  // What a reader of the PDF should know: fonts that were replaced, images that are missing.
  virtual std::vector<std::string> Notices() const = 0;
};

class PageMaker {
 public:
  virtual ~PageMaker() = default;

  // Null, with `why`, when that is not possible.
  virtual std::unique_ptr<PdfMaker> BeginPdf(const PrintOptions& options, std::string* why) const = 0;
  // The PDF with that packet as its metadata (pdf_metadata.h). Nothing, with `why`, when it cannot be
  // processed.
  virtual std::optional<std::string> PutMetadata(std::string pdf, std::string_view packet,
                                                 std::string* warning, std::string* why) const = 0;
  // One page of a document, by its place from 1, as PNG with that many dots an inch. Empty when there is no
  // such page or no memory for it, and `why` says so.
  virtual std::string Png(const PrintSource& source, const PrintOptions& options, std::size_t page,
                          double dpi, std::vector<std::string>* notices, std::string* why) const = 0;
  virtual FoundPages Find(const PrintSource& source, std::string* why) const = 0;
};

// What the module exports: its page maker, which lives as long as the process; null when the module is not of
// the build that the stamp names.
inline constexpr char kPageMakerFunction[] = "qelm_page_maker";
using PageMakerFunction = const PageMaker*(const char* stamp);

// What names the build: the version, and all that decides on how the types of this interface lie in memory.
const char* PageMakerStamp();

}  // namespace qelm::embedded::render
