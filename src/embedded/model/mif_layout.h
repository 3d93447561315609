// How statements lie in the lines of a MIF file: where one is put in, and what goes when one is taken out.
//
// FrameMaker writes one statement a line, indented by its depth. What is put in before such a statement takes
// lines of its own with the same indentation; taking it out removes those lines and nothing else, so that the
// one undoes the other byte for byte. In files that hold several statements a line, both work within the
// line.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "embedded/model/document.h"
#include "embedded/model/splice.h"

namespace qelm::embedded::model {

class MifLayout {
 public:
  explicit MifLayout(const Document& document)
      : source_(document.source), line_end_(document.crlf ? "\r\n" : "\n"), encoding_(document.encoding) {}

  // The range that goes when the statement [begin, end) is taken out: its whole lines with the comment behind
  // it, or in a shared line the statement and one blank behind it.
  Span Removal(std::uint32_t begin, std::uint32_t end) const;

  // Puts `statements` before the statement at `at`. Each is one statement, its lines separated by '\n' and
  // indented from 0.
  void InsertBefore(std::uint32_t at, const std::vector<std::string>& statements, Splice* splice) const;

  // Puts them at the end of a group, before the `>` at `close`.
  void InsertAtEnd(std::uint32_t close, const std::vector<std::string>& statements, Splice* splice) const;

  // Puts one statement in place of the statement [begin, end) and the comment behind it.
  void Replace(std::uint32_t begin, std::uint32_t end, const std::string& statement, Splice* splice) const;

  // The statements as lines with that many blanks before each.
  std::string Lines(const std::vector<std::string>& statements, std::size_t indentation) const;

  // A statement of the source in the form that the others take: its lines separated by '\n' and indented from
  // 0, with the comment behind its end.
  std::string Statement(std::uint32_t begin, std::uint32_t end) const;

  // Where the line of a statement begins that stands first in it; else the statement itself.
  std::uint32_t LineBegin(std::uint32_t at) const;

  // How many blanks stand before the statement in its line.
  std::size_t Indentation(std::uint32_t at) const;

  // The line in which a statement stands.
  struct LinePlace {
    bool own_line;  // nothing but blanks before it
    std::uint32_t line_begin;
  };
  LinePlace PlaceOf(std::uint32_t at) const;

  std::string Quoted(std::string_view text) const { return "`" + mif::Encode(text, encoding_) + "'"; }
  std::string_view LineEnd() const { return line_end_; }

 private:
  void Insert(std::uint32_t at, std::size_t extra, const std::vector<std::string>& statements,
              Splice* splice) const;

  std::string_view source_;
  std::string_view line_end_;
  mif::Encoding encoding_;
};

// Puts entries at the end of a catalog `name`; one that is empty or missing is made.
void AddToCatalog(const Document& document, const MifLayout& layout, Span catalog, std::string_view name,
                  const std::vector<std::string>& entries, Splice* splice);

// The statement that sets a condition set, and the one that sets a character state.
std::string ConditionalStatement(const Document& document, std::uint16_t set);
std::string FontStatement(const Document& document, std::uint32_t font);

}  // namespace qelm::embedded::model
