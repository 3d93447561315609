// What is to be written to a file, as a list of pieces: ranges of bytes that lie elsewhere, and texts of its
// own in between. So saving a document does not make a second copy of it in memory.
#pragma once

#include <cstddef>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

namespace qelm::embedded::model {

class Pieces {
 public:
  // Adds bytes that stay where they are for as long as the pieces are used.
  void Refer(std::string_view bytes);
  // Adds a copy of the bytes.
  void Copy(std::string_view bytes) { Refer(Keep(bytes)); }
  // A copy of the bytes that can be referred to, as often as they are needed; nothing is added.
  std::string_view Keep(std::string_view bytes);
  // Makes room for so many pieces.
  void Reserve(std::size_t count) { pieces_.reserve(count); }

  const std::vector<std::string_view>& All() const { return pieces_; }
  // All of them in one string.
  std::string Joined() const;

 private:
  std::vector<std::string_view> pieces_;
  std::deque<std::string> chunks_;  // the copies; each has its room reserved, so that nothing in it moves
};

}  // namespace qelm::embedded::model
