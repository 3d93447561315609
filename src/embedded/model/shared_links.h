// The links of a document of which copies were made, and what links may name in it, read once for all copies:
// of one from which was only deleted, they are those of the origin whose places are left.
#pragma once

#include <mutex>

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

// What ReadLinksAndTargets gives, without going over a copy from which was only deleted.
LinksAndTargets LinksAndTargetsOf(const Document& document);

}  // namespace qelm::embedded::model
