// A paragraph's format as statements that rely on nothing before them.
#pragma once

#include <string>
#include <vector>

#include "embedded/model/document.h"

namespace qelm::embedded::model {

// Gives the formats of one document. Neighbouring paragraphs often stand on each other's format, so the last
// one is kept and the next is built on top of it.
class ParagraphFormats {
 public:
  explicit ParagraphFormats(const Document& document) : document_(document) {}

  // The statements PgfTag and Pgf that set the paragraph state whatever the state before: the catalog format
  // that it goes back to, and every change made on top of that, the last one of each property.
  std::vector<std::string> Statements(std::uint32_t paragraph_state);

 private:
  struct Change {
    std::string_view name;  // of the property
    std::string text;       // the whole statement
  };
  void AddChanges(Span pgf);

  const Document& document_;
  std::uint32_t base_ = 0;   // the catalog format under them, 0 when there is none
  std::uint32_t state_ = 0;  // the state that the changes are those of
  std::vector<Change> changes_;
};

}  // namespace qelm::embedded::model
