// Hiding elements under a condition tag: the tag itself, and its application to an element.
//
// Text is hidden by replacing the conditions of its whole range by the one tag, a table row by replacing the
// conditions of the row. A table title has no conditions of its own and cannot be hidden.
#pragma once

#include <string>
#include <vector>

#include "host/interface/host.h"

namespace qelm::filtering {

class Hiding {
 public:
  Hiding(host::Host& host, host::Id document) : host_(host), document_(document) {
    properties_.mask = host::kConditionsProperty;
  }

  // Looks the tag up. False when the document does not define it.
  bool Find(const std::string& name);
  // Defines it. False when the host could not.
  bool Create(const std::string& name);
  // Whether there is a tag to hide with.
  bool Ready() const { return tag_ != host::kNone; }

  // Hides one element; false when it could not be done.
  bool HideElement(host::Id element);

  // Lets text with the tag be seen, or not, in the whole document. False when the host refused. Hiding first
  // shows the tag when `anew` is set, so that the host applies the change to what was tagged meanwhile.
  bool ShowTagged();
  bool HideTagged(bool anew);

 private:
  host::Host& host_;
  host::Id document_;
  host::Id tag_ = host::kNone;
  host::TextProperties properties_;
};

}  // namespace qelm::filtering
