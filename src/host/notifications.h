// What the plug-in asks its host to be told of, and what it does then.
#pragma once

#include <cstdint>
#include <string_view>

#include "host/interface/types.h"

namespace qelm {

class Plugin;

// The host's notifications by number.
enum Notification : std::int32_t {
  kDocumentOpened = 2,
  kClientCall = 13,
  kCloseMainSettings = 26,  // never asked for
  kNoAction40 = 40,
  kNoAction42 = 42,
  kNoAction43 = 43,
  kElementChanged53 = 53,
  kSelectionChanged = 55,  // what is in the selected element
  kElementChanged57 = 57,
  kElementChanged59 = 59,
  kAttributeChanged = 63,
};

// Asks for them, in the order that hosts are used to.
void RegisterNotifications(Plugin& plugin);

// Acts on one. `document` 0: the active one.
void HandleNotification(Plugin& plugin, std::int32_t notification, host::Id document, std::string_view text,
                        std::int32_t value);

// What a change of an attribute is, before anything is checked. From kNoElement on there is nothing to check.
enum class AttributeChange : std::int32_t {
  kToBeChecked = 0,
  kNoElement = 7,      // the object is no element of the document, or no longer
  kNoAttribute = 8,    // its definition declares no attribute of that name, and it carries none
  kInMainSettings = 9  // the document is the one that holds the schemes
};
AttributeChange CheckAttributeChange(Plugin& plugin, host::Id document, host::Id object,
                                     std::string_view attribute);

}  // namespace qelm
