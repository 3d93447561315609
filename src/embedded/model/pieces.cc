#include "embedded/model/pieces.h"

#include <algorithm>

namespace qelm::embedded::model {

void Pieces::Refer(std::string_view bytes) {
  if (bytes.empty()) return;
  if (!pieces_.empty() && pieces_.back().data() + pieces_.back().size() == bytes.data()) {
    pieces_.back() = {pieces_.back().data(), pieces_.back().size() + bytes.size()};
  } else {
    pieces_.push_back(bytes);
  }
}

std::string_view Pieces::Keep(std::string_view bytes) {
  constexpr std::size_t kChunk = 65536;
  if (chunks_.empty() || chunks_.back().capacity() - chunks_.back().size() < bytes.size()) {
    chunks_.emplace_back().reserve(std::max(kChunk, bytes.size()));
  }
  std::string& chunk = chunks_.back();
  chunk.append(bytes);
  return std::string_view(chunk).substr(chunk.size() - bytes.size());
}

std::string Pieces::Joined() const {
  std::size_t size = 0;
  for (const std::string_view piece : pieces_) size += piece.size();
  std::string all;
  all.reserve(size);
  for (const std::string_view piece : pieces_) all.append(piece);
  return all;
}

}  // namespace qelm::embedded::model
