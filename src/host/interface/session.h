// What the host knows of the session itself: where the plug-in lives, which version the host is, and the
// switches that hold for the whole session.
#pragma once

#include "host/interface/types.h"

namespace qelm::host {

class Session {
 public:
  virtual ~Session() = default;

  // The plug-in's own folder, without a separator at the end. Holds for the session.
  virtual std::string_view PluginFolder() = 0;

  virtual std::int32_t MajorVersion() = 0;

  // Asks for texts in this encoding from now on. False when the host cannot; one whose texts are UTF-8 in any
  // case has nothing to do for "UTF-8".
  virtual bool SetTextEncoding(std::string_view name) { return name == "UTF-8"; }

  // The language of the host's user interface, as its English name ("English", "German").
  virtual std::string_view InterfaceLanguage() = 0;

  // Screen updating is on at the start. Whoever switches it off switches it on again on every way out.
  virtual void SetScreenUpdates(bool on) = 0;
  virtual bool ScreenUpdates() = 0;

  // Draws the document anew. Nothing happens for an invalid id.
  virtual void Redisplay(Id document) = 0;

  // Asks the host to call the notification entry for notification `number` from now on, or no longer.
  virtual void RequestNotification(std::int32_t number, bool on) = 0;
};

}  // namespace qelm::host
