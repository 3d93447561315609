#include "filtering/hiding.h"

namespace qelm::filtering {

using host::Id;
using host::kNone;

bool Hiding::Find(const std::string& name) {
  tag_ = host_.catalogs.FindCondition(document_, name);
  if (Ready()) properties_.conditions.assign(1, tag_);
  return Ready();
}

bool Hiding::Create(const std::string& name) {
  host_.catalogs.CreateCondition(document_, name);
  return Find(name);
}

bool Hiding::HideElement(Id element) {
  if (host_.elements.Kind(document_, element) == host::ElementKind::kTableRow) {
    const Id row = host_.tables.RowOfElement(document_, element);
    return row != kNone && host_.tables.SetRowConditions(document_, row, properties_.conditions);
  }
  const host::TextRange range = host_.text.ElementRange(document_, element);
  return !range.Empty() && host_.text.WriteProperties(document_, range, properties_);
}

bool Hiding::ShowTagged() {
  const bool shown = !Ready() || host_.catalogs.SetConditionShown(document_, tag_, true);
  return host_.documents.SetSwitch(document_, host::DocumentSwitch::kShowAllConditions, true) && shown;
}

bool Hiding::HideTagged(bool anew) {
  if (!Ready()) return false;
  if (anew) host_.catalogs.SetConditionShown(document_, tag_, true);
  const bool hidden = host_.catalogs.SetConditionShown(document_, tag_, false);
  return host_.documents.SetSwitch(document_, host::DocumentSwitch::kShowAllConditions, false) && hidden;
}

}  // namespace qelm::filtering
