// Collects replacements of byte ranges and applies them in one pass: everything between them is copied as it
// stands.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "embedded/model/pieces.h"

namespace qelm::embedded::model {

class Splice {
 public:
  // Replaces the bytes [begin, end) by `text`; begin == end inserts. Ranges may come in any order and may
  // overlap: bytes are removed once, and texts for one place stay in the order in which they came.
  void Replace(std::uint32_t begin, std::uint32_t end, std::string_view text) {
    ReplaceByKept(begin, end, Keep(text));
  }
  void Insert(std::uint32_t at, std::string_view text) { Replace(at, at, text); }
  void Remove(std::uint32_t begin, std::uint32_t end) { Replace(begin, end, {}); }

  // A text that is inserted in many places is kept once.
  std::string_view Keep(std::string_view text) { return text.empty() ? text : result_.Keep(text); }
  void InsertKept(std::uint32_t at, std::string_view text) { ReplaceByKept(at, at, text); }

  // A replacement that counts only where its bytes are left: not in what was removed or replaced.
  void ReplaceWhatStays(std::uint32_t begin, std::uint32_t end, std::string_view text) {
    edits_.push_back({begin, end, Keep(text), true});
    barrier_ = edits_.size();
  }

  bool Empty() const { return edits_.empty(); }
  // A mark, and going back to it: what came after it is forgotten.
  std::size_t Mark() { return barrier_ = edits_.size(); }
  void ReturnTo(std::size_t mark) { edits_.resize(mark); }

  // The source with the edits; the source's own bytes are referred to. Leaves this without edits.
  Pieces Apply(std::string_view source);

 private:
  struct Edit {
    std::uint32_t begin = 0;
    std::uint32_t end = 0;
    std::string_view text;  // one that result_ keeps
    bool of_what_stays = false;
  };

  void ReplaceByKept(std::uint32_t begin, std::uint32_t end, std::string_view text) {
    if (begin == end && text.empty()) return;
    const bool follows = edits_.size() > barrier_ && text.empty() && edits_.back().text.empty() &&
                         edits_.back().end == begin && edits_.back().begin != edits_.back().end;
    if (follows) {
      edits_.back().end = end;
    } else {
      edits_.push_back({begin, end, text, false});
    }
  }

  Pieces result_;
  std::vector<Edit> edits_;
  std::size_t barrier_ = 0;  // removals do not grow into edits before it
};

}  // namespace qelm::embedded::model
