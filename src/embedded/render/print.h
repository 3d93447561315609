// Printing: documents as PDF, page after page, or one page of one as PNG.
//
//   PdfPrint print(options);
//   print.Announce(document, path);     // every document, so that links know where they may lead
//   print.Add(source);                  // each in turn; only one has to be in memory
//   std::string pdf = print.Finish();
//
// The same documents, options and time always give the same bytes.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "embedded/model/document.h"
#include "embedded/render/design/page_maker.h"

namespace qelm::embedded::render {

class PdfPrint {
 public:
  explicit PdfPrint(const PrintOptions& options);
  ~PdfPrint();
  PdfPrint(const PdfPrint&) = delete;
  PdfPrint& operator=(const PdfPrint&) = delete;

  void Announce(const model::Document& document, const std::string& path);
  // Returns how many pages were made; 0 when the PDF cannot be written.
  std::size_t Add(const PrintSource& source);
  // Why the PDF cannot be written.
  std::string Status() const;
  // The PDF; empty when it could not be made, and `why` says so.
  std::string Finish(std::string* why);

  // What a reader of the PDF should know: fonts that were replaced, images that are missing.
  std::vector<std::string> Notices() const;

 private:
  class Work;
  std::unique_ptr<Work> work_;
};

// One page of a document, by its place from 1, as PNG with that many dots an inch. Empty when there is no
// such page or no memory for it, and `why` says so.
std::string PrintPng(const PrintSource& source, const PrintOptions& options, std::size_t page, double dpi,
                     std::vector<std::string>* notices, std::string* why);

FoundPages FindPages(const PrintSource& source);

}  // namespace qelm::embedded::render
