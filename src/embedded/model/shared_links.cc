#include "embedded/model/shared_links.h"

#include <algorithm>

#include "embedded/model/text_access.h"

namespace qelm::embedded::model {
namespace {

bool SameShown(const Document& copy, const Document& origin) {
  const auto same = [](const Condition& one, const Condition& other) { return one.shown == other.shown; };
  const auto same_row = [](const Part& one, const Part& other) { return one.conditions == other.conditions; };
  return copy.show_all == origin.show_all && copy.source_conditions.empty() &&
         copy.conditions.size() >= origin.conditions.size() &&
         std::equal(origin.conditions.begin(), origin.conditions.end(), copy.conditions.begin(), same) &&
         std::equal(origin.parts.begin(), origin.parts.end(), copy.parts.begin(), copy.parts.end(), same_row);
}

bool DiffersByDeletionsAlone(const Document& copy, const Document& origin) {
  return copy.source.data() == origin.source.data() && copy.items.size() == origin.items.size() &&
         !copy.additions.Pending() && !copy.attributes_changed && copy.replacements.empty() &&
         origin.replacements.empty() && SameShown(copy, origin);
}

}  // namespace

const LinksAndTargets& SharedLinks::Of(const Document& origin) {
  std::call_once(once_, [&] { all_ = ReadLinksAndTargets(origin); });
  return all_;
}

LinksAndTargets LinksAndTargetsOf(const Document& document) {
  const bool is_copy = document.origin != nullptr && document.shared_links != nullptr;
  if (!is_copy || !DiffersByDeletionsAlone(document, *document.origin)) return ReadLinksAndTargets(document);
  const LinksAndTargets& all = document.shared_links->Of(*document.origin);
  LinksAndTargets left;
  left.links.reserve(all.links.size());
  for (const Link& link : all.links) {
    if (!IsDeletedAt(document, link.item)) left.links.push_back(link);
  }
  left.targets = all.targets;
  for (LinkTarget& target : left.targets) {
    if (IsDeletedAt(document, target.item)) target.state = TargetState::kDeleted;
  }
  return left;
}

}  // namespace qelm::embedded::model
