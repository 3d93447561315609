// The links of a document of which copies were made, and what links may name in it, read once for all copies:
// of one from which was only deleted, they are those of the origin whose places are left.
#pragma once

#include <mutex>
#include <optional>

#include "embedded/model/links.h"

namespace qelm::embedded::model {

class SharedLinks {
 public:
  // Those of the origin, which copies in several threads may ask for.
  const LinksAndTargets& Of(const Document& origin);

 private:
  std::once_flag once_;
  LinksAndTargets all_;
};

// What ReadLinksAndTargets gives for a copy. Nothing for a document that is none, or that differs from its
// origin in more than what was deleted.
std::optional<LinksAndTargets> LinksOfCopy(const Document& document);

}  // namespace qelm::embedded::model
