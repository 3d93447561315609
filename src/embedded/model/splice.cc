#include "embedded/model/splice.h"

#include <algorithm>
#include <utility>

namespace qelm::embedded::model {

Pieces Splice::Apply(std::string_view source) {
  const auto earlier = [](const Edit& a, const Edit& b) { return a.begin < b.begin; };
  if (!std::is_sorted(edits_.begin(), edits_.end(), earlier)) {
    std::stable_sort(edits_.begin(), edits_.end(), earlier);
  }
  Pieces result = std::move(result_);
  result.Reserve(2 * edits_.size() + 1);
  std::size_t at = 0;
  for (const Edit& edit : edits_) {
    if (edit.of_what_stays && edit.begin < at) continue;
    if (edit.begin > at) result.Refer(source.substr(at, edit.begin - at));
    result.Refer(edit.text);
    at = std::max(at, static_cast<std::size_t>(std::max(edit.begin, edit.end)));
  }
  if (at < source.size()) result.Refer(source.substr(at));
  *this = {};
  return result;
}

}  // namespace qelm::embedded::model
